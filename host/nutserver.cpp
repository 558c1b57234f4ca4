#include "nutserver.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUuid>

#include "commandwatch.h"
#include "deviceconfig.h"
#include "devicehost.h"
#include "devicesession.h"
#include "nutcommands.h"
#include "nutconnection.h"
#include "nutline.h"
#include "nutvariables.h"
#include "upspoints.h"

namespace {

Q_LOGGING_CATEGORY(lcNut, "orvek.host.nut", QtWarningMsg)

constexpr char kUsersFileName[] = "upsd.users";
constexpr char kProtocolVersion[] = "1.3";
// Command results kept for GET TRACKING; the oldest go first.
constexpr int kMaxTracked = 1000;
const QByteArray kPending = QByteArrayLiteral("PENDING");
const QByteArray kSuccess = QByteArrayLiteral("SUCCESS");
const QByteArray kFailed = QByteArrayLiteral("ERR FAILED");

using Lines = QList<QByteArray>;

Lines error(const char *code)
{
    return {QByteArray("ERR ") + code};
}

Lines ok(const char *text = nullptr)
{
    return {text ? QByteArray("OK ") + text : QByteArrayLiteral("OK")};
}

// A device whose name a NUT request can carry as one plain word.
bool isUpsName(const QString &name)
{
    static const QRegularExpression plain(QStringLiteral("^[^\\s\"\\\\]+$"));
    return plain.match(name).hasMatch();
}

Lines framedList(const QByteArray &what, const Lines &items)
{
    return Lines{"BEGIN LIST " + what} + items + Lines{"END LIST " + what};
}

} // namespace

NutServer::NutServer(DeviceHost *host, QObject *parent)
    : QObject(parent)
    , m_host(host)
    , m_server(new QTcpServer(this))
{
    connect(m_server, &QTcpServer::newConnection, this, &NutServer::onNewConnection);
    connect(host->commandWatch(), &CommandWatch::verdict, this,
            [this](const QString &device, int controlId, bool confirmed) {
                settle(device, controlId, confirmed ? kSuccess : kFailed);
            });
    connect(host->commandWatch(), &CommandWatch::abandoned, this,
            [this](const QString &device, int controlId) { settle(device, controlId, kFailed); });
}

NutServer::~NutServer() = default;

QString NutServer::usersFilePath(const QString &devIniPath)
{
    return QFileInfo(devIniPath).absolutePath() + QLatin1Char('/') + QLatin1String(kUsersFileName);
}

void NutServer::loadUsers(const QString &path)
{
    QStringList problems;
    if (!m_users.load(path, &problems))
        problems << tr("no NUT users file %1: NUT clients may only read").arg(path);
    for (const QString &problem : problems)
        m_host->notice(QString(), tr("NUT users: %1").arg(problem));
}

void NutServer::setPollInterval(const QString &device, int configuredInterval)
{
    setStaleRule(device, StaleRule(configuredInterval));
}

bool NutServer::listen(const QHostAddress &address, quint16 port)
{
    return m_server->listen(address, port);
}

quint16 NutServer::serverPort() const
{
    return m_server->serverPort();
}

QString NutServer::errorString() const
{
    return m_server->errorString();
}

void NutServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server->nextPendingConnection()) {
        if (m_connections.size() >= m_maxClients) {
            qCWarning(lcNut) << "refusing" << socket->peerAddress().toString() << "beyond" << m_maxClients
                             << "clients";
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            socket->write("ERR ACCESS-DENIED\n");
            socket->disconnectFromHost();
            continue;
        }
        auto *client = new NutConnection(socket, this);
        m_connections << client;
        connect(client, &NutConnection::requestReceived, this,
                [this, client](const QByteArray &line) { onRequest(client, line); });
        connect(client, &NutConnection::requestRejected, client,
                [client] { client->send(error("INVALID-ARGUMENT").first()); });
        connect(client, &NutConnection::closed, this, [this, client] {
            m_connections.removeOne(client);
            m_trackingClients.remove(client);
            client->deleteLater();
        });
    }
}

void NutServer::onRequest(NutConnection *client, const QByteArray &line)
{
    NutLine::Error parseError = NutLine::Error::None;
    const Words words = NutLine::split(line, &parseError);
    if (parseError != NutLine::Error::None) {
        client->send(error("INVALID-ARGUMENT").first());
        return;
    }
    if (words.isEmpty())
        return;
    if (words.first() == "LOGOUT") {
        client->sendAndClose("OK Goodbye");
        return;
    }
    for (const QByteArray &answerLine : answer(client, words))
        client->send(answerLine);
}

NutServer::Lines NutServer::answer(NutConnection *client, const Words &words)
{
    const QByteArray &command = words.first();
    if (command == "VER")
        return {(QCoreApplication::applicationName() + QLatin1String(" NUT server ")
                 + QCoreApplication::applicationVersion()).trimmed().toUtf8()};
    if (command == "NETVER")
        return {kProtocolVersion};
    if (command == "HELP")
        return {"Commands: HELP VER NETVER GET LIST USERNAME PASSWORD LOGIN LOGOUT PRIMARY FSD INSTCMD SET STARTTLS"};
    if (command == "STARTTLS")
        return error("FEATURE-NOT-CONFIGURED");
    if (command == "LIST")
        return listCommand(words);
    if (command == "GET")
        return getCommand(words);
    if (command == "USERNAME" || command == "PASSWORD")
        return userCommand(client, words);
    if (command == "LOGIN" || command == "PRIMARY" || command == "MASTER" || command == "FSD")
        return loginCommand(client, words);
    if (command == "INSTCMD")
        return instantCommand(client, words);
    if (command == "SET" && words.value(1) == "TRACKING")
        return trackingCommand(client, words);
    if (command == "SET")
        return setCommand(client, words);
    return error("UNKNOWN-COMMAND");
}

NutServer::Lines NutServer::listCommand(const Words &words) const
{
    const QByteArray what = words.value(1);
    if (what == "UPS") {
        if (words.size() != 2)
            return error("INVALID-ARGUMENT");
        Lines items;
        for (DeviceSession *session : upsSessions())
            items << "UPS " + session->name().toUtf8() + ' ' + NutLine::quote(upsDescription(session));
        return framedList(what, items);
    }
    const bool perVariable = what == "ENUM" || what == "RANGE";
    if (words.size() != (perVariable ? 4 : 3))
        return error("INVALID-ARGUMENT");
    DeviceSession *session = findUps(words.at(2));
    if (!session)
        return error("UNKNOWN-UPS");
    const QByteArray ups = words.at(2);
    const QByteArray header = what + ' ' + ups;
    Lines items;
    if (what == "VAR") {
        const QByteArray reason = unavailable(session);
        if (!reason.isEmpty())
            return error(reason.constData());
        const QMap<QByteArray, QString> values = variables(session);
        for (auto it = values.constBegin(); it != values.constEnd(); ++it)
            items << "VAR " + ups + ' ' + it.key() + ' ' + NutLine::quote(it.value().toUtf8());
    } else if (what == "CMD") {
        for (const QString &name : NutCommands::available(session->latestData()))
            items << "CMD " + ups + ' ' + name.toUtf8();
    } else if (what == "CLIENT") {
        for (const NutConnection *client : m_connections) {
            if (client->loginUps == session->name())
                items << "CLIENT " + ups + ' ' + client->peerAddress().toUtf8();
        }
    } else if (perVariable) {
        const QByteArray reason = unavailable(session);
        if (!reason.isEmpty())
            return error(reason.constData());
        if (!variables(session).contains(words.at(3)))
            return error("VAR-NOT-SUPPORTED");
        return framedList(header + ' ' + words.at(3), {}); // nothing here is writable
    } else if (what != "RW") {
        return error("INVALID-ARGUMENT");
    }
    return framedList(header, items);
}

NutServer::Lines NutServer::getCommand(const Words &words) const
{
    const QByteArray what = words.value(1);
    if (what == "TRACKING" && words.size() == 3)
        return {m_tracked.contains(words.at(2)) ? m_tracked.value(words.at(2)).status : error("UNKNOWN").first()};
    const bool perName = what == "VAR" || what == "TYPE" || what == "DESC" || what == "CMDDESC";
    const bool perUps = what == "NUMLOGINS" || what == "UPSDESC";
    if ((!perName && !perUps) || words.size() != (perName ? 4 : 3))
        return error("INVALID-ARGUMENT");
    const QByteArray ups = words.at(2);
    DeviceSession *session = findUps(ups);
    if (!session)
        return error("UNKNOWN-UPS");
    if (what == "NUMLOGINS")
        return {"NUMLOGINS " + ups + ' ' + QByteArray::number(loginCount(session->name()))};
    if (what == "UPSDESC")
        return {"UPSDESC " + ups + ' ' + NutLine::quote(upsDescription(session))};
    const QByteArray name = words.at(3);
    const QByteArray prefix = what + ' ' + ups + ' ' + name + ' ';
    if (what == "DESC")
        return {prefix + NutLine::quote(NutVariables::description(name))};
    if (what == "CMDDESC")
        return {prefix + NutLine::quote(NutCommands::description(name))};
    const QByteArray reason = unavailable(session);
    if (!reason.isEmpty())
        return error(reason.constData());
    const QMap<QByteArray, QString> values = variables(session);
    const auto it = values.constFind(name);
    if (it == values.constEnd())
        return error("VAR-NOT-SUPPORTED");
    if (what == "TYPE")
        return {prefix + NutVariables::type(name, it.value())};
    return {prefix + NutLine::quote(it.value().toUtf8())};
}

NutServer::Lines NutServer::userCommand(NutConnection *client, const Words &words) const
{
    if (words.size() != 2)
        return error("INVALID-ARGUMENT");
    if (words.first() == "USERNAME") {
        if (client->hasUserName)
            return error("ALREADY-SET-USERNAME");
        client->userName = words.at(1);
        client->hasUserName = true;
    } else {
        if (client->hasPassword)
            return error("ALREADY-SET-PASSWORD");
        client->password = words.at(1);
        client->hasPassword = true;
    }
    return ok();
}

NutServer::Lines NutServer::loginCommand(NutConnection *client, const Words &words)
{
    if (words.size() != 2)
        return error("INVALID-ARGUMENT");
    if (!client->hasUserName)
        return error("USERNAME-REQUIRED");
    if (!client->hasPassword)
        return error("PASSWORD-REQUIRED");
    const QByteArray &command = words.first();
    if (command == "LOGIN" && !client->loginUps.isEmpty())
        return error("ALREADY-LOGGED-IN");
    DeviceSession *session = findUps(words.at(1));
    if (!session)
        return error("UNKNOWN-UPS");
    const NutUsers::User *account = user(client);
    if (command == "LOGIN") {
        if (!NutUsers::mayLogin(account))
            return error("ACCESS-DENIED");
        client->loginUps = session->name();
        qCDebug(lcNut) << client->userName << "logged in to" << client->loginUps;
        return ok();
    }
    if (command == "FSD") {
        if (!NutUsers::maySetFsd(account))
            return error("ACCESS-DENIED");
        m_forcedShutdown.insert(session->name());
        qCWarning(lcNut) << client->userName << "set forced shutdown on" << session->name();
        return ok("FSD-SET");
    }
    if (!NutUsers::mayBePrimary(account))
        return error("ACCESS-DENIED");
    return ok(command == "MASTER" ? "MASTER-GRANTED" : "PRIMARY-GRANTED");
}

NutServer::Lines NutServer::instantCommand(NutConnection *client, const Words &words)
{
    if (words.size() != 3 && words.size() != 4)
        return error("INVALID-ARGUMENT");
    if (!client->hasUserName)
        return error("USERNAME-REQUIRED");
    if (!client->hasPassword)
        return error("PASSWORD-REQUIRED");
    DeviceSession *session = findUps(words.at(1));
    if (!session)
        return error("UNKNOWN-UPS");
    const QByteArray name = words.at(2);
    const NutCommands::Command *command = NutCommands::find(name);
    if (!command || !NutCommands::available(session->latestData()).contains(QString::fromUtf8(name)))
        return error("CMD-NOT-SUPPORTED");
    if (!NutUsers::mayRun(user(client), QString::fromUtf8(name)))
        return error("ACCESS-DENIED");
    const QByteArray reason = unavailable(session);
    if (!reason.isEmpty())
        return error(reason.constData());
    QString value;
    const QByteArray argument = words.value(3);
    if (!NutCommands::requestValue(*command, words.size() == 4 ? &argument : nullptr, &value))
        return error("INVALID-ARGUMENT");
    qCDebug(lcNut) << client->userName << "runs" << name << "on" << session->name();
    session->requestControl(command->controlId, value);
    if (m_trackingClients.contains(client))
        return ok("TRACKING " + track(session->name(), command->controlId));
    return ok();
}

NutServer::Lines NutServer::trackingCommand(NutConnection *client, const Words &words)
{
    if (words.size() != 3 || (words.at(2) != "ON" && words.at(2) != "OFF"))
        return error("INVALID-ARGUMENT");
    if (words.at(2) == "ON")
        m_trackingClients.insert(client);
    else
        m_trackingClients.remove(client);
    return ok();
}

QByteArray NutServer::track(const QString &device, int controlId)
{
    const QByteArray id = QUuid::createUuid().toByteArray(QUuid::WithoutBraces);
    // A command whose effect the data cannot show counts as done once passed on.
    m_tracked.insert(id, Tracked{device, controlId, CommandWatch::isWatched(controlId) ? kPending : kSuccess});
    m_trackedOrder << id;
    if (m_trackedOrder.size() > kMaxTracked)
        m_tracked.remove(m_trackedOrder.takeFirst());
    return id;
}

void NutServer::settle(const QString &device, int controlId, const QByteArray &status)
{
    // A repeated request restarts the watch: every id still waiting on it gets its outcome.
    for (Tracked &tracked : m_tracked) {
        if (tracked.device == device && tracked.controlId == controlId && tracked.status == kPending)
            tracked.status = status;
    }
}

NutServer::Lines NutServer::setCommand(NutConnection *client, const Words &words) const
{
    if (!client->hasUserName)
        return error("USERNAME-REQUIRED");
    if (!client->hasPassword)
        return error("PASSWORD-REQUIRED");
    if (words.value(1) != "VAR" || words.size() != 5)
        return error("INVALID-ARGUMENT");
    DeviceSession *session = findUps(words.at(2));
    if (!session)
        return error("UNKNOWN-UPS");
    return error(variables(session).contains(words.at(3)) ? "READONLY" : "VAR-NOT-SUPPORTED");
}

QList<DeviceSession *> NutServer::upsSessions() const
{
    QList<DeviceSession *> sessions;
    for (DeviceSession *session : m_host->sessions()) {
        if (isUpsName(session->name()))
            sessions << session;
    }
    return sessions;
}

DeviceSession *NutServer::findUps(const QByteArray &name) const
{
    const QString device = QString::fromUtf8(name);
    return isUpsName(device) ? m_host->session(device) : nullptr;
}

QByteArray NutServer::upsDescription(DeviceSession *session) const
{
    const QString model = DeviceSession::identityText(session->latestData().value(UpsPoint::Model));
    return model.isEmpty() ? QByteArrayLiteral("Unavailable") : model.toUtf8();
}

QByteArray NutServer::unavailable(DeviceSession *session) const
{
    if (!session->lastDataTime().isValid() || session->status().state == DeviceStatus::State::Lost)
        return QByteArrayLiteral("DRIVER-NOT-CONNECTED");
    const StaleRule rule = m_staleRules.value(session->name(), session->staleRule());
    if (!session->hasFullPicture() || rule.isStale(session->lastDataTime(), QDateTime::currentDateTimeUtc()))
        return QByteArrayLiteral("DATA-STALE");
    return QByteArray();
}

QMap<QByteArray, QString> NutServer::variables(DeviceSession *session) const
{
    return NutVariables::values(session->latestData(), session->activeAlarms(),
                                m_forcedShutdown.contains(session->name()));
}

const NutUsers::User *NutServer::user(const NutConnection *client) const
{
    return m_users.authenticate(client->userName, client->password);
}

int NutServer::loginCount(const QString &ups) const
{
    int count = 0;
    for (const NutConnection *client : m_connections)
        count += client->loginUps == ups ? 1 : 0;
    return count;
}
