// Command-line front end of the simulated UPS network agent.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDateTime>
#include <QTextStream>

#include "quitonsignal.h"
#include "upspoints.h"
#include "upssimulator.h"

namespace {

constexpr quint16 DefaultPort = 1502;

// User-facing texts of the tool; the log lines stay untranslated for scripts.
QString tr(const char *text)
{
    return QCoreApplication::translate("orvek-sim", text);
}

QString now()
{
    return QDateTime::currentDateTime().toString(Qt::ISODateWithMs);
}

QString scenarioHelp()
{
    QStringList lines;
    for (const QString &name : UpsSimulator::scenarioNames())
        lines << QStringLiteral("  %1: %2").arg(name, UpsSimulator::scenarioDescription(name));
    return lines.join(QLatin1Char('\n'));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvek-sim"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Simulated UPS network agent (Modbus/TCP, unit 1).\nScenarios:\n") + scenarioHelp());
    parser.addHelpOption();
    const QCommandLineOption addressOption(QStringLiteral("address"), tr("Address to listen on."),
                                           QStringLiteral("A"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption portOption(QStringLiteral("port"), tr("TCP port to listen on."),
                                        QStringLiteral("N"), QString::number(DefaultPort));
    const QCommandLineOption scenarioOption(QStringLiteral("scenario"), tr("Scenario to play."),
                                            QStringLiteral("NAME"), QStringLiteral("normal"));
    const QCommandLineOption profileOption(QStringLiteral("profile"), tr("single or three (phases)."),
                                           QStringLiteral("single|three"), QStringLiteral("single"));
    const QCommandLineOption speedOption(QStringLiteral("speed"), tr("Time scale of the simulation."),
                                         QStringLiteral("F"), QStringLiteral("1"));
    const QCommandLineOption nameOption(QStringLiteral("name"), tr("System name text."),
                                        QStringLiteral("TEXT"));
    parser.addOptions({addressOption, portOption, scenarioOption, profileOption, speedOption, nameOption});
    parser.process(app);

    bool portOk = false;
    const uint port = parser.value(portOption).toUInt(&portOk);
    if (!portOk || port == 0 || port > 65535) {
        err << tr("invalid port: %1").arg(parser.value(portOption)) << Qt::endl;
        return 1;
    }
    bool speedOk = false;
    const double speed = parser.value(speedOption).toDouble(&speedOk);
    if (!speedOk || !(speed > 0.0)) {
        err << tr("invalid speed: %1").arg(parser.value(speedOption)) << Qt::endl;
        return 1;
    }
    const QString profileName = parser.value(profileOption);
    if (profileName != QLatin1String("single") && profileName != QLatin1String("three")) {
        err << tr("invalid profile: %1 (single or three)").arg(profileName) << Qt::endl;
        return 1;
    }
    const QString scenario = parser.value(scenarioOption);
    if (!UpsSimulator::scenarioNames().contains(scenario)) {
        err << tr("unknown scenario: %1\nknown scenarios:\n").arg(scenario) << scenarioHelp() << Qt::endl;
        return 1;
    }

    UpsSimulator simulator(profileName == QLatin1String("three") ? UpsSimulator::Profile::Three
                                                                 : UpsSimulator::Profile::Single);
    simulator.setJitterEnabled(true);
    simulator.setTimeScale(speed);
    if (parser.isSet(nameOption))
        simulator.setIdentityText(UpsPoint::SystemName, parser.value(nameOption).toUtf8());

    QObject::connect(&simulator, &UpsSimulator::registerWritten, &app, [&out](int reg, quint16 value) {
        out << now() << " write register " << reg << " value " << value << Qt::endl;
    });
    QObject::connect(&simulator, &UpsSimulator::alarmChanged, &app, [&out](int number, bool active) {
        out << now() << " alarm " << number << (active ? " raised" : " cleared") << Qt::endl;
    });

    QuitOnSignal quitOnSignal;
    if (!quitOnSignal.isInstalled())
        err << tr("cannot install signal handlers") << Qt::endl;
    QObject::connect(&quitOnSignal, &QuitOnSignal::signalled, &app, &QCoreApplication::quit);
    if (!simulator.start(parser.value(addressOption), quint16(port)))
        return 2;
    simulator.setScenario(scenario);
    out << now() << " listening on " << parser.value(addressOption) << ':' << port << " profile " << profileName
        << " scenario " << scenario << " speed " << speed << Qt::endl;

    const int result = app.exec();
    simulator.stop();
    out << now() << " stopped" << Qt::endl;
    return result;
}
