// orvek-soak: a long run of one device client against the simulated agent.
//
// The agent process is stopped and started again N times, so the client goes
// through N loss/return cycles, while a second thread queues N x 1000 control
// requests the way a view does. At the end the tool prints every event type
// counted, the command results, and the process's RSS and open descriptors
// before and after. It exits non-zero when a loss or a return was reported
// other than exactly once per cycle, a request got no result, or descriptors
// were left behind.
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLoggingCategory>
#include <QMap>
#include <QProcess>
#include <QTcpServer>
#include <QThread>
#include <QTextStream>
#include <atomic>
#include <cstdio>
#include <functional>

#include "orvekclient.h"
#include "upscontract.h"

namespace {

constexpr int kRequestsPerCycle = 1000;
// Fewer than one tick may answer (200), so that every request gets its result.
constexpr int kBurst = 190;
constexpr int kBurstPauseMs = 20;
constexpr int kStepTimeoutMs = 60000;
constexpr int kEvRestored = UpsEvent::Restored;
constexpr int kEvLost = UpsEvent::Lost;
constexpr int kEvCommandResult = UpsEvent::CommandResult;
constexpr int kEvDecoded = UpsEvent::Decoded;
// Harmless for the simulated UPS.
constexpr int kControlIds[] = {UpsControl::CancelTest, UpsControl::TimeSet, UpsControl::CancelShutdown};

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

// Resident set size in KiB, from /proc.
long rssKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLong();
    }
    return -1;
}

int openFds()
{
    return int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size());
}

quint16 freeLocalPort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// Runs the event loop until done() holds or the time is up.
bool waitUntil(const std::function<bool()> &done, int timeoutMs = kStepTimeoutMs)
{
    QDeadlineTimer deadline(timeoutMs);
    while (!done()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        QThread::msleep(5);
    }
    return true;
}

// The simulated agent as a child process, started and stopped on demand.
class Agent
{
public:
    Agent(const QString &program, quint16 port)
        : m_program(program)
        , m_port(port)
    {
    }
    ~Agent() { stop(); }

    bool start()
    {
        m_process.setProgram(m_program);
        m_process.setArguments({QStringLiteral("--port"), QString::number(m_port), QStringLiteral("--scenario"),
                                QStringLiteral("normal")});
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start();
        // It prints "... listening on ..." once the port is open.
        return m_process.waitForStarted() && waitUntil([this] {
                   m_process.waitForReadyRead(10);
                   return m_process.readAllStandardOutput().contains("listening");
               });
    }
    void stop()
    {
        if (m_process.state() == QProcess::NotRunning)
            return;
        m_process.terminate();
        if (!m_process.waitForFinished(5000))
            m_process.kill();
        m_process.waitForFinished(5000);
    }

private:
    QString m_program;
    quint16 m_port;
    QProcess m_process;
};

struct Counts
{
    QMap<int, int> events;
    QMap<int, int> results; // result value -> count
    std::atomic<int> resultTotal{0};
};

struct Sample
{
    long rss;
    int fds;
};

Sample sample()
{
    return Sample{rssKb(), openFds()};
}

// Queues total requests in bursts that one tick answers whole: a burst, then
// its results, then a pause so that the next burst cannot reach the tick
// that is still draining the last one.
QThread *startProducer(OrvekClient &client, const Counts &counts, int total)
{
    QThread *producer = QThread::create([&client, &counts, total] {
        int queued = 0;
        while (queued < total) {
            const int burst = qMin(kBurst, total - queued);
            for (int i = 0; i < burst; ++i, ++queued)
                client.control(kControlIds[queued % int(std::size(kControlIds))], QString::number(queued));
            QDeadlineTimer deadline(kStepTimeoutMs);
            while (counts.resultTotal.load() < queued && !deadline.hasExpired())
                QThread::msleep(2);
            QThread::msleep(kBurstPauseMs);
        }
    });
    producer->start();
    return producer;
}

bool runCycles(Agent &agent, const Counts &counts, int cycles)
{
    QElapsedTimer clock;
    clock.start();
    for (int c = 1; c <= cycles; ++c) {
        agent.stop();
        if (!waitUntil([&] { return counts.events.value(kEvLost) >= c; })) {
            out() << "cycle " << c << ": loss not reported" << Qt::endl;
            return false;
        }
        if (!agent.start()) {
            out() << "cycle " << c << ": cannot start the agent" << Qt::endl;
            return false;
        }
        const int decodedBefore = counts.events.value(kEvDecoded);
        if (!waitUntil([&] {
                return counts.events.value(kEvRestored) >= c + 1 && counts.events.value(kEvDecoded) >= decodedBefore + 4;
            })) {
            out() << "cycle " << c << ": return not reported" << Qt::endl;
            return false;
        }
        if (c % 10 == 0 || c == cycles)
            out() << "cycle " << c << "/" << cycles << " after " << clock.elapsed() / 1000 << " s, results "
                  << counts.resultTotal.load() << Qt::endl;
    }
    return true;
}

void printSummary(const Counts &counts, const Sample &before, const Sample &after, int cycles, int requests)
{
    out() << "events:";
    for (auto it = counts.events.constBegin(); it != counts.events.constEnd(); ++it)
        out() << " " << it.key() << "=" << it.value();
    out() << Qt::endl;
    out() << "requests " << requests << ", results " << counts.resultTotal.load() << " (successful "
          << counts.results.value(1) << ", failed " << counts.results.value(0) << ")" << Qt::endl;
    out() << "cycles " << cycles << ": lost " << counts.events.value(kEvLost) << ", restored "
          << counts.events.value(kEvRestored) << " (expected " << cycles << " and " << cycles + 1 << ")" << Qt::endl;
    out() << "RSS " << before.rss << " KiB -> " << after.rss << " KiB, fds " << before.fds << " -> " << after.fds
          << Qt::endl;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Loss/return and control-request soak of one device client."));
    parser.addHelpOption();
    const QCommandLineOption cyclesOption(QStringLiteral("cycles"), QStringLiteral("Loss/return cycles."),
                                          QStringLiteral("N"), QStringLiteral("10"));
    const QCommandLineOption agentOption(QStringLiteral("agent"), QStringLiteral("The simulated agent program."),
                                         QStringLiteral("PATH"),
                                         QCoreApplication::applicationDirPath() + QStringLiteral("/orvek-sim"));
    const QCommandLineOption realOption(QStringLiteral("real-timings"),
                                        QStringLiteral("Keep the client's 5 s pause before each connection attempt."));
    parser.addOptions({cyclesOption, agentOption, realOption});
    parser.process(app);
    const int cycles = qMax(1, parser.value(cyclesOption).toInt());
    const int requests = cycles * kRequestsPerCycle;
    // Every refused connection attempt would be a debug line.
    QLoggingCategory::setFilterRules(QStringLiteral("orvek.client.debug=false"));

    const quint16 port = freeLocalPort();
    Agent agent(parser.value(agentOption), port);
    OrvekClient client;
    client.name = QStringLiteral("soak");
    client.retries = 2;
    client.interval = 4; // divided again by run(): one tick a second
    client.setTarget(QStringLiteral("127.0.0.1"), port);
    if (!parser.isSet(realOption))
        client.setConnectTimings(0, 5000);
    Counts counts;
    QObject::connect(
        &client, &CollectThread::postDEvent, &app,
        [&counts](int type, QMap<QString, QVariant> map) {
            ++counts.events[type];
            if (type == kEvCommandResult) {
                ++counts.results[map.value(UpsKey::Result).toInt()];
                ++counts.resultTotal;
            }
        },
        Qt::QueuedConnection);

    if (!agent.start()) {
        out() << "cannot start " << parser.value(agentOption) << Qt::endl;
        return 2;
    }
    client.start();
    if (!waitUntil([&] { return counts.events.value(kEvRestored) == 1 && counts.events.value(kEvDecoded) >= 4; })) {
        out() << "no first answer from the agent" << Qt::endl;
        return 1;
    }
    const Sample before = sample();
    QThread *producer = startProducer(client, counts, requests);
    bool ok = runCycles(agent, counts, cycles);
    // The producer may still be queueing: let the ticks answer the rest.
    ok = waitUntil([&] { return producer->isFinished() && counts.resultTotal.load() >= requests; },
                   requests / kBurst * 2000 + kStepTimeoutMs)
         && ok;
    QCoreApplication::processEvents();
    const Sample after = sample();

    client.quit();
    client.wait();
    producer->wait();
    delete producer;
    agent.stop();
    QCoreApplication::processEvents();
    printSummary(counts, before, after, cycles, requests);

    const bool exact = counts.events.value(kEvLost) == cycles && counts.events.value(kEvRestored) == cycles + 1
                       && counts.resultTotal.load() == requests;
    const bool fdsKept = after.fds <= before.fds;
    out() << (ok && exact && fdsKept ? "soak: passed" : "soak: FAILED") << Qt::endl;
    return ok && exact && fdsKept ? 0 : 1;
}
