#ifndef TESTCONFIG_H
#define TESTCONFIG_H

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QString>
#include <QVariantMap>

#include "upscontract.h"

// The folder holding the plug-in, libCollectContract, orvek-host and
// orvek-sim. Each test binary runs from a folder of its own, so this is not
// the application folder.
inline QString builtBinaryDir()
{
    return QStringLiteral(ORVEK_BIN_DIR);
}

// Writes one device group into the dev.ini that the plug-in reads below the
// test binary's own application folder.
inline void writeDeviceConfig(const QString &device, const QVariantMap &values)
{
    const QString path = UpsConfig::filePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSettings settings(path, QSettings::IniFormat);
    settings.remove(device);
    for (auto it = values.constBegin(); it != values.constEnd(); ++it)
        settings.setValue(device + QLatin1Char('/') + it.key(), it.value());
    settings.sync();
}

// Takes a test's device group out of dev.ini again, so that a host started
// from the same folder later does not find it.
inline void removeDeviceConfig(const QString &device)
{
    QSettings settings(UpsConfig::filePath(), QSettings::IniFormat);
    settings.remove(device);
    settings.sync();
}

// A port on 127.0.0.1 that nothing listens on (taken and released at once).
quint16 closedLocalPort();

#endif // TESTCONFIG_H
