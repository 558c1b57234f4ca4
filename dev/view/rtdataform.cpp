#include "rtdataform.h"
#include "ui_rtdataform.h"

#include "datapointvalue.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QHeaderView>
#include <QLoggingCategory>
#include <QTableWidgetItem>

#include <iterator>

#include "upscatalogue.h"
#include "upsformat.h"
#include "upspoints.h"

Q_LOGGING_CATEGORY(lcRtDataForm, "orvek.view.rtdataform", QtInfoMsg)

namespace {

// Table geometry.
constexpr int kColumnCount = 3;
constexpr int kRowCount = 23;
constexpr int kSectionColumn = 0;
constexpr int kLabelColumn = 1;
constexpr int kValueColumn = 2;
constexpr int kSectionColumnWidth = 150;
constexpr int kLabelColumnWidth = 350;
// The phase columns toggled with the layout; the table has only columns 0-2,
// so these calls are no-ops that are kept with the phase switching.
constexpr int kPhaseColumnFirst = 3;
constexpr int kPhaseColumnSecond = 4;

constexpr int kHeaderRow = 0;
const QColor kHeaderBackground(250, 250, 250);
const QColor kHeaderForeground(0, 0, 0);
constexpr int kHeaderFontPointSize = 14;

// The data point of value row r is entry r - 1; the label column shows its
// data-log title in this form's translation context (its R/S/T title when
// its phase group reads three phases).
const int kRowPoints[] = {
    UpsPoint::BatteryStatus,   UpsPoint::SecondsOnBattery, UpsPoint::RemainingMinutes, UpsPoint::BatteryCapacity,
    UpsPoint::BatteryVoltage,  UpsPoint::BatteryCurrent,   UpsPoint::BatteryTemperature, UpsPoint::MainsFailures,
    UpsPoint::InputVoltage,    UpsPoint::InputCurrent,     UpsPoint::InputFrequency,   UpsPoint::InputPower,
    UpsPoint::OutputSource,    UpsPoint::OutputFrequency,  UpsPoint::OutputVoltage,    UpsPoint::OutputCurrent,
    UpsPoint::OutputPower,     UpsPoint::OutputLoad,       UpsPoint::BypassFrequency,  UpsPoint::BypassVoltage,
    UpsPoint::BypassCurrent,   UpsPoint::BypassPower,
};
constexpr int kFirstValueRow = 1;
constexpr int kLastValueRow = kFirstValueRow + int(std::size(kRowPoints)) - 1;
constexpr int kRowBatteryState = kFirstValueRow;
static_assert(kLastValueRow < kRowCount, "every value row fits the table");

// Rows this device family does not report; their cells are still written.
constexpr int kHiddenRows[] = {2, 3, 6, 10, 12, 16, 17, 21, 22};

struct Section
{
    int firstRow;
    int rowSpan;
    const char *title;
};

const Section kSections[] = {
    {1, 7, QT_TRANSLATE_NOOP("RTDataForm", "Battery Info")},
    {8, 5, QT_TRANSLATE_NOOP("RTDataForm", "Input Info")},
    {13, 6, QT_TRANSLATE_NOOP("RTDataForm", "Output Info")},
    {19, 4, QT_TRANSLATE_NOOP("RTDataForm", "Bypass Info")},
};

// Above this the temperature sensor reading is treated as absent.
constexpr int kMaxPlausibleTemperature = 100;
// Shown for a code outside its list: "Normal" and "None supply".
constexpr int kCodeFallbackIndex = 1;

// Values are rounded to whole register numbers first; power pairs show
// their first register (18, 20, 22 and so on) per phase.
UpsFormat::Options valueOptions()
{
    UpsFormat::Options options;
    options.context = RTDataForm::staticMetaObject.className();
    options.codeFallback = kCodeFallbackIndex;
    return options;
}

} // namespace

RTDataForm::RTDataForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::RTDataForm)
    , inputSinglePhase(true)
{
    ui->setupUi(this);

    QTableWidget *table = ui->tableWidget;
    table->setColumnCount(kColumnCount);
    table->setRowCount(kRowCount);
    table->setColumnWidth(kSectionColumn, kSectionColumnWidth);
    table->setColumnWidth(kLabelColumn, kLabelColumnWidth);
    table->verticalHeader()->setVisible(false);
    table->horizontalHeader()->setVisible(false);
    table->setTextElideMode(Qt::ElideMiddle);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);

    setupContentsInfo();
}

RTDataForm::~RTDataForm()
{
    delete ui;
}

void RTDataForm::setCurrentName(QString name)
{
    currentName = name;
}

void RTDataForm::setupContentsInfo()
{
    QTableWidget *table = ui->tableWidget;

    auto *header = new QTableWidgetItem(tr("Real-time Info"));
    header->setData(Qt::BackgroundRole, kHeaderBackground);
    header->setData(Qt::ForegroundRole, kHeaderForeground);
    header->setData(Qt::FontRole, QFont(QStringLiteral("Arial"), kHeaderFontPointSize));
    table->setItem(kHeaderRow, kSectionColumn, header);
    for (int column : {kLabelColumn, kValueColumn}) {
        auto *filler = new QTableWidgetItem();
        filler->setBackground(QBrush(kHeaderBackground, Qt::SolidPattern));
        table->setItem(kHeaderRow, column, filler);
    }

    for (const Section &section : kSections) {
        table->setItem(section.firstRow, kSectionColumn, new QTableWidgetItem(tr(section.title)));
        for (int row = section.firstRow + 1; row < section.firstRow + section.rowSpan; ++row)
            table->setItem(row, kSectionColumn, new QTableWidgetItem());
    }

    for (int row = kFirstValueRow; row <= kLastValueRow; ++row)
        setItemLabel(row, rowTitle(kRowPoints[row - kFirstValueRow], false));

    for (const Section &section : kSections)
        table->setSpan(section.firstRow, kSectionColumn, section.rowSpan, 1);
}

void RTDataForm::InitRTData()
{
    setValueText(kRowBatteryState,
                 UpsFormat::codeText(UpsPoints::CodeList::BatteryStatus, 0, kCodeFallbackIndex,
                                    staticMetaObject.className()));
    for (int row = kRowBatteryState + 1; row <= kLastValueRow; ++row)
        setValueText(row, QStringLiteral("0"));
    for (int row : kHiddenRows)
        ui->tableWidget->setRowHidden(row, true);
}

void RTDataForm::InitRTDataFormInfo()
{
    RefreshRTDataInfo(QMap<int, QVariant>());
}

void RTDataForm::RefreshRTDataInfo(QMap<int, QVariant> map)
{
    Show_RTData_View(map);
}

void RTDataForm::Show_RTData_View(QMap<int, QVariant> map)
{
    QMap<int, QVariant> values;
    for (int id = 0; id < UpsPoint::MeasurementCount; ++id)
        values.insert(id, DataPointValue::rounded(map, id));

    updatePhaseLayout(values);
    const UpsFormat::Options options = valueOptions();
    for (int row = kFirstValueRow; row <= kLastValueRow; ++row) {
        const int id = kRowPoints[row - kFirstValueRow];
        if (id == UpsPoint::BatteryTemperature && values.value(id).toInt() > kMaxPlausibleTemperature)
            setValueText(row, UpsFormat::noReading());
        else
            setValueText(row, UpsFormat::text(values, id, options));
        const UpsPoints::PhaseGroup group = UpsPoints::info(id).group;
        if (group != UpsPoints::PhaseGroup::None)
            setItemLabel(row, rowTitle(id, UpsFormat::isThreePhase(values, group)));
    }
}

// The input section decides the phase columns; output and bypass follow it
// only while the input is three-phase.
void RTDataForm::updatePhaseLayout(const QMap<int, QVariant> &values)
{
    const bool inputThree = UpsFormat::isThreePhase(values, UpsPoints::PhaseGroup::Input);
    if (inputSinglePhase == inputThree)
        qCDebug(lcRtDataForm) << "input section now" << (inputThree ? "three-phase" : "single-phase");
    inputSinglePhase = !inputThree;
    setPhaseColumnsVisible(inputThree);
    if (inputSinglePhase)
        return;
    for (UpsPoints::PhaseGroup group : {UpsPoints::PhaseGroup::Output, UpsPoints::PhaseGroup::Bypass})
        setPhaseColumnsVisible(UpsFormat::isThreePhase(values, group));
}

void RTDataForm::setPhaseColumnsVisible(bool visible)
{
    ui->tableWidget->setColumnHidden(kPhaseColumnFirst, !visible);
    ui->tableWidget->setColumnHidden(kPhaseColumnSecond, !visible);
}

void RTDataForm::setValueText(int row, const QString &text)
{
    ui->tableWidget->setItem(row, kValueColumn, new QTableWidgetItem(text));
}

QString RTDataForm::rowTitle(int id, bool threePhase) const
{
    return UpsCatalogue::text(threePhase ? UpsCatalogue::List::ThreePhaseTitles : UpsCatalogue::List::Titles,
                              staticMetaObject.className(), id);
}

void RTDataForm::setItemLabel(int row, const QString &label)
{
    ui->tableWidget->setItem(row, kLabelColumn, new QTableWidgetItem(label));
}
