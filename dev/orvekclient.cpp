#include "orvekclient.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLoggingCategory>
#include <QSettings>
#include <QTcpSocket>
#include <QTimer>
#include <ctime>
#include <limits>
#include <optional>

#include "inifilecheck.h"
#include "orvekfont.h"
#include "upsalarms.h"
#include "upsanswer.h"
#include "upscommands.h"
#include "upscontract.h"
#include "upsframes.h"
#include "upspoints.h"
// The core-only build (sanitizer runs) leaves the views out.
#ifndef ORVEK_NO_VIEWS
#include "childform.h"
#endif

Q_LOGGING_CATEGORY(lcOrvekClient, "orvek.client")

namespace {

constexpr int kReadBufferSize = 1024;
constexpr int kDefaultReconnectPauseMs = 5000;
constexpr int kDefaultConnectWaitMs = 30000;
constexpr int kMaxCommandsPerTick = 200;
constexpr int kMaxPort = 65535;

int positiveOr(const QVariant &value, int fallback)
{
    bool ok = false;
    const int v = value.toInt(&ok);
    return ok && v > 0 ? v : fallback;
}

// Every division of the polling interval keeps it at one second or more.
int quarterInterval(int value)
{
    const int q = value / 4;
    return q < 1 ? 1 : q;
}

// Compared by type too: QVariant(1) equals QVariant("1"), upsInfo must not keep the old type.
bool sameValue(const QVariant &a, const QVariant &b)
{
    return a.userType() == b.userType() && a == b;
}

} // namespace

OrvekClient::OrvekClient(CollectThread *parent)
    : CollectThread(nullptr)
    , reconnectPauseMs(kDefaultReconnectPauseMs)
    , connectWaitMs(kDefaultConnectWaitMs)
{
    Q_UNUSED(parent) // the thread object never has a parent
}

OrvekClient::~OrvekClient()
{
    delete view;
    // The socket belongs to the thread that made it. A poll-driven socket
    // lives in the caller's thread and can go with the client; a run-driven
    // one is disposed of when run() returns.
    if (socket && socket->thread() == QThread::currentThread())
        delete socket;
}

CollectThread *OrvekClient::create(void *handle)
{
    Q_UNUSED(handle)
    return new OrvekClient(nullptr);
}

void OrvekClient::release(OrvekClient *client)
{
    released = true;
    if (client)
        client->deleteLater();
}

void OrvekClient::setTarget(QString address, int port)
{
    targetAddress = address;
    targetPort = port;
}

void OrvekClient::setConnectTimings(int pauseMs, int connectWaitMsValue)
{
    reconnectPauseMs = qMax(0, pauseMs);
    connectWaitMs = qMax(0, connectWaitMsValue);
}

QString OrvekClient::configFilePath()
{
    return UpsConfig::filePath();
}

void OrvekClient::loadConfig()
{
    using namespace UpsConfig;
    // A file QSettings cannot read safely counts as missing: the defaults apply.
    const QString path = configFilePath();
    const int unsafeLine = IniFileCheck::unsafeLine(path);
    if (unsafeLine)
        qCWarning(lcOrvekClient) << path << "line" << unsafeLine << "holds an encoded value; the defaults apply";
    std::optional<QSettings> file;
    if (!unsafeLine)
        file.emplace(path, QSettings::IniFormat);
    const auto setting = [&file](const QString &key, const QVariant &fallback = QVariant()) {
        return file ? file->value(key, fallback) : fallback;
    };
    const QString group = name;
    const QString address = setting(key(group, IpAddr)).toString();
    // Missing or unusable numbers fall back to the defaults.
    int port = positiveOr(setting(key(group, Port), DefaultPort), DefaultPort);
    if (port > kMaxPort)
        port = DefaultPort;
    bool ok = false;
    const int configuredRetries = setting(key(group, Retries), DefaultRetries).toInt(&ok);
    retries = ok ? configuredRetries : DefaultRetries;
    protocol = setting(key(group, Protocol)).toInt();
    const int configuredInterval = setting(key(group, Interval), DefaultInterval).toInt(&ok);
    interval = ok ? configuredInterval : DefaultInterval;
    setTarget(address, port);

    const QString chooseList = key(group, EventChooseList);
    const int n = getEventLogDesc().size();
    for (int i = 0; i < n; ++i)
        eventChooseList[i] = setting(chooseList + QLatin1Char('/') + QString::number(i + 1)).toInt();
    interval = quarterInterval(interval);
}

void OrvekClient::run()
{
    QTimer timer;
    // Divided a second time on purpose: a configured 60 s ticks every 3 s.
    interval = quarterInterval(interval);
    timer.setInterval(intervalMs());
    connect(&timer, &QTimer::timeout, this, &OrvekClient::threadTimer, Qt::DirectConnection);
    QTimer::singleShot(0, &timer, SLOT(start()));
    exec();
    timer.stop();
    delete socket; // made by threadTimer in this thread
    socket = nullptr;
}

int OrvekClient::intervalMs() const
{
    return int(qBound<qint64>(0, qint64(interval) * 1000, std::numeric_limits<int>::max()));
}

void OrvekClient::poll()
{
    const qint64 now = qint64(time(nullptr));
    if (now < nextPollTime)
        return;
    workState = 1;
    nextPollTime = now + interval;
    threadTimer();
    workState = 0;
}

EventMap OrvekClient::baseEventMap()
{
    static const QString timeStrKey = UpsKey::TimeStr;
    refreshTarget();
    EventMap map = targetMap;
    map.insert(timeStrKey, stampClock.now());
    return map;
}

void OrvekClient::refreshTarget()
{
    // The host may change name and target between ticks; they rarely do.
    const Target now{name, protocol, targetAddress, targetPort};
    if (now == target && !targetMap.isEmpty())
        return;
    target = now;
    targetMap.clear();
    targetMap.insert(UpsKey::Name, name);
    targetMap.insert(UpsKey::Protocol, protocol);
    targetMap.insert(UpsKey::Lost, 0);
    targetMap.insert(UpsKey::IpAddr, targetAddress);
    targetMap.insert(UpsKey::Port, targetPort);
    portInfo = QStringLiteral("tcp:%1:%2").arg(targetAddress, QString::number(targetPort));
}

void OrvekClient::threadTimer()
{
    if (!socket) {
        socket = new QTcpSocket();
        socket->setReadBufferSize(kReadBufferSize);
    }
    if (reloadConfig != 0) {
        reloadConfig = 0;
        loadConfig();
        socket->close();
    }
    check_set_command();

    const QAbstractSocket::SocketState state = socket->state();
    if (state == QAbstractSocket::UnconnectedState || state == QAbstractSocket::ClosingState) {
        EventMap map = baseEventMap(); // stamped before the attempt; sent only as a lost report
        connectOrCountFailure(map);
    } else if (state == QAbstractSocket::ConnectedState)
        UPS_sendMessage();
    reportData();
}

void OrvekClient::connectOrCountFailure(EventMap &map)
{
    QThread::msleep(reconnectPauseMs);
    socket->connectToHost(targetAddress, quint16(targetPort), QIODevice::ReadWrite,
                          QAbstractSocket::AnyIPProtocol);
    if (!socket->waitForConnected(connectWaitMs)) {
        qCDebug(lcOrvekClient) << "connect failed" << targetAddress << targetPort << socket->errorString();
        // A timed-out attempt may leave the socket half-open; start clean next tick.
        socket->abort();
    }
    ++failCount;
    if (failCount >= retries && (lostState == -1 || lostState == UpsInfo::Communicating)) {
        map.insert(UpsKey::Lost, 1);
        map.insert(UpsKey::State, UpsInfo::CommunicationLost);
        map.insert(UpsKey::Desc, name);
        emit postDEvent(UpsEvent::Lost, map);
        lostState = UpsInfo::CommunicationLost;
        flushUpsInfo(UpsInfo::State, UpsInfo::CommunicationLost);
        emit postDEvent(UpsEvent::State, map);
    }
}

QByteArray OrvekClient::readRequest(int index)
{
    return UpsFrames::readRequest(index);
}

QByteArray OrvekClient::writeRequest(quint8 reg, quint16 value)
{
    return UpsFrames::writeRequest(reg, value);
}

void OrvekClient::UPS_sendMessage()
{
    socket->write(readRequest(requestIndex));
    socket->waitForBytesWritten(-1);
    waitForAnswer();
    if (socket->bytesAvailable() > 0)
        readMessage();
    // The rotation moves on whether or not this request was answered.
    ++requestIndex;
    if (requestIndex > UpsFrames::RequestCount - 1)
        requestIndex = 0;
}

void OrvekClient::waitForAnswer()
{
    // With the read buffer full nothing more can arrive before the next read,
    // and the socket's wait would only spin on the readable descriptor until
    // it times out: read what is there at once.
    if (socket->bytesAvailable() < kReadBufferSize)
        socket->waitForReadyRead(intervalMs());
}

void OrvekClient::readMessage()
{
    decodeAnswer(socket->readAll());
}

void OrvekClient::decodeAnswer(const QByteArray &buffer)
{
    const UpsAnswer answer = UpsAnswer::decode(buffer);
    // Exception answers (9 bytes) and fragments are dropped without a trace.
    if (!answer.accepted())
        return;
    failCount = 0;
    EventMap ev = baseEventMap();
    dataPoints.insert(UpsPoint::AgentAddress, targetAddress);

    bool raised = false;
    switch (answer.kind) {
    case UpsAnswer::Kind::Measurements:
        storeMeasurements(answer, ev);
        break;
    case UpsAnswer::Kind::Identity:
        for (const auto &block : answer.identity)
            dataPoints.insert(block.first, block.second);
        break;
    case UpsAnswer::Kind::Alarms:
        raised = storeAlarms(answer, ev);
        ev.insert(UpsKey::DisAlarm, int(raised));
        break;
    case UpsAnswer::Kind::Unknown:
    case UpsAnswer::Kind::Dropped:
        break; // contact, but nothing to decode
    }

    if (lostState != UpsInfo::Communicating) {
        lostState = UpsInfo::Communicating;
        ev.insert(UpsKey::Desc, name);
        ev.insert(UpsKey::State, UpsInfo::Communicating);
        emit postDEvent(UpsEvent::Restored, ev);
        emit postDEvent(UpsEvent::State, ev);
    }
    if (raised) {
        ev.insert(UpsKey::DisAlarm, 1);
        ev.insert(UpsKey::State, lostState);
        emit postDEvent(UpsEvent::State, ev);
    }
    emit postDEvent(UpsEvent::Decoded, ev);
}

void OrvekClient::storeMeasurements(const UpsAnswer &answer, EventMap &ev)
{
    for (int n = 0; n < answer.registers.size(); ++n)
        dataPoints.insert(n, int(answer.registers.at(n)));
    ev.insert(UpsKey::Data, QVariant::fromValue(dataPoints));
    ev.insert(UpsKey::RawData, answer.rawData);
}

bool OrvekClient::storeAlarms(const UpsAnswer &answer, EventMap &ev)
{
    const int textCount = getEventLogDesc().size();
    bool raised = false;
    for (int i = 0; i < UpsAlarms::evaluatedCount(textCount); ++i) {
        const int cur = answer.alarm(i);
        const int prev = eventStates.value(i, 0);
        if (cur != prev) {
            if (cur == 1) {
                ev.insert(UpsKey::AlarmId, UpsAlarms::raisedTextIndex(i));
                raised = true;
            } else {
                ev.insert(UpsKey::AlarmId, UpsAlarms::clearedTextIndex(i, textCount));
            }
            ev.insert(UpsKey::AlarmState, cur);
            emit postDEvent(UpsEvent::Alarm, ev);
            if (const int followUp = UpsAlarms::followUpEvent(i))
                emit postDEvent(followUp, ev);
        }
        eventStates.insert(i, cur);
        dataPoints.insert(UpsPoint::AlarmFirst + i, cur);
    }
    return raised;
}

void OrvekClient::reportData()
{
    // upsInfo ends each tick holding every data point under its id as text
    // plus the device keys; of those only what changed is written.
    refreshTarget();
    QVector<QPair<QString, QVariant>> changes;
    stageDataPoints(changes);
    stageInfo(changes, UpsInfo::Manufacturer, dataPoints.value(UpsPoint::Manufacturer));
    stageInfo(changes, UpsInfo::Name, name);
    stageInfo(changes, UpsInfo::Model, dataPoints.value(UpsPoint::Model));
    stageInfo(changes, UpsInfo::PortInfo, portInfo);
    stageInfo(changes, UpsInfo::State, lostState);
    stageInfo(changes, UpsInfo::Address, QString::number(UpsFrames::UnitId));
    stageInfo(changes, UpsInfo::Load, dataPoints.value(UpsPoint::OutputLoad).toInt());
    if (changes.isEmpty())
        return;
    QMutexLocker locker(&mutex);
    for (const auto &change : qAsConst(changes))
        upsInfo.insert(change.first, change.second);
}

void OrvekClient::stageDataPoints(QVector<QPair<QString, QVariant>> &changes)
{
    for (auto it = dataPoints.constBegin(); it != dataPoints.constEnd(); ++it) {
        const auto published = publishedPoints.constFind(it.key());
        if (published != publishedPoints.constEnd() && sameValue(*published, *it))
            continue;
        publishedPoints.insert(it.key(), *it);
        changes.append({QString::number(it.key()), *it});
    }
}

void OrvekClient::stageInfo(QVector<QPair<QString, QVariant>> &changes, const QString &key, const QVariant &value)
{
    // The only other writer, a lost report, writes the state this tick publishes.
    const auto published = publishedInfo.constFind(key);
    if (published != publishedInfo.constEnd() && sameValue(*published, value))
        return;
    publishedInfo.insert(key, value);
    changes.append({key, value});
}

int OrvekClient::control(int id, QString value)
{
    ControlCmd cmd;
    cmd.id = id;
    cmd.value = value;
    QMutexLocker locker(&cmdMutex);
    cmdList.append(cmd);
    return 1;
}

bool OrvekClient::takeNextCommand(ControlCmd &cmd)
{
    QMutexLocker locker(&cmdMutex);
    if (cmdList.isEmpty())
        return false;
    cmd = cmdList.takeFirst();
    return true;
}

int OrvekClient::check_set_command()
{
    EventMap map; // reused for every command of this call
    int sent = 0;
    ControlCmd cmd;
    // The lock is taken only to take a command off the queue, never while sending.
    while (takeNextCommand(cmd)) {
        map.insert(UpsKey::ControlId, cmd.id);
        map.insert(UpsKey::ControlValue, cmd.value);
        map.insert(UpsKey::Name, name);

        const UpsCommands::Command &command = UpsCommands::find(cmd.id);
        const QString commandText = command.text ? tr(command.text) : QString();
        int result = 0;
        if (socket && socket->state() == QAbstractSocket::ConnectedState) {
            sendCommand(command.reg, UpsCommands::valueFor(command, cmd.value));
            // At most 200 results a tick; the next command was sent but gets
            // no result and the rest wait for the next tick.
            if (++sent > kMaxCommandsPerTick)
                return 1;
            result = 1;
        }
        map.insert(UpsKey::Result, result);
        map.insert(UpsKey::CmdId, cmd.id);
        const QString resultText = result ? tr("successful") : tr("failed");
        map.insert(UpsKey::Desc, tr("%1 excute %2 %3").arg(name, commandText, resultText));
        emit postDEvent(UpsEvent::CommandResult, map);
    }
    return 1;
}

void OrvekClient::sendCommand(quint8 reg, quint16 value)
{
    socket->waitForBytesWritten(-1);
    socket->write(writeRequest(reg, value));
    waitForAnswer();
    // The answer only means the device saw the request; it is not checked.
    if (socket->bytesAvailable() > 0)
        socket->readAll();
}

QString OrvekClient::utfToChina(QString s)
{
    return QString::fromUtf8(s.toLatin1());
}

QStringList OrvekClient::getDataLogDesc()
{
    return OrvekFont::instance()->getDataLogDesc();
}

QStringList OrvekClient::getEventLogDesc()
{
    return OrvekFont::instance()->getEventLogDesc();
}

QStringList OrvekClient::changeLogData(QMap<int, QVariant> data)
{
    return OrvekFont::instance()->changeLogData(data);
}

CollectView *OrvekClient::getView()
{
#ifndef ORVEK_NO_VIEWS
    if (!view) {
        view = new ChildForm(nullptr);
        connect(view, SIGNAL(postDEvent(int, QMap<QString, QVariant>)), this,
                SIGNAL(postDEvent(int, QMap<QString, QVariant>)));
    }
    view->setName(name);
    view->refreshData();
#endif
    return view;
}
