#ifndef CONSOLEMONITOR_H
#define CONSOLEMONITOR_H

#include <QByteArray>
#include <QDateTime>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVariant>

class DeviceHost;
class DeviceSession;
struct HostNotice;
class QIODevice;
class QSocketNotifier;

// The headless face of the host: prints a compact status block of every
// device every few seconds and each logged event and host notice as a line,
// and takes control commands line by line (see ConsoleCommand).
class ConsoleMonitor : public QObject
{
    Q_OBJECT
public:
    static constexpr int DefaultStatusPeriodMs = 5000;

    ConsoleMonitor(DeviceHost *host, QIODevice *out, QObject *parent = nullptr);

    void startStatus(int periodMs = DefaultStatusPeriodMs);
    // Reads commands from a file descriptor (stdin) as lines arrive. End of
    // input at a terminal quits; on a pipe or file it only stops reading.
    void readCommands(int fd);

    QString statusBlock() const;
    // now: the time the age of the last data is counted to.
    static QString deviceLine(const DeviceSession *session, const QDateTime &now = QDateTime::currentDateTimeUtc());
    // Output source, input and output voltage, load and battery capacity of
    // the latest data, as the device line shows them.
    static QStringList measurementFields(const QMap<int, QVariant> &data);
    // Runs one command line; its answer goes to the output.
    void executeLine(const QString &line);

signals:
    void quitRequested();

private slots:
    void printStatus();
    void onEventLogged(QDateTime time, QString device, int type, QString text);
    void onNotice(const HostNotice &notice);
    void onReadable();

private:
    void print(const QString &text);

    DeviceHost *m_host;
    QIODevice *m_out;
    QTimer m_statusTimer;
    QSocketNotifier *m_notifier = nullptr;
    QByteArray m_pending;
    int m_fd = -1;
};

#endif // CONSOLEMONITOR_H
