#include "rtdataform.h"
#include "ui_rtdataform.h"

#include "datapointvalue.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QHeaderView>
#include <QLoggingCategory>
#include <QTableWidgetItem>

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

// Rows of the value column (row r shows item label r - 1 in single-phase mode).
constexpr int kRowBatteryState = 1;
constexpr int kRowTimeOnBattery = 2;
constexpr int kRowRemainingTime = 3;
constexpr int kRowCapacity = 4;
constexpr int kRowBatteryVoltage = 5;
constexpr int kRowBatteryCurrent = 6;
constexpr int kRowTemperature = 7;
constexpr int kRowMainsFailures = 8;
constexpr int kRowOutputSource = 13;
constexpr int kRowOutputFrequency = 14;
constexpr int kRowBypassFrequency = 19;
constexpr int kFirstValueRow = 1;
constexpr int kLastValueRow = 22;

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

// Data point ids (register 0x0101 + id).
constexpr int kDataPointCount = 73;
constexpr int kIdBatteryState = 0;
constexpr int kIdTimeOnBattery = 1;
constexpr int kIdRemainingTime = 2;
constexpr int kIdCapacity = 3;
constexpr int kIdBatteryVoltage = 4;
constexpr int kIdBatteryCurrent = 5;
constexpr int kIdTemperature = 6;
constexpr int kIdMainsFailures = 7;
constexpr int kIdInputPhases = 8;
constexpr int kIdOutputSource = 24;
constexpr int kIdOutputFrequency = 25;
constexpr int kIdOutputPhases = 26;
constexpr int kIdBypassFrequency = 42;
constexpr int kIdBypassPhases = 43;

constexpr int kThreePhases = 3;
// Above this the temperature sensor reading is treated as absent.
constexpr int kMaxPlausibleTemperature = 100;
constexpr int kDefaultBatteryStateIndex = 1; // "Normal"
constexpr int kDefaultOutputSourceIndex = 1; // "None supply"

enum class Format { Integer, Tenths };

// Sections whose rows switch with their phase count.
constexpr int kInputSection = 0;
constexpr int kOutputSection = 1;
constexpr int kBypassSection = 2;

// One phase-dependent row: single-phase shows ids[0], three-phase all three.
struct PhaseRow
{
    int section;
    int row;
    Format format;
    int ids[3];
    int singleLabel;
    int threeLabel;
};

// Power values are 32-bit register pairs; only the first half of each pair
// (18, 20, 22 and so on) is shown.
const PhaseRow kPhaseRows[] = {
    {kInputSection, 9, Format::Integer, {9, 10, 11}, 8, 22},
    {kInputSection, 10, Format::Tenths, {12, 13, 14}, 9, 23},
    {kInputSection, 11, Format::Tenths, {15, 16, 17}, 10, 24},
    {kInputSection, 12, Format::Integer, {18, 20, 22}, 11, 25},
    {kOutputSection, 15, Format::Integer, {27, 28, 29}, 14, 26},
    {kOutputSection, 16, Format::Tenths, {30, 31, 32}, 15, 27},
    {kOutputSection, 17, Format::Integer, {33, 35, 37}, 16, 28},
    {kOutputSection, 18, Format::Integer, {39, 40, 41}, 17, 29},
    {kBypassSection, 20, Format::Integer, {44, 45, 46}, 19, 30},
    {kBypassSection, 21, Format::Tenths, {47, 48, 49}, 20, 31},
    {kBypassSection, 22, Format::Integer, {50, 52, 54}, 21, 32},
};

QString integerText(int value)
{
    return QString::number(value);
}

// Registers in 0.1 units, shown with one decimal.
QString tenthsText(int value)
{
    const float scaled = static_cast<float>(value / 10.0);
    return QString::asprintf("%.1f", static_cast<double>(scaled));
}

QString formatValue(Format format, int value)
{
    return format == Format::Tenths ? tenthsText(value) : integerText(value);
}

QString phaseTriple(Format format, int r, int s, int t)
{
    return formatValue(format, r) + QLatin1Char('/') + formatValue(format, s) + QLatin1Char('/')
        + formatValue(format, t);
}

// Battery current is a signed 16-bit quantity carried in an unsigned register.
int signedRegister(int value)
{
    return static_cast<qint16>(static_cast<quint16>(value));
}

template<typename List>
QString textForCode(const List &texts, int code, int fallbackIndex)
{
    // Codes are 1-based (UPS-MIB enumerations); anything else takes the fallback.
    const int index = code - 1;
    if (index >= 0 && index < texts.size())
        return texts.at(index);
    return texts.value(fallbackIndex);
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

    batteryStateTexts << tr("Unknown") << tr("Normal") << tr("Low") << tr("Depleted");

    itemNames << tr("Battery state") << tr("Time on battery(s)") << tr("Remaining battery time(Min)")
              << tr("Remaining battery capacity(%)") << tr("Battery voltage(V)") << tr("Battery current(A)")
              << tr("Battery temperature(C)") << tr("Number of mains failure") << tr("Input voltage(V)")
              << tr("Input current(A)") << tr("Input frequency(Hz)") << tr("Input power(W)")
              << tr("Output mode") << tr("Output frequency(Hz)") << tr("Output voltage(V)")
              << tr("Output current(A)") << tr("Output power(W)") << tr("Output load(%)")
              << tr("Bypass frequency(Hz)") << tr("Bypass voltage(V)") << tr("Bypass current(A)")
              << tr("Bypass power(W)") << tr("Input voltage R/S/T(V)") << tr("Input current R/S/T(A)")
              << tr("Input frequency R/S/T(Hz)") << tr("Input power R/S/T(W)")
              << tr("Output voltage R/S/T(V)") << tr("Output current R/S/T(A)")
              << tr("Output power R/S/T(W)") << tr("Output load R/S/T(%)") << tr("Bypass voltage R/S/T(V)")
              << tr("Bypass current R/S/T(A)") << tr("Bypass power R/S/T(W)");

    outputSourceTexts << tr("Other supply") << tr("None supply") << tr("Utility supply") << tr("Bypass supply")
                      << tr("Battery supply") << tr("Booster supply") << tr("Reducer supply");

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
        setItemLabel(row, row - 1);

    for (const Section &section : kSections)
        table->setSpan(section.firstRow, kSectionColumn, section.rowSpan, 1);
}

void RTDataForm::InitRTData()
{
    setValueText(kRowBatteryState, batteryStateTexts.value(kDefaultBatteryStateIndex));
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
    QVector<int> v(kDataPointCount);
    for (int id = 0; id < kDataPointCount; ++id)
        v[id] = DataPointValue::rounded(map, id);

    showBatterySection(v);
    showInputSection(v);
    showOutputSection(v);
    showBypassSection(v);
}

void RTDataForm::showBatterySection(const QVector<int> &v)
{
    setValueText(kRowBatteryState,
                 textForCode(batteryStateTexts, v[kIdBatteryState], kDefaultBatteryStateIndex));
    setValueText(kRowTimeOnBattery, integerText(v[kIdTimeOnBattery]));
    setValueText(kRowRemainingTime, integerText(v[kIdRemainingTime]));
    setValueText(kRowCapacity, integerText(v[kIdCapacity]));
    setValueText(kRowBatteryVoltage, tenthsText(v[kIdBatteryVoltage]));
    setValueText(kRowBatteryCurrent, tenthsText(signedRegister(v[kIdBatteryCurrent])));
    const int temperature = v[kIdTemperature];
    setValueText(kRowTemperature,
                 temperature > kMaxPlausibleTemperature ? QStringLiteral("--") : integerText(temperature));
}

void RTDataForm::showInputSection(const QVector<int> &v)
{
    setValueText(kRowMainsFailures, integerText(v[kIdMainsFailures]));

    const bool threePhase = v[kIdInputPhases] == kThreePhases;
    if (inputSinglePhase == threePhase)
        qCDebug(lcRtDataForm) << "input section now" << (threePhase ? "three-phase" : "single-phase");
    inputSinglePhase = !threePhase;
    setPhaseColumnsVisible(threePhase);

    showPhaseRows(kInputSection, threePhase, v);
}

void RTDataForm::showOutputSection(const QVector<int> &v)
{
    setValueText(kRowOutputSource, textForCode(outputSourceTexts, v[kIdOutputSource], kDefaultOutputSourceIndex));
    setValueText(kRowOutputFrequency, tenthsText(v[kIdOutputFrequency]));

    const bool threePhase = v[kIdOutputPhases] == kThreePhases;
    if (!inputSinglePhase)
        setPhaseColumnsVisible(threePhase);

    showPhaseRows(kOutputSection, threePhase, v);
}

void RTDataForm::showBypassSection(const QVector<int> &v)
{
    setValueText(kRowBypassFrequency, tenthsText(v[kIdBypassFrequency]));

    const bool threePhase = v[kIdBypassPhases] == kThreePhases;
    if (!inputSinglePhase)
        setPhaseColumnsVisible(threePhase);

    showPhaseRows(kBypassSection, threePhase, v);
}

void RTDataForm::showPhaseRows(int section, bool threePhase, const QVector<int> &v)
{
    for (const PhaseRow &row : kPhaseRows) {
        if (row.section != section)
            continue;
        if (threePhase) {
            setValueText(row.row, phaseTriple(row.format, v[row.ids[0]], v[row.ids[1]], v[row.ids[2]]));
            setItemLabel(row.row, row.threeLabel);
        } else {
            setValueText(row.row, formatValue(row.format, v[row.ids[0]]));
            setItemLabel(row.row, row.singleLabel);
        }
    }
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

void RTDataForm::setItemLabel(int row, int itemIndex)
{
    ui->tableWidget->setItem(row, kLabelColumn, new QTableWidgetItem(itemNames.value(itemIndex)));
}
