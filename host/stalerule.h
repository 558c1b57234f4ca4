#ifndef STALERULE_H
#define STALERULE_H

#include <QDateTime>

// When the latest decoded answer of a device is too old to be trusted. The
// client sends one request per tick and a full rotation takes four ticks, so
// a few missed rotations mean the agent holds the connection but no longer
// answers (the client itself only reports failed connections as lost).
class StaleRule
{
public:
    static constexpr int TicksPerRotation = 4;
    static constexpr int DefaultRotations = 3;

    // configuredInterval: the device's "interval" from dev.ini in seconds;
    // < 0 means not set, the client's default then applies.
    explicit StaleRule(int configuredInterval = -1, int rotations = DefaultRotations);

    // Seconds between two ticks of a client with that configured interval:
    // the client divides it by four twice and never goes below one second.
    static int tickSeconds(int configuredInterval);

    int thresholdSeconds() const { return m_thresholdSeconds; }
    // True when last is valid and more than the threshold before now. An
    // invalid last (nothing received yet) is no data rather than old data.
    bool isStale(const QDateTime &last, const QDateTime &now) const;

private:
    int m_thresholdSeconds;
};

#endif // STALERULE_H
