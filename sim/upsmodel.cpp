#include "upsmodel.h"

#include <QtMath>
#include <algorithm>
#include <limits>

#include "simlogging.h"
#include "upsalarms.h"

using namespace UpsRegisters;

namespace {

constexpr double Epsilon = 1e-6;
// Longest physics step; countdowns and tests end exactly on their deadlines.
constexpr double MaxStepSeconds = 0.5;
constexpr double SelfTestSeconds = 10.0;
// Below this capacity the battery counts as low (status 3, alarm 3 on battery).
constexpr double LowCapacity = 25.0;
// Alarm 22 accompanies the last seconds of a shutdown countdown.
constexpr double ImminentSeconds = 5.0;
constexpr double RechargeHours = 4.0;
// Run time grows faster than linearly as the load falls (Peukert-like).
constexpr double RuntimeLoadExponent = 1.2;
constexpr int MinimumRuntimeLoad = 10;
constexpr int BatteryTemperatureC = 25;
constexpr double InverterEfficiency = 0.94;
constexpr double BatteryPathEfficiency = 0.92;
constexpr double IdlePowerW = 30.0;
constexpr quint32 JitterSeed = 0x5150;

// Per-block battery voltages (V) of a 12 V lead-acid block.
constexpr double FloatBlockVoltage = 13.65;
constexpr double ChargeBlockVoltageEmpty = 13.2;
constexpr double ChargeBlockVoltageSpan = 0.45;
constexpr double DischargeBlockVoltageEmpty = 11.4;
constexpr double DischargeBlockVoltageSpan = 1.4;
constexpr double DischargeSagPerLoad = 0.4;
constexpr double RestBlockVoltageEmpty = 11.6;
constexpr double RestBlockVoltageSpan = 1.2;

// Alarms derived from the state; they follow its changes (see syncConditionAlarms).
const int ConditionAlarms[] = {
    UpsAlarm::OnBattery, UpsAlarm::BatteryLow, UpsAlarm::BatteryEod, UpsAlarm::InputBad, UpsAlarm::OnBypass,
    UpsAlarm::OutputOffAsRequested, UpsAlarm::SystemOffAsRequested, UpsAlarm::OutputOff, UpsAlarm::SystemOff,
    UpsAlarm::ShutdownPending, UpsAlarm::ShutdownImminent, UpsAlarm::TestInProgress, UpsAlarm::BatteryDischarge,
};

quint16 toRegister(double value)
{
    return quint16(qBound(0.0, std::round(value), 65535.0));
}

quint16 toSignedRegister(double value)
{
    const double clamped = qBound(-32768.0, std::round(value), 32767.0);
    return quint16(qint16(clamped));
}

// A value in the units the client shows, in the register's stored units.
quint16 storedRegister(int id, double value)
{
    return toRegister(value * UpsPoints::info(id).divisor);
}

// Doubled registers carry the low 16 bits first, then the high 16 bits, so
// that the first register alone reads right for values below 65536.
void putDouble(UpsModel::Measurements &m, int id, double value)
{
    const quint32 v = quint32(qBound(0.0, std::round(value), 4294967295.0));
    m[size_t(id)] = quint16(v & 0xFFFFu);
    m[size_t(id + 1)] = quint16(v >> 16);
}

} // namespace

UpsModel::UpsModel(int phaseCount)
    : m_rating(ratingFor(phaseCount))
    , m_random(JitterSeed)
{
    reset();
}

UpsModel::Rating UpsModel::ratingFor(int phaseCount)
{
    if (phaseCount == 3)
        return Rating{3, 20000, 18000, 230, 500, 32, 40, 12, 176, 276,
                      {230, 231, 229}, {230, 229, 231}, {35, 34, 36}};
    return Rating{1, 3000, 2700, 230, 500, 8, 20, 12, 176, 276,
                  {230, 0, 0}, {230, 0, 0}, {35, 0, 0}};
}

void UpsModel::reset()
{
    m_mainsPresent = true;
    m_bypassRequested = false;
    m_outputOn = true;
    m_systemOn = true;
    m_offReason = OffReason::None;
    m_capacity = 100.0;
    m_secondsOnBattery = 0.0;
    m_mainsFailures = 0;
    m_test = Test::None;
    m_testLeft = 0.0;
    m_shutdown = Shutdown::None;
    m_shutdownLeft = 0.0;
    m_voltageJitter.fill(0);
    m_loadJitter.fill(0);
    m_conditions = conditions();
    m_alarms = m_conditions;
}

void UpsModel::setBatteryFastForward(double factor)
{
    m_fastForward = factor > 0.0 ? factor : 1.0;
}

void UpsModel::setJitterEnabled(bool enabled)
{
    m_jitter = enabled;
    if (!enabled) {
        m_voltageJitter.fill(0);
        m_loadJitter.fill(0);
    }
}

void UpsModel::shuffleJitter()
{
    if (!m_jitter)
        return;
    for (int p = 0; p < m_rating.phases; ++p) {
        m_voltageJitter[size_t(p)] = m_random.bounded(-1, 2);
        m_loadJitter[size_t(p)] = m_random.bounded(-1, 2);
    }
}

void UpsModel::setAlarm(int number, bool active)
{
    if (number >= 0 && number < AlarmCount)
        m_alarms[size_t(number)] = active;
}

bool UpsModel::alarm(int number) const
{
    return number >= 0 && number < AlarmCount && m_alarms[size_t(number)];
}

int UpsModel::outputSource() const
{
    if (!m_outputOn)
        return SourceNone;
    if (!m_mainsPresent || m_test == Test::DischargeToLow || m_test == Test::DischargeTimed)
        return SourceBattery;
    if (m_bypassRequested)
        return SourceBypass;
    return SourceUtility;
}

bool UpsModel::discharging() const
{
    return outputSource() == SourceBattery;
}

int UpsModel::phaseLoad(int phase) const
{
    if (!m_outputOn)
        return 0;
    return qMax(0, m_rating.load[size_t(phase)] + m_loadJitter[size_t(phase)]);
}

int UpsModel::totalLoad() const
{
    int sum = 0;
    for (int p = 0; p < m_rating.phases; ++p)
        sum += phaseLoad(p);
    return sum / m_rating.phases;
}

double UpsModel::outputActivePower() const
{
    double watts = 0.0;
    for (int p = 0; p < m_rating.phases; ++p)
        watts += double(m_rating.activePowerW) / m_rating.phases * phaseLoad(p) / 100.0;
    return watts;
}

double UpsModel::runtimeFullMinutes() const
{
    int load = 0;
    for (int p = 0; p < m_rating.phases; ++p)
        load += qMax(0, m_rating.load[size_t(p)] + m_loadJitter[size_t(p)]);
    load = qMax(MinimumRuntimeLoad, load / m_rating.phases);
    return m_rating.runtimeFullLoadMin * std::pow(100.0 / load, RuntimeLoadExponent);
}

double UpsModel::batteryVoltage() const
{
    const double fraction = m_capacity / 100.0;
    double block;
    if (discharging())
        block = DischargeBlockVoltageEmpty + DischargeBlockVoltageSpan * fraction
                - DischargeSagPerLoad * totalLoad() / 100.0;
    else if (!m_mainsPresent)
        block = RestBlockVoltageEmpty + RestBlockVoltageSpan * fraction;
    else if (m_capacity >= 100.0)
        block = FloatBlockVoltage;
    else
        block = ChargeBlockVoltageEmpty + ChargeBlockVoltageSpan * fraction;
    return block * m_rating.batteryBlocks;
}

// Amperes; negative while the battery carries the load.
double UpsModel::batteryCurrent() const
{
    if (discharging())
        return -outputActivePower() / (batteryVoltage() * BatteryPathEfficiency);
    if (m_mainsPresent && m_capacity < 100.0)
        return m_rating.chargeCurrent / 10.0;
    return 0.0;
}

int UpsModel::batteryStatus() const
{
    if (m_capacity <= 0.0)
        return BatteryDepleted;
    if (m_capacity < LowCapacity)
        return BatteryLow;
    return BatteryNormal;
}

UpsModel::Measurements UpsModel::measurements() const
{
    Measurements m{};
    const int phases = m_rating.phases;
    const int source = outputSource();
    const bool outputLive = source != SourceNone;
    const double vBattery = batteryVoltage();
    const double chargeWatts = batteryCurrent() > 0.0 ? batteryCurrent() * vBattery : 0.0;

    m[BatteryStatus] = quint16(batteryStatus());
    m[SecondsOnBattery] = source == SourceBattery ? toRegister(m_secondsOnBattery) : 0;
    m[RemainingMinutes] = toRegister(std::floor(runtimeFullMinutes() * m_capacity / 100.0));
    m[BatteryCapacity] = toRegister(std::floor(m_capacity));
    m[BatteryVoltage] = storedRegister(BatteryVoltage, vBattery);
    m[BatteryCurrent] = toSignedRegister(batteryCurrent() * UpsPoints::info(BatteryCurrent).divisor);
    m[BatteryTemperature] = BatteryTemperatureC;
    m[MainsFailures] = toRegister(m_mainsFailures);
    m[InputPhases] = quint16(phases);
    m[OutputPhases] = quint16(phases);
    m[BypassPhases] = quint16(phases);
    m[OutputSource] = quint16(source);
    m[OutputFrequency] = outputLive ? quint16(m_rating.nominalFrequency) : 0;
    m[BypassFrequency] = m_mainsPresent ? quint16(m_rating.nominalFrequency) : 0;

    for (int p = 0; p < phases; ++p) {
        const size_t i = size_t(p);
        const double lineVolts = m_mainsPresent ? m_rating.lineVoltage[i] + m_voltageJitter[i] : 0.0;
        const double load = phaseLoad(p);
        const double outVa = double(m_rating.apparentPowerVa) / phases * load / 100.0;
        const double outW = double(m_rating.activePowerW) / phases * load / 100.0;
        double outVolts = 0.0;
        if (source == SourceBypass)
            outVolts = lineVolts;
        else if (outputLive)
            outVolts = m_rating.inverterVoltage[i];
        const double outAmps = outVolts > 0.0 ? outVa / outVolts : 0.0;

        double inW = 0.0;
        if (m_mainsPresent) {
            inW = IdlePowerW / phases + chargeWatts / phases;
            if (source == SourceUtility)
                inW += outW / InverterEfficiency;
            else if (source == SourceBypass)
                inW += outW;
        }
        const double inAmps = lineVolts > 0.0 ? inW / lineVolts : 0.0;
        const bool bypassCarries = source == SourceBypass;

        const auto at = [p](int firstId) { return UpsPoints::phaseId(firstId, p); };
        m[size_t(at(InputVoltage))] = toRegister(lineVolts);
        m[size_t(at(InputCurrent))] = storedRegister(InputCurrent, inAmps);
        m[size_t(at(InputFrequency))] = m_mainsPresent ? quint16(m_rating.nominalFrequency) : 0;
        putDouble(m, at(InputPower), inW);
        m[size_t(at(OutputVoltage))] = toRegister(outVolts);
        m[size_t(at(OutputCurrent))] = storedRegister(OutputCurrent, outAmps);
        putDouble(m, at(OutputPower), outputLive ? outW : 0.0);
        m[size_t(at(OutputLoad))] = toRegister(load);
        m[size_t(at(BypassVoltage))] = toRegister(lineVolts);
        m[size_t(at(BypassCurrent))] = bypassCarries ? storedRegister(BypassCurrent, outAmps) : 0;
        putDouble(m, at(BypassPower), bypassCarries ? outW : 0.0);
    }

    m[RatedInputVoltage] = quint16(m_rating.nominalVoltage);
    m[RatedInputFrequency] = quint16(m_rating.nominalFrequency);
    m[RatedOutputVoltage] = quint16(m_rating.nominalVoltage);
    m[RatedOutputFrequency] = quint16(m_rating.nominalFrequency);
    putDouble(m, RatedApparentPower, m_rating.apparentPowerVa);
    putDouble(m, RatedActivePower, m_rating.activePowerW);
    m[RatedBatteryMinutes] = quint16(m_rating.runtimeFullLoadMin);
    m[BuzzerState] = m_buzzer ? BuzzerEnabled : BuzzerDisabled;
    m[UndervoltagePoint] = quint16(m_rating.undervoltagePoint);
    m[OvervoltagePoint] = quint16(m_rating.overvoltagePoint);
    return m;
}

void UpsModel::setMainsPresent(bool present)
{
    if (present == m_mainsPresent)
        return;
    m_mainsPresent = present;
    if (!present) {
        ++m_mainsFailures;
        // A test cannot go on without the mains; the UPS simply stays on battery.
        stopTest();
    } else if (m_offReason == OffReason::BatteryExhausted) {
        // Automatic restart once the mains are back after an exhausted battery.
        m_outputOn = true;
        m_offReason = OffReason::None;
    }
    syncConditionAlarms();
}

void UpsModel::setBypassRequested(bool on)
{
    m_bypassRequested = on;
    syncConditionAlarms();
}

void UpsModel::applyCommand(int reg, quint16 value)
{
    switch (reg) {
    case UpsCommandRegister::SelfTest:
        if (value != 0)
            startTest(Test::SelfTest, SelfTestSeconds);
        break;
    case UpsCommandRegister::DischargeToLow:
        if (value != 0)
            startTest(Test::DischargeToLow, std::numeric_limits<double>::infinity());
        break;
    case UpsCommandRegister::DischargeMinutes:
        if (value != 0)
            startTest(Test::DischargeTimed, value * 60.0);
        break;
    case UpsCommandRegister::Buzzer:
        if (value != 0)
            m_buzzer = !m_buzzer;
        break;
    case UpsCommandRegister::CancelTest:
        if (value != 0)
            stopTest();
        break;
    case UpsCommandRegister::CancelShutdown:
        if (value != 0)
            cancelShutdown();
        break;
    case UpsCommandRegister::Shutdown:
        requestShutdown(Shutdown::Output, value);
        break;
    case UpsCommandRegister::Standby:
        requestShutdown(Shutdown::System, value);
        break;
    case UpsCommandRegister::TimeSet:
    default:
        break;
    }
    syncConditionAlarms();
}

void UpsModel::startTest(Test test, double seconds)
{
    // Tests run from a healthy online state only, like on a real unit.
    if (m_test != Test::None || outputSource() != SourceUtility) {
        qCDebug(lcSim) << "test refused in the present state";
        return;
    }
    if (test != Test::SelfTest && m_capacity < LowCapacity) {
        qCDebug(lcSim) << "discharge test refused: battery low";
        return;
    }
    m_test = test;
    m_testLeft = seconds;
}

void UpsModel::stopTest()
{
    m_test = Test::None;
    m_testLeft = 0.0;
}

void UpsModel::finishSelfTest()
{
    stopTest();
    m_alarms[UpsAlarm::DiagnosticFailed] = m_capacity < LowCapacity;
}

void UpsModel::requestShutdown(Shutdown kind, quint16 delaySeconds)
{
    if (!m_systemOn || (kind == Shutdown::Output && !m_outputOn))
        return;
    m_shutdown = kind;
    m_shutdownLeft = delaySeconds;
    if (delaySeconds == 0)
        executeShutdown();
}

void UpsModel::executeShutdown()
{
    stopTest();
    m_outputOn = false;
    m_offReason = OffReason::Commanded;
    if (m_shutdown == Shutdown::System)
        m_systemOn = false;
    m_shutdown = Shutdown::None;
    m_shutdownLeft = 0.0;
}

void UpsModel::cancelShutdown()
{
    if (m_shutdown != Shutdown::None) {
        m_shutdown = Shutdown::None;
        m_shutdownLeft = 0.0;
        return;
    }
    if (m_offReason == OffReason::Commanded && (m_mainsPresent || m_capacity > 0.0)) {
        m_outputOn = true;
        m_systemOn = true;
        m_offReason = OffReason::None;
    }
}

UpsModel::Alarms UpsModel::conditions() const
{
    const int source = outputSource();
    Alarms c;
    c[UpsAlarm::OnBattery] = source == SourceBattery && !m_mainsPresent;
    c[UpsAlarm::BatteryLow] = source == SourceBattery && m_capacity < LowCapacity;
    c[UpsAlarm::BatteryEod] = m_offReason == OffReason::BatteryExhausted;
    c[UpsAlarm::InputBad] = !m_mainsPresent;
    c[UpsAlarm::OnBypass] = source == SourceBypass;
    c[UpsAlarm::OutputOffAsRequested] = m_offReason == OffReason::Commanded;
    c[UpsAlarm::SystemOffAsRequested] = m_offReason == OffReason::Commanded && !m_systemOn;
    c[UpsAlarm::OutputOff] = !m_outputOn;
    c[UpsAlarm::SystemOff] = !m_systemOn;
    c[UpsAlarm::ShutdownPending] = m_shutdown != Shutdown::None;
    c[UpsAlarm::ShutdownImminent] = m_shutdown != Shutdown::None && m_shutdownLeft <= ImminentSeconds + Epsilon;
    c[UpsAlarm::TestInProgress] = m_test != Test::None;
    c[UpsAlarm::BatteryDischarge] = m_test == Test::DischargeToLow || m_test == Test::DischargeTimed;
    return c;
}

// Only edges of a condition touch its alarm bit, so bits forced through
// setAlarm survive until the state behind them really changes.
void UpsModel::syncConditionAlarms()
{
    const Alarms now = conditions();
    for (int number : ConditionAlarms) {
        const size_t bit = size_t(number);
        if (now[bit] != m_conditions[bit])
            m_alarms[bit] = now[bit];
    }
    m_conditions = now;
}

double UpsModel::nextStepLength(double left) const
{
    double h = qMin(left, MaxStepSeconds);
    if (m_test != Test::None && std::isfinite(m_testLeft))
        h = qMin(h, qMax(m_testLeft, 0.0));
    if (m_shutdown != Shutdown::None) {
        h = qMin(h, qMax(m_shutdownLeft, 0.0));
        if (m_shutdownLeft - ImminentSeconds > Epsilon)
            h = qMin(h, m_shutdownLeft - ImminentSeconds);
    }
    return h;
}

void UpsModel::advance(double seconds)
{
    if (!(seconds > 0.0) || !std::isfinite(seconds))
        return;
    double left = seconds;
    while (left > Epsilon) {
        const double h = nextStepLength(left);
        step(h);
        left -= h;
    }
}

void UpsModel::step(double h)
{
    if (discharging()) {
        m_capacity -= 100.0 / (runtimeFullMinutes() * 60.0) * m_fastForward * h;
        m_secondsOnBattery += h;
    } else {
        m_secondsOnBattery = 0.0;
        if (m_mainsPresent && m_capacity < 100.0)
            m_capacity = qMin(100.0, m_capacity + 100.0 / (RechargeHours * 3600.0) * m_fastForward * h);
    }
    if (m_test != Test::None)
        m_testLeft -= h;
    if (m_shutdown != Shutdown::None)
        m_shutdownLeft -= h;

    if (m_test == Test::SelfTest && m_testLeft <= Epsilon)
        finishSelfTest();
    else if (m_test == Test::DischargeTimed && m_testLeft <= Epsilon)
        stopTest();
    if ((m_test == Test::DischargeToLow || m_test == Test::DischargeTimed) && m_capacity < LowCapacity)
        stopTest();
    if (discharging() && m_capacity <= 0.0) {
        m_capacity = 0.0;
        m_outputOn = false;
        m_offReason = OffReason::BatteryExhausted;
    }
    if (m_shutdown != Shutdown::None && m_shutdownLeft <= Epsilon)
        executeShutdown();
    syncConditionAlarms();
}
