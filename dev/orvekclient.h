#ifndef ORVEKCLIENT_H
#define ORVEKCLIENT_H

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QPair>
#include <QVector>
#include <QString>
#include <QtPlugin>

#include "collectthread.h"
#include "collectview.h"
#include "controlcmd.h"
#include "stampclock.h"

class QTcpSocket;
struct UpsAnswer;

#define OrvekClient_iid "com.wenk.Qt.ProInterface"

// Device client for UPS units behind a Modbus/TCP network agent.
//
// One tick of the timer (threadTimer) runs the queued control commands,
// keeps the connection up, sends the next of four fixed read requests and
// decodes the answer into data points and events, then publishes the data
// points into upsInfo. The plug-in's root instance is an OrvekClient too and
// only serves as the factory (create).
class OrvekClient : public CollectThread
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID OrvekClient_iid)

public:
    explicit OrvekClient(CollectThread *parent = nullptr);
    ~OrvekClient() override;

    // Deliberately declared with the derived type: it does not override
    // CollectThread::release, so calls through the base reach the empty default.
    void release(OrvekClient *client);
    void setTarget(QString address, int port);
    void run() override;

    void UPS_sendMessage();
    void reportData();
    int check_set_command();
    QString utfToChina(QString s);

    // Takes one received buffer exactly as readMessage does with the bytes
    // read from the socket: decoded by UpsAnswer, stored and reported here.
    // Usable without a socket (tests, fuzzing).
    void decodeAnswer(const QByteArray &buffer);

    // The fixed read request sent at rotation position index (0..3) and the
    // write-single-register request (see UpsFrames).
    static QByteArray readRequest(int index);
    static QByteArray writeRequest(quint8 reg, quint16 value);

    // Test seam: the pause before and the wait for a connection attempt
    // (defaults 5000 ms and 30000 ms).
    void setConnectTimings(int pauseMs, int connectWaitMs);

    // Path of the host's device file below the application directory.
    static QString configFilePath();

    QTcpSocket *socket = nullptr;
    QString targetAddress;
    int targetPort = 0;
    QMutex cmdMutex;
    QList<ControlCmd> cmdList;
    CollectView *view = nullptr;
    DataPointMap dataPoints;
    int requestIndex = 0;

    // Overrides of the contract's slots; the host reaches them through the
    // base class's meta-object.
    QStringList getDataLogDesc() override;
    QStringList changeLogData(QMap<int, QVariant> data) override;
    QStringList getEventLogDesc() override;
    CollectView *getView() override;
    void loadConfig() override;
    CollectThread *create(void *handle) override;
    void poll() override;

public slots:
    int control(int id, QString value) override;

private slots:
    void threadTimer();
    void readMessage();

private:
    // The fields every event carries and the connection text, as last seen.
    struct Target
    {
        QString name;
        int protocol = 0;
        QString address;
        int port = 0;
        bool operator==(const Target &o) const
        {
            return name == o.name && protocol == o.protocol && address == o.address && port == o.port;
        }
    };

    EventMap baseEventMap();
    void refreshTarget();
    // Appends the upsInfo pairs whose value differs from what was published.
    void stageDataPoints(QVector<QPair<QString, QVariant>> &changes);
    void stageInfo(QVector<QPair<QString, QVariant>> &changes, const QString &key, const QVariant &value);
    void connectOrCountFailure(EventMap &map);
    void storeMeasurements(const UpsAnswer &answer, EventMap &ev);
    // Alarm states of the evaluated numbers, with an event for each change;
    // true when one was raised.
    bool storeAlarms(const UpsAnswer &answer, EventMap &ev);
    bool takeNextCommand(ControlCmd &cmd);
    void sendCommand(quint8 reg, quint16 value);
    void waitForAnswer();
    // The scaled interval in milliseconds, saturated for absurd settings.
    int intervalMs() const;

    int reconnectPauseMs;
    int connectWaitMs;

    StampClock stampClock;
    Target target;
    EventMap targetMap; // every event's fields but the time stamp
    QString portInfo;
    // What upsInfo holds from this client, so a tick writes only changes.
    DataPointMap publishedPoints;
    QMap<QString, QVariant> publishedInfo;
};

#endif // ORVEKCLIENT_H
