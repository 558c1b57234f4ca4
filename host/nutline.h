#ifndef NUTLINE_H
#define NUTLINE_H

#include <QByteArray>
#include <QList>

// The word rules of the NUT network protocol: a request is words separated
// by blanks; a word may be put in double quotes to hold blanks, and inside
// quotes a backslash escapes the next character (\" and \\). Answers quote
// every free-text value the same way.
namespace NutLine {

enum class Error { None, UnterminatedQuote, DanglingEscape, ControlCharacter };

// Words of one request line, without its line end. A NUL or another control
// character (tab aside) makes the whole line invalid.
QList<QByteArray> split(const QByteArray &line, Error *error);

// text in double quotes, with '"' and '\' escaped and control characters
// blanked, so that a value never breaks the answer line.
QByteArray quote(const QByteArray &text);

} // namespace NutLine

#endif // NUTLINE_H
