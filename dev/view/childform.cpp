#include "childform.h"
#include "ui_childform.h"

#include "energyline.h"
#include "rateinfoform.h"
#include "rteventform.h"
#include "setinfoform.h"

#include <QScrollArea>
#include <QTabWidget>

namespace {
// Lowest user level allowed to send control commands.
constexpr int kControlLevel = 1;
} // namespace

ChildForm::ChildForm(CollectView *parent)
    : CollectView(nullptr) // the host embeds the view itself; the argument is not used
    , ui(new Ui::ChildForm)
{
    Q_UNUSED(parent);
    language = 1;
    userLevel = 0;

    // The pages exist before the tab widget, whose first currentChanged
    // (on inserting tab 0) already routes data to a page.
    energyPage = new Energyline(this);
    alarmPage = new RTEventForm(this);
    ratePage = new RateInfoForm(this);
    controlPage = new SetInfoForm(this);

    ui->setupUi(this);
    setAutoFillBackground(true);

    auto *rateScroll = new QScrollArea;
    rateScroll->setAutoFillBackground(true);
    rateScroll->setWidget(ratePage);
    rateScroll->setWidgetResizable(true);

    ui->tabWidget->insertTab(EnergyTab, energyPage, tr("EnergyLine"));
    ui->tabWidget->insertTab(AlarmTab, alarmPage, tr("RT-Alarm"));
    ui->tabWidget->insertTab(RateTab, rateScroll, tr("Detail"));
    ui->tabWidget->insertTab(ControlTab, controlPage, tr("Control"));
    ui->tabWidget->setObjectName(QStringLiteral("devStacketTable"));

    connect(controlPage, &SetInfoForm::postDEvent, this, &CollectView::postDEvent);
}

ChildForm::~ChildForm()
{
    delete ui;
}

QTabWidget *ChildForm::tabs() const
{
    return ui->tabWidget;
}

void ChildForm::setName(QString name)
{
    CollectView::setName(name);
    alarmPage->setCurrentName(name);
    ratePage->setCurrentName(name);
    controlPage->setCurrentName(name);
}

void ChildForm::setUserInfo(QString user, int level)
{
    Q_UNUSED(user);
    controlPage->setEnabled(level >= kControlLevel);
}

void ChildForm::refreshData()
{
    ShowPointDevInfo();
    UpdatePointTabInfo(currentTab);
}

void ChildForm::ShowPointDevInfo()
{
}

void ChildForm::UpdatePointTabInfo(int tab)
{
    const QMap<int, QVariant> data = dataMap;
    switch (tab) {
    case EnergyTab:
        energyPage->flushData(data);
        break;
    case AlarmTab:
        alarmPage->RefreshRTEventInfo(data);
        break;
    case RateTab:
        ratePage->RefreshRateInfo(data);
        break;
    default: // the control page takes no data points
        break;
    }
}

void ChildForm::on_tabWidget_currentChanged(int index)
{
    if (index < 0)
        return;
    if (index == AlarmTab)
        alarmPage->InitRTEventFormInfo();
    else if (index == ControlTab)
        controlPage->InitSettingFormInfo();
    currentTab = index;
    UpdatePointTabInfo(index);
}
