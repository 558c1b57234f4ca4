#ifndef DEVICESESSION_H
#define DEVICESESSION_H

#include <QDateTime>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "collectview.h"
#include "stalerule.h"

class CollectThread;


// What the device list shows of one device, read from the client's upsInfo.
struct DeviceStatus
{
    enum class State { Unknown, Communicating, Lost };

    QString name;
    State state = State::Unknown;
    QString model;       // upsIdentModel without padding
    int load = -1;       // upsLoad, % (-1: not known)
    QString portInfo;
    bool alarmActive = false;
    // Communicating, but the latest decoded answer is older than the stale rule allows.
    bool stale = false;
};

// One device: its client (a thread of its own), its view, and the routing
// between them. Requests from the view come back through the client's
// postDEvent and go to the client's control(); decoded data goes to the view.
// The session owns the client; the client owns the view. The view is asked
// for only when the device is first shown (a headless host never has one)
// and is given data only while shown; showing it brings it up to date.
class DeviceSession : public QObject
{
    Q_OBJECT
public:
    // Asks the factory for a client: create, name, loadConfig. Null when the
    // factory yields no client. The thread is not started yet.
    static DeviceSession *create(CollectThread *factory, const QString &name, QObject *parent = nullptr);
    ~DeviceSession() override;

    QString name() const { return m_name; }
    CollectThread *client() const { return m_client; }
    // Null until the device was first shown.
    CollectView *view() const { return m_view; }
    // Gets the view from the client on the first call, then hands it the
    // latest data; it keeps getting data until hideView().
    CollectView *showView();
    void hideView() { m_viewShown = false; }
    bool isViewShown() const { return m_viewShown; }

    void start();
    // Asks the client's event loop to end; the current tick finishes first.
    void requestStop();
    // Waits up to ms for the thread to end; true when it is not running.
    bool waitStopped(unsigned long ms);
    bool isRunning() const;

    // Reads upsInfo under the client's mutex.
    DeviceStatus status() const;
    // The data points of the latest decoded measurement answer.
    QMap<int, QVariant> latestData() const { return m_latestData; }
    // When that answer arrived; invalid before the first one. The client
    // reports "lost" only for failed connections: an agent that holds the
    // connection but stops answering shows only as a growing age.
    QDateTime lastDataTime() const { return m_lastDataTime; }
    // When data counts as stale; from the device's interval, set at start.
    void setStaleRule(const StaleRule &rule) { m_staleRule = rule; }
    StaleRule staleRule() const { return m_staleRule; }
    bool isStale(const QDateTime &now) const { return m_staleRule.isStale(m_lastDataTime, now); }
    // "12 s ago", "3 min 5 s ago", "2 h 10 min ago"; "none yet" when invalid.
    static QString dataAgeText(const QDateTime &last, const QDateTime &now);
    // True once the view has been given measurements, alarm states and the
    // identity: a whole polling rotation has reached it.
    bool hasFullPicture() const;
    // Texts of the alarms active in the latest data.
    QStringList activeAlarms() const;

    QStringList eventTexts() const { return m_eventTexts; }
    QStringList dataLogHeader() const { return m_dataLogHeader; }
    QStringList dataLogRow(const QMap<int, QVariant> &data) const;

    // Asks for a control command exactly as the view's widgets do.
    void requestControl(int controlId, const QString &value);
    void setUserInfo(const QString &user, int level);

    // The model text of an identity block: up to the first NUL, trimmed.
    static QString identityText(const QVariant &value);
    static bool alarmsActive(const QMap<int, QVariant> &data);

signals:
    // Every event of the client, after it was routed.
    void eventReceived(int type, QMap<QString, QVariant> map);
    // A measurement answer with the whole data point map.
    void dataReceived(QMap<int, QVariant> data);

private slots:
    void onPostDEvent(int type, QMap<QString, QVariant> map);

private:
    DeviceSession(CollectThread *client, const QString &name, QObject *parent);
    void stopAndWait();
    void updateView();

    QString m_name;
    CollectThread *m_client = nullptr;
    QPointer<CollectView> m_view;
    bool m_viewShown = false;
    QString m_userName; // handed to the view once it exists
    int m_userLevel = -1;
    QStringList m_eventTexts;
    QStringList m_dataLogHeader;
    QMap<int, QVariant> m_latestData;
    QDateTime m_lastDataTime;
    StaleRule m_staleRule;
};

#endif // DEVICESESSION_H
