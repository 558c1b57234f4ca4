#ifndef DEVICECONFIG_H
#define DEVICECONFIG_H

#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringList>

// One device group of dev.ini. Optional numbers are -1 when the group does
// not set them (the plug-in then applies its own defaults).
struct DeviceEntry
{
    QString name;     // the group name, also the device name
    QString ipAddr;
    int port = 0;
    int retries = -1;
    int protocol = -1;
    int interval = -1;
    QString plugin;   // class name of the plug-in to use; empty: the first one
};

// Reads and writes the device groups of the device file dev.ini. The host is
// the only writer; the plug-in reads the same file below the application's
// folder. A group is a device when it holds at least "ipAddr" and "port".
class DeviceConfig
{
    Q_DECLARE_TR_FUNCTIONS(DeviceConfig)

public:
    explicit DeviceConfig(const QString &path = defaultPath());

    // <application folder>/KSVO/Quoranet/db/dev.ini, where the plug-in looks.
    static QString defaultPath();

    QString path() const { return m_path; }
    // Folder of the host's logs, beside dev.ini.
    QString logFolder() const;

    QList<DeviceEntry> devices() const;
    // What is wrong with the file, one sentence each naming it: missing or
    // unreadable, lines QSettings ignores, a group written twice, groups that
    // are no device, ports that are no port, no device at all. The devices
    // that can be used are still returned by devices().
    QStringList problems() const;
    bool contains(const QString &name) const;
    DeviceEntry device(const QString &name) const;

    // Adds the group or updates its address, port and the optional numbers
    // that are set (>= 0, non-empty plug-in); other keys of the group stay.
    bool save(const DeviceEntry &entry, QString *error = nullptr);

    // A usable group name: not empty, no path separators, no blanks around.
    static bool isValidName(const QString &name);
    // An address or a plug-in class name that QSettings writes as it is.
    static bool isPlainWord(const QString &text);
    // "host:port" or "[v6 address]:port" with a port of 1..65535.
    static bool parseEndpoint(const QString &text, QString *host, int *port);

private:
    QStringList textProblems(const QByteArray &text) const;

    QString m_path;
};

#endif // DEVICECONFIG_H
