#ifndef TESTCONFIG_H
#define TESTCONFIG_H

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QString>
#include <QVariantMap>

#include "upscontract.h"

// Writes one device group into the dev.ini that the plug-in reads below the
// test binary's directory. Each test uses its own group names.
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
