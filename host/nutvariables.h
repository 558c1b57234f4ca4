#ifndef NUTVARIABLES_H
#define NUTVARIABLES_H

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

// The NUT variables of one UPS, read from the data points of its latest
// decoded answers under the standard NUT names and units. Numbers read as the
// device view shows them (UpsFormat); three-phase units get per-phase names
// (input.L1-N.voltage, output.L2.current, ...).
namespace NutVariables {

// Name to value, in name order. activeAlarms: the texts of the active alarms
// (ups.alarm); fsd: a primary has set forced shutdown.
QMap<QByteArray, QString> values(const QMap<int, QVariant> &data, const QStringList &activeAlarms, bool fsd);

// The ups.status words: FSD, ALARM, OL or OB, BYPASS, OFF, LB, RB, OVER, CAL,
// CHRG or DISCHRG, BOOST or TRIM, as far as they apply.
QString status(const QMap<int, QVariant> &data, bool fsd);

// Free text for GET DESC; "Description unavailable" for names not served.
QByteArray description(const QByteArray &name);
// STRING:n for text variables, NUMBER for the others (all read-only).
QByteArray type(const QByteArray &name, const QString &value);

} // namespace NutVariables

#endif // NUTVARIABLES_H
