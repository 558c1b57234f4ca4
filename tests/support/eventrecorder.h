#ifndef EVENTRECORDER_H
#define EVENTRECORDER_H

#include <QList>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QObject>
#include <QPair>
#include <QVariant>

#include "collectthread.h"

// Records every postDEvent of a client, from whatever thread it is emitted
// (direct connection), in emission order.
class EventRecorder : public QObject
{
    Q_OBJECT
public:
    using Event = QPair<int, QMap<QString, QVariant>>;

    explicit EventRecorder(CollectThread *client)
    {
        connect(client, &CollectThread::postDEvent, this, &EventRecorder::record, Qt::DirectConnection);
    }

    QList<Event> events() const
    {
        QMutexLocker locker(&m_lock);
        return m_events;
    }
    QList<int> types() const
    {
        QList<int> t;
        for (const Event &e : events())
            t << e.first;
        return t;
    }
    QList<Event> ofType(int type) const
    {
        QList<Event> out;
        for (const Event &e : events()) {
            if (e.first == type)
                out << e;
        }
        return out;
    }
    int count(int type) const { return ofType(type).size(); }
    void clear()
    {
        QMutexLocker locker(&m_lock);
        m_events.clear();
    }

public slots:
    void record(int type, QMap<QString, QVariant> map)
    {
        QMutexLocker locker(&m_lock);
        m_events << Event(type, map);
    }

private:
    mutable QMutex m_lock;
    QList<Event> m_events;
};

#endif // EVENTRECORDER_H
