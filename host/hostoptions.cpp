#include "hostoptions.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QHostAddress>

#include "deviceconfig.h"
#include "devicehost.h"

namespace {

// An IP address (no host name: nothing is looked up) and a port, as the
// listen options take them.
bool readListenAddress(const QString &value, QString *address, int *port)
{
    return DeviceConfig::parseEndpoint(value, address, port) && !QHostAddress(*address).isNull();
}

constexpr int kMaxUserLevel = 9;

bool readNumber(const QString &text, int min, int *value)
{
    bool ok = false;
    const int n = text.toInt(&ok, 10);
    if (!ok || n < min)
        return false;
    *value = n;
    return true;
}

} // namespace

namespace {

struct Options
{
    QCommandLineOption help{QStringList{QStringLiteral("h"), QStringLiteral("help")}, HostOptions::tr("Show this help.")};
    QCommandLineOption headless{QStringLiteral("headless"),
                                HostOptions::tr("Console monitor instead of the window (the default without a "
                                                "display).")};
    QCommandLineOption duration{QStringLiteral("duration"), HostOptions::tr("Exit cleanly after S seconds."),
                                QStringLiteral("S")};
    QCommandLineOption screenshot{QStringLiteral("screenshot"),
                                  HostOptions::tr("Save a picture of the window once every device has been read, "
                                                  "then exit."),
                                  QStringLiteral("FILE")};
    QCommandLineOption add{QStringLiteral("add"),
                           HostOptions::tr("Add or update the device NAME at HOST:PORT in dev.ini and exit "
                                           "(NAME followed by HOST:PORT; may be repeated)."),
                           QStringLiteral("NAME")};
    QCommandLineOption interval{QStringLiteral("interval"), HostOptions::tr("Polling interval (s) of added devices."),
                                QStringLiteral("S")};
    QCommandLineOption retries{QStringLiteral("retries"),
                               HostOptions::tr("Failed connection attempts before an added device counts as lost."),
                               QStringLiteral("N")};
    QCommandLineOption plugins{QStringLiteral("plugins"),
                               HostOptions::tr("Folder of the device plug-ins (default: the executable's folder)."),
                               QStringLiteral("DIR")};
    QCommandLineOption userLevel{QStringLiteral("user-level"),
                                 HostOptions::tr("Rights of the user: 0 viewer, 1 operator (default 1)."),
                                 QStringLiteral("N")};
    QCommandLineOption nutListen{QStringLiteral("nut-listen"),
                                 HostOptions::tr("Serve the devices to NUT clients (upsc, upsmon, upscmd) at "
                                                 "ADDR:PORT, e.g. 127.0.0.1:3493; users and rights in upsd.users "
                                                 "beside dev.ini."),
                                 QStringLiteral("ADDR:PORT")};
    QCommandLineOption metricsListen{QStringLiteral("metrics-listen"),
                                     HostOptions::tr("Serve Prometheus metrics at http://ADDR:PORT/metrics, e.g. "
                                                     "127.0.0.1:9184."),
                                     QStringLiteral("ADDR:PORT")};
    QCommandLineOption lang{QStringLiteral("lang"),
                            HostOptions::tr("Language of the texts, e.g. zh_CN, or en for English (default: the "
                                            "locale, LANG)."),
                            QStringLiteral("LANG")};
    QCommandLineOption onEvent{QStringLiteral("on-event"),
                               HostOptions::tr("Run the shell command CMD for every logged event, with "
                                               "ORVEK_DEVICE, ORVEK_EVENT, ORVEK_TEXT and ORVEK_TIME in its "
                                               "environment."),
                               QStringLiteral("CMD")};

    void setUp(QCommandLineParser &parser) const
    {
        parser.setApplicationDescription(
            HostOptions::tr("Monitors UPS devices through their device plug-ins.\n"
                            "Devices are the groups of KSVO/Quoranet/db/dev.ini beside the executable;\n"
                            "logs go to KSVO/Quoranet/db/logs. Stopping takes up to %1 s while a device\n"
                            "is in a connection attempt (5 s pause + 30 s connection wait).")
                .arg(DeviceHost::StopBoundSeconds));
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.addOptions(
            {help, headless, duration, screenshot, add, interval, retries, plugins, userLevel, nutListen, metricsListen,
             lang, onEvent});
        parser.addPositionalArgument(QStringLiteral("HOST:PORT"), HostOptions::tr("Address of each --add, in order."),
                                     QStringLiteral("[HOST:PORT...]"));
    }
};

} // namespace

QString HostOptions::helpText()
{
    QCommandLineParser parser;
    Options().setUp(parser);
    return parser.helpText();
}

HostOptions HostOptions::parse(const QStringList &arguments)
{
    HostOptions options;
    QCommandLineParser parser;
    const Options o;
    o.setUp(parser);

    auto fail = [&options](const QString &message) {
        options.ok = false;
        options.error = message;
        return options;
    };
    if (!parser.parse(arguments))
        return fail(parser.errorText());
    // The help comes in the language asked for as well.
    options.language = parser.value(o.lang);
    if (parser.isSet(o.help)) {
        options.helpRequested = true;
        return options;
    }

    options.headless = parser.isSet(o.headless);
    options.screenshotFile = parser.value(o.screenshot);
    options.pluginFolder = parser.value(o.plugins);
    options.eventCommand = parser.value(o.onEvent);
    if (parser.isSet(o.onEvent) && options.eventCommand.trimmed().isEmpty())
        return fail(tr("--on-event needs a command"));
    if (parser.isSet(o.duration) && !readNumber(parser.value(o.duration), 0, &options.durationSeconds))
        return fail(tr("--duration needs a number of seconds"));
    if (parser.isSet(o.interval) && !readNumber(parser.value(o.interval), 1, &options.interval))
        return fail(tr("--interval needs a number of seconds (1 or more)"));
    if (parser.isSet(o.retries) && !readNumber(parser.value(o.retries), 1, &options.retries))
        return fail(tr("--retries needs a number (1 or more)"));
    if (parser.isSet(o.userLevel)
        && (!readNumber(parser.value(o.userLevel), 0, &options.userLevel) || options.userLevel > kMaxUserLevel))
        return fail(tr("--user-level needs a number from 0 to %1").arg(kMaxUserLevel));
    if (parser.isSet(o.nutListen) && !readListenAddress(parser.value(o.nutListen), &options.nutAddress, &options.nutPort))
        return fail(tr("--nut-listen needs an IP address and a port, e.g. 127.0.0.1:3493 or [::1]:3493"));
    if (parser.isSet(o.metricsListen)
        && !readListenAddress(parser.value(o.metricsListen), &options.metricsAddress, &options.metricsPort))
        return fail(tr("--metrics-listen needs an IP address and a port, e.g. 127.0.0.1:9184 or [::1]:9184"));

    const QStringList names = parser.values(o.add);
    const QStringList endpoints = parser.positionalArguments();
    if (names.size() != endpoints.size()) {
        if (names.isEmpty())
            return fail(tr("unexpected argument %1").arg(endpoints.first()));
        return fail(tr("every --add NAME needs its HOST:PORT"));
    }
    for (int i = 0; i < names.size(); ++i)
        options.additions << qMakePair(names.at(i), endpoints.at(i));
    if (!options.additions.isEmpty() && (options.headless || !options.screenshotFile.isEmpty()))
        return fail(tr("--add only writes dev.ini; run the host again without it"));
    return options;
}

bool HostOptions::displayMissing()
{
    return qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
           && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM");
}
