#include "eventhook.h"

#include <QProcess>
#include <QTimer>

#include "hostlogging.h"

namespace {

constexpr char kShell[] = "/bin/sh";
constexpr char kTimedOut[] = "timedOut";
// How long the host, on its way out, waits for a killed command to go.
constexpr int kKillWaitMs = 1000;

} // namespace

EventHook::EventHook(const QString &command, QObject *parent)
    : QObject(parent)
    , m_command(command)
    , m_environment(QProcessEnvironment::systemEnvironment())
{
}

EventHook::~EventHook()
{
    m_queue.clear();
    for (QProcess *process : qAsConst(m_running)) {
        process->disconnect(this);
        process->kill();
        process->waitForFinished(kKillWaitMs);
    }
    qDeleteAll(m_running);
}

void EventHook::setLimits(int maxRunning, int maxQueued, int timeoutMs)
{
    m_maxRunning = qMax(1, maxRunning);
    m_maxQueued = qMax(0, maxQueued);
    m_timeoutMs = qMax(1, timeoutMs);
}

void EventHook::run(const QDateTime &time, const QString &device, int type, const QString &text)
{
    if (m_queue.size() >= m_maxQueued && m_running.size() >= m_maxRunning) {
        ++m_dropped;
        if (!m_dropTold) {
            m_dropTold = true;
            emit noticeRaised(tr("event command: more than %1 events waiting; further events are not passed to "
                                 "it until it catches up")
                                  .arg(m_maxQueued));
        }
        return;
    }
    m_queue << Event{time, device, type, text};
    startNext();
}

void EventHook::startNext()
{
    while (m_running.size() < m_maxRunning && !m_queue.isEmpty()) {
        const Event event = m_queue.takeFirst();
        QProcessEnvironment environment = m_environment;
        environment.insert(QStringLiteral("ORVEK_DEVICE"), event.device);
        environment.insert(QStringLiteral("ORVEK_EVENT"), QString::number(event.type));
        environment.insert(QStringLiteral("ORVEK_TEXT"), event.text);
        environment.insert(QStringLiteral("ORVEK_TIME"), event.time.toString(Qt::ISODate));

        auto *process = new QProcess(this);
        process->setProcessEnvironment(environment);
        process->setStandardInputFile(QProcess::nullDevice());
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
        connect(process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                [this, process](int exitCode, QProcess::ExitStatus status) {
                    onFinished(process, exitCode, status == QProcess::CrashExit);
                });
        connect(process, &QProcess::errorOccurred, this, [this, process](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                onFailedToStart(process);
        });
        auto *timeout = new QTimer(process);
        timeout->setSingleShot(true);
        connect(timeout, &QTimer::timeout, process, [process] {
            process->setProperty(kTimedOut, true);
            process->kill();
        });
        m_running << process;
        timeout->start(m_timeoutMs);
        process->start(QLatin1String(kShell), {QStringLiteral("-c"), m_command});
    }
    if (m_queue.isEmpty())
        m_dropTold = false;
}

void EventHook::onFinished(QProcess *process, int exitCode, bool crashed)
{
    if (process->property(kTimedOut).toBool())
        fail(tr("event command killed after %1 s without ending").arg(m_timeoutMs / 1000.0));
    else if (crashed)
        fail(tr("event command crashed"));
    else if (exitCode != 0)
        fail(tr("event command ended with exit code %1").arg(exitCode));
    else
        m_failureTold = false;
    release(process);
}

void EventHook::onFailedToStart(QProcess *process)
{
    fail(tr("event command could not be started: %1").arg(process->errorString()));
    release(process);
}

void EventHook::release(QProcess *process)
{
    if (!m_running.removeOne(process))
        return; // finished and an error for the same run
    process->disconnect(this);
    process->deleteLater();
    emit runFinished();
    startNext();
}

void EventHook::fail(const QString &text)
{
    ++m_failed;
    qCDebug(lcHost) << text;
    if (m_failureTold)
        return;
    m_failureTold = true;
    emit noticeRaised(tr("%1 (further failures are not told until it succeeds again)").arg(text));
}
