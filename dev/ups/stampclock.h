#ifndef STAMPCLOCK_H
#define STAMPCLOCK_H

#include <QString>
#include <QtGlobal>

// The local time as event stamp text ("timeStr", UpsKey::TimeFormat).
//
// QDateTime::currentDateTime() asks the C library for the time zone on
// every call, which costs more than the rest of a poll tick. The clock keeps
// the UTC offset it last looked up until the next minute or the zone's next
// transition, whichever comes first, and the text until the second changes.
// One clock per thread: it is not locked.
class StampClock
{
public:
    QString now();
    // The stamp for a moment given in milliseconds since the epoch (UTC).
    QString textAt(qint64 utcMs);

private:
    void refreshOffset(qint64 utcMs);

    qint64 m_offsetValidFromMs = 0;
    qint64 m_offsetValidUntilMs = 0; // empty range: look up first
    int m_offsetSeconds = 0;
    qint64 m_textSecond = 0;
    QString m_text;
};

#endif // STAMPCLOCK_H
