#include "hostwindowscene.h"

#include <QCoreApplication>
#include <QScopeGuard>
#include <QSettings>
#include <QTemporaryDir>

#include <memory>

#include "deviceconfig.h"
#include "devicehost.h"
#include "devicesession.h"
#include "mainwindow.h"
#include "screenshotwriter.h"
#include "upsalarms.h"
#include "upscontract.h"
#include "upssimulator.h"

namespace {

const QString kSingle = QStringLiteral("ups-single");
const QString kThree = QStringLiteral("ups-three");
// The plug-in pauses 5 s before its first connection attempt; a full
// rotation of four requests takes four ticks of a second.
constexpr int kFirstPictureMs = 30000;
constexpr int kAlarmShownMs = 10000;
// A few frames of the energy-flow animation.
constexpr int kAnimationMs = 300;
// Polling interval written for both devices: the plug-in ticks once a second.
constexpr int kIntervalSeconds = 5;

void writeDevice(const QString &name, quint16 port)
{
    QSettings settings(UpsConfig::filePath(), QSettings::IniFormat);
    settings.setValue(UpsConfig::key(name, UpsConfig::IpAddr), QStringLiteral("127.0.0.1"));
    settings.setValue(UpsConfig::key(name, UpsConfig::Port), port);
    settings.setValue(UpsConfig::key(name, UpsConfig::Interval), kIntervalSeconds);
}

void removeDevices()
{
    QSettings settings(UpsConfig::filePath(), QSettings::IniFormat);
    settings.remove(kSingle);
    settings.remove(kThree);
}

QColor alarmColour()
{
    DeviceStatus status;
    status.state = DeviceStatus::State::Communicating;
    status.alarmActive = true;
    return MainWindow::stateColour(status);
}

} // namespace

HostWindowScene::HostWindowScene(ScreenshotWriter &writer)
    : m_writer(writer)
{
}

void HostWindowScene::render()
{
    UpsSimulator single(UpsSimulator::Profile::Single);
    UpsSimulator three(UpsSimulator::Profile::Three);
    QTemporaryDir logs;
    if (!single.start(QStringLiteral("127.0.0.1"), 0) || !three.start(QStringLiteral("127.0.0.1"), 0)
        || !logs.isValid()) {
        m_writer.fail(QStringLiteral("host window: simulated agents"));
        return;
    }
    writeDevice(kSingle, single.port());
    writeDevice(kThree, three.port());
    const auto cleanUp = qScopeGuard(removeDevices);

    DeviceHost host(logs.path());
    if (host.loadPlugins(QCoreApplication::applicationDirPath()) == 0) {
        m_writer.fail(QStringLiteral("host window: no plug-in beside %1").arg(QCoreApplication::applicationFilePath()));
        return;
    }
    host.setUserInfo(DeviceHost::roleName(1), 1);
    QList<DeviceEntry> entries;
    for (const QString &name : {kSingle, kThree}) {
        entries << DeviceEntry();
        entries.last().name = name;
    }
    host.startDevices(entries);
    auto window = std::make_unique<MainWindow>(&host);
    window->show();

    const bool read = ScreenshotWriter::waitFor(
        [&host] { return host.session(kSingle)->hasFullPicture() && host.session(kThree)->hasFullPicture(); },
        kFirstPictureMs);
    three.setAlarm(UpsAlarm::FanFailure, true);
    const bool alarmShown = ScreenshotWriter::waitFor(
        [&window] { return window->deviceColour(kThree) == alarmColour(); }, kAlarmShownMs);
    if (!read || !alarmShown) {
        m_writer.fail(QStringLiteral("host window: the simulated devices were not read in time"));
    } else {
        window->selectDevice(kSingle);
        ScreenshotWriter::settle(kAnimationMs);
        m_writer.save(window.get(), QStringLiteral("host-window.png"));
    }
    window->close();
    window.reset();
    host.shutdown();
}
