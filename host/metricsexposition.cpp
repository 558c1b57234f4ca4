#include "metricsexposition.h"

#include "upsalarms.h"
#include "upsformat.h"
#include "upspoints.h"

namespace MetricsExposition {

const char ContentType[] = "text/plain; version=0.0.4; charset=utf-8";

namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kPhaseCount = 3;
const char *const kPhaseNames[kPhaseCount] = {"R", "S", "T"};
// Shown for a point without a number; anything that does not parse as one.
const char kNoNumber[] = "-";

// One gauge family per measurement; the value as the view reads it (scale
// and sign from the data point table), times factor for the base unit.
struct Measurement
{
    const char *name;
    int id;
    int factor;
    const char *help;
};
const Measurement kMeasurements[] = {
    {"ups_battery_charge_percent", UpsPoint::BatteryCapacity, 1, "Remaining battery capacity."},
    {"ups_battery_runtime_seconds", UpsPoint::RemainingMinutes, kSecondsPerMinute,
     "Remaining battery time as the UPS estimates it (reported in whole minutes)."},
    {"ups_battery_discharge_seconds", UpsPoint::SecondsOnBattery, 1, "Time on battery so far."},
    {"ups_battery_voltage_volts", UpsPoint::BatteryVoltage, 1, "Battery voltage."},
    {"ups_battery_current_amperes", UpsPoint::BatteryCurrent, 1, "Battery current, negative while discharging."},
    {"ups_battery_temperature_celsius", UpsPoint::BatteryTemperature, 1, "Battery temperature."},
    {"ups_input_voltage_volts", UpsPoint::InputVoltage, 1, "Input voltage, per phase on three-phase inputs."},
    {"ups_input_current_amperes", UpsPoint::InputCurrent, 1, "Input current, per phase on three-phase inputs."},
    {"ups_input_frequency_hertz", UpsPoint::InputFrequency, 1, "Input frequency, per phase on three-phase inputs."},
    {"ups_input_power_watts", UpsPoint::InputPower, 1, "Input power, per phase on three-phase inputs."},
    {"ups_output_frequency_hertz", UpsPoint::OutputFrequency, 1, "Output frequency."},
    {"ups_output_voltage_volts", UpsPoint::OutputVoltage, 1, "Output voltage, per phase on three-phase outputs."},
    {"ups_output_current_amperes", UpsPoint::OutputCurrent, 1, "Output current, per phase on three-phase outputs."},
    {"ups_output_power_watts", UpsPoint::OutputPower, 1, "Output power, per phase on three-phase outputs."},
    {"ups_output_load_percent", UpsPoint::OutputLoad, 1, "Output load, per phase on three-phase outputs."},
    {"ups_bypass_frequency_hertz", UpsPoint::BypassFrequency, 1, "Bypass frequency."},
    {"ups_bypass_voltage_volts", UpsPoint::BypassVoltage, 1, "Bypass voltage, per phase on three-phase bypasses."},
    {"ups_bypass_current_amperes", UpsPoint::BypassCurrent, 1, "Bypass current, per phase on three-phase bypasses."},
    {"ups_bypass_power_watts", UpsPoint::BypassPower, 1, "Bypass power, per phase on three-phase bypasses."},
};

// Codes shown as the device sends them; their texts belong to the view.
struct Code
{
    const char *name;
    int id;
    const char *help;
};
const Code kCodes[] = {
    {"ups_battery_status_code", UpsPoint::BatteryStatus, "Battery status code as the UPS reports it."},
    {"ups_output_source_code", UpsPoint::OutputSource, "Output source code as the UPS reports it."},
    {"ups_mains_failures", UpsPoint::MainsFailures, "Mains failures as the UPS counts them."},
};

using Labels = QList<QPair<const char *, QString>>;

QByteArray escapeHelp(const char *help)
{
    QByteArray text(help);
    return text.replace('\\', "\\\\").replace('\n', "\\n");
}

// The samples of one family, written with its HELP and TYPE lines when it has any.
class Family
{
public:
    Family(const char *name, const char *type, const char *help)
        : m_name(name), m_type(type), m_help(help)
    {
    }
    void add(const QString &device, const Labels &labels, const QByteArray &value)
    {
        m_samples += m_name;
        m_samples += "{device=\"" + escapeLabelValue(device) + '"';
        for (const auto &label : labels)
            m_samples += QByteArray(",") + label.first + "=\"" + escapeLabelValue(label.second) + '"';
        m_samples += "} " + value + '\n';
    }
    void add(const QString &device, const QByteArray &value) { add(device, Labels(), value); }
    void appendTo(QByteArray *out) const
    {
        if (m_samples.isEmpty())
            return;
        *out += "# HELP " + m_name + ' ' + escapeHelp(m_help) + '\n';
        *out += "# TYPE " + m_name + ' ' + m_type + '\n';
        *out += m_samples;
    }

private:
    QByteArray m_name;
    const char *m_type;
    const char *m_help;
    QByteArray m_samples;
};

QByteArray number(double value)
{
    return QByteArray::number(value, 'g', 15);
}

QByteArray flag(bool on)
{
    return on ? QByteArrayLiteral("1") : QByteArrayLiteral("0");
}

// Adds one sample per phase on units laid out as R/S/T, else one without a phase.
void addMeasurement(Family *family, const Measurement &m, const MetricsDevice &device)
{
    if (!device.data.contains(m.id))
        return;
    const UpsPoints::PhaseGroup group = UpsPoints::info(m.id).group;
    const bool threePhase = group != UpsPoints::PhaseGroup::None && UpsFormat::isThreePhase(device.data, group);
    UpsFormat::Options options;
    options.phases = threePhase ? UpsFormat::Phases::Three : UpsFormat::Phases::Single;
    options.missing = QLatin1String(kNoNumber);
    const QString text = UpsFormat::text(device.data, m.id, options);
    const QStringList values = threePhase ? text.split(QLatin1Char('/')) : QStringList{text};
    for (int phase = 0; phase < values.size() && phase < kPhaseCount; ++phase) {
        bool ok = false;
        const double value = values.at(phase).toDouble(&ok);
        if (!ok || (threePhase && !device.data.contains(UpsPoints::phaseId(m.id, phase))))
            continue;
        Labels labels;
        if (threePhase)
            labels << Labels::value_type("phase", QString::fromLatin1(kPhaseNames[phase]));
        family->add(device.name, labels, number(value * m.factor));
    }
}

void addStatus(QByteArray *out, const QList<MetricsDevice> &devices)
{
    Family info("ups_device_info", "gauge", "Identity of the device; always 1.");
    Family up("ups_device_up", "gauge", "1 while the device communicates, 0 when lost or not yet decided.");
    Family stale("ups_device_stale", "gauge",
                 "1 while the device communicates but its latest decoded answer is too old to be trusted.");
    Family age("ups_last_answer_age_seconds", "gauge", "Age of the latest decoded measurement answer.");
    Family alarm("ups_alarm_active", "gauge", "One series per active alarm; always 1.");
    for (const MetricsDevice &d : devices) {
        info.add(d.name,
                 {{"model", DeviceSession::identityText(d.data.value(UpsPoint::Model))},
                  {"manufacturer", DeviceSession::identityText(d.data.value(UpsPoint::Manufacturer))}},
                 flag(true));
        up.add(d.name, flag(d.state == DeviceStatus::State::Communicating));
        stale.add(d.name, flag(d.stale));
        if (d.ageMs >= 0)
            age.add(d.name, QByteArray::number(d.ageMs / 1000.0, 'f', 3));
        for (const auto &a : d.alarms)
            alarm.add(d.name, {{"alarm", QString::number(a.first)}, {"text", a.second}}, flag(true));
    }
    for (const Family *family : {&info, &up, &stale, &age, &alarm})
        family->appendTo(out);
}

void addCounters(QByteArray *out, const QList<MetricsDevice> &devices)
{
    Family answers("ups_answers_decoded_total", "counter", "Answers of the device decoded since the host started.");
    Family events("ups_events_total", "counter", "Events of the device by event type.");
    Family commands("ups_commands_total", "counter", "Control commands asked for, by control id.");
    Family results("ups_command_results_total", "counter",
                   "Control command results by control id; executed means sent to the device.");
    for (const MetricsDevice &d : devices) {
        answers.add(d.name, QByteArray::number(d.counters.answers));
        for (auto it = d.counters.events.cbegin(); it != d.counters.events.cend(); ++it)
            events.add(d.name, {{"type", QString::number(it.key())}}, QByteArray::number(it.value()));
        for (auto it = d.counters.commands.cbegin(); it != d.counters.commands.cend(); ++it)
            commands.add(d.name, {{"command", QString::number(it.key())}}, QByteArray::number(it.value()));
        for (auto it = d.counters.results.cbegin(); it != d.counters.results.cend(); ++it) {
            results.add(d.name,
                        {{"command", QString::number(it.key().first)},
                         {"result", it.key().second ? QStringLiteral("executed") : QStringLiteral("not_executed")}},
                        QByteArray::number(it.value()));
        }
    }
    for (const Family *family : {&answers, &events, &commands, &results})
        family->appendTo(out);
}

} // namespace

QByteArray escapeLabelValue(const QString &value)
{
    QByteArray text = value.toUtf8();
    return text.replace('\\', "\\\\").replace('"', "\\\"").replace('\n', "\\n");
}

MetricsDevice sample(const DeviceSession &session, const DeviceCounters &counters, const QDateTime &nowUtc)
{
    MetricsDevice device;
    const DeviceStatus status = session.status();
    device.name = session.name();
    device.state = status.state;
    device.stale = status.stale;
    device.data = session.latestData();
    device.counters = counters;
    if (session.lastDataTime().isValid())
        device.ageMs = qMax<qint64>(0, session.lastDataTime().msecsTo(nowUtc));
    // The session names the active alarms in number order; pair them with their numbers.
    const QStringList texts = session.activeAlarms();
    for (int number = 0; number < UpsAlarms::EvaluatedCount; ++number) {
        bool ok = false;
        if (device.data.value(UpsPoint::AlarmFirst + number).toInt(&ok) == 1 && ok)
            device.alarms << qMakePair(number, texts.value(device.alarms.size()));
    }
    return device;
}

QByteArray text(const QList<MetricsDevice> &devices)
{
    QByteArray out;
    for (const Measurement &m : kMeasurements) {
        Family family(m.name, "gauge", m.help);
        for (const MetricsDevice &d : devices)
            addMeasurement(&family, m, d);
        family.appendTo(&out);
    }
    for (const Code &c : kCodes) {
        Family family(c.name, "gauge", c.help);
        for (const MetricsDevice &d : devices) {
            bool ok = false;
            const int code = d.data.value(c.id).toInt(&ok);
            if (d.data.contains(c.id) && ok)
                family.add(d.name, QByteArray::number(code));
        }
        family.appendTo(&out);
    }
    addStatus(&out, devices);
    addCounters(&out, devices);
    return out;
}

} // namespace MetricsExposition
