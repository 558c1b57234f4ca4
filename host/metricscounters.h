#ifndef METRICSCOUNTERS_H
#define METRICSCOUNTERS_H

#include <QHash>
#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QVariant>

class DeviceHost;
class DeviceSession;

// What happened to one device since the host started, for counters that
// only ever grow.
struct DeviceCounters
{
    quint64 answers = 0;                   // decoded answers (2007)
    QMap<int, quint64> events;             // by event type, control requests left out
    QMap<int, quint64> commands;           // requests by control id
    QMap<QPair<int, bool>, quint64> results; // by control id and executed or not
};

// Counts what the host's signals report, per device name. Counts survive a
// device being removed and added again under the same name.
class MetricsCounters : public QObject
{
    Q_OBJECT
public:
    explicit MetricsCounters(DeviceHost *host, QObject *parent = nullptr);

    DeviceCounters counters(const QString &device) const { return m_counters.value(device); }

private:
    void onDeviceEvent(const QString &device, int type);
    void onSessionEvent(const QString &device, int type, const QMap<QString, QVariant> &map);
    void attachSessions();

    DeviceHost *m_host;
    QHash<QString, DeviceCounters> m_counters;
    // The sessions whose events are watched; a session deleted leaves a null.
    QHash<DeviceSession *, QPointer<DeviceSession>> m_attached;
};

#endif // METRICSCOUNTERS_H
