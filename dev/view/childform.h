#ifndef CHILDFORM_H
#define CHILDFORM_H

#include <QMap>
#include <QString>
#include <QVariant>

#include "collectview.h"

class Energyline;
class RTEventForm;
class RateInfoForm;
class SetInfoForm;
class QScrollArea;
class QTabWidget;

namespace Ui {
class ChildForm;
}

// The device view handed to the host: a tab widget with the energy-flow
// diagram, the active alarms, the rated information and the control page.
// Data points go only to the visible page; a tab change brings the newly
// shown page up to date. Control requests of the settings page leave
// through this view's postDEvent.
class ChildForm : public CollectView
{
    Q_OBJECT

public:
    explicit ChildForm(CollectView *parent = nullptr);
    ~ChildForm() override;

    void ShowPointDevInfo();
    void UpdatePointTabInfo(int tab);

    Energyline *energyPage = nullptr;
    RTEventForm *alarmPage = nullptr;
    RateInfoForm *ratePage = nullptr;
    SetInfoForm *controlPage = nullptr;
    int currentTab = 0;

    // Tab indexes of the four pages.
    enum Tab { EnergyTab = 0, AlarmTab = 1, RateTab = 2, ControlTab = 3 };

    QTabWidget *tabs() const;

public slots:
    void setName(QString name) override;
    void setUserInfo(QString user, int level) override;
    void refreshData() override;

private slots:
    void on_tabWidget_currentChanged(int index);

private:
    Ui::ChildForm *ui;
};

#endif // CHILDFORM_H
