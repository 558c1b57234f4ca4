#include "metricscounters.h"

#include "devicehost.h"
#include "devicesession.h"
#include "upscontract.h"

MetricsCounters::MetricsCounters(DeviceHost *host, QObject *parent)
    : QObject(parent)
    , m_host(host)
{
    connect(host, &DeviceHost::deviceEvent, this, &MetricsCounters::onDeviceEvent);
    connect(host, &DeviceHost::sessionsChanged, this, &MetricsCounters::attachSessions);
    attachSessions();
}

void MetricsCounters::onDeviceEvent(const QString &device, int type)
{
    DeviceCounters &c = m_counters[device];
    if (UpsControl::isRequest(type)) {
        ++c.commands[type];
        return;
    }
    ++c.events[type];
    if (type == UpsEvent::Decoded)
        ++c.answers;
}

// The command result is in the event map, which only the session's own signal carries.
void MetricsCounters::onSessionEvent(const QString &device, int type, const QMap<QString, QVariant> &map)
{
    if (type != UpsEvent::CommandResult)
        return;
    const int command = map.value(UpsKey::CmdId, map.value(UpsKey::ControlId)).toInt();
    ++m_counters[device].results[qMakePair(command, map.value(UpsKey::Result).toInt() == 1)];
}

void MetricsCounters::attachSessions()
{
    for (auto it = m_attached.begin(); it != m_attached.end();) {
        if (it.value().isNull())
            it = m_attached.erase(it);
        else
            ++it;
    }
    for (DeviceSession *session : m_host->sessions()) {
        if (m_attached.contains(session))
            continue;
        m_attached.insert(session, session);
        const QString name = session->name();
        connect(session, &DeviceSession::eventReceived, this,
                [this, name](int type, const QMap<QString, QVariant> &map) { onSessionEvent(name, type, map); });
    }
}
