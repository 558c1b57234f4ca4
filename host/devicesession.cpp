#include "devicesession.h"

#include <QMutexLocker>

#include "collectthread.h"
#include "collectview.h"
#include "hostlogging.h"
#include "upsalarms.h"
#include "upscontract.h"
#include "upspoints.h"

namespace {

constexpr int kAlarmLast = UpsPoint::AlarmFirst + UpsAlarms::EvaluatedCount - 1;
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
    if (UpsControl::isRequest(type)) {
        if (m_client)
            m_client->control(type, map.value(UpsKey::ControlValue).toString());
    } else if (type == UpsEvent::Decoded) {
        const QVariant data = map.value(UpsKey::Data);
        if (data.userType() == qMetaTypeId<QMap<int, QVariant>>()) {
            m_latestData = data.value<QMap<int, QVariant>>();
            m_lastDataTime = QDateTime::currentDateTimeUtc(); // for ages only: no time zone lookup
            if (m_viewShown)
                updateView();
            emit dataReceived(m_latestData);
        }
    }
    emit eventReceived(type, map);
}

CollectView *DeviceSession::showView()
{
    if (!m_view && m_client) {
        m_view = m_client->getView();
        if (m_view && m_userLevel >= 0)
            m_view->setUserInfo(m_userName, m_userLevel);
    }
    m_viewShown = m_view != nullptr;
    if (!m_latestData.isEmpty())
        updateView();
    return m_view;
}

void DeviceSession::updateView()
{
    if (!m_view)
        return;
    m_view->flushData(m_latestData);
    m_view->refreshData();
}

void DeviceSession::requestControl(int controlId, const QString &value)
{
    if (m_view) {
        m_view->control(controlId, value);
        return;
    }
    // A plug-in without a view: the same request, straight into the routing.
    QMap<QString, QVariant> map;
    map.insert(UpsKey::Name, m_name);
    map.insert(UpsKey::ControlId, controlId);
    map.insert(UpsKey::ControlValue, value);
    onPostDEvent(controlId, map);
}

void DeviceSession::setUserInfo(const QString &user, int level)
{
    m_userName = user;
    m_userLevel = level;
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
        name = info.value(UpsInfo::Name);
        state = info.value(UpsInfo::State);
        model = info.value(UpsInfo::Model);
        load = info.value(UpsInfo::Load);
        port = info.value(UpsInfo::PortInfo);
    }
    const QString reportedName = name.toString();
    if (!reportedName.isEmpty())
        status.name = reportedName;
    bool ok = false;
    const int stateValue = state.toInt(&ok);
    if (ok && stateValue == UpsInfo::Communicating)
        status.state = DeviceStatus::State::Communicating;
    else if (ok && stateValue == UpsInfo::CommunicationLost)
        status.state = DeviceStatus::State::Lost;
    status.model = identityText(model);
    const int loadValue = load.toInt(&ok);
    // The client reports 0 until the first measurements arrive.
    status.load = ok && !m_latestData.isEmpty() ? loadValue : -1;
    status.portInfo = port.toString();
    status.alarmActive = alarmsActive(m_latestData);
    status.stale = status.state == DeviceStatus::State::Communicating && isStale(QDateTime::currentDateTimeUtc());
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
    return m_latestData.contains(UpsPoint::BatteryCapacity) && m_latestData.contains(UpsPoint::AlarmFirst)
           && m_latestData.contains(UpsPoint::Model);
}

bool DeviceSession::alarmsActive(const QMap<int, QVariant> &data)
{
    for (int id = UpsPoint::AlarmFirst; id <= kAlarmLast; ++id) {
        bool ok = false;
        if (data.value(id).toInt(&ok) == 1 && ok)
            return true;
    }
    return false;
}

QStringList DeviceSession::activeAlarms() const
{
    QStringList texts;
    for (int id = UpsPoint::AlarmFirst; id <= kAlarmLast; ++id) {
        bool ok = false;
        if (m_latestData.value(id).toInt(&ok) != 1 || !ok)
            continue;
        const int number = id - UpsPoint::AlarmFirst;
        const QString text = m_eventTexts.value(UpsAlarms::raisedTextIndex(number)).trimmed();
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
