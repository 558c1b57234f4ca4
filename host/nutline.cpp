#include "nutline.h"

namespace NutLine {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool isControl(char c)
{
    const auto u = static_cast<unsigned char>(c);
    return (u < 0x20 && c != '\t') || u == 0x7f;
}

} // namespace

QList<QByteArray> split(const QByteArray &line, Error *error)
{
    *error = Error::None;
    QList<QByteArray> words;
    QByteArray word;
    bool inWord = false;
    bool quoted = false;
    bool escaped = false;
    for (const char c : line) {
        if (isControl(c)) {
            *error = Error::ControlCharacter;
            return {};
        }
        if (escaped) {
            word += c;
            escaped = false;
        } else if (c == '\\') {
            escaped = true;
            inWord = true;
        } else if (c == '"') {
            quoted = !quoted;
            inWord = true; // "" is an empty word
        } else if (isBlank(c) && !quoted) {
            if (inWord)
                words << word;
            word.clear();
            inWord = false;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (escaped) {
        *error = Error::DanglingEscape;
        return {};
    }
    if (quoted) {
        *error = Error::UnterminatedQuote;
        return {};
    }
    if (inWord)
        words << word;
    return words;
}

QByteArray quote(const QByteArray &text)
{
    QByteArray quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += isControl(c) ? ' ' : c;
    }
    quoted += '"';
    return quoted;
}

} // namespace NutLine
