#include "orvekview.h"

#include <QDateTimeEdit>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLoggingCategory>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>

#include "upscontract.h"

namespace {

Q_LOGGING_CATEGORY(lcOrvekView, "orvek.view.orvekview")

const char kGridName[] = "OrvekView_grid";
const char kNameLabel[] = "nameLabel";
const char kTabsName[] = "devStacketTable";
const char kTableName[] = "realDataTable";
const char kControlName[] = "ControlTable";
const char kTimeEditName[] = "timeEdit";

constexpr int kTableColumns = 2;
constexpr int kKeyColumn = 0;
constexpr int kValueColumn = 1;
constexpr int kValuePrecision = 6;
constexpr int kDataTab = 0;
constexpr int kControlTab = 1;
constexpr int kInertColumn = 5;

struct ButtonRequest {
    const char *objectName;
    int controlId;
    const char *value;
};

// "turn_bypass" has no entry on purpose: that button sends nothing.
const ButtonRequest kButtonRequests[] = {
    {"buzzer_off", UpsControl::Buzzer, "0"},
    {"buzzer_on", UpsControl::Buzzer, "1"},
    {"power_on", UpsControl::Standby, "1"},
    {"power_off", UpsControl::Shutdown, "1"},
};
const char kTimeSetButton[] = "timeSet";

} // namespace

OrvekView::OrvekView(CollectView *parent)
    : CollectView(nullptr) // embedded by the host; the argument is not used
{
    Q_UNUSED(parent);
    language = 1;
    userLevel = 0;
}

OrvekView::~OrvekView() = default;

void OrvekView::setName(QString name)
{
    CollectView::setName(name);
}

QMap<QString, QVariant> OrvekView::getUpsInfo()
{
    return upsInfo;
}

QGridLayout *OrvekView::ensureGrid()
{
    auto *grid = findChild<QGridLayout *>(QLatin1String(kGridName));
    if (grid)
        return grid;
    grid = new QGridLayout;
    grid->setObjectName(QLatin1String(kGridName));
    auto *label = new QLabel(name, this);
    label->setObjectName(QLatin1String(kNameLabel));
    grid->addWidget(label, 0, 0);
    setLayout(grid);
    return grid;
}

QTabWidget *OrvekView::ensureTabs(QGridLayout *grid)
{
    auto *tabs = findChild<QTabWidget *>(QLatin1String(kTabsName));
    if (tabs)
        return tabs;
    tabs = new QTabWidget(this);
    tabs->setObjectName(QLatin1String(kTabsName));
    grid->addWidget(tabs, 1, 0);
    return tabs;
}

void OrvekView::ensureDataTable(QTabWidget *tabs)
{
    if (findChild<QTableWidget *>(QLatin1String(kTableName)))
        return;
    auto *table = new QTableWidget(0, kTableColumns, this);
    table->setObjectName(QLatin1String(kTableName));
    table->setHorizontalHeaderLabels({tr("id"), tr("value")});
    tabs->insertTab(kDataTab, table, tr("RT-data"));
}

void OrvekView::ensureControlPage(QTabWidget *tabs)
{
    if (findChild<QWidget *>(QLatin1String(kControlName)))
        return;
    auto *page = new QWidget(this);
    page->setObjectName(QLatin1String(kControlName));
    tabs->insertTab(kControlTab, page, tr("Control"));
    auto *grid = new QGridLayout(page);
    grid->setColumnStretch(kInertColumn, 0);

    auto addButton = [this, page, grid](const char *objectName, const QString &text, int row, int column) {
        auto *button = new QPushButton(text, page);
        button->setObjectName(QLatin1String(objectName));
        grid->addWidget(button, row, column);
        connect(button, &QPushButton::clicked, this, &OrvekView::pushButtonSlot);
    };

    grid->addWidget(new QLabel(tr("Buzzer:"), page), 0, 0);
    addButton("buzzer_off", tr("Turn off"), 1, 0);
    addButton("buzzer_on", tr("Turn on"), 1, 1);
    grid->addWidget(new QLabel(tr("Startup&Shutdown:"), page), 2, 0);
    addButton("power_on", tr("Startup"), 3, 0);
    addButton("turn_bypass", tr("Shutdown to bypass"), 3, 1);
    addButton("power_off", tr("Shutdown stop output"), 3, 2);
    grid->addWidget(new QLabel(tr("Dev time set"), page), 4, 0);
    auto *timeEdit = new QDateTimeEdit(page);
    timeEdit->setObjectName(QLatin1String(kTimeEditName));
    grid->addWidget(timeEdit, 5, 0);
    addButton(kTimeSetButton, tr("Time set"), 5, 1);
}

void OrvekView::refreshLayout()
{
    QGridLayout *grid = ensureGrid();
    QTabWidget *tabs = ensureTabs(grid);
    ensureDataTable(tabs);
    ensureControlPage(tabs);
}

void OrvekView::refreshData()
{
    auto *table = findChild<QTableWidget *>(QLatin1String(kTableName));
    if (!table)
        return;
    table->setRowCount(dataMap.size());
    int row = 0;
    for (auto it = dataMap.constBegin(); it != dataMap.constEnd(); ++it, ++row) {
        const QString texts[kTableColumns] = {
            QString::number(it.key()),
            QString::number(it.value().toFloat(), 'g', kValuePrecision),
        };
        for (int column : {kKeyColumn, kValueColumn}) {
            QTableWidgetItem *item = table->item(row, column);
            if (!item) {
                item = new QTableWidgetItem;
                table->setItem(row, column, item);
            }
            item->setText(texts[column]);
        }
    }
}

void OrvekView::flushData(QMap<int, QVariant> d)
{
    dataMap = d;
    refreshData();
}

void OrvekView::pushButtonSlot()
{
    const QObject *source = sender();
    if (!source)
        return;
    const QString objectName = source->objectName();
    for (const ButtonRequest &request : kButtonRequests) {
        if (objectName == QLatin1String(request.objectName)) {
            control(request.controlId, QLatin1String(request.value));
            return;
        }
    }
    if (objectName == QLatin1String(kTimeSetButton)) {
        auto *timeEdit = findChild<QDateTimeEdit *>(QLatin1String(kTimeEditName));
        if (timeEdit)
            control(UpsControl::TimeSet, timeEdit->text());
        return;
    }
    qCDebug(lcOrvekView) << "no request for" << objectName;
}
