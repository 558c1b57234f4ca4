#include "devicehost.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTimer>
#include <iterator>

#include "collectthread.h"
#include "commandwatch.h"
#include "devicesession.h"
#include "eventformatter.h"
#include "hostlogging.h"
#include "pluginhost.h"
#include "upscontract.h"

namespace {
constexpr unsigned long kWaitSliceMs = 200;
// Rights levels offered at log-in, by level.
const char *const kRoleNames[] = {"viewer", "operator"};
// The plug-in counts the connection attempt itself as one without an answer:
// with so few retries even a good first connection is reported lost.
constexpr int kMisleadingRetries = 1;
// Longest the event loop waits while devices start in the background.
constexpr qint64 kStartSliceMs = 20;
} // namespace

DeviceHost::DeviceHost(const QString &logFolder, QObject *parent)
    : QObject(parent)
    , m_plugins(new PluginHost(this))
    , m_logs(logFolder)
    , m_staleTimer(new QTimer(this))
    , m_commandWatch(new CommandWatch(this))
{
    connect(m_staleTimer, &QTimer::timeout, this, &DeviceHost::checkStaleData);
    connect(m_commandWatch, &CommandWatch::verdict, this, &DeviceHost::onCommandVerdict);
    qRegisterMetaType<HostNotice>();
    connect(&m_logs, &LogWriter::failureChanged, this,
            [this](bool, const QString &message) { notice(QString(), message); });
}

DeviceHost::~DeviceHost()
{
    shutdown();
}

int DeviceHost::loadPlugins(const QString &folder)
{
    const int known = m_plugins->problems().size();
    const int loaded = m_plugins->loadFolder(folder);
    for (const QString &problem : m_plugins->problems().mid(known))
        notice(QString(), problem);
    return loaded;
}

void DeviceHost::notice(const QString &device, const QString &text)
{
    const HostNotice n{QDateTime::currentDateTime(), device, text};
    qCDebug(lcHost) << "notice" << device << text;
    m_notices << n;
    if (m_notices.size() > MaxNotices)
        m_notices.removeFirst();
    emit noticeRaised(n);
}

int DeviceHost::startDevices(const QList<DeviceEntry> &entries)
{
    int started = 0;
    for (const DeviceEntry &entry : entries) {
        if (startDevice(entry))
            ++started;
    }
    return started;
}

bool DeviceHost::startDevice(const DeviceEntry &entry)
{
    CollectThread *factory = m_plugins->factory(entry.plugin);
    if (!factory) {
        notice(entry.name, tr("not started: no device plug-in \"%1\" is loaded").arg(entry.plugin));
        return false;
    }
    DeviceSession *session = addDevice(factory, entry.name);
    if (session) {
        session->setStaleRule(StaleRule(entry.interval));
        m_commandWatch->setPollInterval(entry.name, entry.interval);
    }
    return session != nullptr;
}

void DeviceHost::startDevicesInBackground(const QList<DeviceEntry> &entries)
{
    const bool idle = m_pendingStarts.isEmpty();
    m_pendingStarts << entries;
    if (idle) {
        m_backgroundStarted = 0;
        QTimer::singleShot(0, this, &DeviceHost::startPendingSlice);
    }
}

void DeviceHost::startPendingSlice()
{
    QElapsedTimer slice;
    slice.start();
    while (!m_pendingStarts.isEmpty() && !m_shuttingDown && slice.elapsed() < kStartSliceMs) {
        if (startDevice(m_pendingStarts.takeFirst()))
            ++m_backgroundStarted;
    }
    if (m_shuttingDown)
        m_pendingStarts.clear();
    if (!m_pendingStarts.isEmpty()) {
        QTimer::singleShot(0, this, &DeviceHost::startPendingSlice);
        return;
    }
    emit devicesStarted(m_backgroundStarted);
}

DeviceSession *DeviceHost::addDevice(CollectThread *factory, const QString &name)
{
    if (session(name)) {
        notice(name, tr("not started a second time: a device of that name is already running"));
        return nullptr;
    }
    DeviceSession *s = DeviceSession::create(factory, name, this);
    if (!s) {
        notice(name, tr("not started: the plug-in made no client for it"));
        return nullptr;
    }
    checkNewDevice(s);
    connect(s, &DeviceSession::eventReceived, this,
            [this, s](int type, const QMap<QString, QVariant> &map) { onEventReceived(s, type, map); });
    connect(s, &DeviceSession::dataReceived, this,
            [this, s](const QMap<int, QVariant> &data) { onDataReceived(s, data); });
    if (!m_userName.isEmpty())
        s->setUserInfo(m_userName, m_userLevel);
    m_sessions << s;
    m_byName.insert(name, s);
    s->start();
    if (!m_staleTimer->isActive())
        m_staleTimer->start(StaleCheckMs);
    emit sessionsChanged();
    return s;
}

void DeviceHost::checkNewDevice(DeviceSession *session)
{
    const QString name = session->name();
    const QString holder = m_logs.reserveDataName(name);
    if (!holder.isEmpty()) {
        notice(name, tr("the data logs of \"%1\" and \"%2\" would share one file name; \"%1\" writes %3")
                         .arg(name, holder, QFileInfo(m_logs.dataFilePath(name, QDate::currentDate())).fileName()));
    }
    const int retries = session->client()->retries;
    if (retries <= kMisleadingRetries) {
        notice(name, tr("retries = %1: the connection attempt itself counts as one without an answer, so even a "
                        "successful first connection is reported lost (and restored with the first answer); "
                        "set retries to 2 or more")
                         .arg(retries));
    }
}

DeviceSession *DeviceHost::session(const QString &name) const
{
    return m_byName.value(name);
}

QStringList DeviceHost::deviceNames() const
{
    QStringList names;
    for (DeviceSession *s : m_sessions)
        names << s->name();
    return names;
}

void DeviceHost::setUserInfo(const QString &user, int level)
{
    m_userName = user;
    m_userLevel = level;
    for (DeviceSession *s : qAsConst(m_sessions))
        s->setUserInfo(user, level);
}

QString DeviceHost::roleName(int level)
{
    return QLatin1String(kRoleNames[qBound(0, level, int(std::size(kRoleNames)) - 1)]);
}

void DeviceHost::onEventReceived(DeviceSession *s, int type, const QMap<QString, QVariant> &map)
{
    emit deviceEvent(s->name(), type);
    watchCommand(s, type, map);
    const QString text = EventFormatter::text(type, map, s->eventTexts());
    if (text.isEmpty() || repeatsAlarm(s->name(), type, map))
        return;
    logEvent(s, type, text);
}

void DeviceHost::logEvent(DeviceSession *s, int type, const QString &text)
{
    const QDateTime now = QDateTime::currentDateTime();
    m_logs.writeEvent(now, s->name(), type, text);
    emit eventLogged(now, s->name(), type, text);
}

void DeviceHost::watchCommand(DeviceSession *s, int type, const QMap<QString, QVariant> &map)
{
    if (UpsControl::isRequest(type)) {
        m_commandWatch->watch(s->name(), type, s->latestData());
    } else if (type == UpsEvent::CommandResult && map.value(UpsKey::Result).toInt() == 0) {
        // Not sent at all: the client's own result already says so.
        m_commandWatch->notSent(s->name(), map.value(UpsKey::CmdId).toInt());
    }
}

void DeviceHost::onCommandVerdict(const QString &device, int controlId, bool confirmed, int boundSeconds)
{
    DeviceSession *s = session(device);
    if (!s)
        return;
    const int type = confirmed ? CommandConfirmed : CommandNotConfirmed;
    logEvent(s, type, CommandWatch::verdictText(controlId, confirmed, boundSeconds));
    emit deviceEvent(device, type);
}

void DeviceHost::checkStaleData()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (DeviceSession *s : qAsConst(m_sessions)) {
        if (s->status().state == DeviceStatus::State::Lost)
            continue; // reported as lost already; whether data came back is decided after
        const bool stale = s->isStale(now);
        if (stale == m_staleReported.contains(s))
            continue;
        if (stale) {
            m_staleReported.insert(s);
            logEvent(s, DataStale, tr("Data stale: no answer decoded for %1 s").arg(s->lastDataTime().secsTo(now)));
        } else {
            m_staleReported.remove(s);
            logEvent(s, DataCurrent, tr("Data current again"));
        }
        emit deviceEvent(s->name(), stale ? DataStale : DataCurrent);
    }
}

bool DeviceHost::repeatsAlarm(const QString &device, int type, const QMap<QString, QVariant> &map)
{
    // Input fault (2009) and battery low (2010) follow the general alarm
    // event (2006) of the same change with the same alarm id: log it once.
    bool ok = false;
    const int id = map.value(UpsKey::AlarmId).toInt(&ok);
    const bool specific = type == UpsEvent::InputFault || type == UpsEvent::BatteryLow;
    if (specific && ok && id == m_lastAlarmId.value(device, -1))
        return true;
    m_lastAlarmId.insert(device, type == UpsEvent::Alarm && ok ? id : -1);
    return false;
}

void DeviceHost::onDataReceived(DeviceSession *s, const QMap<int, QVariant> &data)
{
    m_commandWatch->addData(s->name(), data);
    m_logs.writeDataRow(QDateTime::currentDateTime(), s->name(), s->dataLogHeader(), s->dataLogRow(data));
    emit dataLogged(s->name());
}

void DeviceHost::shutdown(const StopProgress &progress)
{
    m_pendingStarts.clear(); // devices not started yet stay so
    if (m_shuttingDown || m_sessions.isEmpty())
        return;
    m_shuttingDown = true;
    // All at once, so that the waits overlap: the whole stop takes as long
    // as the slowest client, not the sum.
    for (DeviceSession *s : qAsConst(m_sessions))
        s->requestStop();
    for (;;) {
        QStringList running;
        for (DeviceSession *s : qAsConst(m_sessions)) {
            if (!s->waitStopped(0))
                running << s->name();
        }
        if (running.isEmpty())
            break;
        if (progress)
            progress(running);
        for (DeviceSession *s : qAsConst(m_sessions)) {
            if (s->isRunning()) {
                s->waitStopped(kWaitSliceMs);
                break;
            }
        }
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    // Every thread has ended: now the clients (and their views) can go.
    const QList<DeviceSession *> sessions = m_sessions;
    m_sessions.clear();
    m_byName.clear();
    m_staleReported.clear();
    m_staleTimer->stop();
    m_commandWatch->clear();
    emit sessionsChanged();
    qDeleteAll(sessions);
    m_shuttingDown = false;
}
