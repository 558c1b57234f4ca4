#ifndef HOSTTESTSUPPORT_H
#define HOSTTESTSUPPORT_H

// Helpers of the host tests; header-only, as the core-only builds lack the host.

#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

#include "deviceconfig.h"
#include "devicehost.h"
#include "testconfig.h"

namespace HostTest {

// A device group aimed at 127.0.0.1:port in the dev.ini the plug-in reads.
// interval 1 gives one tick a second.
inline void writeDevice(const QString &name, quint16 port, int retries = 1, int interval = 1)
{
    writeDeviceConfig(name, QVariantMap{{QStringLiteral("ipAddr"), QStringLiteral("127.0.0.1")},
                                        {QStringLiteral("port"), port},
                                        {QStringLiteral("retries"), retries},
                                        {QStringLiteral("interval"), interval}});
}

// Device entries by name only; the rest comes from dev.ini.
inline QList<DeviceEntry> entries(const QStringList &names)
{
    QList<DeviceEntry> list;
    for (const QString &name : names)
        list << DeviceEntry{name, QString(), 0, -1, -1, -1, QString()};
    return list;
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

inline QStringList fileLines(const QString &path)
{
    QFile file(path);
    QStringList lines;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return lines;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

// Splits one CSV line (RFC 4180 quoting, no line breaks inside fields).
inline QStringList csvFields(const QString &line)
{
    static const QRegularExpression field(QStringLiteral("(?:^|,)(\"(?:[^\"]|\"\")*\"|[^,]*)"));
    QStringList fields;
    for (auto it = field.globalMatch(line); it.hasNext();) {
        const QString f = it.next().captured(1);
        fields << (f.startsWith(QLatin1Char('"')) ? f.mid(1, f.size() - 2).replace(QStringLiteral("\"\""), "\"") : f);
    }
    return fields;
}

// Lines of the event log that name the device, split at the tabs.
inline QList<QStringList> eventLines(const QString &path, const QString &device)
{
    QList<QStringList> out;
    for (const QString &line : fileLines(path)) {
        if (line.section(QLatin1Char('\t'), 1, 1) == device)
            out << line.split(QLatin1Char('\t'));
    }
    return out;
}

// "device:text" of the host's notices that contain part.
inline QStringList noticeTexts(const DeviceHost &host, const QString &part)
{
    QStringList texts;
    for (const HostNotice &notice : host.notices()) {
        if (notice.text.contains(part))
            texts << notice.device + QLatin1Char(':') + notice.text;
    }
    return texts;
}

} // namespace HostTest

#endif // HOSTTESTSUPPORT_H
