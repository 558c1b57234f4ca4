#include "stalerule.h"

#include <QtGlobal>

#include "upscontract.h"

namespace {

// One division of the client's interval scaling: 0 becomes 1.
int quarter(int seconds)
{
    const int q = seconds / 4;
    return q == 0 ? 1 : q;
}

} // namespace

StaleRule::StaleRule(int configuredInterval, int rotations)
    : m_thresholdSeconds(qMax(0, rotations) * TicksPerRotation * tickSeconds(configuredInterval))
{
}

int StaleRule::tickSeconds(int configuredInterval)
{
    const int configured = configuredInterval < 0 ? UpsConfig::DefaultInterval : configuredInterval;
    // Once when the configuration is loaded, once when the thread starts.
    return qMax(1, quarter(quarter(configured)));
}

bool StaleRule::isStale(const QDateTime &last, const QDateTime &now) const
{
    return last.isValid() && last.secsTo(now) > m_thresholdSeconds;
}
