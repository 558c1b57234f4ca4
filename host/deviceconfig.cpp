#include "deviceconfig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QSettings>

#include "inifilecheck.h"
#include "upscontract.h"

namespace {

using UpsConfig::key;
// The host's own key: which plug-in serves the device.
const QLatin1String kKeyPlugin("plugin");
const char kLogFolderName[] = "logs";
constexpr int kMaxPort = 65535;
// A device file is a few lines per device: more is not read for the checks.
constexpr qint64 kMaxCheckedBytes = 1 << 20;
constexpr int kMaxLinesNamed = 5;
constexpr int kMaxQuotedChars = 40;

int optionalInt(const QSettings &settings, const QString &group, QLatin1String name)
{
    bool ok = false;
    const int value = settings.value(key(group, name)).toInt(&ok);
    return ok ? value : -1;
}

bool hasControlChars(const QByteArray &line)
{
    for (const char c : line) {
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t')
            return true;
    }
    return false;
}

// What QSettings makes of a line: a comment, a [group] (its name returned),
// a key=value pair, or nothing it can use (false).
bool understoodLine(const QByteArray &line, QString *group)
{
    const QByteArray text = line.trimmed();
    if (hasControlChars(text))
        return false;
    if (text.isEmpty() || text.startsWith(';') || text.startsWith('#'))
        return true;
    if (text.startsWith('[')) {
        const int close = text.indexOf(']');
        if (close < 0)
            return false;
        // Group names are stored percent-encoded ("ups 1" as [ups%201]).
        *group = QString::fromUtf8(QByteArray::fromPercentEncoding(text.mid(1, close - 1)));
        return true;
    }
    return text.indexOf('=') > 0;
}

QString quoted(const QByteArray &line)
{
    QString text = QString::fromUtf8(line.trimmed()).left(kMaxQuotedChars);
    for (QChar &c : text) {
        if (!c.isPrint())
            c = QLatin1Char('?');
    }
    return text;
}

QString lineList(const QList<int> &numbers)
{
    QStringList texts;
    for (int i = 0; i < numbers.size() && i < kMaxLinesNamed; ++i)
        texts << QString::number(numbers.at(i));
    if (numbers.size() > kMaxLinesNamed)
        texts << QStringLiteral("...");
    return texts.join(QStringLiteral(", "));
}

} // namespace

DeviceConfig::DeviceConfig(const QString &path)
    : m_path(path)
{
}

QString DeviceConfig::defaultPath()
{
    return UpsConfig::filePath();
}

QString DeviceConfig::logFolder() const
{
    return QFileInfo(m_path).absoluteDir().filePath(QLatin1String(kLogFolderName));
}

QList<DeviceEntry> DeviceConfig::devices() const
{
    QList<DeviceEntry> list;
    if (IniFileCheck::unsafeLine(m_path))
        return list; // told by problems()
    QSettings settings(m_path, QSettings::IniFormat);
    for (const QString &group : settings.childGroups()) {
        if (!settings.contains(key(group, UpsConfig::IpAddr)) || !settings.contains(key(group, UpsConfig::Port)))
            continue;
        DeviceEntry entry;
        entry.name = group;
        entry.ipAddr = settings.value(key(group, UpsConfig::IpAddr)).toString();
        entry.port = settings.value(key(group, UpsConfig::Port)).toInt();
        entry.retries = optionalInt(settings, group, UpsConfig::Retries);
        entry.protocol = optionalInt(settings, group, UpsConfig::Protocol);
        entry.interval = optionalInt(settings, group, UpsConfig::Interval);
        entry.plugin = settings.value(key(group, kKeyPlugin)).toString();
        list << entry;
    }
    return list;
}

QStringList DeviceConfig::problems() const
{
    const QString file = QDir::toNativeSeparators(m_path);
    const QString howToAdd = tr("add a device with: orvek-host --add NAME HOST:PORT");
    const QFileInfo info(m_path);
    if (!info.exists())
        return {tr("%1 does not exist yet; %2").arg(file, howToAdd)};
    if (info.isDir())
        return {tr("%1 cannot be read: it is a folder, not a file; no device is started").arg(file)};
    QFile raw(m_path);
    if (!raw.open(QIODevice::ReadOnly))
        return {tr("%1 cannot be read (%2); no device is started").arg(file, raw.errorString())};
    if (const int line = IniFileCheck::unsafeLine(m_path)) {
        return {tr("%1: line %2 holds a value with '@' or '\\', which no device setting uses and which could "
                   "crash the reader; the file is not read and no device is started")
                    .arg(file)
                    .arg(line)};
    }
    QStringList found = textProblems(raw.read(kMaxCheckedBytes));

    QSettings settings(m_path, QSettings::IniFormat);
    if (settings.status() == QSettings::AccessError)
        return {tr("%1 cannot be read; no device is started").arg(file)};
    if (settings.status() == QSettings::FormatError && found.isEmpty())
        found << tr("%1 is not entirely in INI format; what could be read is used").arg(file);
    for (const QString &group : settings.childGroups()) {
        if (!settings.contains(key(group, UpsConfig::IpAddr)) || !settings.contains(key(group, UpsConfig::Port))) {
            found << tr("%1: the group [%2] is no device and is skipped: a device needs ipAddr and port")
                         .arg(file, group);
            continue;
        }
        const QString port = settings.value(key(group, UpsConfig::Port)).toString();
        bool ok = false;
        const int number = port.toInt(&ok);
        if (!ok || number < 1 || number > kMaxPort)
            found << tr("%1: the port \"%2\" of [%3] is no port number (1 to %4)").arg(file, port, group).arg(kMaxPort);
    }
    if (devices().isEmpty())
        found << tr("%1 holds no usable device group; %2").arg(file, howToAdd);
    return found;
}

QStringList DeviceConfig::textProblems(const QByteArray &text) const
{
    const QString file = QDir::toNativeSeparators(m_path);
    const QList<QByteArray> lines = text.split('\n');
    QList<int> badLines;
    QByteArray firstBad;
    QMap<QString, QList<int>> groupLines;
    bool continued = false;
    for (int i = 0; i < lines.size(); ++i) {
        const QByteArray &line = lines.at(i);
        const bool continuation = continued; // a value that ended with a backslash
        continued = line.trimmed().endsWith('\\');
        QString group;
        if (continuation)
            continue;
        if (!understoodLine(line, &group)) {
            if (badLines.isEmpty())
                firstBad = line;
            badLines << i + 1;
        } else if (!group.isEmpty()) {
            groupLines[group] << i + 1;
        }
    }
    QStringList found;
    if (!badLines.isEmpty()) {
        found << tr("%1: %n line(s) cannot be understood and are ignored (line(s) %2; the first reads \"%3\")", "",
                    badLines.size())
                     .arg(file, lineList(badLines), quoted(firstBad));
    }
    for (auto it = groupLines.constBegin(); it != groupLines.constEnd(); ++it) {
        if (it.value().size() > 1) {
            found << tr("%1: the group [%2] is written %3 times (lines %4); they are read as one device, "
                        "the later values win")
                         .arg(file, it.key())
                         .arg(it.value().size())
                         .arg(lineList(it.value()));
        }
    }
    return found;
}

bool DeviceConfig::contains(const QString &name) const
{
    for (const DeviceEntry &entry : devices()) {
        if (entry.name == name)
            return true;
    }
    return false;
}

DeviceEntry DeviceConfig::device(const QString &name) const
{
    for (const DeviceEntry &entry : devices()) {
        if (entry.name == name)
            return entry;
    }
    return DeviceEntry();
}

bool DeviceConfig::save(const DeviceEntry &entry, QString *error)
{
    auto fail = [error](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    if (!isValidName(entry.name))
        return fail(tr("invalid device name \"%1\"").arg(entry.name));
    if (!isPlainWord(entry.ipAddr.trimmed()) || entry.port < 1 || entry.port > kMaxPort)
        return fail(tr("invalid address %1:%2").arg(entry.ipAddr).arg(entry.port));
    if (!entry.plugin.isEmpty() && !isPlainWord(entry.plugin))
        return fail(tr("invalid plug-in class name \"%1\"").arg(entry.plugin));
    if (!QDir().mkpath(QFileInfo(m_path).absolutePath()))
        return fail(tr("cannot create the folder of %1").arg(m_path));
    if (const int line = IniFileCheck::unsafeLine(m_path))
        return fail(tr("%1 is not changed: line %2 holds a value with '@' or '\\'; correct it first").arg(m_path).arg(line));

    QSettings settings(m_path, QSettings::IniFormat);
    settings.setValue(key(entry.name, UpsConfig::IpAddr), entry.ipAddr.trimmed());
    settings.setValue(key(entry.name, UpsConfig::Port), entry.port);
    if (entry.retries >= 0)
        settings.setValue(key(entry.name, UpsConfig::Retries), entry.retries);
    if (entry.protocol >= 0)
        settings.setValue(key(entry.name, UpsConfig::Protocol), entry.protocol);
    if (entry.interval >= 0)
        settings.setValue(key(entry.name, UpsConfig::Interval), entry.interval);
    if (!entry.plugin.isEmpty())
        settings.setValue(key(entry.name, kKeyPlugin), entry.plugin);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        return fail(tr("cannot write %1").arg(m_path));
    return true;
}

bool DeviceConfig::isPlainWord(const QString &text)
{
    // Host names, IPv4 and IPv6 addresses (with a zone) and class names. Other
    // characters would be written escaped, and an escaped value keeps the file
    // from being read at all.
    static const QString extra = QStringLiteral(".:-_%[]");
    for (const QChar c : text) {
        if (c.unicode() > 127 || !(c.isLetterOrNumber() || extra.contains(c)))
            return false;
    }
    return !text.isEmpty();
}

bool DeviceConfig::isValidName(const QString &name)
{
    return !name.isEmpty() && name == name.trimmed() && !name.contains(QLatin1Char('/'))
           && !name.contains(QLatin1Char('\\'));
}

bool DeviceConfig::parseEndpoint(const QString &text, QString *host, int *port)
{
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    if (colon <= 0)
        return false;
    QString address = text.left(colon);
    if (address.startsWith(QLatin1Char('[')) && address.endsWith(QLatin1Char(']')))
        address = address.mid(1, address.size() - 2);
    else if (address.contains(QLatin1Char(':')))
        return false; // a bare IPv6 address needs brackets
    bool ok = false;
    const int number = text.mid(colon + 1).toInt(&ok, 10);
    if (!ok || number < 1 || number > kMaxPort || address.isEmpty())
        return false;
    for (const QChar c : address) {
        if (c.isSpace())
            return false;
    }
    if (host)
        *host = address;
    if (port)
        *port = number;
    return true;
}
