// orvek-scale: how the headless host scales with the number of devices, next
// to a bare libmodbus client on the same agent.
//
// For each device count N it starts orvek-multiagent with N ports, runs
// orvek-host from a private copy of the application folder (its own dev.ini
// with N devices at interval 5, so one request per device and second), waits
// until every port answered a measurement read, then measures a window of
// --seconds from outside the host: CPU time (/proc/<pid>/stat), answers
// counted by the agent, RSS, threads, descriptors, the devices that got an
// answer every tick, and the time SIGTERM takes to end it. Then
// orvek-bare-client polls the same agent for the same window.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <unistd.h>

#include "upscontract.h"

namespace {

constexpr int kReplyTimeoutMs = 10000;
constexpr int kPollMs = 250;
constexpr int kStopTimeoutMs = 60000;
constexpr int kHostDurationMarginS = 60;
constexpr int kDeviceInterval = 5; // one tick per second
const char *const kHostFiles[] = {"orvek-host", "libOrvekClient.so", "libCollectContract.so"};

QTextStream &err()
{
    static QTextStream stream(stderr);
    return stream;
}

struct Settings
{
    QList<int> counts;
    int seconds = 30;
    int startupLimitS = 120;
    quint16 basePort = 23000;
    QString binDir;
    bool window = false; // the host with its window (offscreen) instead of headless
};

struct Row
{
    int devices = 0;
    double hostCpuUs = 0;      // over the window
    quint64 hostAnswers = 0;
    double bareCpuUs = 0;
    quint64 bareAnswers = 0;
    long rssKb = 0;
    int threads = 0;
    int fds = 0;
    int onTime = 0;
    qint64 firstDataMs = -1;
    qint64 shutdownMs = -1;
    QString failure;
    QString bareFailure; // the host figures stand; the floor could not be measured
};

// The multi-port agent, driven line by line through its stdin.
class Agent
{
public:
    bool start(const Settings &s, int ports)
    {
        m_process.start(s.binDir + QStringLiteral("/orvek-multiagent"),
                        {QStringLiteral("--base-port"), QString::number(s.basePort), QStringLiteral("--ports"),
                         QString::number(ports)});
        m_process.setReadChannel(QProcess::StandardOutput);
        return readReply().startsWith("ready");
    }
    QByteArray command(const QByteArray &line)
    {
        m_process.write(line + '\n');
        return readReply();
    }
    void stop()
    {
        m_process.write("quit\n");
        if (!m_process.waitForFinished(kStopTimeoutMs))
            m_process.kill();
        m_process.waitForFinished(kStopTimeoutMs);
    }

private:
    QByteArray readReply()
    {
        QElapsedTimer clock;
        clock.start();
        while (!m_process.canReadLine() && clock.elapsed() < kReplyTimeoutMs
               && m_process.state() != QProcess::NotRunning)
            m_process.waitForReadyRead(kReplyTimeoutMs);
        return m_process.readLine().trimmed();
    }
    QProcess m_process;
};

QList<QByteArray> words(const QByteArray &reply)
{
    return reply.split(' ');
}

// CPU time of a process in microseconds: the sum of its threads' run time in
// /proc/<pid>/task/*/schedstat (nanoseconds), or utime + stime from
// /proc/<pid>/stat (clock ticks, 10 ms) where the kernel has no schedstat.
double cpuUs(qint64 pid)
{
    const QString taskDir = QStringLiteral("/proc/%1/task").arg(pid);
    double ns = 0;
    bool found = false;
    for (const QString &task : QDir(taskDir).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile schedstat(taskDir + QLatin1Char('/') + task + QStringLiteral("/schedstat"));
        if (schedstat.open(QIODevice::ReadOnly)) {
            ns += schedstat.readAll().split(' ').value(0).toDouble();
            found = true;
        }
    }
    if (found)
        return ns / 1000.0;
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray text = stat.readAll();
    // Fields after the command name in parentheses: state is field 3, utime 14.
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    const double ticks = fields.value(11).toDouble() + fields.value(12).toDouble();
    return ticks * 1e6 / double(sysconf(_SC_CLK_TCK));
}

long statusValue(qint64 pid, const QByteArray &key)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(key + ':'))
            return line.mid(key.size() + 1).simplified().split(' ').value(0).toLong();
    }
    return -1;
}

int openFds(qint64 pid)
{
    return int(QDir(QStringLiteral("/proc/%1/fd").arg(pid)).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

// A private application folder: the host reads dev.ini and writes its logs
// below its own executable's folder.
bool prepareHostFolder(const Settings &s, const QString &dir, int devices)
{
    for (const char *file : kHostFiles) {
        if (!QFile::copy(s.binDir + QLatin1Char('/') + QLatin1String(file), dir + QLatin1Char('/') + QLatin1String(file)))
            return false;
    }
    const QString ini = dir + QLatin1Char('/') + QLatin1String(UpsConfig::RelativePath);
    QDir().mkpath(QFileInfo(ini).absolutePath());
    QSettings settings(ini, QSettings::IniFormat);
    for (int i = 0; i < devices; ++i) {
        settings.beginGroup(QStringLiteral("scale%1").arg(i + 1, 4, 10, QLatin1Char('0')));
        settings.setValue(UpsConfig::IpAddr, QStringLiteral("127.0.0.1"));
        settings.setValue(UpsConfig::Port, s.basePort + i);
        settings.setValue(UpsConfig::Interval, kDeviceInterval);
        settings.endGroup();
    }
    settings.sync();
    return settings.status() == QSettings::NoError;
}

qint64 waitForFirstData(Agent *agent, const Settings &s, const QProcess &host)
{
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < s.startupLimitS * 1000 && host.state() == QProcess::Running) {
        const qint64 ms = words(agent->command("first")).value(2).toLongLong();
        if (ms >= 0)
            return ms;
        QThread::msleep(kPollMs);
    }
    return -1;
}

void measureHost(Agent *agent, const Settings &s, int devices, Row *row)
{
    QTemporaryDir dir;
    if (!dir.isValid() || !prepareHostFolder(s, dir.path(), devices)) {
        row->failure = QStringLiteral("cannot prepare the host folder");
        return;
    }
    QProcess host;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    host.setProcessEnvironment(env);
    host.setStandardOutputFile(QProcess::nullDevice());
    host.setStandardErrorFile(dir.filePath(QStringLiteral("host-stderr.log")));
    agent->command("reset");
    // The host's stdin stays an open pipe: end of input would stop it.
    QStringList arguments{QStringLiteral("--duration"), QString::number(s.startupLimitS + s.seconds + kHostDurationMarginS)};
    if (!s.window)
        arguments.prepend(QStringLiteral("--headless"));
    host.start(dir.filePath(QStringLiteral("orvek-host")), arguments);
    if (!host.waitForStarted()) {
        row->failure = QStringLiteral("host did not start");
        return;
    }
    row->firstDataMs = waitForFirstData(agent, s, host);
    agent->command("mark");
    const double cpuStart = cpuUs(host.processId());
    QThread::sleep(ulong(s.seconds));
    row->hostCpuUs = cpuUs(host.processId()) - cpuStart;
    const QList<QByteArray> stats = words(agent->command("stats " + QByteArray::number(s.seconds - 1)));
    row->hostAnswers = stats.value(1).toULongLong();
    row->onTime = stats.value(2).toInt();
    row->rssKb = statusValue(host.processId(), "VmRSS");
    row->threads = int(statusValue(host.processId(), "Threads"));
    row->fds = openFds(host.processId());

    QElapsedTimer stop;
    stop.start();
    host.terminate();
    if (host.waitForFinished(kStopTimeoutMs)) {
        row->shutdownMs = stop.elapsed();
    } else {
        host.kill();
        host.waitForFinished(kStopTimeoutMs);
    }
}

void measureBare(const Settings &s, int devices, Row *row)
{
    QProcess bare;
    bare.start(s.binDir + QStringLiteral("/orvek-bare-client"),
               {QStringLiteral("--base-port"), QString::number(s.basePort), QStringLiteral("--devices"),
                QString::number(devices), QStringLiteral("--seconds"), QString::number(s.seconds)});
    if (!bare.waitForFinished((s.seconds + kHostDurationMarginS) * 1000)) {
        bare.kill();
        bare.waitForFinished(kStopTimeoutMs);
    }
    const QList<QByteArray> result = words(bare.readAllStandardOutput().trimmed());
    if (result.value(0) != "bare") {
        row->bareFailure = QString::fromLocal8Bit(bare.readAllStandardError()).trimmed().section(QLatin1Char('\n'), 0, 0);
        return;
    }
    row->bareAnswers = result.value(2).toULongLong();
    row->bareCpuUs = result.value(3).toDouble();
}

Row measure(const Settings &s, int devices)
{
    Row row;
    row.devices = devices;
    Agent agent;
    if (!agent.start(s, devices)) {
        row.failure = QStringLiteral("agent did not start");
        return row;
    }
    measureHost(&agent, s, devices, &row);
    if (row.failure.isEmpty())
        measureBare(s, devices, &row);
    agent.stop();
    return row;
}

QString perAnswer(double cpuUs, quint64 answers)
{
    return answers ? QString::number(cpuUs / double(answers), 'f', 0) : QStringLiteral("–");
}

QString seconds(qint64 ms)
{
    return ms < 0 ? QStringLiteral("–") : QString::number(double(ms) / 1000.0, 'f', 2);
}

void printTable(const QList<Row> &rows, const Settings &s)
{
    QTextStream out(stdout);
    out << "window " << s.seconds << " s per run, interval " << kDeviceInterval << " (1 request per device and second), host "
        << (s.window ? "with its window (offscreen)" : "headless") << "\n\n"
        << QStringLiteral("| devices | host CPU µs/answer | host % of a core | bare client CPU µs/request | ratio | "
                          "RSS/device KB | threads | fds | on time | first data s | shutdown s |\n")
        << "|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const Row &r : rows) {
        if (!r.failure.isEmpty()) {
            out << "| " << r.devices << " | failed: " << r.failure << " |\n";
            continue;
        }
        const double host = r.hostAnswers ? r.hostCpuUs / double(r.hostAnswers) : 0;
        const double bare = r.bareAnswers ? r.bareCpuUs / double(r.bareAnswers) : 0;
        out << "| " << r.devices << " | " << perAnswer(r.hostCpuUs, r.hostAnswers) << " | "
            << QString::number(100.0 * r.hostCpuUs / (double(s.seconds) * 1e6), 'f', 1) << " | "
            << perAnswer(r.bareCpuUs, r.bareAnswers) << " | "
            << (bare > 0 ? QString::number(host / bare, 'f', 1) : QStringLiteral("–")) << " | " << r.rssKb / r.devices
            << " | " << r.threads << " | " << r.fds << " | "
            << QString::number(100.0 * r.onTime / r.devices, 'f', 0) << " % | " << seconds(r.firstDataMs) << " | "
            << seconds(r.shutdownMs) << " |\n";
    }
    for (const Row &r : rows) {
        if (!r.bareFailure.isEmpty())
            out << "\nbare client at " << r.devices << " devices failed: " << r.bareFailure << "\n";
    }
    // Marginal host CPU per answer between consecutive device counts.
    for (int i = 1; i < rows.size(); ++i) {
        const Row &a = rows.at(i - 1);
        const Row &b = rows.at(i);
        if (a.failure.isEmpty() && b.failure.isEmpty() && b.hostAnswers > a.hostAnswers)
            out << "\nmarginal host CPU from " << a.devices << " to " << b.devices << " devices: "
                << perAnswer(b.hostCpuUs - a.hostCpuUs, b.hostAnswers - a.hostAnswers) << QStringLiteral(" µs/answer");
    }
    out << '\n';
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvek-scale"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate(
        "orvek-scale", "Measures the host with N devices against a bare Modbus client."));
    parser.addHelpOption();
    const QCommandLineOption devices(QStringLiteral("devices"), QCoreApplication::translate("orvek-scale", "Device counts."),
                                     QStringLiteral("\"N ...\""), QStringLiteral("1 100 500 1000"));
    const QCommandLineOption window(QStringLiteral("seconds"), QCoreApplication::translate("orvek-scale", "Measuring window per run."),
                                    QStringLiteral("S"), QStringLiteral("30"));
    const QCommandLineOption startup(QStringLiteral("startup-limit"),
                                     QCoreApplication::translate("orvek-scale", "Longest wait for first data from all devices."),
                                     QStringLiteral("S"), QStringLiteral("120"));
    const QCommandLineOption basePort(QStringLiteral("base-port"), QCoreApplication::translate("orvek-scale", "First agent port."),
                                      QStringLiteral("P"), QStringLiteral("23000"));
    const QCommandLineOption withWindow(QStringLiteral("window"),
                                        QCoreApplication::translate("orvek-scale", "Run the host with its window "
                                                                                   "(offscreen) instead of headless."));
    parser.addOptions({devices, window, startup, basePort, withWindow});
    parser.process(app);

    Settings s;
    for (const QString &n : parser.value(devices).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        s.counts << n.toInt();
    s.seconds = qMax(2, parser.value(window).toInt());
    s.startupLimitS = qMax(1, parser.value(startup).toInt());
    s.basePort = quint16(parser.value(basePort).toUInt());
    s.binDir = QCoreApplication::applicationDirPath();
    s.window = parser.isSet(withWindow);

    QList<Row> rows;
    for (int n : qAsConst(s.counts)) {
        if (n < 1 || n + s.basePort > 65535)
            continue;
        err() << "orvek-scale: " << n << " device(s)..." << Qt::endl;
        rows << measure(s, n);
    }
    printTable(rows, s);
    return 0;
}
