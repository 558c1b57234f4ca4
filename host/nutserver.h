#ifndef NUTSERVER_H
#define NUTSERVER_H

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>

#include "nutusers.h"
#include "stalerule.h"

class DeviceHost;
class DeviceSession;
class NutConnection;
class QTcpServer;
struct DeviceEntry;

// Serves the host's devices to NUT clients (upsc, upsmon, upscmd) over the
// NUT network protocol: one UPS per device name, its variables read from the
// latest decoded answers, its instant commands passed on as control requests
// exactly as the console passes them.
class NutServer : public QObject
{
    Q_OBJECT
public:
    static constexpr int DefaultMaxClients = 32;

    explicit NutServer(DeviceHost *host, QObject *parent = nullptr);
    ~NutServer() override;

    // The users file beside dev.ini.
    static QString usersFilePath(const QString &devIniPath);
    // Reads the users; what is wrong with the file becomes a host notice.
    // Without the file nobody may do more than read.
    void loadUsers(const QString &path);
    void setUsers(const NutUsers &users) { m_users = users; }

    // Data older than three polling rotations of the device read as stale;
    // devices without an entry here use their session's rule.
    void setPollInterval(const QString &device, int configuredInterval);
    void setStaleRule(const QString &device, const StaleRule &rule) { m_staleRules.insert(device, rule); }
    void setMaxClients(int count) { m_maxClients = count; }

    bool listen(const QHostAddress &address, quint16 port);
    quint16 serverPort() const;
    QString errorString() const;
    int clientCount() const { return m_connections.size(); }

private:
    using Words = QList<QByteArray>; // of a request
    using Lines = QList<QByteArray>; // of an answer

    void onNewConnection();
    void onRequest(NutConnection *client, const QByteArray &line);
    Lines answer(NutConnection *client, const Words &words);

    Lines listCommand(const Words &words) const;
    Lines getCommand(const Words &words) const;
    Lines userCommand(NutConnection *client, const Words &words) const;
    Lines loginCommand(NutConnection *client, const Words &words);
    Lines instantCommand(NutConnection *client, const Words &words);
    Lines setCommand(NutConnection *client, const Words &words) const;
    // SET TRACKING ON|OFF: whether this client's instant commands get an id
    // whose result GET TRACKING tells.
    Lines trackingCommand(NutConnection *client, const Words &words);
    QByteArray track(const QString &device, int controlId);
    void settle(const QString &device, int controlId, const QByteArray &status);

    QList<DeviceSession *> upsSessions() const;
    DeviceSession *findUps(const QByteArray &name) const;
    QByteArray upsDescription(DeviceSession *session) const;
    // The ERR word when the device's data cannot be served; empty when it can.
    QByteArray unavailable(DeviceSession *session) const;
    QMap<QByteArray, QString> variables(DeviceSession *session) const;
    const NutUsers::User *user(const NutConnection *client) const;
    int loginCount(const QString &ups) const;

    DeviceHost *m_host;
    QTcpServer *m_server;
    QList<NutConnection *> m_connections;
    NutUsers m_users;
    QMap<QString, StaleRule> m_staleRules;
    QSet<QString> m_forcedShutdown;
    struct Tracked
    {
        QString device;
        int controlId;
        QByteArray status; // PENDING until the device shows the effect or not
    };
    QHash<QByteArray, Tracked> m_tracked;
    QList<QByteArray> m_trackedOrder; // oldest first, for the bound
    QSet<const NutConnection *> m_trackingClients;
    int m_maxClients = DefaultMaxClients;
};

#endif // NUTSERVER_H
