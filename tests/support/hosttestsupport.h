#ifndef HOSTTESTSUPPORT_H
#define HOSTTESTSUPPORT_H

// Helpers of the host tests (header-only: only the host tests include it,
// and the host library is absent from the core-only builds).

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <QVariantMap>

#include "deviceconfig.h"
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
    for (const QString &name : names) {
        list << DeviceEntry();
        list.last().name = name;
    }
    return list;
}

inline QStringList fileLines(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringList();
    QStringList lines;
    QTextStream in(&file);
    in.setCodec("UTF-8");
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

// Splits one CSV line (RFC 4180 quoting, no line breaks inside fields).
inline QStringList csvFields(const QString &line)
{
    QStringList fields;
    QString field;
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (quoted) {
            if (c == QLatin1Char('"')) {
                if (i + 1 < line.size() && line.at(i + 1) == QLatin1Char('"')) {
                    field += c;
                    ++i;
                } else {
                    quoted = false;
                }
            } else {
                field += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == QLatin1Char(',')) {
            fields << field;
            field.clear();
        } else {
            field += c;
        }
    }
    fields << field;
    return fields;
}

// Lines of the event log that name the device, split at the tabs.
inline QList<QStringList> eventLines(const QString &path, const QString &device)
{
    QList<QStringList> out;
    for (const QString &line : fileLines(path)) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.value(1) == device)
            out << fields;
    }
    return out;
}

} // namespace HostTest

#endif // HOSTTESTSUPPORT_H
