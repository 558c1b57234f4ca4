#ifndef COLLECTTHREAD_H
#define COLLECTTHREAD_H

#include <QMap>
#include <QMetaType>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariant>

class CollectView;

// Event payload of postDEvent: key/value pairs, see the event catalogue.
typedef QMap<QString, QVariant> EventMap;
// Data point id -> value (registers, alarm states, identity texts).
typedef QMap<int, QVariant> DataPointMap;

// Base class of every device client a plug-in hands to the host.
//
// Signatures below spell the map types out (QMap<QString,QVariant>,
// QMap<int,QVariant>) instead of using the typedefs: moc does not resolve
// typedefs, and hosts connect by the spelled-out SIGNAL()/SLOT() strings.
class CollectThread : public QThread
{
    Q_OBJECT
public:
    explicit CollectThread(QObject *parent = nullptr)
        : QThread(parent)
    {
        registerContractTypes();
    }
    ~CollectThread() override = default;

    // Registers the contract's meta-types; safe to call any number of times.
    static void registerContractTypes();

    bool released = false;
    QString name;
    int protocol = 0;
    int interval = 0;
    int retries = 5;
    int failCount = 0;
    int lostState = -1;
    int reloadConfig = 0;
    QMap<int, int> eventChooseList;
    QMap<int, int> eventStates;
    QMap<QString, QVariant> slotInfo;
    QMap<QString, QVariant> upsInfo;
    void *portHandle = nullptr;
    int workState = 0;
    qint64 nextPollTime = 0;
    QMutex mutex;

    // Host bookkeeping; device plug-ins only initialise these.
    QString devType;
    QString devDesc;
    QString devGroup;
    int enabled = 1;
    int visible = 1;
    int devIndex = 0;
    int hostFlags = 0;

    // Stores a pair in upsInfo under the lock.
    void flushUpsInfo(QString key, QVariant value)
    {
        QMutexLocker locker(&mutex);
        upsInfo.insert(key, value);
    }

signals:
    void postDEvent(int type, QMap<QString, QVariant> map);

public slots:
    virtual int control(int id, QString value)
    {
        Q_UNUSED(id)
        Q_UNUSED(value)
        return 0;
    }
    virtual QStringList getDataLogDesc() { return QStringList(); }
    virtual QStringList changeLogData(QMap<int, QVariant> data)
    {
        Q_UNUSED(data)
        return QStringList();
    }
    virtual QStringList getEventLogDesc() { return QStringList(); }
    virtual CollectView *getView() { return nullptr; }
    virtual void loadConfig() {}
    virtual CollectThread *create(void *handle)
    {
        Q_UNUSED(handle)
        return nullptr;
    }
    virtual void release(CollectThread *client) { Q_UNUSED(client) }
    virtual void setPortHandle(void *handle) { portHandle = handle; }
    void flushUpsInfoSLot(QString key, QVariant value) { slotInfo[key] = value; }
    virtual void poll() {}
    virtual int getWorkState() { return workState; }
};

#endif // COLLECTTHREAD_H
