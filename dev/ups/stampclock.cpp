#include "stampclock.h"

#include <QDateTime>
#include <QTimeZone>

#include "upscontract.h"

namespace {
constexpr qint64 kMsPerSecond = 1000;
// Also bounds how long a change of the machine's zone setting goes unseen.
constexpr qint64 kOffsetRecheckMs = 60 * kMsPerSecond;

// Whole seconds, rounded down also before 1970.
qint64 secondOf(qint64 ms)
{
    return ms >= 0 ? ms / kMsPerSecond : -((-ms + kMsPerSecond - 1) / kMsPerSecond);
}
} // namespace

QString StampClock::now()
{
    return textAt(QDateTime::currentMSecsSinceEpoch());
}

QString StampClock::textAt(qint64 utcMs)
{
    if (utcMs < m_offsetValidFromMs || utcMs >= m_offsetValidUntilMs)
        refreshOffset(utcMs);
    const qint64 second = secondOf(utcMs);
    if (m_text.isEmpty() || second != m_textSecond) {
        const QDateTime wall = QDateTime::fromMSecsSinceEpoch((second + m_offsetSeconds) * kMsPerSecond, Qt::UTC);
        m_text = wall.toString(QLatin1String(UpsKey::TimeFormat));
        m_textSecond = second;
    }
    return m_text;
}

void StampClock::refreshOffset(qint64 utcMs)
{
    const QDateTime at = QDateTime::fromMSecsSinceEpoch(utcMs, Qt::LocalTime);
    m_offsetSeconds = at.offsetFromUtc();
    m_offsetValidFromMs = utcMs;
    m_offsetValidUntilMs = utcMs + kOffsetRecheckMs;
    const QTimeZone::OffsetData next = QTimeZone::systemTimeZone().nextTransition(at);
    if (next.atUtc.isValid())
        m_offsetValidUntilMs = qMin(m_offsetValidUntilMs, next.atUtc.toMSecsSinceEpoch());
    m_textSecond = 0;
    m_text.clear(); // the offset may have changed within the cached second
}
