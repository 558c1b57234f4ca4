#include "rteventform.h"
#include "ui_rteventform.h"

#include <QHeaderView>
#include <QLoggingCategory>
#include <QTableWidget>
#include <QTableWidgetItem>
#include <QVBoxLayout>

#include "upsalarms.h"
#include "upspoints.h"

Q_LOGGING_CATEGORY(lcRTEvent, "orvek.view.rtevent", QtInfoMsg)

namespace {
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
// normal texts (index + 54), in this page's wording (UpsCatalogue).
void RTEventForm::fillEventTexts()
{
    eventTexts = UpsAlarms::eventTexts(staticMetaObject.className());
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
        const int state = map.value(UpsPoint::AlarmFirst + i).toInt();
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
