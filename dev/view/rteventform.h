#ifndef RTEVENTFORM_H
#define RTEVENTFORM_H

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>
#include <QWidget>

class QTableWidget;

namespace Ui {
class RTEventForm;
}

// Page listing the alarms that are active now, one row per alarm in alarm
// index order, each with the time this form first saw it become active.
class RTEventForm : public QWidget
{
    Q_OBJECT
public:
    explicit RTEventForm(QWidget *parent = nullptr);
    ~RTEventForm() override;

    void initTable();
    void setCurrentName(QString name);
    void InitRTEvent();
    void InitRTEventFormInfo();
    void RefreshRTEventInfo(QMap<int, QVariant> map);
    void Show_RTEvent_View(QMap<int, QVariant> map);

    QString name() const { return currentName; }
    // Start time recorded for an alarm index; invalid when none is recorded.
    QDateTime alarmStartTime(int index) const { return alarmStartTimes.value(index); }
    int recordedAlarmCount() const { return alarmStartTimes.size(); }
    QString eventText(int index) const { return eventTexts.value(index); }
    int eventTextCount() const { return eventTexts.size(); }

private:
    void fillEventTexts();

    Ui::RTEventForm *ui;
    QVector<QString> yesNoTexts;
    QMap<int, QDateTime> alarmStartTimes;
    QString currentName;
    QList<QString> eventTexts;
    QTableWidget *eventTable = nullptr;
};

#endif // RTEVENTFORM_H
