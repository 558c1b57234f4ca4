#include "rtsinglegraphform.h"
#include "ui_rtsinglegraphform.h"

#include <QEvent>
#include <QLoggingCategory>

#include <cmath>

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

// A dial's radius is min(width / 2, height). Keeping the height a few pixels
// above half the width makes the radius follow the width and leaves room for
// the scale labels above the arc.
constexpr int kDialLabelHeadroom = 8;
constexpr int kDialMinHeight = 60;
constexpr int kDialMaxHeight = 200;

// Colour indexes of the gauge bands: 0 green, 1 yellow, 2 red.
constexpr int kGreen = 0;
constexpr int kYellow = 1;
constexpr int kRed = 2;

struct GaugeSetup
{
    DataChart *Ui_RTSingleGraphForm::*gauge;
    double minimum;
    double maximum;
    const char *unit;
    QList<int> colors;
    QList<int> thresholds;
};

const GaugeSetup kGaugeSetups[] = {
    {&Ui_RTSingleGraphForm::widget_load, 0, 100, "%", {kRed, kYellow, kGreen}, {30, 60, 100}},
    {&Ui_RTSingleGraphForm::widget_outload, 0, 160, "%", {kGreen, kYellow, kRed}, {100, 120, 160}},
    {&Ui_RTSingleGraphForm::widget_temp, 0, 100, "C", {kGreen, kRed}, {100, 120}},
    {&Ui_RTSingleGraphForm::widget_input_freq, 0, 100, "Hz", {kRed, kGreen, kRed}, {40, 60, 100}},
    {&Ui_RTSingleGraphForm::widget_out_freq, 0, 100, "Hz", {kRed, kGreen, kRed}, {40, 60, 100}},
    {&Ui_RTSingleGraphForm::widget_by_freq, 0, 100, "Hz", {kRed, kGreen, kRed}, {40, 60, 100}},
};

// Integer value of a data point as the UPS agent delivered it. Values come
// from the network: anything non-numeric, or a floating-point value that
// cannot be rounded into 64 bits, reads as 0 instead of overflowing.
int dataPointInt(const QVariant &value)
{
    constexpr double kLimit = 9.0e18;
    switch (static_cast<int>(value.userType())) {
    case QMetaType::Double:
    case QMetaType::Float: {
        const double d = value.toDouble();
        if (!std::isfinite(d) || std::fabs(d) >= kLimit)
            return 0;
        return static_cast<int>(qRound64(d));
    }
    default: {
        bool ok = false;
        const qlonglong n = value.toLongLong(&ok);
        return ok ? static_cast<int>(n) : 0;
    }
    }
}

// The page reads every register as unsigned 32 bits, so a negative value
// turns into a huge one and the gauges show "--" for it.
double registerValue(const QMap<int, QVariant> &map, int id)
{
    return static_cast<quint32>(dataPointInt(map.value(id)));
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
    for (const GaugeSetup &setup : kGaugeSetups) {
        DataChart *gauge = ui->*setup.gauge;
        gauge->setMinValue(setup.minimum);
        gauge->setMaxValue(setup.maximum);
        gauge->setUnitText(QString::fromLatin1(setup.unit));
        gauge->setRadioValue(setup.colors, setup.thresholds);
        gauge->installEventFilter(this);
    }
}

bool RTSingleGraphForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        if (auto *gauge = qobject_cast<DataChart *>(watched))
            keepDialProportions(gauge);
    }
    return QWidget::eventFilter(watched, event);
}

void RTSingleGraphForm::keepDialProportions(QWidget *gauge)
{
    // Only the width drives the height, so the layout settles after one pass.
    const int height = qBound(kDialMinHeight, gauge->width() / 2 + kDialLabelHeadroom, kDialMaxHeight);
    if (gauge->minimumHeight() != height || gauge->maximumHeight() != height)
        gauge->setFixedHeight(height);
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
