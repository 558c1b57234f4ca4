// libFuzzer target: what NUT clients send and what the users file holds. Each
// input line is cut into request words; the words, quoted as the server quotes
// answers and joined again, must cut back into the same words. The whole input
// is also read as a users file, and every user section it names is asked for
// its rights with a password from the input; a broken promise aborts.
#include <QByteArray>
#include <QList>
#include <cstdint>

#include "fuzzapp.h"
#include "nutline.h"
#include "nutusers.h"

namespace {

constexpr int kMaxLinesChecked = 64;

void require(bool ok, const char *promise)
{
    if (!ok)
        qFatal("fuzz_nutline: broken promise: %s", promise);
}

bool hasControl(const QByteArray &text)
{
    for (const char c : text) {
        const auto u = static_cast<unsigned char>(c);
        if ((u < 0x20 && c != '\t') || u == 0x7f)
            return true;
    }
    return false;
}

void checkLine(const QByteArray &line)
{
    NutLine::Error error = NutLine::Error::None;
    const QList<QByteArray> words = NutLine::split(line, &error);
    require(error == NutLine::Error::None || words.isEmpty(), "a broken line yields no words");
    require((error == NutLine::Error::ControlCharacter) == hasControl(line), "control characters are refused");
    if (error != NutLine::Error::None)
        return;
    QList<QByteArray> quoted;
    for (const QByteArray &word : words)
        quoted << NutLine::quote(word);
    const QByteArray joined = quoted.join(' ');
    require(!joined.contains('\n') && !joined.contains('\r'), "a quoted answer stays on its line");
    NutLine::Error again = NutLine::Error::None;
    require(NutLine::split(joined, &again) == words && again == NutLine::Error::None, "quoting round trip");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***argv)
{
    startFuzzApplication((*argv)[0]);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    const QList<QByteArray> lines = input.split('\n');
    for (int i = 0; i < lines.size() && i < kMaxLinesChecked; ++i)
        checkLine(lines.at(i));

    NutUsers users;
    QStringList problems;
    users.parse(input, &problems);
    require(problems.size() <= lines.size(), "at most one problem per line");
    for (int i = 0; i < lines.size() && i < kMaxLinesChecked; ++i) {
        const QByteArray line = lines.at(i).trimmed();
        if (!line.startsWith('[') || !line.endsWith(']'))
            continue;
        const QByteArray name = line.mid(1, line.size() - 2).trimmed();
        const NutUsers::User *user = users.authenticate(name, lines.value(i + 1));
        require(!user || !user->password.isEmpty(), "an empty password never authenticates");
        require(!users.authenticate(name, QByteArray()), "no password, no user");
        (void)NutUsers::mayRun(user, QStringLiteral("beeper.toggle"));
    }
    return 0;
}
