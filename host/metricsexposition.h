#ifndef METRICSEXPOSITION_H
#define METRICSEXPOSITION_H

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QVariant>

#include "devicesession.h"
#include "metricscounters.h"

// What the metrics show of one device at one moment.
struct MetricsDevice
{
    QString name;
    DeviceStatus::State state = DeviceStatus::State::Unknown;
    bool stale = false;
    QMap<int, QVariant> data;          // the latest decoded measurement answer
    QList<QPair<int, QString>> alarms; // active alarm numbers with their texts
    qint64 ageMs = -1;                 // age of that answer; < 0: none yet
    DeviceCounters counters;
};

// The devices in the Prometheus text exposition format (version 0.0.4):
// one family per measurement, values read through the data point table.
namespace MetricsExposition {

// The content type a scrape is answered with.
extern const char ContentType[];

// Reads a session in the GUI thread, where it lives.
MetricsDevice sample(const DeviceSession &session, const DeviceCounters &counters, const QDateTime &nowUtc);
QByteArray text(const QList<MetricsDevice> &devices);

// Backslash, double quote and line feed escaped, as a label value needs.
QByteArray escapeLabelValue(const QString &value);

} // namespace MetricsExposition

#endif // METRICSEXPOSITION_H
