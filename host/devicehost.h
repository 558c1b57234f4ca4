#ifndef DEVICEHOST_H
#define DEVICEHOST_H

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>

#include "deviceconfig.h"
#include "logwriter.h"

class CollectThread;
class CommandWatch;
class DeviceSession;
class PluginHost;
class QTimer;

// Something the user has to know about the host itself rather than about a
// UPS: a log that cannot be written, a problem in dev.ini, a plug-in passed
// over, a device that was not started or is configured in a way that misleads.
struct HostNotice
{
    QDateTime time;
    QString device; // empty: the host as a whole
    QString text;
};
Q_DECLARE_METATYPE(HostNotice)

// The host's core, shared by the window and the console monitor: loads the
// plug-ins, runs one session per configured device, writes the event and
// data logs and stops everything in order at the end.
class DeviceHost : public QObject
{
    Q_OBJECT
public:
    // Events of the host itself, beside the plug-in's event types.
    enum HostEvent { DataStale = 3001, DataCurrent = 3002, CommandConfirmed = 3003, CommandNotConfirmed = 3004 };
    static constexpr int StaleCheckMs = 1000;

    // Longest a client can take to notice quit(): a tick in a connection
    // attempt pauses 5 s and then waits up to 30 s for the connection.
    static constexpr int StopBoundSeconds = 35;
    // Notices kept for windows and monitors opened later.
    static constexpr int MaxNotices = 200;

    explicit DeviceHost(const QString &logFolder, QObject *parent = nullptr);
    ~DeviceHost() override;

    // Loads the device plug-ins of a folder; every library passed over
    // becomes a notice.
    int loadPlugins(const QString &folder);
    PluginHost *plugins() const { return m_plugins; }
    LogWriter &logs() { return m_logs; }
    // Watches the data after each control request for the command's effect.
    CommandWatch *commandWatch() const { return m_commandWatch; }

    // Creates and starts a session per entry (the plug-in named by the entry,
    // or the first one); returns how many were started.
    int startDevices(const QList<DeviceEntry> &entries);
    // The same in slices of the event loop, so that a window, the console
    // and signals stay served while a thousand devices start; devicesStarted
    // follows the last one.
    void startDevicesInBackground(const QList<DeviceEntry> &entries);
    bool isStartingDevices() const { return !m_pendingStarts.isEmpty(); }
    // Creates and starts one session from that factory; null when the name
    // is taken or the factory makes no client (both told as notices).
    DeviceSession *addDevice(CollectThread *factory, const QString &name);
    QList<DeviceSession *> sessions() const { return m_sessions; }
    DeviceSession *session(const QString &name) const;
    QStringList deviceNames() const;

    // Tells the user (noticeRaised) and keeps the notice for later readers.
    void notice(const QString &device, const QString &text);
    QList<HostNotice> notices() const { return m_notices; }

    // The logged-in user, handed to every view (level 0 viewer, 1 operator).
    void setUserInfo(const QString &user, int level);
    // The user name the host logs in with for a rights level.
    static QString roleName(int level);
    QString userName() const { return m_userName; }
    int userLevel() const { return m_userLevel; }

    // Quits every client, waits for all of them and deletes them. progress is
    // called about every 200 ms with the devices still running; events keep
    // being processed meanwhile.
    using StopProgress = std::function<void(const QStringList &stillRunning)>;
    void shutdown(const StopProgress &progress = StopProgress());
    bool isShuttingDown() const { return m_shuttingDown; }

signals:
    // An event with a text, as written to the event log.
    void eventLogged(QDateTime time, QString device, int type, QString text);
    // Any event of a device (for status refreshes).
    void deviceEvent(QString device, int type);
    void dataLogged(QString device);
    void sessionsChanged();
    void devicesStarted(int started);
    void noticeRaised(HostNotice notice);

private:
    // Each session's signals are connected with the session bound in, so
    // routing does not search the connections for the sender.
    void onEventReceived(DeviceSession *session, int type, const QMap<QString, QVariant> &map);
    void onDataReceived(DeviceSession *session, const QMap<int, QVariant> &data);
    bool repeatsAlarm(const QString &device, int type, const QMap<QString, QVariant> &map);
    void checkNewDevice(DeviceSession *session);
    bool startDevice(const DeviceEntry &entry);
    // One event when a device's data goes stale, one when data returns.
    void checkStaleData();
    void logEvent(DeviceSession *session, int type, const QString &text);
    void watchCommand(DeviceSession *session, int type, const QMap<QString, QVariant> &map);
    void onCommandVerdict(const QString &device, int controlId, bool confirmed, int boundSeconds);
    void startPendingSlice();

    PluginHost *m_plugins;
    LogWriter m_logs;
    QList<DeviceSession *> m_sessions;
    QHash<QString, DeviceSession *> m_byName;
    QSet<DeviceSession *> m_staleReported;
    QTimer *m_staleTimer;
    CommandWatch *m_commandWatch;
    QList<DeviceEntry> m_pendingStarts;
    int m_backgroundStarted = 0;
    QList<HostNotice> m_notices;
    QString m_userName;
    int m_userLevel = 0;
    bool m_shuttingDown = false;
    // Per device the alarm id of the last 2006 logged; -1 after anything else.
    QMap<QString, int> m_lastAlarmId;
};

#endif // DEVICEHOST_H
