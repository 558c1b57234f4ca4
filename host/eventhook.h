#ifndef EVENTHOOK_H
#define EVENTHOOK_H

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QProcessEnvironment>
#include <QString>

class QProcess;

// Runs a shell command for every logged event, with the event in its
// environment (ORVEK_DEVICE, ORVEK_EVENT, ORVEK_TEXT, ORVEK_TIME). Commands
// start and end without the event loop ever waiting for them; a few run at
// once and the rest wait in a bounded queue. A command that hangs is killed
// after a timeout. What goes wrong is told once per streak, so a broken
// command does not bury the host's notices.
class EventHook : public QObject
{
    Q_OBJECT
public:
    static constexpr int DefaultMaxRunning = 4;
    static constexpr int DefaultMaxQueued = 100;
    static constexpr int DefaultTimeoutMs = 30000;

    explicit EventHook(const QString &command, QObject *parent = nullptr);
    // Kills what still runs: the host is going.
    ~EventHook() override;

    void setLimits(int maxRunning, int maxQueued, int timeoutMs);

    // Queues one run for the event.
    void run(const QDateTime &time, const QString &device, int type, const QString &text);

    int runningCount() const { return m_running.size(); }
    int queuedCount() const { return m_queue.size(); }
    bool isIdle() const { return m_running.isEmpty() && m_queue.isEmpty(); }
    int droppedCount() const { return m_dropped; }
    int failedCount() const { return m_failed; }

signals:
    // Something the user has to know about the command.
    void noticeRaised(QString text);
    // A run ended, whatever its outcome.
    void runFinished();

private:
    struct Event
    {
        QDateTime time;
        QString device;
        int type;
        QString text;
    };
    void startNext();
    void onFinished(QProcess *process, int exitCode, bool crashed);
    void onFailedToStart(QProcess *process);
    void release(QProcess *process);
    void fail(const QString &text);

    QString m_command;
    QProcessEnvironment m_environment;
    int m_maxRunning = DefaultMaxRunning;
    int m_maxQueued = DefaultMaxQueued;
    int m_timeoutMs = DefaultTimeoutMs;
    QList<Event> m_queue;
    QList<QProcess *> m_running;
    int m_dropped = 0;
    int m_failed = 0;
    bool m_dropTold = false;    // until the queue has room again
    bool m_failureTold = false; // until a run succeeds
};

#endif // EVENTHOOK_H
