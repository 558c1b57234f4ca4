#include "deviceconfig.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>

namespace {

const char kKeyAddress[] = "ipAddr";
const char kKeyPort[] = "port";
const char kKeyRetries[] = "retries";
const char kKeyProtocol[] = "protocol";
const char kKeyInterval[] = "interval";
const char kKeyPlugin[] = "plugin";
const char kLogFolderName[] = "logs";
constexpr int kMaxPort = 65535;

QString key(const QString &group, const char *name)
{
    return group + QLatin1Char('/') + QLatin1String(name);
}

int optionalInt(const QSettings &settings, const QString &group, const char *name)
{
    bool ok = false;
    const int value = settings.value(key(group, name)).toInt(&ok);
    return ok ? value : -1;
}

} // namespace

DeviceConfig::DeviceConfig(const QString &path)
    : m_path(path)
{
}

QString DeviceConfig::defaultPath()
{
    QString dir = QCoreApplication::applicationDirPath();
    dir.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return dir + QStringLiteral("/KSVO/Quoranet/db/dev.ini");
}

QString DeviceConfig::logFolder() const
{
    return QFileInfo(m_path).absoluteDir().filePath(QLatin1String(kLogFolderName));
}

QList<DeviceEntry> DeviceConfig::devices() const
{
    QList<DeviceEntry> list;
    QSettings settings(m_path, QSettings::IniFormat);
    for (const QString &group : settings.childGroups()) {
        if (!settings.contains(key(group, kKeyAddress)) || !settings.contains(key(group, kKeyPort)))
            continue;
        DeviceEntry entry;
        entry.name = group;
        entry.ipAddr = settings.value(key(group, kKeyAddress)).toString();
        entry.port = settings.value(key(group, kKeyPort)).toInt();
        entry.retries = optionalInt(settings, group, kKeyRetries);
        entry.protocol = optionalInt(settings, group, kKeyProtocol);
        entry.interval = optionalInt(settings, group, kKeyInterval);
        entry.plugin = settings.value(key(group, kKeyPlugin)).toString();
        list << entry;
    }
    return list;
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
    if (entry.ipAddr.trimmed().isEmpty() || entry.port < 1 || entry.port > kMaxPort)
        return fail(tr("invalid address %1:%2").arg(entry.ipAddr).arg(entry.port));
    if (!QDir().mkpath(QFileInfo(m_path).absolutePath()))
        return fail(tr("cannot create the folder of %1").arg(m_path));

    QSettings settings(m_path, QSettings::IniFormat);
    settings.setValue(key(entry.name, kKeyAddress), entry.ipAddr.trimmed());
    settings.setValue(key(entry.name, kKeyPort), entry.port);
    if (entry.retries >= 0)
        settings.setValue(key(entry.name, kKeyRetries), entry.retries);
    if (entry.protocol >= 0)
        settings.setValue(key(entry.name, kKeyProtocol), entry.protocol);
    if (entry.interval >= 0)
        settings.setValue(key(entry.name, kKeyInterval), entry.interval);
    if (!entry.plugin.isEmpty())
        settings.setValue(key(entry.name, kKeyPlugin), entry.plugin);
    settings.sync();
    if (settings.status() != QSettings::NoError)
        return fail(tr("cannot write %1").arg(m_path));
    return true;
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
