// The host's Prometheus metrics: the exposition text for scripted devices (phases, alarms,
// lost and stale devices, names that need escapes), the counters fed by the host's signals,
// the HTTP side, and the host polling the simulated agent scraped over loopback.
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>
#include <QtTest>

#include "hostoptions.h"
#include "hosttestsupport.h"
#include "metricscounters.h"
#include "metricsexposition.h"
#include "metricsserver.h"
#include "upsalarms.h"
#include "upssimulator.h"
#include "viewsampledata.h"

using Points = QMap<int, QVariant>;
using Devices = QList<MetricsDevice>;
using State = DeviceStatus::State;
Q_DECLARE_METATYPE(MetricsDevice)

namespace {

constexpr int kAnswerMs = 5000;
constexpr int kConnectMs = 20000; // a 1 s tick, the client's 5 s pause before connecting, a rotation, slack
constexpr int kProcessMs = 15000;

MetricsDevice device(const QString &name, const Points &data, State state = State::Communicating)
{
    MetricsDevice d;
    d.name = name;
    d.state = state;
    d.data = data;
    d.ageMs = 1500;
    return d;
}

// Checks what every scrape must satisfy: each family's HELP and TYPE once, before
// its samples and together; every sample line well formed. Empty when it holds.
QString structureProblem(const QByteArray &text)
{
    static const QRegularExpression sample(
        QStringLiteral(R"(^([a-zA-Z_:][a-zA-Z0-9_:]*)\{device="(?:[^"\\\n]|\\[\\"n])*")"
                       R"((?:,[a-zA-Z_][a-zA-Z0-9_]*="(?:[^"\\\n]|\\[\\"n])*")*\} (\S+)$)"));
    static const QRegularExpression meta(QStringLiteral(R"(^# (HELP|TYPE) ([a-zA-Z_:][a-zA-Z0-9_:]*) (.*)$)"));
    if (!text.isEmpty() && !text.endsWith('\n'))
        return QStringLiteral("no final line feed");
    QSet<QString> seen;
    QString current;
    bool typed = false;
    for (const QString &line : QString::fromUtf8(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch m = meta.match(line);
        if (m.hasMatch()) {
            const QString name = m.captured(2);
            if (m.captured(1) == QLatin1String("HELP")) {
                if (seen.contains(name))
                    return QStringLiteral("family twice: ") + name;
                seen << name;
                current = name;
                typed = false;
            } else if (name != current || typed || !QStringList{"gauge", "counter"}.contains(m.captured(3))) {
                return QStringLiteral("misplaced TYPE: ") + line;
            } else {
                typed = true;
            }
            continue;
        }
        const QRegularExpressionMatch s = sample.match(line);
        bool number = false;
        if (s.hasMatch())
            s.captured(2).toDouble(&number);
        if (!s.hasMatch() || !number || s.captured(1) != current || !typed)
            return QStringLiteral("bad sample: ") + line;
    }
    return QString();
}

// "name{labels}" to value, for reading back a scrape.
QMap<QString, double> samples(const QByteArray &text)
{
    QMap<QString, double> values;
    for (const QByteArray &line : text.split('\n')) {
        const int space = line.lastIndexOf(' ');
        if (!line.startsWith('#') && space > 0)
            values.insert(QString::fromUtf8(line.left(space)), line.mid(space + 1).toDouble());
    }
    return values;
}

// Exit code and output of `promtool check metrics` on text; code -1 when it did not finish.
int promtoolCheck(const QString &promtool, const QByteArray &text, QString *output)
{
    QProcess process;
    process.start(promtool, {"check", "metrics"});
    process.write(text);
    process.closeWriteChannel();
    if (!process.waitForFinished(kProcessMs)) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    *output = QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError());
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

struct Reply
{
    int status = 0;
    QByteArray contentType;
    QByteArray body;
};

Reply httpGet(quint16 port, const QString &path)
{
    QNetworkAccessManager manager;
    QNetworkReply *reply = manager.get(QNetworkRequest(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(port).arg(path))));
    Reply result;
    if (QTest::qWaitFor([reply] { return reply->isFinished(); }, kAnswerMs)) {
        result.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        result.contentType = reply->header(QNetworkRequest::ContentTypeHeader).toByteArray();
        result.body = reply->readAll();
    }
    delete reply;
    return result;
}

} // namespace

class TestHostMetrics : public QObject
{
    Q_OBJECT

private slots:
    void exposition_data()
    {
        QTest::addColumn<Devices>("devices");
        QTest::addColumn<QStringList>("present"); // whole lines
        QTest::addColumn<QStringList>("absent");  // line beginnings

        Points single = ViewSampleData::deviceData(false);
        single[UpsPoint::BatteryCurrent] = 0xFFE7; // -2.5 A while discharging
        QTest::newRow("single phase")
            << Devices{device("ups1", single)}
            << QStringList{"ups_input_voltage_volts{device=\"ups1\"} 230",
                           "ups_input_frequency_hertz{device=\"ups1\"} 50",
                           "ups_input_current_amperes{device=\"ups1\"} 3.8",
                           "ups_battery_voltage_volts{device=\"ups1\"} 272",
                           "ups_battery_current_amperes{device=\"ups1\"} -2.5",
                           "ups_battery_runtime_seconds{device=\"ups1\"} 1620",
                           "ups_battery_temperature_celsius{device=\"ups1\"} 25",
                           "ups_output_load_percent{device=\"ups1\"} 35",
                           "ups_output_source_code{device=\"ups1\"} 3",
                           "ups_device_info{device=\"ups1\",model=\"Tower 11 3kVA\",manufacturer=\"Example Power\"} 1",
                           "ups_device_up{device=\"ups1\"} 1", "ups_device_stale{device=\"ups1\"} 0",
                           "ups_last_answer_age_seconds{device=\"ups1\"} 1.500",
                           "# TYPE ups_input_voltage_volts gauge"}
            << QStringList{"ups_input_voltage_volts{device=\"ups1\",phase", "ups_alarm_active"};

        const Points three = ViewSampleData::deviceData(true);
        QTest::newRow("three phase beside single phase")
            << Devices{device("big", three), device("small", single)}
            << QStringList{"ups_input_voltage_volts{device=\"big\",phase=\"R\"} 230",
                           "ups_input_voltage_volts{device=\"big\",phase=\"S\"} 231",
                           "ups_input_voltage_volts{device=\"big\",phase=\"T\"} 229",
                           "ups_input_current_amperes{device=\"big\",phase=\"T\"} 11.5",
                           "ups_output_load_percent{device=\"big\",phase=\"S\"} 36",
                           "ups_output_frequency_hertz{device=\"big\"} 50",
                           "ups_input_voltage_volts{device=\"small\"} 230"}
            << QStringList{"ups_input_voltage_volts{device=\"big\"}", "ups_output_frequency_hertz{device=\"big\",phase"};

        MetricsDevice alarmed = device("ups1", single);
        alarmed.alarms = {{3, "Battery low"}, {24, ""}};
        QTest::newRow("alarms")
            << Devices{alarmed}
            << QStringList{"ups_alarm_active{device=\"ups1\",alarm=\"3\",text=\"Battery low\"} 1",
                           "ups_alarm_active{device=\"ups1\",alarm=\"24\",text=\"\"} 1",
                           "# TYPE ups_alarm_active gauge"}
            << QStringList{"ups_alarm_active{device=\"ups1\",alarm=\"19\""};

        MetricsDevice lost = device("gone", single, State::Lost);
        MetricsDevice never = device("never", Points(), State::Unknown);
        never.ageMs = -1;
        QTest::newRow("lost and never heard of")
            << Devices{lost, never}
            << QStringList{"ups_device_up{device=\"gone\"} 0", "ups_device_up{device=\"never\"} 0",
                           "ups_input_voltage_volts{device=\"gone\"} 230",
                           "ups_device_info{device=\"never\",model=\"\",manufacturer=\"\"} 1"}
            << QStringList{"ups_last_answer_age_seconds{device=\"never\"}", "ups_input_voltage_volts{device=\"never\"}"};

        MetricsDevice stale = device("old", single);
        stale.stale = true;
        stale.ageMs = 61250;
        QTest::newRow("stale")
            << Devices{stale}
            << QStringList{"ups_device_stale{device=\"old\"} 1", "ups_device_up{device=\"old\"} 1",
                           "ups_last_answer_age_seconds{device=\"old\"} 61.250"}
            << QStringList();

        MetricsDevice odd = device(QStringLiteral("a\"b\\c\nd é"), single);
        odd.data[UpsPoint::Model] = ViewSampleData::identityBlock("Quote \" and \\", 64);
        odd.alarms = {{1, "line\nbreak"}};
        QTest::newRow("names that need escapes")
            << Devices{odd}
            << QStringList{QStringLiteral("ups_device_up{device=\"a\\\"b\\\\c\\nd é\"} 1"),
                           QStringLiteral("ups_device_info{device=\"a\\\"b\\\\c\\nd é\",model=\"Quote \\\" and "
                                          "\\\\\",manufacturer=\"Example Power\"} 1"),
                           QStringLiteral("ups_alarm_active{device=\"a\\\"b\\\\c\\nd é\",alarm=\"1\",text=\"line\\nbreak\"} 1")}
            << QStringList();

        MetricsDevice counted = device("ups1", single);
        counted.counters.answers = 7;
        counted.counters.events = {{UpsEvent::Decoded, 7}, {UpsEvent::Lost, 1}};
        counted.counters.commands = {{UpsControl::SelfTest, 2}};
        counted.counters.results = {{qMakePair(int(UpsControl::SelfTest), true), 1},
                                    {qMakePair(int(UpsControl::SelfTest), false), 1}};
        QTest::newRow("counters")
            << Devices{counted}
            << QStringList{"ups_answers_decoded_total{device=\"ups1\"} 7",
                           "ups_events_total{device=\"ups1\",type=\"2007\"} 7",
                           "ups_events_total{device=\"ups1\",type=\"1041\"} 1",
                           "ups_commands_total{device=\"ups1\",command=\"1003\"} 2",
                           "ups_command_results_total{device=\"ups1\",command=\"1003\",result=\"executed\"} 1",
                           "ups_command_results_total{device=\"ups1\",command=\"1003\",result=\"not_executed\"} 1",
                           "# TYPE ups_events_total counter"}
            << QStringList();

        QTest::newRow("hostile data") << Devices{device("bad", ViewSampleData::hostileData())} << QStringList()
                                      << QStringList();
        QTest::newRow("no devices") << Devices() << QStringList() << QStringList{"#"};
    }

    void exposition()
    {
        QFETCH(Devices, devices);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        const QByteArray text = MetricsExposition::text(devices);
        const QStringList lines = QString::fromUtf8(text).split(QLatin1Char('\n'));
        for (const QString &line : present)
            QVERIFY2(lines.contains(line), qPrintable(line + QStringLiteral("\nmissing in\n") + text));
        for (const QString &start : absent) {
            for (const QString &line : lines)
                QVERIFY2(!line.startsWith(start), qPrintable(line));
        }
        const QString problem = structureProblem(text);
        QVERIFY2(problem.isEmpty(), qPrintable(problem));

        const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
        if (promtool.isEmpty())
            QSKIP("promtool is missing (package prometheus; tools/bootstrap.sh installs it)");
        QString output;
        QVERIFY2(promtoolCheck(promtool, text, &output) == 0, qPrintable(output));
    }

    // A session read as the metrics see it: alarm numbers paired with the plug-in's texts.
    void sampleFromSession()
    {
        ScriptedHost scripted;
        ScriptedClient *client = scripted.start(QStringLiteral("ups1"));
        QVERIFY(client);
        DeviceSession *session = scripted.host.session(QStringLiteral("ups1"));
        const QDateTime before = QDateTime::currentDateTimeUtc();
        MetricsDevice nothing = MetricsExposition::sample(*session, DeviceCounters(), before);
        QCOMPARE(nothing.ageMs, qint64(-1));
        QVERIFY(nothing.alarms.isEmpty());

        Points data = ViewSampleData::deviceData(false);
        data[UpsPoint::AlarmFirst + UpsAlarm::BatteryLow] = 1;
        client->sendData(data);
        QTRY_COMPARE_WITH_TIMEOUT(session->latestData(), data, kAnswerMs);
        const MetricsDevice d = MetricsExposition::sample(*session, DeviceCounters(), session->lastDataTime().addSecs(3));
        QCOMPARE(d.name, QStringLiteral("ups1"));
        QCOMPARE(d.ageMs, qint64(3000));
        QCOMPARE(d.data, data);
        const QStringList texts = OrvekClient().getEventLogDesc();
        const QList<QPair<int, QString>> expected{
            {UpsAlarm::BatteryLow, texts.at(UpsAlarms::raisedTextIndex(UpsAlarm::BatteryLow)).trimmed()},
            {UpsAlarm::DiagnosticFailed, texts.at(UpsAlarms::raisedTextIndex(UpsAlarm::DiagnosticFailed)).trimmed()}};
        QCOMPARE(d.alarms, expected);
    }

    void counters()
    {
        ScriptedHost scripted;
        MetricsCounters counters(&scripted.host);
        ScriptedClient *client = scripted.start(QStringLiteral("ups1"));
        QVERIFY(client);
        DeviceSession *session = scripted.host.session(QStringLiteral("ups1"));
        for (int i = 0; i < 3; ++i)
            client->sendData(ViewSampleData::deviceData(false));
        emit client->postDEvent(UpsEvent::Lost, {{UpsKey::State, 1}});
        session->requestControl(UpsControl::Buzzer, QStringLiteral("1"));
        session->requestControl(UpsControl::Buzzer, QStringLiteral("0"));
        emit client->postDEvent(UpsEvent::CommandResult,
                                {{UpsKey::Result, 1}, {UpsKey::CmdId, int(UpsControl::Buzzer)}});
        emit client->postDEvent(UpsEvent::CommandResult,
                                {{UpsKey::Result, 0}, {UpsKey::CmdId, int(UpsControl::Shutdown)}});
        QTRY_COMPARE_WITH_TIMEOUT(counters.counters("ups1").events.value(UpsEvent::CommandResult), quint64(2),
                                  kAnswerMs);
        const DeviceCounters c = counters.counters(QStringLiteral("ups1"));
        QCOMPARE(c.answers, quint64(3));
        QCOMPARE(c.events, (QMap<int, quint64>{{UpsEvent::Decoded, 3}, {UpsEvent::Lost, 1},
                                                {UpsEvent::CommandResult, 2}}));
        QCOMPARE(c.commands, (QMap<int, quint64>{{UpsControl::Buzzer, 2}}));
        QCOMPARE(c.results, (QMap<QPair<int, bool>, quint64>{{qMakePair(int(UpsControl::Buzzer), true), 1},
                                                              {qMakePair(int(UpsControl::Shutdown), false), 1}}));
        QCOMPARE(client->controls.size(), 2);
        QCOMPARE(counters.counters(QStringLiteral("other")).answers, quint64(0));
    }

    void servesMetricsOnly()
    {
        ScriptedHost scripted;
        ScriptedClient *client = scripted.start(QStringLiteral("ups1"));
        QVERIFY(client);
        MetricsServer server(&scripted.host);
        QVERIFY2(server.listen(QStringLiteral("127.0.0.1"), 0), qPrintable(server.errorString()));
        QVERIFY(server.serverPort() != 0);
        client->sendData(ViewSampleData::deviceData(false));
        QTRY_VERIFY_WITH_TIMEOUT(server.exposition().contains("ups_input_voltage_volts{device=\"ups1\"} 230"),
                                 kAnswerMs);

        const Reply metrics = httpGet(server.serverPort(), QStringLiteral("/metrics"));
        QCOMPARE(metrics.status, 200);
        QVERIFY2(metrics.contentType.startsWith("text/plain; version=0.0.4"), metrics.contentType.constData());
        QVERIFY(metrics.body.contains("ups_answers_decoded_total{device=\"ups1\"} 1\n"));
        QCOMPARE(httpGet(server.serverPort(), QStringLiteral("/")).status, 404);
        QCOMPARE(httpGet(server.serverPort(), QStringLiteral("/metrics/x")).status, 404);

        const quint16 port = server.serverPort();
        server.stop();
        QCOMPARE(httpGet(port, QStringLiteral("/metrics")).status, 0); // nobody answers any more
    }

    void busyPortIsReported()
    {
        QTcpServer taken;
        QVERIFY(taken.listen(QHostAddress::LocalHost, 0));
        ScriptedHost scripted;
        MetricsServer server(&scripted.host);
        QVERIFY(!server.listen(QStringLiteral("127.0.0.1"), taken.serverPort()));
        QVERIFY(!server.errorString().isEmpty());
    }

    // The host polling the simulated agent through the plug-in, scraped over loopback.
    void scrapeOfTheSimulatedAgent()
    {
        UpsSimulator agent(UpsSimulator::Profile::Single);
        agent.setJitterEnabled(false);
        agent.setMeasurement(UpsPoint::InputVoltage, 227);
        agent.setMeasurement(UpsPoint::BatteryVoltage, 2715);
        agent.setMeasurement(UpsPoint::BatteryCurrent, 0xFFE7);
        agent.setMeasurement(UpsPoint::OutputFrequency, 499);
        agent.setMeasurement(UpsPoint::RemainingMinutes, 33);
        agent.setAlarm(UpsAlarm::FanFailure, true);
        QVERIFY(agent.start(QStringLiteral("127.0.0.1"), 0));
        const QString name = QStringLiteral("ups \"1\"");
        const DeviceEntry entry = HostTest::writeDevice(name, agent.port(), 5);
        const auto cleanup = qScopeGuard([name] { removeDeviceConfig(name); });
        QTemporaryDir logs;
        DeviceHost host(logs.path());
        QCOMPARE(host.loadPlugins(builtBinaryDir()), 1);
        MetricsServer server(&host);
        QCOMPARE(host.startDevices({entry}), 1);
        QVERIFY(server.listen(QStringLiteral("127.0.0.1"), 0));
        QTRY_VERIFY_WITH_TIMEOUT(host.session(name)->hasFullPicture(), kConnectMs);
        const QString device = QStringLiteral("{device=\"ups \\\"1\\\"\"}");
        QTRY_VERIFY_WITH_TIMEOUT(samples(server.exposition()).value("ups_device_up" + device) == 1, kAnswerMs);
        const QString alarmText = OrvekClient().getEventLogDesc().at(UpsAlarms::raisedTextIndex(UpsAlarm::FanFailure));
        const QString alarmSeries =
            QStringLiteral("ups_alarm_active{device=\"ups \\\"1\\\"\",alarm=\"%1\",text=\"%2\"}")
                .arg(int(UpsAlarm::FanFailure))
                .arg(alarmText.trimmed());
        // Alarm states reach the data with the measurement answer after the discrete inputs.
        QTRY_VERIFY_WITH_TIMEOUT(samples(server.exposition()).value(alarmSeries) == 1, kConnectMs);

        const Reply reply = httpGet(server.serverPort(), QStringLiteral("/metrics"));
        QCOMPARE(reply.status, 200);
        const QMap<QString, double> values = samples(reply.body);
        QCOMPARE(values.value("ups_input_voltage_volts" + device, -1), 227.0);
        QCOMPARE(values.value("ups_battery_voltage_volts" + device, -1), 271.5);
        QCOMPARE(values.value("ups_battery_current_amperes" + device, -1), -2.5);
        QCOMPARE(values.value("ups_output_frequency_hertz" + device, -1), 49.9);
        QCOMPARE(values.value("ups_battery_runtime_seconds" + device, -1), 33.0 * 60);
        QCOMPARE(values.value("ups_device_stale" + device, -1), 0.0);
        QVERIFY(values.value("ups_answers_decoded_total" + device) >= 4); // a whole rotation
        const double age = values.value("ups_last_answer_age_seconds" + device, -1);
        QVERIFY2(age >= 0 && age <= StaleRule(entry.interval).thresholdSeconds(), qPrintable(QString::number(age)));
        QVERIFY2(values.value(alarmSeries) == 1.0, qPrintable(alarmSeries + QLatin1Char('\n') + reply.body));

        const QString promtool = QStandardPaths::findExecutable(QStringLiteral("promtool"));
        if (promtool.isEmpty())
            QSKIP("promtool is missing (package prometheus; tools/bootstrap.sh installs it)");
        QString output;
        QVERIFY2(promtoolCheck(promtool, reply.body, &output) == 0, qPrintable(output + reply.body));
        server.stop();
        host.shutdown();
    }
};

QTEST_MAIN(TestHostMetrics)
#include "tst_host_metrics.moc"
