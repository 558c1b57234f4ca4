#include "rtsinglegraphform.h"
#include "ui_rtsinglegraphform.h"

#include "datapointvalue.h"
#include "gaugedialkeeper.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcRtSingleGraph, "orvek.view.rtsinglegraphform", QtInfoMsg)

namespace {

// Data point ids shown on this page (register 0x0101 + id).
constexpr int kIdCapacity = 3;
constexpr int kIdBatteryVoltage = 4;
constexpr int kIdInputVoltage = 9;
constexpr int kIdInputFrequency = 15;
constexpr int kIdOutputFrequency = 25;
constexpr int kIdOutputVoltage = 27;
constexpr int kIdOutputLoad = 39;
constexpr int kIdBypassFrequency = 42;
constexpr int kIdBypassVoltage = 44;

// Registers in 0.1 units.
constexpr double kTenths = 10.0;

// No data point feeds the temperature gauge: this value lies far outside its
// range, so the gauge keeps showing "--".
constexpr double kNoTemperatureReading = 4294967291.0;

// Trend curves, in the order of the legend entries.
constexpr int kCurveInputVoltage = 0;
constexpr int kCurveOutputVoltage = 1;
constexpr int kCurveBatteryVoltage = 2;
constexpr int kCurveBypassVoltage = 3;

constexpr char kInitialLegendValue[] = "(0)";

using Band = GaugeDialKeeper::Band;

using GaugeSetup = GaugeDialKeeper::Gauge<Ui_RTSingleGraphForm>;

const GaugeSetup kGaugeSetups[] = {
    {&Ui_RTSingleGraphForm::widget_load, {0, 100, "%", {Band::Red, Band::Yellow, Band::Green}, {30, 60, 100}}},
    {&Ui_RTSingleGraphForm::widget_outload, {0, 160, "%", {Band::Green, Band::Yellow, Band::Red}, {100, 120, 160}}},
    {&Ui_RTSingleGraphForm::widget_temp, {0, 100, "C", {Band::Green, Band::Red}, {100, 120}}},
    {&Ui_RTSingleGraphForm::widget_input_freq, {0, 100, "Hz", {Band::Red, Band::Green, Band::Red}, {40, 60, 100}}},
    {&Ui_RTSingleGraphForm::widget_out_freq, {0, 100, "Hz", {Band::Red, Band::Green, Band::Red}, {40, 60, 100}}},
    {&Ui_RTSingleGraphForm::widget_by_freq, {0, 100, "Hz", {Band::Red, Band::Green, Band::Red}, {40, 60, 100}}},
};

// The page reads every register as unsigned 32 bits, so a negative value
// turns into a huge one and the gauges show "--" for it.
double registerValue(const QMap<int, QVariant> &map, int id)
{
    return static_cast<quint32>(DataPointValue::rounded(map, id));
}

} // namespace

RTSingleGraphForm::RTSingleGraphForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::RTSingleGraphForm)
{
    ui->setupUi(this);
    setupGauges();
    setupCaptions();
}

RTSingleGraphForm::~RTSingleGraphForm()
{
    delete ui;
}

void RTSingleGraphForm::setupGauges()
{
    auto *keeper = new GaugeDialKeeper(this); // owned by the page
    keeper->setUp(ui, kGaugeSetups);
}

void RTSingleGraphForm::setupCaptions()
{
    // The gauge shows the remaining capacity in %, under this caption.
    ui->label_load->setText(tr("Remaining battery time(Min)"));
    ui->label_outload->setText(tr("Output load(%)"));
    ui->label_temp->setText(tr("Battery temperature(C)"));
    ui->label_input->setText(tr("Input frequency(Hz)"));
    ui->label_output->setText(tr("Output frequency(Hz)"));
    ui->label_bypass->setText(tr("Bypass frequency(Hz)"));
    ui->label_input_vol->setText(tr("Input voltage(V)"));
    ui->label_output_vol->setText(tr("Output voltage(V)"));
    ui->label_batt_vol->setText(tr("Battery voltage(V)"));
    ui->label_bypass_vol->setText(tr("Bypass voltage(V)"));
}

void RTSingleGraphForm::InitRTChartFormInfo(bool flag)
{
    if (!flag)
        InitRtSingleChart();
}

void RTSingleGraphForm::InitRtSingleChart()
{
    for (DataChart *gauge : {ui->widget_load, ui->widget_temp, ui->widget_outload, ui->widget_by_freq,
                             ui->widget_out_freq, ui->widget_input_freq})
        gauge->setValue(0.0);

    const QString initial = QString::fromLatin1(kInitialLegendValue);
    for (QLabel *value : {ui->value_input, ui->value_output, ui->value_batt, ui->value_bypass})
        value->setText(initial);

    ui->widget_single->initValue();
}

void RTSingleGraphForm::RefreshRtSingleChartInfo(QMap<int, QVariant> map)
{
    Show_RtChart_View(map);
}

void RTSingleGraphForm::Show_RtChart_View(QMap<int, QVariant> map)
{
    const double capacity = registerValue(map, kIdCapacity);
    const double outputLoad = registerValue(map, kIdOutputLoad);
    const double inputVoltage = registerValue(map, kIdInputVoltage);
    const double outputVoltage = registerValue(map, kIdOutputVoltage);
    const double batteryVoltage = registerValue(map, kIdBatteryVoltage) / kTenths;
    const double bypassVoltage = registerValue(map, kIdBypassVoltage);

    ui->widget_load->setValue(capacity);
    ui->widget_outload->setValue(outputLoad);
    ui->widget_temp->setValue(kNoTemperatureReading);
    ui->widget_input_freq->setValue(registerValue(map, kIdInputFrequency) / kTenths);
    ui->widget_out_freq->setValue(registerValue(map, kIdOutputFrequency) / kTenths);
    ui->widget_by_freq->setValue(registerValue(map, kIdBypassFrequency) / kTenths);

    ui->widget_single->addData(kCurveInputVoltage, inputVoltage);
    ui->widget_single->addData(kCurveOutputVoltage, outputVoltage);
    ui->widget_single->addData(kCurveBatteryVoltage, batteryVoltage);
    ui->widget_single->addData(kCurveBypassVoltage, bypassVoltage);

    const QString prefix = QStringLiteral("(") + tr("Current value:");
    const QString suffix = QStringLiteral(")");
    // Whole-volt registers print as integers, the battery voltage with its decimal.
    ui->value_input->setText(prefix + QString::number(static_cast<quint32>(inputVoltage)) + suffix);
    ui->value_output->setText(prefix + QString::number(static_cast<quint32>(outputVoltage)) + suffix);
    ui->value_batt->setText(prefix + QString::number(batteryVoltage, 'g', 6) + suffix);
    ui->value_bypass->setText(prefix + QString::number(static_cast<quint32>(bypassVoltage)) + suffix);

    qCDebug(lcRtSingleGraph) << "refreshed: input" << inputVoltage << "V, output" << outputVoltage << "V, load"
                             << outputLoad << "%";
}
