#include "nutvariables.h"

#include "devicesession.h"
#include "upsalarms.h"
#include "upsformat.h"
#include "upspoints.h"

namespace NutVariables {

namespace {

constexpr int kPhaseCount = 3;
constexpr int kSecondsPerMinute = 60;

// Values read as the view shows them, one name for every phase count.
struct Plain
{
    const char *name;
    int id;
    const char *description;
};
const Plain kPlain[] = {
    {"battery.charge", UpsPoint::BatteryCapacity, "Battery charge (percent of full)"},
    {"battery.voltage", UpsPoint::BatteryVoltage, "Battery voltage (V)"},
    {"battery.current", UpsPoint::BatteryCurrent, "Battery current (A)"},
    {"ups.temperature", UpsPoint::BatteryTemperature, "UPS temperature (degrees C)"},
    {"input.phases", UpsPoint::InputPhases, "Input phases"},
    {"input.frequency", UpsPoint::InputFrequency, "Input line frequency (Hz)"},
    {"output.phases", UpsPoint::OutputPhases, "Output phases"},
    {"output.frequency", UpsPoint::OutputFrequency, "Output frequency (Hz)"},
    {"ups.load", UpsPoint::OutputLoad, "Load on UPS (percent of full)"},
};

// Values one name reads on single-phase units and three (L1..L3) on
// three-phase ones; a null single name: the plain table covers that case.
struct Phased
{
    const char *singleName;
    const char *prefix;
    const char *phase; // %1: phase number 1..3
    const char *quantity;
    int id;
    const char *description;
};
const Phased kPhased[] = {
    {"input.voltage", "input", "L%1-N", "voltage", UpsPoint::InputVoltage, "Input voltage (V)"},
    {"input.current", "input", "L%1", "current", UpsPoint::InputCurrent, "Input current (A)"},
    {"output.voltage", "output", "L%1-N", "voltage", UpsPoint::OutputVoltage, "Output voltage (V)"},
    {"output.current", "output", "L%1", "current", UpsPoint::OutputCurrent, "Output current (A)"},
    {nullptr, "output", "L%1", "power.percent", UpsPoint::OutputLoad, "Output load (percent of full)"},
};

struct Identity
{
    const char *name;
    int id;
    const char *description;
};
const Identity kIdentity[] = {
    {"ups.mfr", UpsPoint::Manufacturer, "UPS manufacturer"},
    {"ups.model", UpsPoint::Model, "UPS model"},
    {"ups.firmware", UpsPoint::UpsSoftware, "UPS firmware"},
};

struct Fixed
{
    const char *name;
    const char *description;
};
const Fixed kOthers[] = {
    {"battery.runtime", "Battery runtime (seconds)"},
    {"device.type", "Device type"},
    {"ups.alarm", "UPS alarms"},
    {"ups.beeper.status", "UPS beeper status"},
    {"ups.status", "UPS status"},
};

QString number(const QMap<int, QVariant> &data, int id)
{
    UpsFormat::Options options;
    options.phases = UpsFormat::Phases::Single;
    return UpsFormat::text(data, id, options);
}

QByteArray phaseName(const Phased &entry, int phase)
{
    return QByteArray(entry.prefix) + '.' + QString::fromLatin1(entry.phase).arg(phase).toLatin1() + '.'
           + entry.quantity;
}

void addPhased(const QMap<int, QVariant> &data, const Phased &entry, QMap<QByteArray, QString> *values)
{
    if (!data.contains(entry.id))
        return;
    const UpsPoints::PhaseGroup group = UpsPoints::info(entry.id).group;
    if (!UpsFormat::isThreePhase(data, group)) {
        if (entry.singleName)
            values->insert(entry.singleName, number(data, entry.id));
        return;
    }
    // The view's R/S/T text, taken apart: one scaling rule for both.
    UpsFormat::Options options;
    options.phases = UpsFormat::Phases::Three;
    const QStringList phases = UpsFormat::text(data, entry.id, options).split(QLatin1Char('/'));
    for (int phase = 0; phase < kPhaseCount && phase < phases.size(); ++phase) {
        if (data.contains(UpsPoints::phaseId(entry.id, phase)))
            values->insert(phaseName(entry, phase + 1), phases.at(phase));
    }
}

bool alarm(const QMap<int, QVariant> &data, int number)
{
    return data.value(UpsPoint::AlarmFirst + number).toInt() == 1;
}

bool anyAlarm(const QMap<int, QVariant> &data, std::initializer_list<int> numbers)
{
    for (int number : numbers) {
        if (alarm(data, number))
            return true;
    }
    return false;
}

} // namespace

QString status(const QMap<int, QVariant> &data, bool fsd)
{
    using namespace UpsCode;
    using A = UpsAlarm::Number;
    const int source = data.value(UpsPoint::OutputSource).toInt();
    const int battery = data.value(UpsPoint::BatteryStatus).toInt();
    const bool fromMains =
        source == SourceUtility || source == SourceBypass || source == SourceBooster || source == SourceReducer;
    const bool onBattery = source == SourceBattery || (!fromMains && alarm(data, A::OnBattery));

    QStringList words;
    if (fsd)
        words << QStringLiteral("FSD");
    if (DeviceSession::alarmsActive(data))
        words << QStringLiteral("ALARM");
    if (onBattery)
        words << QStringLiteral("OB");
    else if (fromMains)
        words << QStringLiteral("OL");
    if (source == SourceBypass || alarm(data, A::OnBypass))
        words << QStringLiteral("BYPASS");
    if (source == SourceNone
        || anyAlarm(data, {A::OutputOff, A::SystemOff, A::OutputOffAsRequested, A::SystemOffAsRequested}))
        words << QStringLiteral("OFF");
    if (battery == BatteryLow || battery == BatteryDepleted || anyAlarm(data, {A::BatteryLow, A::BatteryEod}))
        words << QStringLiteral("LB");
    if (alarm(data, A::BatteryFault))
        words << QStringLiteral("RB");
    if (alarm(data, A::OutputOverload))
        words << QStringLiteral("OVER");
    if (alarm(data, A::TestInProgress))
        words << QStringLiteral("CAL");
    if (onBattery || battery == BatteryDischarging || alarm(data, A::BatteryDischarge))
        words << QStringLiteral("DISCHRG");
    else if (battery == BatteryBoostCharging || battery == BatteryFloatCharging)
        words << QStringLiteral("CHRG");
    if (source == SourceBooster)
        words << QStringLiteral("BOOST");
    else if (source == SourceReducer)
        words << QStringLiteral("TRIM");
    return words.join(QLatin1Char(' '));
}

QMap<QByteArray, QString> values(const QMap<int, QVariant> &data, const QStringList &activeAlarms, bool fsd)
{
    QMap<QByteArray, QString> values;
    values.insert("device.type", QStringLiteral("ups"));
    for (const Plain &entry : kPlain) {
        if (data.contains(entry.id))
            values.insert(entry.name, number(data, entry.id));
    }
    for (const Phased &entry : kPhased)
        addPhased(data, entry, &values);
    for (const Identity &entry : kIdentity) {
        const QString text = DeviceSession::identityText(data.value(entry.id));
        if (!text.isEmpty())
            values.insert(entry.name, text);
    }
    if (data.contains(UpsPoint::RemainingMinutes))
        values.insert("battery.runtime", QString::number(number(data, UpsPoint::RemainingMinutes).toLongLong()
                                                         * kSecondsPerMinute));
    const int buzzer = data.value(UpsPoint::BuzzerState).toInt();
    if (buzzer == UpsCode::BuzzerEnabled || buzzer == UpsCode::BuzzerDisabled)
        values.insert("ups.beeper.status",
                      buzzer == UpsCode::BuzzerEnabled ? QStringLiteral("enabled") : QStringLiteral("disabled"));
    const QString words = status(data, fsd);
    if (!words.isEmpty())
        values.insert("ups.status", words);
    if (!activeAlarms.isEmpty())
        values.insert("ups.alarm", activeAlarms.join(QLatin1String("; ")));
    return values;
}

QByteArray description(const QByteArray &name)
{
    for (const Plain &entry : kPlain) {
        if (name == entry.name)
            return entry.description;
    }
    for (const Phased &entry : kPhased) {
        if (entry.singleName && name == entry.singleName)
            return entry.description;
        for (int phase = 1; phase <= kPhaseCount; ++phase) {
            if (name == phaseName(entry, phase))
                return QByteArray(entry.description) + ", phase " + QByteArray::number(phase);
        }
    }
    for (const Identity &entry : kIdentity) {
        if (name == entry.name)
            return entry.description;
    }
    for (const Fixed &entry : kOthers) {
        if (name == entry.name)
            return entry.description;
    }
    return QByteArrayLiteral("Description unavailable");
}

QByteArray type(const QByteArray &name, const QString &value)
{
    for (const Plain &entry : kPlain) {
        if (name == entry.name)
            return QByteArrayLiteral("NUMBER");
    }
    if (name == "battery.runtime")
        return QByteArrayLiteral("NUMBER");
    for (const Phased &entry : kPhased) {
        if (name.startsWith(QByteArray(entry.prefix) + '.') && name.endsWith(QByteArray(".") + entry.quantity))
            return QByteArrayLiteral("NUMBER");
    }
    return "STRING:" + QByteArray::number(value.toUtf8().size());
}

} // namespace NutVariables
