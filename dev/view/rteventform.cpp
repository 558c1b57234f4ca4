#include "rteventform.h"
#include "ui_rteventform.h"

#include <QHeaderView>
#include <QLoggingCategory>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QVBoxLayout>

Q_LOGGING_CATEGORY(lcRTEvent, "orvek.view.rtevent", QtInfoMsg)

namespace {
constexpr int kAlarmIdBase = 2000;   // data point id of alarm index 0
constexpr int kTableColumns = 2;
constexpr int kTimeColumn = 0;
constexpr int kTextColumn = 1;
constexpr int kTableFontPointSize = 11;
constexpr int kTableMinimumHeight = 610;
constexpr int kAlarmActive = 1;
constexpr int kAlarmInactive = 0;
const char kTimeFormat[] = "yyyy-MM-dd HH:mm:ss";
const char kTableFontFamily[] = "Microsoft YaHei";
const char kTableStyle[] = "alternate-background-color: #DDDFF5; background: #FFFFFF;";
} // namespace

RTEventForm::RTEventForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::RTEventForm)
{
    ui->setupUi(this);
    yesNoTexts << tr("Yes") << tr("No");
    fillEventTexts();
    InitRTEvent();
    initTable();
}

RTEventForm::~RTEventForm()
{
    delete ui;
}

// The alarm texts of this page (indices 0-53) followed by their return-to-
// normal texts (index + 54), one per bit of the 54-bit alarm block. This page
// keeps its own list, which differs from the event log's list in two places:
// the four switch alarms 28-31 read "... switch is off" here ("... switch
// open" in the log) with normals "... switch on" / "... switch is on" (log:
// "... switch close"), and the normals of 26 and 27 are empty here (the log
// has "Battery Discharge end" and "Battery equalization end").
void RTEventForm::fillEventTexts()
{
    eventTexts.clear();
    eventTexts << tr("Communication between agent and UPS fault")
               << tr("Battery fault")
               << tr("Battery powered")
               << tr("Battery low")
               << tr("Battery EOD")
               << tr("Temperature overrun MAX-value")
               << tr("Input fault")
               << tr("Output fault")
               << tr("Load overrun MAX-value")
               << tr("Bypass powered")
               << tr("Bypass fault")
               << tr("The UPS output has shutdown as requested")
               << tr("The entire UPS has shutdown as commanded")
               << tr("Charger subsystem fault")
               << tr("The output of the UPS is in the off state")
               << tr("The UPS system is in the off state")
               << tr("Fan fault")
               << tr("Fuse fault")
               << tr("UPS fault")
               << tr("Last diagnostic test failed")
               << tr("Communications between the agent and the UPS fault")
               << tr("UPS shutdown after delay countdown is underway")
               << tr("The UPS will turn off power to the load")
               << tr("A test is in progress")
               << QString() << QString()
               << tr("Battery Discharge")
               << tr("Battery equalization")
               << tr("Battery switch is off")
               << tr("Input switch is off")
               << tr("Output switch is off")
               << tr("Bypass switch is off")
               << QString() << QString();
    // Indices 34-53: five alarms for each of four temperature/humidity modules.
    eventTexts
               << tr("Temperature and humidity module 1 communication lost")
               << tr("Temperature and humidity module 1 temperature is too high")
               << tr("Temperature and humidity module 1 temperature is too low")
               << tr("Temperature and humidity module 1 humidity is too high")
               << tr("Temperature and humidity module 1 humidity is too low")
               << tr("Temperature and humidity module 2 communication lost")
               << tr("Temperature and humidity module 2 temperature is too high")
               << tr("Temperature and humidity module 2 temperature is too low")
               << tr("Temperature and humidity module 2 humidity is too high")
               << tr("Temperature and humidity module 2 humidity is too low")
               << tr("Temperature and humidity module 3 communication lost")
               << tr("Temperature and humidity module 3 temperature is too high")
               << tr("Temperature and humidity module 3 temperature is too low")
               << tr("Temperature and humidity module 3 humidity is too high")
               << tr("Temperature and humidity module 3 humidity is too low")
               << tr("Temperature and humidity module 4 communication lost")
               << tr("Temperature and humidity module 4 temperature is too high")
               << tr("Temperature and humidity module 4 temperature is too low")
               << tr("Temperature and humidity module 4 humidity is too high")
               << tr("Temperature and humidity module 4 humidity is too low");

    eventTexts << tr("Communications between agent and UPS normal")
               << tr("Battery normal")
               << tr("Utility supply normal")
               << tr("Battery voltage normal")
               << tr("Battery resume")
               << tr("Temperature normal")
               << tr("Input normal")
               << tr("Output normal")
               << tr("The output load normal")
               << tr("Inverter operation")
               << tr("Bypass normal")
               << tr("The UPS output not shutdown as requested")
               << tr("The entire UPS not shutdown as commanded")
               << tr("Charger subsystem normal")
               << tr("UPS output on")
               << tr("UPS on")
               << tr("Fan normal")
               << tr("Fuse normal")
               << tr("UPS normal")
               << tr("Last diagnostic test success")
               // Paired with index 20 as the device's list has it.
               << tr("UPS is not awaiting the return of input power")
               << tr("UPS shutdown after delay ended")
               << tr("The UPS will not turn off power to the load")
               << tr("No a test is in progress")
               << QString() << QString()
               << QString()
               << QString()
               << tr("Battery switch on")
               << tr("Input switch on")
               << tr("Output switch is on")
               << tr("Bypass switch is on")
               << QString() << QString();
    // Indices 88-107: the modules' return-to-normal texts.
    eventTexts
               << tr("Temperature and humidity module 1 communication normal")
               << tr("Temperature and humidity module 1 temperature is normal")
               << tr("Temperature and humidity module 1 temperature is normal")
               << tr("Temperature and humidity module 1 humidity is normal")
               << tr("Temperature and humidity module 1 humidity is normal")
               << tr("Temperature and humidity module 2 communication normal")
               << tr("Temperature and humidity module 2 temperature normal")
               << tr("Temperature and humidity module 2 temperature normal")
               << tr("Temperature and humidity module 2 humidity is normal")
               << tr("Temperature and humidity module 2 humidity is normal")
               << tr("Temperature and humidity module 3 communication normal")
               << tr("Temperature and humidity module 3 temperature is normal")
               << tr("Temperature and humidity module 3 temperature is normal")
               << tr("Temperature and humidity module 3 humidity is normal")
               << tr("Temperature and humidity module 3 humidity is normal")
               << tr("Temperature and humidity module 4 communication normal")
               << tr("Temperature and humidity module 4 temperature is normal")
               << tr("Temperature and humidity module 4 temperature is normal")
               << tr("Temperature and humidity module 4 humidity is normal")
               << tr("Temperature and humidity module 4 humidity is normal");
}

void RTEventForm::initTable()
{
    if (!ui->widget)
        return;

    eventTable = new QTableWidget(ui->widget);
    eventTable->setObjectName(QStringLiteral("basicTable"));
    ui->widget->setObjectName(QStringLiteral("AlarmTable"));

    QFont font;
    font.setFamily(QString::fromLatin1(kTableFontFamily));
    font.setPointSize(kTableFontPointSize);
    eventTable->setFont(font);
    eventTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    eventTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    eventTable->setSelectionMode(QAbstractItemView::SingleSelection);
    eventTable->setFocusPolicy(Qt::NoFocus);
    eventTable->setShowGrid(false);
    eventTable->verticalHeader()->setVisible(false);
    eventTable->setColumnCount(kTableColumns);
    eventTable->setHorizontalHeaderLabels({tr("Data/Time"), tr("Event description")});
    eventTable->horizontalHeader()->setHighlightSections(false);
    eventTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    eventTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    eventTable->setAlternatingRowColors(true);
    eventTable->setStyleSheet(QString::fromLatin1(kTableStyle));
    eventTable->setMinimumHeight(kTableMinimumHeight);

    auto *column = new QVBoxLayout(ui->widget);
    column->setAlignment(Qt::AlignTop);
    column->addWidget(eventTable);
    column->addStretch();
}

void RTEventForm::setCurrentName(QString name)
{
    currentName = name;
}

void RTEventForm::InitRTEvent()
{
}

void RTEventForm::InitRTEventFormInfo()
{
}

void RTEventForm::RefreshRTEventInfo(QMap<int, QVariant> map)
{
    Show_RTEvent_View(map);
}

void RTEventForm::Show_RTEvent_View(QMap<int, QVariant> map)
{
    if (!eventTable)
        return;

    // The remembered index is selected after the clear, so no selection
    // survives the rebuild in a useful way; this order is the page's behaviour.
    const QModelIndex current = eventTable->currentIndex();
    eventTable->clearContents();
    eventTable->selectRow(current.row());
    eventTable->setRowCount(0);

    if (eventTexts.size() < 2)
        return;

    const int alarmCount = eventTexts.size() / 2;
    for (int i = 0; i < alarmCount; ++i) {
        const int state = map.value(kAlarmIdBase + i).toInt();
        const int row = eventTable->rowCount();

        if (state == kAlarmInactive) {
            alarmStartTimes.remove(i);
            continue;
        }
        if (state != kAlarmActive)
            continue; // unknown state: keep whatever was recorded

        if (!alarmStartTimes.contains(i))
            alarmStartTimes.insert(i, QDateTime::currentDateTime());

        const QString text = eventTexts.value(i);
        if (text.isEmpty())
            continue; // reserved bit: timed, but never listed

        eventTable->setRowCount(row + 1);
        auto *timeItem = new QTableWidgetItem(
            alarmStartTimes.value(i).toString(QString::fromLatin1(kTimeFormat)));
        auto *textItem = new QTableWidgetItem(text);
        textItem->setToolTip(text); // long module texts are elided in the column
        eventTable->setItem(row, kTimeColumn, timeItem);
        eventTable->setItem(row, kTextColumn, textItem);
        for (QTableWidgetItem *item : {timeItem, textItem}) {
            if (!item->text().isEmpty())
                item->setTextAlignment(Qt::AlignCenter);
        }
    }
    qCDebug(lcRTEvent) << currentName << "active alarms listed:" << eventTable->rowCount();
}
