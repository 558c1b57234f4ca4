#include "upssimulator.h"

#include <QCoreApplication>
#include <QModbusDataUnitMap>
#include <QTcpServer>
#include <QtMath>

#include "agentmodbusserver.h"
#include "simlogging.h"
#include "upsalarms.h"
#include "upsscenario.h"

using namespace UpsRegisters;

namespace {

constexpr int TickMilliseconds = 50;
// The client evaluates alarm numbers 0..26 only (data points 2000..2026).
constexpr int ClientAlarmCount = UpsAlarms::EvaluatedCount;

const UpsFrames::IdentityBlock *identityBlock(int id)
{
    for (const UpsFrames::IdentityBlock &block : UpsFrames::IdentityBlocks) {
        if (block.id == id)
            return &block;
    }
    return nullptr;
}

QByteArray padded(const QByteArray &text, int bytes)
{
    QByteArray block = text.left(bytes);
    block.append(QByteArray(bytes - block.size(), '\0'));
    return block;
}

QMap<int, QByteArray> defaultIdentity(UpsSimulator::Profile profile)
{
    const bool three = profile == UpsSimulator::Profile::Three;
    return {
        {Model, three ? QByteArrayLiteral("Orvek OR-20K3 Online 20 kVA") : QByteArrayLiteral("Orvek OR-3000 Online 3 kVA")},
        {Manufacturer, QByteArrayLiteral("Orvek Power")},
        {SystemName, QByteArrayLiteral("UPS-SIM")},
        {AttachedDevices, QByteArrayLiteral("Rack A1 servers")},
        {UpsSoftware, three ? QByteArrayLiteral("UPS 03.21") : QByteArrayLiteral("UPS 02.14")},
        {AgentSoftware, QByteArrayLiteral("Agent 1.3.0 (simulated)")},
        {AgentLocation, QByteArrayLiteral("Server room")},
    };
}

} // namespace

UpsSimulator::UpsSimulator(Profile profile, QObject *parent)
    : QObject(parent)
    , m_profile(profile)
    , m_model(profile == Profile::Three ? 3 : 1)
{
    const QMap<int, QByteArray> texts = defaultIdentity(profile);
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        m_identity.insert(it.key(), padded(it.value(), identityBlockSize(it.key())));

    m_clock.setInterval(TickMilliseconds);
    connect(&m_clock, &QTimer::timeout, this, &UpsSimulator::onTick);
    setScenario(QStringLiteral("normal"));
}

UpsSimulator::~UpsSimulator()
{
    stop();
}

bool UpsSimulator::start(const QString &address, quint16 port)
{
    stop();
    auto *server = new AgentModbusServer(this);
    server->setServerAddress(UnitId);

    QModbusDataUnitMap map;
    map.insert(QModbusDataUnit::InputRegisters,
               QModbusDataUnit(QModbusDataUnit::InputRegisters, InputRegisterFirst, InputRegisterCount));
    map.insert(QModbusDataUnit::DiscreteInputs,
               QModbusDataUnit(QModbusDataUnit::DiscreteInputs, AlarmBase, AlarmCount));
    map.insert(QModbusDataUnit::HoldingRegisters,
               QModbusDataUnit(QModbusDataUnit::HoldingRegisters, 0, CommandRegisterCount));
    server->setMap(map);
    server->setConnectionParameter(QModbusDevice::NetworkAddressParameter, address);
    server->setConnectionParameter(QModbusDevice::NetworkPortParameter, port);

    if (!server->connectDevice() || server->state() != QModbusDevice::ConnectedState) {
        qWarning("Simulated agent cannot listen on %s:%u: %s", qPrintable(address), unsigned(port),
                 qPrintable(server->errorString()));
        delete server;
        return false;
    }
    connect(server, &AgentModbusServer::holdingRegisterWritten, this, &UpsSimulator::writeRegister);
    m_server = server;
    m_port = port;
    // Port 0 lets the system pick one; the listening socket knows which.
    if (const auto *listener = server->findChild<QTcpServer *>())
        m_port = listener->serverPort();
    publishToServer();
    m_wall.start();
    m_clock.start();
    qCDebug(lcSim) << "listening on" << address << port;
    return true;
}

void UpsSimulator::stop()
{
    m_clock.stop();
    if (!m_server)
        return;
    m_server->disconnectDevice();
    delete m_server;
    m_server = nullptr;
}

bool UpsSimulator::isRunning() const
{
    return m_server != nullptr;
}

bool UpsSimulator::setScenario(const QString &name)
{
    const UpsScenario *scenario = UpsScenario::find(name);
    if (!scenario)
        return false;
    m_scenario = scenario;
    m_scenarioClock = 0.0;
    m_nextStep = 0;
    m_round = 0;
    m_pinned.clear();
    m_model.reset();
    m_model.setBatteryFastForward(scenario->batteryFastForward);
    refresh();
    qCDebug(lcSim) << "scenario" << name;
    return true;
}

QString UpsSimulator::scenario() const
{
    return m_scenario ? m_scenario->name : QString();
}

QStringList UpsSimulator::scenarioNames()
{
    return UpsScenario::names();
}

QString UpsSimulator::scenarioDescription(const QString &name)
{
    const UpsScenario *scenario = UpsScenario::find(name);
    return scenario ? QCoreApplication::translate("UpsScenario", scenario->description) : QString();
}

void UpsSimulator::setTimeScale(double factor)
{
    if (!(factor > 0.0) || !qIsFinite(factor)) {
        qWarning("Ignoring time scale %g: it must be a positive number", factor);
        return;
    }
    // Time already elapsed still counts at the old scale.
    if (m_clock.isActive())
        onTick();
    m_timeScale = factor;
}

void UpsSimulator::setJitterEnabled(bool enabled)
{
    m_jitter = enabled;
    m_model.setJitterEnabled(enabled);
    refresh();
}

void UpsSimulator::onTick()
{
    const double seconds = m_wall.restart() / 1000.0 * m_timeScale;
    if (m_jitter)
        m_model.shuffleJitter();
    advance(seconds);
}

double UpsSimulator::stepTime(int index) const
{
    return m_round * m_scenario->period + m_scenario->steps.at(index).at;
}

void UpsSimulator::advance(double simulatedSeconds)
{
    if (!(simulatedSeconds >= 0.0) || !qIsFinite(simulatedSeconds))
        return;
    const double target = m_scenarioClock + simulatedSeconds;
    while (m_scenario && m_nextStep < m_scenario->steps.size() && stepTime(m_nextStep) <= target) {
        const double at = stepTime(m_nextStep);
        m_model.advance(at - m_scenarioClock);
        m_scenarioClock = at;
        applyScenarioStep(m_nextStep);
        if (++m_nextStep == m_scenario->steps.size() && m_scenario->period > 0.0) {
            m_nextStep = 0;
            ++m_round;
        }
    }
    m_model.advance(target - m_scenarioClock);
    m_scenarioClock = target;
    refresh();
}

void UpsSimulator::applyScenarioStep(int index)
{
    const UpsScenario::Step &step = m_scenario->steps.at(index);
    switch (step.action) {
    case UpsScenario::Action::MainsFail:
        m_model.setMainsPresent(false);
        break;
    case UpsScenario::Action::MainsReturn:
        m_model.setMainsPresent(true);
        break;
    case UpsScenario::Action::BypassOn:
        m_model.setBypassRequested(true);
        break;
    case UpsScenario::Action::BypassOff:
        m_model.setBypassRequested(false);
        break;
    case UpsScenario::Action::ToggleAlarm:
        m_model.setAlarm(step.alarm, !m_model.alarm(step.alarm));
        break;
    }
    // Publish each step on its own so that alarm changes keep their order.
    refresh();
}

void UpsSimulator::setAlarm(int number, bool active)
{
    if (number < 0 || number >= AlarmCount) {
        qWarning("Ignoring alarm number %d (valid: 0..%d)", number, AlarmCount - 1);
        return;
    }
    m_model.setAlarm(number, active);
    refresh();
}

bool UpsSimulator::alarm(int number) const
{
    return number >= 0 && number < AlarmCount && m_publishedAlarms[size_t(number)];
}

void UpsSimulator::setMeasurement(int id, quint16 value)
{
    if (id < 0 || id >= MeasurementCount) {
        qWarning("Ignoring measurement id %d (valid: 0..%d)", id, MeasurementCount - 1);
        return;
    }
    m_pinned.insert(id, value);
    refresh();
}

void UpsSimulator::releaseMeasurement(int id)
{
    if (m_pinned.remove(id) > 0)
        refresh();
}

quint16 UpsSimulator::measurement(int id) const
{
    if (id < 0 || id >= MeasurementCount)
        return 0;
    return m_measurements[size_t(id)];
}

int UpsSimulator::identityBlockSize(int id)
{
    const UpsFrames::IdentityBlock *block = identityBlock(id);
    return block ? block->bytes : 0;
}

void UpsSimulator::setIdentityText(int id, const QByteArray &text)
{
    const UpsFrames::IdentityBlock *block = identityBlock(id);
    if (!block) {
        qWarning("Ignoring identity block %d (valid: %d..%d)", id, int(Model), int(AgentLocation));
        return;
    }
    m_identity.insert(id, padded(text, block->bytes));
    publishToServer();
}

QByteArray UpsSimulator::identityText(int id) const
{
    return m_identity.value(id);
}

bool UpsSimulator::buzzerEnabled() const
{
    return m_model.buzzerEnabled();
}

void UpsSimulator::writeRegister(int reg, quint16 value)
{
    m_writes.append(WriteRecord{reg, value, QDateTime::currentDateTime()});
    qCDebug(lcSim) << "register" << reg << "written with" << value;
    emit registerWritten(reg, value);
    m_model.applyCommand(reg, value);
    refresh();
}

void UpsSimulator::refresh()
{
    UpsModel::Measurements measurements = m_model.measurements();
    for (auto it = m_pinned.cbegin(); it != m_pinned.cend(); ++it)
        measurements[size_t(it.key())] = it.value();
    m_measurements = measurements;

    const UpsModel::Alarms previous = m_publishedAlarms;
    m_publishedAlarms = m_model.alarms();
    publishToServer();

    const UpsModel::Alarms changed = previous ^ m_publishedAlarms;
    for (int number = 0; number < AlarmCount && changed.any(); ++number) {
        if (changed[size_t(number)])
            emit alarmChanged(number, m_publishedAlarms[size_t(number)]);
    }
}

QVector<quint16> UpsSimulator::inputRegisterImage() const
{
    QVector<quint16> registers(InputRegisterCount, 0);
    for (int id = 0; id < MeasurementCount; ++id)
        registers[MeasurementBase - InputRegisterFirst + id] = m_measurements[size_t(id)];
    for (const UpsFrames::IdentityBlock &block : UpsFrames::IdentityBlocks) {
        const QByteArray bytes = m_identity.value(block.id);
        const int first = block.firstRegister - InputRegisterFirst;
        for (int i = 0; i + 1 < bytes.size(); i += 2)
            registers[first + i / 2] = quint16(quint8(bytes.at(i)) << 8 | quint8(bytes.at(i + 1)));
    }
    return registers;
}

void UpsSimulator::publishToServer()
{
    if (!m_server)
        return;
    m_server->setData(QModbusDataUnit(QModbusDataUnit::InputRegisters, InputRegisterFirst, inputRegisterImage()));
    QVector<quint16> bits(AlarmCount);
    for (int number = 0; number < AlarmCount; ++number)
        bits[number] = m_publishedAlarms[size_t(number)] ? 1 : 0;
    m_server->setData(QModbusDataUnit(QModbusDataUnit::DiscreteInputs, AlarmBase, bits));
}

QMap<int, QVariant> UpsSimulator::dataPointImage() const
{
    QMap<int, QVariant> image;
    for (int id = 0; id < MeasurementCount; ++id)
        image.insert(id, int(m_measurements[size_t(id)]));
    for (int number = 0; number < ClientAlarmCount; ++number)
        image.insert(AlarmFirst + number, m_publishedAlarms[size_t(number)] ? 1 : 0);
    for (const UpsFrames::IdentityBlock &block : UpsFrames::IdentityBlocks)
        image.insert(block.id, m_identity.value(block.id));
    return image;
}

QMap<int, QVariant> UpsSimulator::profileImage(Profile p)
{
    const UpsSimulator fresh(p);
    return fresh.dataPointImage();
}
