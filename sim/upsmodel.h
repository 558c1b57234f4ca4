#ifndef UPSMODEL_H
#define UPSMODEL_H

#include <QRandomGenerator>
#include <array>
#include <bitset>

#include "upsregisters.h"

// Physical state of a simulated online (double-conversion) UPS: mains,
// battery, output, running tests and shutdown countdowns. It is advanced in
// simulated seconds and renders the agent's measurement registers and alarm
// bits; it knows nothing about Modbus framing or wall-clock time.
class UpsModel
{
public:
    using Measurements = std::array<quint16, UpsRegisters::MeasurementCount>;
    using Alarms = std::bitset<UpsRegisters::AlarmCount>;

    explicit UpsModel(int phaseCount = 1);

    int phaseCount() const { return m_rating.phases; }

    // Back to the normal online state with a full battery; keeps the buzzer
    // setting and the battery fast-forward factor.
    void reset();

    // Runs the physics and the timers of tests and countdowns.
    void advance(double seconds);
    // Effect of a write to command register reg.
    void applyCommand(int reg, quint16 value);

    void setMainsPresent(bool present);
    bool mainsPresent() const { return m_mainsPresent; }
    // Transfers the load to the bypass line (while the mains are there).
    void setBypassRequested(bool on);
    // Battery chemistry runs this many times faster than the simulated clock,
    // so that a discharge story fits into minutes.
    void setBatteryFastForward(double factor);

    // Alarms follow the state on its changes; a bit set or cleared here stays
    // so until the condition behind it changes.
    void setAlarm(int number, bool active);
    bool alarm(int number) const;
    const Alarms &alarms() const { return m_alarms; }

    // Small random offsets on line voltages and per-phase loads (seeded).
    void setJitterEnabled(bool enabled);
    void shuffleJitter();

    Measurements measurements() const;

    int outputSource() const;
    double batteryCapacity() const { return m_capacity; }
    bool buzzerEnabled() const { return m_buzzer; }

private:
    struct Rating {
        int phases;
        int apparentPowerVa;
        int activePowerW;
        int nominalVoltage;
        int nominalFrequency;  // 0.1 Hz
        int batteryBlocks;     // 12 V blocks in series
        int chargeCurrent;     // 0.1 A
        int runtimeFullLoadMin;
        int undervoltagePoint;
        int overvoltagePoint;
        std::array<int, 3> lineVoltage;
        std::array<int, 3> inverterVoltage;
        std::array<int, 3> load;  // %
    };
    enum class Test { None, SelfTest, DischargeToLow, DischargeTimed };
    enum class Shutdown { None, Output, System };
    enum class OffReason { None, Commanded, BatteryExhausted };

    static Rating ratingFor(int phaseCount);

    void step(double h);
    double nextStepLength(double left) const;
    void startTest(Test test, double seconds);
    void stopTest();
    void finishSelfTest();
    void requestShutdown(Shutdown kind, quint16 delaySeconds);
    void executeShutdown();
    void cancelShutdown();
    void syncConditionAlarms();
    Alarms conditions() const;

    bool discharging() const;
    int phaseLoad(int phase) const;
    int totalLoad() const;
    double outputActivePower() const;
    double runtimeFullMinutes() const;
    double batteryVoltage() const;
    double batteryCurrent() const;
    int batteryStatus() const;

    Rating m_rating;
    bool m_mainsPresent = true;
    bool m_bypassRequested = false;
    bool m_outputOn = true;
    bool m_systemOn = true;
    OffReason m_offReason = OffReason::None;
    double m_capacity = 100.0;
    double m_secondsOnBattery = 0.0;
    int m_mainsFailures = 0;
    Test m_test = Test::None;
    double m_testLeft = 0.0;
    Shutdown m_shutdown = Shutdown::None;
    double m_shutdownLeft = 0.0;
    bool m_buzzer = true;
    double m_fastForward = 1.0;
    Alarms m_alarms;
    Alarms m_conditions;
    bool m_jitter = false;
    QRandomGenerator m_random;
    std::array<int, 3> m_voltageJitter{};
    std::array<int, 3> m_loadJitter{};
};

#endif // UPSMODEL_H
