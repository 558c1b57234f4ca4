#ifndef QUITONSIGNAL_H
#define QUITONSIGNAL_H

#include <QObject>

class QSocketNotifier;

// Turns SIGINT and SIGTERM into a normal end of the event loop, so that the
// host stops its clients in order and the agent closes its port. The handler only writes a byte into a
// socket pair; the quit happens on the event loop's side.
class QuitOnSignal : public QObject
{
    Q_OBJECT
public:
    explicit QuitOnSignal(QObject *parent = nullptr);
    ~QuitOnSignal() override;

    bool isInstalled() const { return m_notifier != nullptr; }

signals:
    void signalled();

private:
    static void handler(int signalNumber);
    void onActivated();

    QSocketNotifier *m_notifier = nullptr;
    static int s_fds[2];
};

#endif // QUITONSIGNAL_H
