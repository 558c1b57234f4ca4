#ifndef EVENTRECORDER_H
#define EVENTRECORDER_H

#include <QMutex>
#include <QPair>

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
    void clear()
    {
        QMutexLocker locker(&m_lock);
        m_events.clear();
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
    QList<int> types() const
    {
        QList<int> out;
        for (const Event &e : events())
            out << e.first;
        return out;
    }
    int count(int type) const { return types().count(type); }

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
