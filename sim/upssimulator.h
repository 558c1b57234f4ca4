#ifndef UPSSIMULATOR_H
#define UPSSIMULATOR_H

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariant>

#include "upsmodel.h"

class AgentModbusServer;
struct UpsScenario;

// A simulated UPS network agent: a Modbus/TCP server (unit 1) in front of a
// UPS model, driven by timed scenarios and by the control registers.
//
// Everything runs on the caller's event loop. While the server is started a
// timer advances the simulated clock by the elapsed wall time multiplied by
// the time scale; advance() steps it explicitly (also without a server).
class UpsSimulator : public QObject
{
    Q_OBJECT
public:
    enum class Profile { Single, Three };
    Q_ENUM(Profile)

    struct WriteRecord
    {
        int reg;
        quint16 value;
        QDateTime time;
    };

    explicit UpsSimulator(Profile profile = Profile::Single, QObject *parent = nullptr);
    ~UpsSimulator() override;

    // Listens on address:port (0: any free port, see port()); false (and a
    // warning) when that fails.
    bool start(const QString &address = QStringLiteral("127.0.0.1"), quint16 port = 1502);
    void stop();
    bool isRunning() const;
    quint16 port() const { return m_port; }
    Profile profile() const { return m_profile; }

    // Restarts the UPS in its normal online state (alarms cleared, battery
    // full, pinned measurements released; identity texts and buzzer kept) and
    // plays the named scenario from its start. False for unknown names.
    bool setScenario(const QString &name);
    QString scenario() const;
    static QStringList scenarioNames();
    static QString scenarioDescription(const QString &name);

    // > 1 runs scenarios and command effects faster than the wall clock.
    void setTimeScale(double factor);
    double timeScale() const { return m_timeScale; }
    // Steps the simulated clock by that many seconds at once.
    void advance(double simulatedSeconds);
    // Simulated seconds since the scenario started.
    double scenarioTime() const { return m_scenarioClock; }
    // Small seeded noise on line voltages and loads, renewed on each timer tick.
    void setJitterEnabled(bool enabled);

    void setAlarm(int number, bool active);  // numbers 0..64
    bool alarm(int number) const;
    // Pins measurement id (0..72, register 0x0101 + id) to a value until
    // releaseMeasurement or setScenario.
    void setMeasurement(int id, quint16 value);
    void releaseMeasurement(int id);
    quint16 measurement(int id) const;
    // Identity blocks 4000..4006, NUL padded or cut to the block size.
    void setIdentityText(int id, const QByteArray &text);
    QByteArray identityText(int id) const;
    static int identityBlockSize(int id);

    bool buzzerEnabled() const;

    // Acts as if a client wrote value into command register reg.
    void writeRegister(int reg, quint16 value);
    QList<WriteRecord> writes() const { return m_writes; }
    void clearWrites() { m_writes.clear(); }

    // What a client decodes after one full polling rotation: ids 0..72 (int),
    // 2000..2026 (int 0/1) and 4000..4006 (raw QByteArray blocks).
    QMap<int, QVariant> dataPointImage() const;
    static QMap<int, QVariant> profileImage(Profile p);

signals:
    void registerWritten(int reg, quint16 value);
    void alarmChanged(int number, bool active);

private:
    void onTick();
    void applyScenarioStep(int index);
    double stepTime(int index) const;
    void refresh();
    void publishToServer();
    QVector<quint16> inputRegisterImage() const;

    Profile m_profile;
    UpsModel m_model;
    AgentModbusServer *m_server = nullptr;
    quint16 m_port = 0;
    QTimer m_clock;
    QElapsedTimer m_wall;
    double m_timeScale = 1.0;
    bool m_jitter = false;

    const UpsScenario *m_scenario = nullptr;
    double m_scenarioClock = 0.0;
    int m_nextStep = 0;
    int m_round = 0;

    QMap<int, quint16> m_pinned;
    UpsModel::Measurements m_measurements{};
    UpsModel::Alarms m_publishedAlarms;
    QMap<int, QByteArray> m_identity;
    QList<WriteRecord> m_writes;
};

#endif // UPSSIMULATOR_H
