#ifndef EVENTFORMATTER_H
#define EVENTFORMATTER_H

#include <QCoreApplication>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariant>

// Turns a client event into the one line of text the event log shows, or an
// empty text for events that are not logged (decoded answers, state records,
// control requests).
class EventFormatter
{
    Q_DECLARE_TR_FUNCTIONS(EventFormatter)

public:
    // eventTexts is the client's event description list (alarm texts by id).
    static QString text(int type, const QMap<QString, QVariant> &map, const QStringList &eventTexts);

    // The description of an alarm event: the list entry at "alarmId", or
    // "Alarm n raised/cleared" where the list has no text for it.
    static QString alarmText(const QMap<QString, QVariant> &map, const QStringList &eventTexts);
};

#endif // EVENTFORMATTER_H
