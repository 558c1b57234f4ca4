#include "devicesession.h"

#include <QMutexLocker>

#include "collectthread.h"
#include "collectview.h"
#include "eventtypes.h"
#include "hostlogging.h"

namespace {

const char kKeyControlValue[] = "controlValue";
const char kKeyControlId[] = "controlId";
const char kKeyName[] = "name";
const char kKeyData[] = "data";
const char kInfoState[] = "state";
const char kInfoModel[] = "upsIdentModel";
const char kInfoLoad[] = "upsLoad";
const char kInfoPort[] = "portInfo";
const char kInfoName[] = "name";

constexpr int kStateCommunicating = 0;
constexpr int kStateLost = 1;
constexpr int kMaxIdentityChars = 64;
constexpr qint64 kSecondsPerMinute = 60;
constexpr qint64 kSecondsPerHour = 3600;

} // namespace

DeviceSession::DeviceSession(CollectThread *client, const QString &name, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_client(client)
{
}

DeviceSession *DeviceSession::create(CollectThread *factory, const QString &name, QObject *parent)
{
    if (!factory)
        return nullptr;
    CollectThread *client = factory->create(nullptr);
    if (!client) {
        qCDebug(lcHost) << "the plug-in made no client for" << name;
        return nullptr;
    }
    client->name = name;
    client->loadConfig();

    auto *session = new DeviceSession(client, name, parent);
    session->m_view = client->getView();
    session->m_eventTexts = client->getEventLogDesc();
    session->m_dataLogHeader = client->getDataLogDesc();
    // Events leave the client thread; requests of the view come the same way.
    QObject::connect(client, SIGNAL(postDEvent(int,QMap<QString,QVariant>)), session,
                     SLOT(onPostDEvent(int,QMap<QString,QVariant>)), Qt::QueuedConnection);
    return session;
}

DeviceSession::~DeviceSession()
{
    stopAndWait();
    delete m_client; // deletes its view too
}

void DeviceSession::stopAndWait()
{
    if (m_client && m_client->isRunning()) {
        m_client->quit();
        m_client->wait(); // never delete a running thread
    }
}

void DeviceSession::start()
{
    if (m_client && !m_client->isRunning())
        m_client->start();
}

void DeviceSession::requestStop()
{
    if (m_client)
        m_client->quit();
}

bool DeviceSession::waitStopped(unsigned long ms)
{
    return !m_client || m_client->wait(ms);
}

bool DeviceSession::isRunning() const
{
    return m_client && m_client->isRunning();
}

void DeviceSession::onPostDEvent(int type, QMap<QString, QVariant> map)
{
    if (EventType::isControlRequest(type)) {
        if (m_client)
            m_client->control(type, map.value(QLatin1String(kKeyControlValue)).toString());
    } else if (type == EventType::Decoded) {
        const QVariant data = map.value(QLatin1String(kKeyData));
        if (data.userType() == qMetaTypeId<QMap<int, QVariant>>()) {
            m_latestData = data.value<QMap<int, QVariant>>();
            m_lastDataTime = QDateTime::currentDateTime();
            if (m_view) {
                m_view->flushData(m_latestData);
                m_view->refreshData();
            }
            emit dataReceived(m_latestData);
        }
    }
    emit eventReceived(type, map);
}

void DeviceSession::requestControl(int controlId, const QString &value)
{
    if (m_view) {
        m_view->control(controlId, value);
        return;
    }
    // A plug-in without a view: the same request, straight into the routing.
    QMap<QString, QVariant> map;
    map.insert(QLatin1String(kKeyName), m_name);
    map.insert(QLatin1String(kKeyControlId), controlId);
    map.insert(QLatin1String(kKeyControlValue), value);
    onPostDEvent(controlId, map);
}

void DeviceSession::setUserInfo(const QString &user, int level)
{
    if (m_view)
        m_view->setUserInfo(user, level);
}

DeviceStatus DeviceSession::status() const
{
    DeviceStatus status;
    status.name = m_name;
    if (!m_client)
        return status;
    QVariant name, state, model, load, port;
    {
        QMutexLocker locker(&m_client->mutex);
        const QMap<QString, QVariant> &info = m_client->upsInfo;
        name = info.value(QLatin1String(kInfoName));
        state = info.value(QLatin1String(kInfoState));
        model = info.value(QLatin1String(kInfoModel));
        load = info.value(QLatin1String(kInfoLoad));
        port = info.value(QLatin1String(kInfoPort));
    }
    const QString reportedName = name.toString();
    if (!reportedName.isEmpty())
        status.name = reportedName;
    bool ok = false;
    const int stateValue = state.toInt(&ok);
    if (ok && stateValue == kStateCommunicating)
        status.state = DeviceStatus::State::Communicating;
    else if (ok && stateValue == kStateLost)
        status.state = DeviceStatus::State::Lost;
    status.model = identityText(model);
    const int loadValue = load.toInt(&ok);
    // The client reports 0 until the first measurements arrive.
    status.load = ok && !m_latestData.isEmpty() ? loadValue : -1;
    status.portInfo = port.toString();
    status.alarmActive = alarmsActive(m_latestData);
    return status;
}

QString DeviceSession::dataAgeText(const QDateTime &last, const QDateTime &now)
{
    if (!last.isValid())
        return tr("none yet");
    const qint64 age = qMax<qint64>(0, last.secsTo(now)); // a clock set back reads as now
    if (age < kSecondsPerMinute)
        return tr("%1 s ago").arg(age);
    if (age < kSecondsPerHour)
        return tr("%1 min %2 s ago").arg(age / kSecondsPerMinute).arg(age % kSecondsPerMinute);
    return tr("%1 h %2 min ago").arg(age / kSecondsPerHour).arg(age % kSecondsPerHour / kSecondsPerMinute);
}

bool DeviceSession::hasFullPicture() const
{
    return m_latestData.contains(DataPoint::BatteryCapacity) && m_latestData.contains(DataPoint::AlarmFirst)
           && m_latestData.contains(DataPoint::Model);
}

bool DeviceSession::alarmsActive(const QMap<int, QVariant> &data)
{
    for (int id = DataPoint::AlarmFirst; id <= DataPoint::AlarmLast; ++id) {
        bool ok = false;
        if (data.value(id).toInt(&ok) == 1 && ok)
            return true;
    }
    return false;
}

QStringList DeviceSession::activeAlarms() const
{
    QStringList texts;
    for (int id = DataPoint::AlarmFirst; id <= DataPoint::AlarmLast; ++id) {
        bool ok = false;
        if (m_latestData.value(id).toInt(&ok) != 1 || !ok)
            continue;
        const int number = id - DataPoint::AlarmFirst;
        const QString text = m_eventTexts.value(number).trimmed();
        texts << (text.isEmpty() ? tr("Alarm %1").arg(number) : text);
    }
    return texts;
}

QStringList DeviceSession::dataLogRow(const QMap<int, QVariant> &data) const
{
    return m_client ? m_client->changeLogData(data) : QStringList();
}

QString DeviceSession::identityText(const QVariant &value)
{
    QByteArray bytes = value.userType() == QMetaType::QByteArray ? value.toByteArray() : value.toString().toUtf8();
    const int nul = bytes.indexOf('\0');
    if (nul >= 0)
        bytes.truncate(nul); // the agent pads its text registers with NUL
    QString text = QString::fromUtf8(bytes);
    for (QChar &c : text) {
        if (!c.isPrint())
            c = QLatin1Char(' ');
    }
    return text.trimmed().left(kMaxIdentityChars);
}
