#include "nutusers.h"

#include <QFile>

#include "nutline.h"

namespace {

constexpr char kAll[] = "ALL";

// "key = value" or "key value...", the value's words unquoted.
bool splitSetting(const QByteArray &line, QByteArray *key, QList<QByteArray> *values)
{
    const int equals = line.indexOf('=');
    const QByteArray beforeEquals = equals > 0 ? line.left(equals).trimmed() : QByteArray();
    QByteArray rest;
    if (!beforeEquals.isEmpty() && beforeEquals.simplified().indexOf(' ') < 0 && !beforeEquals.contains('"')) {
        *key = beforeEquals;
        rest = line.mid(equals + 1);
    } else {
        int end = 0;
        while (end < line.size() && line.at(end) != ' ' && line.at(end) != '\t')
            ++end;
        *key = line.left(end);
        rest = line.mid(end);
    }
    *key = key->toLower();
    NutLine::Error error = NutLine::Error::None;
    *values = NutLine::split(rest, &error);
    return error == NutLine::Error::None && !key->isEmpty();
}

// Command lists may separate their names by commas as well as blanks.
QStringList names(const QList<QByteArray> &values)
{
    QStringList list;
    for (const QByteArray &value : values) {
        for (const QByteArray &name : value.split(','))
            if (!name.isEmpty())
                list << QString::fromUtf8(name);
    }
    return list;
}

// The line up to a '#' that is not inside quotes.
QByteArray withoutComment(const QByteArray &line)
{
    bool quoted = false;
    bool escaped = false;
    for (int i = 0; i < line.size(); ++i) {
        const char c = line.at(i);
        if (escaped)
            escaped = false;
        else if (c == '\\')
            escaped = true;
        else if (c == '"')
            quoted = !quoted;
        else if (c == '#' && !quoted)
            return line.left(i);
    }
    return line;
}

} // namespace

bool NutUsers::load(const QString &path, QStringList *problems)
{
    m_users.clear();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (file.size() > MaxFileBytes) {
        if (problems)
            *problems << QStringLiteral("%1 is larger than %2 bytes").arg(path).arg(MaxFileBytes);
        return false;
    }
    parse(file.read(MaxFileBytes), problems);
    return true;
}

void NutUsers::parse(const QByteArray &text, QStringList *problems)
{
    m_users.clear();
    User *current = nullptr;
    int number = 0;
    for (QByteArray line : text.split('\n')) {
        ++number;
        line = withoutComment(line).trimmed();
        if (line.isEmpty())
            continue;
        bool understood = false;
        if (line.startsWith('[') && line.endsWith(']')) {
            const QByteArray name = line.mid(1, line.size() - 2).trimmed();
            understood = !name.isEmpty();
            // A name given twice starts over: the later section wins whole.
            current = understood ? &(m_users[name] = User()) : nullptr;
        } else if (current) {
            understood = applySetting(current, line);
        }
        if (!understood && problems)
            *problems << QStringLiteral("line %1 not understood").arg(number);
    }
}

bool NutUsers::applySetting(User *user, const QByteArray &line)
{
    QByteArray key;
    QList<QByteArray> values;
    if (!splitSetting(line, &key, &values) || values.isEmpty())
        return false;
    if (key == "password") {
        user->password = values.join(' ');
    } else if (key == "instcmds") {
        user->instcmds << names(values);
    } else if (key == "actions") {
        for (const QString &action : names(values))
            user->fsd = user->fsd || action.compare(QLatin1String("FSD"), Qt::CaseInsensitive) == 0;
    } else if (key == "upsmon" && values.size() == 1) {
        const QByteArray role = values.first().toLower();
        if (role == "primary" || role == "master")
            user->monitor = Monitor::Primary;
        else if (role == "secondary" || role == "slave")
            user->monitor = Monitor::Secondary;
        else
            return false;
    } else {
        return false;
    }
    return true;
}

const NutUsers::User *NutUsers::authenticate(const QByteArray &name, const QByteArray &password) const
{
    const auto it = m_users.constFind(name);
    if (it == m_users.constEnd() || it->password.isEmpty() || it->password != password)
        return nullptr;
    return &it.value();
}

bool NutUsers::mayRun(const User *user, const QString &command)
{
    if (!user)
        return false;
    for (const QString &allowed : user->instcmds) {
        if (allowed == QLatin1String(kAll) || allowed == command)
            return true;
    }
    return false;
}
