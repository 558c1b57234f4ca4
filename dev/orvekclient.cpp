#include "orvekclient.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLoggingCategory>
#include <QSettings>
#include <QTcpSocket>
#include <QTimer>
#include <ctime>
#include <limits>

#include "orvekfont.h"
// The core-only build (sanitizer runs) leaves the views out.
#ifndef ORVEK_NO_VIEWS
#include "childform.h"
#endif

Q_LOGGING_CATEGORY(lcOrvekClient, "orvek.client")

namespace {

// Modbus/TCP framing of this client: transaction id and unit id are fixed.
constexpr int kFrameSize = 12;
constexpr quint8 kUnitId = 0x01;
constexpr quint8 kFnReadDiscreteInputs = 0x02;
constexpr quint8 kFnReadInputRegisters = 0x04;
constexpr quint8 kFnWriteSingleRegister = 0x06;

// Answers: MBAP header (7) + function (1) + byte count (1), data from byte 9.
constexpr int kMinAnswerSize = 14;
constexpr int kByteCountOffset = 8;
constexpr int kDataOffset = 9;

constexpr quint8 kCountMeasurements = 0x92; // 73 registers from 0x0101
constexpr quint8 kCountIdentityA = 0xE0;    // 112 registers from 0x0201
constexpr quint8 kCountIdentityB = 0xA0;    // 80 registers from 0x0271
constexpr quint8 kCountAlarms = 0x09;       // 65 discrete inputs from 0x0101

constexpr int kMeasurementCount = 73;
constexpr int kAlarmBytes = 8; // the ninth byte of the alarm block is not used

constexpr int kRequestCount = 4;
struct ReadRequest
{
    quint8 function;
    quint16 start;
    quint16 quantity;
};
// Rotation order: identity block A, identity block B, measurements, alarms.
constexpr ReadRequest kReadRequests[kRequestCount] = {
    {kFnReadInputRegisters, 0x0201, 0x0070},
    {kFnReadInputRegisters, 0x0271, 0x0050},
    {kFnReadInputRegisters, 0x0101, 0x0049},
    {kFnReadDiscreteInputs, 0x0101, 0x0041},
};

// Registers that are the first half of a 32-bit pair on the device.
constexpr int kLongRegisters[] = {18, 20, 22, 33, 35, 37, 50, 52, 54, 60, 62};

constexpr int kIdAgentAddress = 4014;
constexpr int kIdManufacturer = 4001;
constexpr int kIdModel = 4000;
constexpr int kIdOutputLoad = 39;
constexpr int kAlarmIdBase = 2000;
constexpr int kAlarmBatteryLow = 3;
constexpr int kAlarmInputFault = 6;

constexpr int kEvRestored = 1040;
constexpr int kEvLost = 1041;
constexpr int kEvCommandResult = 1042;
constexpr int kEvState = 2001;
constexpr int kEvAlarm = 2006;
constexpr int kEvDecoded = 2007;
constexpr int kEvInputFault = 2009;
constexpr int kEvBatteryLow = 2010;

constexpr int kDefaultPort = 502;
constexpr int kDefaultRetries = 5;
constexpr int kDefaultInterval = 5;
constexpr int kReadBufferSize = 1024;
constexpr int kDefaultReconnectPauseMs = 5000;
constexpr int kDefaultConnectWaitMs = 30000;
constexpr int kMaxCommandsPerTick = 200;

const char kTimeFormat[] = "yyyy-MM-dd hh:mm:ss";

// Control command table: text for the result, register written and how the
// value is formed (fixed, or parsed from the request's argument).
struct CommandEntry
{
    int id;
    const char *text;
    quint8 reg;
    bool parsesValue;
    quint16 fixedValue;
};
constexpr CommandEntry kCommands[] = {
    {1003, QT_TRANSLATE_NOOP("OrvekClient", "Selftest"), 1, false, 0xFFFF},
    {1004, QT_TRANSLATE_NOOP("OrvekClient", "Discharge"), 6, true, 0},
    {1005, QT_TRANSLATE_NOOP("OrvekClient", "Discharge to low"), 2, false, 0xFFFF},
    {1006, QT_TRANSLATE_NOOP("OrvekClient", "Cancel task"), 4, false, 0xFFFF},
    {1007, QT_TRANSLATE_NOOP("OrvekClient", "Shutdown UPS"), 7, true, 0},
    {1008, QT_TRANSLATE_NOOP("OrvekClient", "Standby UPS"), 8, true, 0},
    // The clock text is not sent: the device is told register 0 = 0.
    {1011, QT_TRANSLATE_NOOP("OrvekClient", "Time set"), 0, false, 0},
    {1013, QT_TRANSLATE_NOOP("OrvekClient", "Cancel shutdown"), 5, false, 0xFFFF},
    // The same value toggles the buzzer whatever the requested state.
    {1014, QT_TRANSLATE_NOOP("OrvekClient", "Buzzer switch"), 3, false, 0xFFFF},
};

quint8 byteAt(const QByteArray &buffer, int index)
{
    return index >= 0 && index < buffer.size() ? quint8(buffer.at(index)) : 0;
}

quint16 registerAt(const QByteArray &buffer, int n)
{
    const int at = kDataOffset + 2 * n;
    return quint16((byteAt(buffer, at) << 8) | byteAt(buffer, at + 1));
}

bool isLongRegister(int n)
{
    for (int r : kLongRegisters) {
        if (r == n)
            return true;
    }
    return false;
}

// Low 16 bits of the decimal argument; text that is not a number gives 0.
quint16 parseCommandValue(const QString &value)
{
    bool ok = false;
    const qlonglong parsed = value.toLongLong(&ok, 10);
    return ok ? quint16(parsed & 0xFFFF) : 0;
}

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

QString nowText()
{
    return QDateTime::currentDateTime().toString(QLatin1String(kTimeFormat));
}

} // namespace

// Slices of the two identity answers: data point id, offset in the answer, length.
struct IdentitySlice
{
    int id;
    int offset;
    int length;
};
static const IdentitySlice kIdentityA[] = {
    {4001, 9, 32}, {4000, 41, 64}, {4004, 105, 64}, {4003, 169, 64}};
static const IdentitySlice kIdentityB[] = {{4005, 9, 64}, {4002, 73, 64}, {4006, 137, 32}};

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
    QString dir = QCoreApplication::applicationDirPath();
    dir.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return dir + QStringLiteral("/KSVO/") + QStringLiteral("Quoranet") + QStringLiteral("/db")
           + QStringLiteral("/dev.ini");
}

void OrvekClient::loadConfig()
{
    QSettings settings(configFilePath(), QSettings::IniFormat);
    const QString group = name;
    const QString address = settings.value(group + QStringLiteral("/ipAddr")).toString();
    // Missing or unusable numbers fall back to the defaults.
    int port = positiveOr(settings.value(group + QStringLiteral("/port"), kDefaultPort), kDefaultPort);
    if (port > 65535)
        port = kDefaultPort;
    bool ok = false;
    const int configuredRetries = settings.value(group + QStringLiteral("/retries"), kDefaultRetries).toInt(&ok);
    retries = ok ? configuredRetries : kDefaultRetries;
    protocol = settings.value(group + QStringLiteral("/protocol")).toInt();
    const int configuredInterval = settings.value(group + QStringLiteral("/interval"), kDefaultInterval).toInt(&ok);
    interval = ok ? configuredInterval : kDefaultInterval;
    setTarget(address, port);

    const int n = getEventLogDesc().size();
    for (int i = 0; i < n; ++i) {
        const QString key = group + QStringLiteral("/eventChooseList/%1").arg(i + 1);
        eventChooseList[i] = settings.value(key).toInt();
    }
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

EventMap OrvekClient::baseEventMap() const
{
    EventMap map;
    map.insert(QStringLiteral("name"), name);
    map.insert(QStringLiteral("protocol"), protocol);
    map.insert(QStringLiteral("lost"), 0);
    map.insert(QStringLiteral("ipAddr"), targetAddress);
    map.insert(QStringLiteral("port"), targetPort);
    map.insert(QStringLiteral("timeStr"), nowText());
    return map;
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

    EventMap map;
    map.insert(QStringLiteral("name"), name);
    map.insert(QStringLiteral("protocol"), protocol);
    map.insert(QStringLiteral("ipAddr"), targetAddress);
    map.insert(QStringLiteral("port"), targetPort);
    map.insert(QStringLiteral("timeStr"), nowText());

    const QAbstractSocket::SocketState state = socket->state();
    if (state == QAbstractSocket::UnconnectedState || state == QAbstractSocket::ClosingState)
        connectOrCountFailure(map);
    else if (state == QAbstractSocket::ConnectedState)
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
    if (failCount >= retries && (lostState == -1 || lostState == 0)) {
        map.insert(QStringLiteral("lost"), 1);
        map.insert(QStringLiteral("state"), 1);
        map.insert(QStringLiteral("desc"), name);
        emit postDEvent(kEvLost, map);
        lostState = 1;
        flushUpsInfo(QStringLiteral("state"), 1);
        emit postDEvent(kEvState, map);
    }
}

QByteArray OrvekClient::readRequest(int index)
{
    const ReadRequest &r = kReadRequests[qBound(0, index, kRequestCount - 1)];
    QByteArray frame(kFrameSize, '\0');
    frame[5] = 0x06; // length of the rest
    frame[6] = char(kUnitId);
    frame[7] = char(r.function);
    frame[8] = char(r.start >> 8);
    frame[9] = char(r.start & 0xFF);
    frame[10] = char(r.quantity >> 8);
    frame[11] = char(r.quantity & 0xFF);
    return frame;
}

QByteArray OrvekClient::writeRequest(quint8 reg, quint16 value)
{
    QByteArray frame(kFrameSize, '\0');
    frame[5] = 0x06;
    frame[6] = char(kUnitId);
    frame[7] = char(kFnWriteSingleRegister);
    frame[8] = 0x00;
    frame[9] = char(reg);
    frame[10] = char(value >> 8);
    frame[11] = char(value & 0xFF);
    return frame;
}

void OrvekClient::UPS_sendMessage()
{
    socket->write(readRequest(requestIndex));
    socket->waitForBytesWritten(-1);
    socket->waitForReadyRead(intervalMs());
    if (socket->bytesAvailable() > 0)
        readMessage();
    // The rotation moves on whether or not this request was answered.
    ++requestIndex;
    if (requestIndex > kRequestCount - 1)
        requestIndex = 0;
}

void OrvekClient::readMessage()
{
    decodeAnswer(socket->readAll());
}

void OrvekClient::decodeAnswer(const QByteArray &buffer)
{
    // Exception answers (9 bytes) and fragments are dropped without a trace.
    if (buffer.size() < kMinAnswerSize)
        return;
    failCount = 0;
    // Answers are not matched to requests: the byte count alone tells the type.
    const quint8 count = byteAt(buffer, kByteCountOffset);
    EventMap ev = baseEventMap();
    dataPoints.insert(kIdAgentAddress, targetAddress);

    bool raised = false;
    switch (count) {
    case kCountMeasurements:
        decodeMeasurements(buffer, ev);
        break;
    case kCountIdentityA:
        decodeIdentity(buffer, kIdentityA, int(std::size(kIdentityA)));
        break;
    case kCountIdentityB:
        decodeIdentity(buffer, kIdentityB, int(std::size(kIdentityB)));
        break;
    case kCountAlarms:
        raised = decodeAlarms(buffer, ev);
        ev.insert(QStringLiteral("dis_alarm"), int(raised));
        break;
    default:
        break; // contact, but nothing to decode
    }

    if (lostState != 0) {
        lostState = 0;
        ev.insert(QStringLiteral("desc"), name);
        ev.insert(QStringLiteral("state"), 0);
        emit postDEvent(kEvRestored, ev);
        emit postDEvent(kEvState, ev);
    }
    if (raised) {
        ev.insert(QStringLiteral("dis_alarm"), 1);
        ev.insert(QStringLiteral("state"), lostState);
        emit postDEvent(kEvState, ev);
    }
    emit postDEvent(kEvDecoded, ev);
}

void OrvekClient::decodeMeasurements(const QByteArray &buffer, EventMap &ev)
{
    for (int n = 0; n < kMeasurementCount; ++n) {
        quint16 value = registerAt(buffer, n);
        if (isLongRegister(n)) {
            // A 32-bit pair on the device; each id still carries its own 16 bits.
            const quint32 wide = (quint32(value) << 16) | registerAt(buffer, n + 1);
            value = quint16(wide >> 16);
        }
        dataPoints.insert(n, int(value));
    }
    ev.insert(QStringLiteral("data"), QVariant::fromValue(dataPoints));
    ev.insert(QStringLiteral("raw_data"), buffer.mid(kDataOffset, 2 * kMeasurementCount));
}

void OrvekClient::decodeIdentity(const QByteArray &buffer, const IdentitySlice *slices, int count)
{
    // Kept as raw bytes, trailing NUL or blanks included.
    for (int i = 0; i < count; ++i)
        dataPoints.insert(slices[i].id, buffer.mid(slices[i].offset, slices[i].length));
}

bool OrvekClient::decodeAlarms(const QByteArray &buffer, EventMap &ev)
{
    QMap<int, int> states;
    for (int j = 0; j < kAlarmBytes; ++j) {
        const quint8 byte = byteAt(buffer, kDataOffset + j);
        for (int b = 0; b < 8; ++b)
            states.insert(8 * j + b, (byte >> b) & 1);
    }

    // Only the first quarter of the event list are alarm numbers evaluated
    // here (0..26 with the full list); higher bits are dropped on purpose.
    const int n = getEventLogDesc().size();
    const int evaluated = n / 4;
    const int clearedOffset = n / 2;
    bool raised = false;
    for (int i = 0; i < evaluated; ++i) {
        const int cur = states.value(i, 0);
        const int prev = eventStates.value(i, 0);
        if (cur != prev) {
            if (cur == 1) {
                ev.insert(QStringLiteral("alarmId"), i);
                raised = true;
            } else {
                ev.insert(QStringLiteral("alarmId"), i + clearedOffset);
            }
            ev.insert(QStringLiteral("alarmState"), cur);
            emit postDEvent(kEvAlarm, ev);
            if (i == kAlarmBatteryLow) {
                emit postDEvent(kEvBatteryLow, ev);
            } else if (i == kAlarmInputFault) {
                ev.insert(QStringLiteral("alarmState"), cur);
                emit postDEvent(kEvInputFault, ev);
            }
        }
        eventStates.insert(i, cur);
        dataPoints.insert(kAlarmIdBase + i, cur);
    }
    return raised;
}

void OrvekClient::reportData()
{
    const DataPointMap points = dataPoints;
    {
        QMutexLocker locker(&mutex);
        for (auto it = points.constBegin(); it != points.constEnd(); ++it)
            upsInfo.insert(QString::number(it.key()), it.value());
    }
    flushUpsInfo(QStringLiteral("IdentManufacturer"), dataPoints.value(kIdManufacturer));
    flushUpsInfo(QStringLiteral("name"), name);
    flushUpsInfo(QStringLiteral("upsIdentModel"), dataPoints.value(kIdModel));
    flushUpsInfo(QStringLiteral("portInfo"), QStringLiteral("tcp:%1:%2").arg(targetAddress, QString::number(targetPort)));
    flushUpsInfo(QStringLiteral("state"), lostState);
    flushUpsInfo(QStringLiteral("upsAddr"), QStringLiteral("1"));
    flushUpsInfo(QStringLiteral("upsLoad"), dataPoints.value(kIdOutputLoad).toInt());
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
    const QString resultTexts[2] = {tr("failed"), tr("successful")};
    EventMap map; // reused for every command of this call
    int sent = 0;
    ControlCmd cmd;
    // The lock is taken only to take a command off the queue, never while sending.
    while (takeNextCommand(cmd)) {
        map.insert(QStringLiteral("controlId"), cmd.id);
        map.insert(QStringLiteral("controlValue"), cmd.value);
        map.insert(QStringLiteral("name"), name);

        QString commandText;
        quint8 reg = 0;
        quint16 value = 0;
        for (const CommandEntry &entry : kCommands) {
            if (entry.id == cmd.id) {
                commandText = tr(entry.text);
                reg = entry.reg;
                value = entry.parsesValue ? parseCommandValue(cmd.value) : entry.fixedValue;
                break;
            }
        }

        int result = 0;
        if (socket && socket->state() == QAbstractSocket::ConnectedState) {
            sendCommand(reg, value);
            // At most 200 results a tick; the next command was sent but gets
            // no result and the rest wait for the next tick.
            if (++sent > kMaxCommandsPerTick)
                return 1;
            result = 1;
        }
        map.insert(QStringLiteral("result"), result);
        map.insert(QStringLiteral("cmdId"), cmd.id);
        map.insert(QStringLiteral("desc"),
                   tr("%1 excute %2 %3").arg(name, commandText, resultTexts[result]));
        emit postDEvent(kEvCommandResult, map);
    }
    return 1;
}

void OrvekClient::sendCommand(quint8 reg, quint16 value)
{
    socket->waitForBytesWritten(-1);
    socket->write(writeRequest(reg, value));
    socket->waitForReadyRead(intervalMs());
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
