#ifndef COMMANDWATCH_H
#define COMMANDWATCH_H

#include <QHash>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

class QTimer;

// Whether a control command did what it asks for. The client reports a
// command as executed once the register write went out; whether the UPS
// acted on it shows only in later answers: a test raises "test in progress",
// a shutdown raises its alarms, the buzzer state flips. This watches the
// decoded data of each device after a request for that change and gives one
// verdict per request: seen, or not seen within the bound.
class CommandWatch : public QObject
{
    Q_OBJECT
public:
    // Polling rotations a command gets to show its effect: the write goes
    // out with the next tick, the alarm bits come once per rotation, and the
    // device may take a moment to act.
    static constexpr int BoundRotations = 3;

    explicit CommandWatch(QObject *parent = nullptr);
    ~CommandWatch() override;

    // How long the effect of a command may take on a device with that
    // configured interval (< 0: the client's default).
    static int boundSeconds(int configuredInterval);
    // Commands with an effect the data shows (a time set has none).
    static bool isWatched(int controlId);
    // Whether the change from before to after is the effect of the command:
    // some point it watches moved the expected way and none the other way.
    // A point missing from before (no data yet) is only a reference.
    static bool showsEffect(int controlId, const QMap<int, QVariant> &before, const QMap<int, QVariant> &after);
    // The event text of a verdict; the command named as the client names it.
    static QString verdictText(int controlId, bool confirmed, int boundSeconds);

    void setPollInterval(const QString &device, int configuredInterval);
    int boundSecondsFor(const QString &device) const;

    // Starts watching a request; latest is the device's data at that moment,
    // the reference for the change. A request repeated before its verdict
    // starts over. Unwatched commands are ignored.
    void watch(const QString &device, int controlId, const QMap<int, QVariant> &latest);
    void watch(const QString &device, int controlId, const QMap<int, QVariant> &latest, int boundMs);
    // A decoded answer of the device.
    void addData(const QString &device, const QMap<int, QVariant> &data);
    // The client did not send the command (not connected): no verdict, but
    // abandoned for those waiting on one.
    void notSent(const QString &device, int controlId);
    void forget(const QString &device, int controlId);
    void clear();
    int pendingCount() const { return m_watches.size(); }

signals:
    void verdict(QString device, int controlId, bool confirmed, int boundSeconds);
    void abandoned(QString device, int controlId);

private:
    struct Watch
    {
        QString device;
        int controlId = 0;
        QMap<int, QVariant> last; // the watched points as last seen
        QTimer *timer = nullptr;
        int boundSeconds = 0;
    };
    int indexOf(const QString &device, int controlId) const;
    void finish(int index, bool confirmed);

    QList<Watch> m_watches;
    QHash<QString, int> m_intervals;
};

#endif // COMMANDWATCH_H
