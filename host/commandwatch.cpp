#include "commandwatch.h"

#include <QCoreApplication>
#include <QTimer>
#include <QVector>

#include "hostlogging.h"
#include "stalerule.h"
#include "upsalarms.h"
#include "upscommands.h"
#include "upscontract.h"
#include "upspoints.h"

namespace {

constexpr int kAnyChange = -1;
constexpr int kMsPerSecond = 1000;
// The context the client names its commands in.
constexpr char kCommandContext[] = "OrvekClient";

// A point and the value the command should bring it to (kAnyChange: any new value).
struct Expect
{
    int point;
    int value;
};

// Alarms that tell a shutdown or standby is counting down or done.
constexpr int kShutdownAlarms[] = {UpsAlarm::OutputOffAsRequested, UpsAlarm::SystemOffAsRequested,
                                   UpsAlarm::OutputOff,            UpsAlarm::SystemOff,
                                   UpsAlarm::ShutdownPending,      UpsAlarm::ShutdownImminent};

constexpr int alarmPoint(int number)
{
    return UpsPoint::AlarmFirst + number;
}

QVector<Expect> shutdownAlarms(int state)
{
    QVector<Expect> expects;
    for (int number : kShutdownAlarms)
        expects << Expect{alarmPoint(number), state};
    return expects;
}

QVector<Expect> expectations(int controlId)
{
    switch (controlId) {
    case UpsControl::SelfTest:
    case UpsControl::Discharge:
    case UpsControl::DischargeToLow:
        return {{alarmPoint(UpsAlarm::TestInProgress), 1}};
    case UpsControl::CancelTest:
        return {{alarmPoint(UpsAlarm::TestInProgress), 0}};
    case UpsControl::Shutdown:
    case UpsControl::Standby:
        return shutdownAlarms(1) << Expect{UpsPoint::OutputSource, UpsCode::SourceNone};
    case UpsControl::CancelShutdown:
        return shutdownAlarms(0);
    case UpsControl::Buzzer:
        return {{UpsPoint::BuzzerState, kAnyChange}};
    default:
        return {};
    }
}

bool readInt(const QVariant &value, int *number)
{
    bool ok = false;
    *number = value.toInt(&ok);
    return value.isValid() && ok;
}

// +1: moved as the command asks; -1: left the state the command asks for; 0: neither.
int move(const Expect &expect, const QVariant &before, const QVariant &after)
{
    int from = 0;
    int to = 0;
    if (!readInt(before, &from) || !readInt(after, &to) || from == to)
        return 0;
    if (expect.value == kAnyChange || to == expect.value)
        return 1;
    return from == expect.value ? -1 : 0;
}

} // namespace

CommandWatch::CommandWatch(QObject *parent)
    : QObject(parent)
{
}

CommandWatch::~CommandWatch() = default;

int CommandWatch::boundSeconds(int configuredInterval)
{
    return BoundRotations * StaleRule::TicksPerRotation * StaleRule::tickSeconds(configuredInterval);
}

bool CommandWatch::isWatched(int controlId)
{
    return !expectations(controlId).isEmpty();
}

bool CommandWatch::showsEffect(int controlId, const QMap<int, QVariant> &before, const QMap<int, QVariant> &after)
{
    bool seen = false;
    for (const Expect &expect : expectations(controlId)) {
        const int moved = move(expect, before.value(expect.point), after.value(expect.point));
        if (moved < 0)
            return false; // something else happened too: no clear answer
        seen = seen || moved > 0;
    }
    return seen;
}

QString CommandWatch::verdictText(int controlId, bool confirmed, int boundSeconds)
{
    const char *source = UpsCommands::find(controlId).text;
    const QString command = source ? QCoreApplication::translate(kCommandContext, source) : QString::number(controlId);
    return confirmed ? tr("%1: confirmed by the device").arg(command)
                     : tr("%1: no effect seen within %2 s").arg(command).arg(boundSeconds);
}

void CommandWatch::setPollInterval(const QString &device, int configuredInterval)
{
    m_intervals.insert(device, configuredInterval);
}

int CommandWatch::boundSecondsFor(const QString &device) const
{
    return boundSeconds(m_intervals.value(device, -1));
}

void CommandWatch::watch(const QString &device, int controlId, const QMap<int, QVariant> &latest)
{
    watch(device, controlId, latest, boundSecondsFor(device) * kMsPerSecond);
}

void CommandWatch::watch(const QString &device, int controlId, const QMap<int, QVariant> &latest, int boundMs)
{
    const QVector<Expect> expects = expectations(controlId);
    if (expects.isEmpty())
        return;
    forget(device, controlId);
    Watch w;
    w.device = device;
    w.controlId = controlId;
    w.boundSeconds = (boundMs + kMsPerSecond - 1) / kMsPerSecond;
    for (const Expect &expect : expects) {
        if (latest.contains(expect.point))
            w.last.insert(expect.point, latest.value(expect.point));
    }
    w.timer = new QTimer(this);
    w.timer->setSingleShot(true);
    QTimer *timer = w.timer;
    connect(timer, &QTimer::timeout, this, [this, timer] {
        for (int i = 0; i < m_watches.size(); ++i) {
            if (m_watches.at(i).timer == timer) {
                finish(i, false);
                return;
            }
        }
    });
    timer->start(boundMs);
    m_watches << w;
    qCDebug(lcHost) << "watching" << device << "for the effect of" << controlId << "for" << boundMs << "ms";
}

void CommandWatch::addData(const QString &device, const QMap<int, QVariant> &data)
{
    for (int i = m_watches.size() - 1; i >= 0; --i) {
        Watch &w = m_watches[i];
        if (w.device != device)
            continue;
        if (showsEffect(w.controlId, w.last, data)) {
            finish(i, true);
            continue;
        }
        for (const Expect &expect : expectations(w.controlId)) {
            if (data.contains(expect.point))
                w.last.insert(expect.point, data.value(expect.point));
        }
    }
}

void CommandWatch::notSent(const QString &device, int controlId)
{
    if (indexOf(device, controlId) < 0)
        return;
    forget(device, controlId);
    emit abandoned(device, controlId);
}

void CommandWatch::forget(const QString &device, int controlId)
{
    const int i = indexOf(device, controlId);
    if (i < 0)
        return;
    delete m_watches.at(i).timer;
    m_watches.removeAt(i);
}

void CommandWatch::clear()
{
    for (const Watch &w : qAsConst(m_watches))
        delete w.timer;
    m_watches.clear();
}

int CommandWatch::indexOf(const QString &device, int controlId) const
{
    for (int i = 0; i < m_watches.size(); ++i) {
        if (m_watches.at(i).device == device && m_watches.at(i).controlId == controlId)
            return i;
    }
    return -1;
}

void CommandWatch::finish(int index, bool confirmed)
{
    const Watch w = m_watches.takeAt(index);
    w.timer->deleteLater(); // may be the sender
    emit verdict(w.device, w.controlId, confirmed, w.boundSeconds);
}
