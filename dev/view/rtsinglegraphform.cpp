#include "rtsinglegraphform.h"
#include "ui_rtsinglegraphform.h"

#include "datapointvalue.h"
#include "gaugedialkeeper.h"

#include <QLoggingCategory>

#include "upscatalogue.h"
#include "upspoints.h"

Q_LOGGING_CATEGORY(lcRtSingleGraph, "orvek.view.rtsinglegraphform", QtInfoMsg)

namespace {

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

// In shown units: tenths become volts and hertz.
double scaledValue(const QMap<int, QVariant> &map, int id)
{
    return registerValue(map, id) / UpsPoints::info(id).divisor;
}

// The captions are the points' titles in this page's context.
// The remaining-capacity gauge sits under the remaining-time title.
struct Caption
{
    QLabel *Ui_RTSingleGraphForm::*label;
    int id;
};

const Caption kCaptions[] = {
    {&Ui_RTSingleGraphForm::label_load, UpsPoint::RemainingMinutes},
    {&Ui_RTSingleGraphForm::label_outload, UpsPoint::OutputLoad},
    {&Ui_RTSingleGraphForm::label_temp, UpsPoint::BatteryTemperature},
    {&Ui_RTSingleGraphForm::label_input, UpsPoint::InputFrequency},
    {&Ui_RTSingleGraphForm::label_output, UpsPoint::OutputFrequency},
    {&Ui_RTSingleGraphForm::label_bypass, UpsPoint::BypassFrequency},
    {&Ui_RTSingleGraphForm::label_input_vol, UpsPoint::InputVoltage},
    {&Ui_RTSingleGraphForm::label_output_vol, UpsPoint::OutputVoltage},
    {&Ui_RTSingleGraphForm::label_batt_vol, UpsPoint::BatteryVoltage},
    {&Ui_RTSingleGraphForm::label_bypass_vol, UpsPoint::BypassVoltage},
};

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
    for (const Caption &caption : kCaptions)
        (ui->*caption.label)->setText(
            UpsCatalogue::text(UpsCatalogue::List::Titles, staticMetaObject.className(), caption.id));
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
    const double capacity = scaledValue(map, UpsPoint::BatteryCapacity);
    const double outputLoad = scaledValue(map, UpsPoint::OutputLoad);
    const double inputVoltage = scaledValue(map, UpsPoint::InputVoltage);
    const double outputVoltage = scaledValue(map, UpsPoint::OutputVoltage);
    const double batteryVoltage = scaledValue(map, UpsPoint::BatteryVoltage);
    const double bypassVoltage = scaledValue(map, UpsPoint::BypassVoltage);

    ui->widget_load->setValue(capacity);
    ui->widget_outload->setValue(outputLoad);
    ui->widget_temp->setValue(kNoTemperatureReading);
    ui->widget_input_freq->setValue(scaledValue(map, UpsPoint::InputFrequency));
    ui->widget_out_freq->setValue(scaledValue(map, UpsPoint::OutputFrequency));
    ui->widget_by_freq->setValue(scaledValue(map, UpsPoint::BypassFrequency));

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
