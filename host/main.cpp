// orvek-host: loads the device plug-ins, runs one client per device group of
// dev.ini and shows them in a window or, without a display, on the console.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <unistd.h>

#include "consolemonitor.h"
#include "deviceconfig.h"
#include "devicehost.h"
#include "eventhook.h"
#include "hostoptions.h"
#include "languageloader.h"
#include "mainwindow.h"
#include "metricsserver.h"
#include "nutserver.h"
#include "openfilelimit.h"
#include "pluginhost.h"
#include "quitonsignal.h"

namespace {

constexpr int kScreenshotTimeoutMs = 60000;
constexpr int kOffscreenFontPointSize = 9; // the offscreen platform defaults to 12 pt

void printLine(FILE *stream, const QString &text)
{
    std::fprintf(stream, "%s\n", text.toLocal8Bit().constData());
    std::fflush(stream);
}

int addDevices(const HostOptions &options)
{
    DeviceConfig config;
    for (const auto &addition : options.additions) {
        DeviceEntry entry = config.device(addition.first);
        entry.name = addition.first;
        if (!DeviceConfig::parseEndpoint(addition.second, &entry.ipAddr, &entry.port)) {
            printLine(stderr, QApplication::translate("main", "invalid HOST:PORT \"%1\"").arg(addition.second));
            return 2;
        }
        if (options.interval >= 0)
            entry.interval = options.interval;
        if (options.retries >= 0)
            entry.retries = options.retries;
        QString error;
        if (!config.save(entry, &error)) {
            printLine(stderr, error);
            return 1;
        }
        printLine(stdout, QApplication::translate("main", "%1 -> %2:%3 in %4")
                              .arg(entry.name, entry.ipAddr)
                              .arg(entry.port)
                              .arg(QDir::toNativeSeparators(config.path())));
    }
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QCoreApplication::setApplicationName(QStringLiteral("orvek-host"));
    const HostOptions options = HostOptions::parse(arguments);
    if (!options.ok) {
        printLine(stderr, options.error);
        return 2;
    }
    if (options.helpRequested) {
        QCoreApplication app(argc, argv);
        LanguageLoader languages(options.language);
        languages.installHostTexts();
        printLine(stdout, HostOptions::helpText());
        return 0;
    }
    if (!options.additions.isEmpty()) {
        QCoreApplication app(argc, argv); // for the application's folder
        LanguageLoader languages(options.language);
        languages.installHostTexts();
        return addDevices(options);
    }

    // Before the devices start: each keeps files open while it runs.
    const quint64 openFileLimit = OpenFileLimit::raise();
    const bool noDisplay = HostOptions::displayMissing();
    const bool headless = options.headless || (noDisplay && options.screenshotFile.isEmpty());
    // A console monitor or a picture needs no display at all.
    if ((headless || noDisplay) && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (QGuiApplication::platformName() == QLatin1String("offscreen")) {
        QFont font = QApplication::font();
        font.setPointSize(kOffscreenFontPointSize);
        QApplication::setFont(font);
    }
    // Texts are translated when a widget or notice is made: the language
    // comes first.
    LanguageLoader languages(options.language);
    languages.installHostTexts();

    const DeviceConfig config;
    DeviceHost host(config.logFolder());
    // What goes wrong on the host's side goes to stderr until a console
    // monitor takes over (the window shows it as well).
    const QMetaObject::Connection noticesToStderr =
        QObject::connect(&host, &DeviceHost::noticeRaised, [](const HostNotice &notice) {
            printLine(stderr, notice.device.isEmpty()
                                  ? QApplication::translate("main", "warning: %1").arg(notice.text)
                                  : QApplication::translate("main", "warning: %1: %2").arg(notice.device, notice.text));
        });
    std::unique_ptr<EventHook> eventHook;
    if (!options.eventCommand.isEmpty()) {
        eventHook.reset(new EventHook(options.eventCommand));
        QObject::connect(eventHook.get(), &EventHook::noticeRaised, &host,
                         [&host](const QString &text) { host.notice(QString(), text); });
        QObject::connect(&host, &DeviceHost::eventLogged, eventHook.get(), &EventHook::run);
    }
    const QString pluginFolder = options.pluginFolder.isEmpty() ? PluginHost::defaultFolder() : options.pluginFolder;
    if (host.loadPlugins(pluginFolder) == 0) {
        printLine(stderr, QApplication::translate("main", "no device plug-in (%1) found in %2")
                              .arg(QLatin1String(PluginHost::kInterfaceId), pluginFolder));
        return 1;
    }
    // The plug-in brings its translations along; its views and dictionary
    // are made when the devices start.
    languages.installPluginTexts();
    host.setUserInfo(DeviceHost::roleName(options.userLevel), options.userLevel);
    // A damaged dev.ini still yields the devices it describes; without any
    // the host runs on and says how to add one.
    for (const QString &problem : config.problems())
        host.notice(QString(), problem);
    const QList<DeviceEntry> devices = config.devices();
    const QString shortfall = OpenFileLimit::shortfallText(openFileLimit, devices.size());
    if (!shortfall.isEmpty())
        host.notice(QString(), shortfall);
    // Started once the event loop runs, a slice at a time.
    host.startDevicesInBackground(devices);
    std::unique_ptr<NutServer> nutServer;
    if (!options.nutAddress.isEmpty()) {
        nutServer.reset(new NutServer(&host));
        nutServer->loadUsers(NutServer::usersFilePath(config.path()));
        if (!nutServer->listen(QHostAddress(options.nutAddress), quint16(options.nutPort))) {
            printLine(stderr, QApplication::translate("main", "cannot serve NUT clients at %1:%2: %3")
                                  .arg(options.nutAddress)
                                  .arg(options.nutPort)
                                  .arg(nutServer->errorString()));
            host.shutdown();
            return 1;
        }
    }
    std::unique_ptr<MetricsServer> metricsServer;
    if (!options.metricsAddress.isEmpty()) {
        metricsServer.reset(new MetricsServer(&host));
        if (!metricsServer->listen(options.metricsAddress, quint16(options.metricsPort))) {
            printLine(stderr, QApplication::translate("main", "cannot serve metrics at %1:%2: %3")
                                  .arg(options.metricsAddress)
                                  .arg(options.metricsPort)
                                  .arg(metricsServer->errorString()));
            host.shutdown();
            return 1;
        }
    }

    QFile out;
    out.open(stdout, QIODevice::WriteOnly);
    ConsoleMonitor *monitor = nullptr;
    MainWindow *window = nullptr;
    if (headless) {
        monitor = new ConsoleMonitor(&host, &out, &app);
        QObject::disconnect(noticesToStderr);
        QObject::connect(monitor, &ConsoleMonitor::quitRequested, &app, &QCoreApplication::quit);
        monitor->startStatus();
        monitor->readCommands(STDIN_FILENO);
        QObject::connect(&host, &DeviceHost::devicesStarted, &app, [](int started) {
            printLine(stdout, QApplication::translate("main", "%1 device(s); type help for commands").arg(started));
        });
    } else {
        window = new MainWindow(&host);
        window->show();
        if (!options.screenshotFile.isEmpty()) {
            QObject::connect(window, &MainWindow::screenshotDone, &app, [&app](bool saved, const QString &file) {
                printLine(saved ? stdout : stderr,
                          saved ? QApplication::translate("main", "saved %1").arg(file)
                                : QApplication::translate("main", "cannot save %1").arg(file));
                app.exit(saved ? 0 : 1);
            });
            window->saveScreenshotWhenReady(options.screenshotFile, kScreenshotTimeoutMs);
        }
    }

    // A signal or the end of --duration ends the program like closing the
    // window does, so the window tells what it is waiting for.
    const auto stop = [&app, window] {
        if (window && window->isVisible())
            window->close();
        else
            app.quit();
    };
    QuitOnSignal quitOnSignal;
    QObject::connect(&quitOnSignal, &QuitOnSignal::signalled, &app, stop);
    if (options.durationSeconds >= 0)
        QTimer::singleShot(options.durationSeconds * 1000, Qt::PreciseTimer, &app, stop);

    const int result = app.exec();
    if (!host.sessions().isEmpty()) {
        printLine(stderr, QApplication::translate("main", "stopping %1 device(s); a device in a connection attempt "
                                                          "can take up to %2 s")
                              .arg(host.sessions().size())
                              .arg(DeviceHost::StopBoundSeconds));
    }
    if (metricsServer)
        metricsServer->stop(); // no scrape while the sessions go
    host.shutdown();
    delete window; // after the clients, which own the views shown in it
    return result;
}
