// Three-phase graphic page: design note.
//
// The page mirrors the single-phase one (gauges on top, trend chart below)
// but arranges the data by phase:
// - Gauges hold the values that exist once per UPS: remaining battery
//   capacity (id 3), battery temperature (id 6), output frequency (id 25) and
//   bypass frequency (id 42). The fifth gauge shows the load of the most
//   loaded output phase (highest of ids 39-41): one overloaded phase is enough
//   to send the UPS to bypass, so that is the figure to watch.
// - The input follows the mains and is read per phase, so its voltages
//   (ids 9-11) and frequencies (ids 15-17, 0.1 Hz) are listed as R/S/T
//   numbers, with the bypass voltages (ids 44-46) the static switch would
//   transfer the load to.
// - The trend chart follows the output, which is what the load sees: curves
//   0-2 are the output voltages R/S/T (ids 27-29) against the 0-400 V scale,
//   curves 3-5 the output loads R/S/T (ids 39-41) against the 0-100 % scale.
//   The legend stripes use the chart's pen colours and repeat the latest
//   sample of each curve.
// - Values are shown as the agent sends them; a gauge value outside its range
//   shows "--" (a temperature above 100 C reads as no sensor, as in the data
//   table). InitRTChartFormInfo(false) puts gauges and numbers back to 0 and
//   empties the curves; true leaves everything as it is.

#include "rtthreegraphform.h"
#include "ui_rtthreegraphform.h"

#include <QEvent>
#include <QLoggingCategory>

#include <algorithm>
#include <cmath>

Q_LOGGING_CATEGORY(lcRtThreeGraph, "orvek.view.rtthreegraphform", QtInfoMsg)

namespace {

// Data point ids used on this page (register 0x0101 + id).
constexpr int kIdCapacity = 3;
constexpr int kIdTemperature = 6;
constexpr int kIdOutputFrequency = 25;
constexpr int kIdBypassFrequency = 42;
constexpr int kIdOutputVoltageR = 27;
constexpr int kIdOutputVoltageS = 28;
constexpr int kIdOutputVoltageT = 29;
constexpr int kIdOutputLoadR = 39;
constexpr int kIdOutputLoadS = 40;
constexpr int kIdOutputLoadT = 41;

// Registers in 0.1 units.
constexpr double kTenths = 10.0;

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
    DataChart *Ui_RTThreeGraphForm::*gauge;
    double minimum;
    double maximum;
    const char *unit;
    QList<int> colors;
    QList<int> thresholds;
};

const GaugeSetup kGaugeSetups[] = {
    {&Ui_RTThreeGraphForm::widget_capacity, 0, 100, "%", {kRed, kYellow, kGreen}, {30, 60, 100}},
    // Lead-acid batteries age quickly above 40 C.
    {&Ui_RTThreeGraphForm::widget_temp, 0, 100, "C", {kGreen, kYellow, kRed}, {40, 50, 100}},
    {&Ui_RTThreeGraphForm::widget_outload, 0, 160, "%", {kGreen, kYellow, kRed}, {100, 120, 160}},
    {&Ui_RTThreeGraphForm::widget_out_freq, 0, 100, "Hz", {kRed, kGreen, kRed}, {40, 60, 100}},
    {&Ui_RTThreeGraphForm::widget_by_freq, 0, 100, "Hz", {kRed, kGreen, kRed}, {40, 60, 100}},
};

enum class Format { Integer, Tenths };

// Per-phase numbers of the readout grid.
struct Readout
{
    QLabel *Ui_RTThreeGraphForm::*label;
    int id;
    Format format;
};

const Readout kReadouts[] = {
    {&Ui_RTThreeGraphForm::value_in_vol_r, 9, Format::Integer},
    {&Ui_RTThreeGraphForm::value_in_vol_s, 10, Format::Integer},
    {&Ui_RTThreeGraphForm::value_in_vol_t, 11, Format::Integer},
    {&Ui_RTThreeGraphForm::value_in_freq_r, 15, Format::Tenths},
    {&Ui_RTThreeGraphForm::value_in_freq_s, 16, Format::Tenths},
    {&Ui_RTThreeGraphForm::value_in_freq_t, 17, Format::Tenths},
    {&Ui_RTThreeGraphForm::value_by_vol_r, 44, Format::Integer},
    {&Ui_RTThreeGraphForm::value_by_vol_s, 45, Format::Integer},
    {&Ui_RTThreeGraphForm::value_by_vol_t, 46, Format::Integer},
};

// Trend curves with their legend values; curves 0-2 use the 0-400 scale,
// curves 3-5 the 0-100 scale.
struct Curve
{
    int index;
    int id;
    QLabel *Ui_RTThreeGraphForm::*legend;
};

const Curve kCurves[] = {
    {0, kIdOutputVoltageR, &Ui_RTThreeGraphForm::value_out_vol_r},
    {1, kIdOutputVoltageS, &Ui_RTThreeGraphForm::value_out_vol_s},
    {2, kIdOutputVoltageT, &Ui_RTThreeGraphForm::value_out_vol_t},
    {3, kIdOutputLoadR, &Ui_RTThreeGraphForm::value_out_load_r},
    {4, kIdOutputLoadS, &Ui_RTThreeGraphForm::value_out_load_s},
    {5, kIdOutputLoadT, &Ui_RTThreeGraphForm::value_out_load_t},
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

int pointValue(const QMap<int, QVariant> &map, int id)
{
    return dataPointInt(map.value(id));
}

QString formatValue(Format format, int value)
{
    if (format == Format::Tenths)
        return QString::number(value / kTenths, 'f', 1);
    return QString::number(value);
}

QString legendText(int value)
{
    return QStringLiteral("(%1)").arg(value);
}

} // namespace

RTThreeGraphForm::RTThreeGraphForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::RTThreeGraphForm)
{
    ui->setupUi(this);
    setupGauges();
}

RTThreeGraphForm::~RTThreeGraphForm()
{
    delete ui;
}

void RTThreeGraphForm::setupGauges()
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

bool RTThreeGraphForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        if (auto *gauge = qobject_cast<DataChart *>(watched))
            keepDialProportions(gauge);
    }
    return QWidget::eventFilter(watched, event);
}

void RTThreeGraphForm::keepDialProportions(QWidget *gauge)
{
    // Only the width drives the height, so the layout settles after one pass.
    const int height = qBound(kDialMinHeight, gauge->width() / 2 + kDialLabelHeadroom, kDialMaxHeight);
    if (gauge->minimumHeight() != height || gauge->maximumHeight() != height)
        gauge->setFixedHeight(height);
}

void RTThreeGraphForm::InitRTChartFormInfo(bool flag)
{
    if (!flag)
        InitRtThreeChart();
}

void RTThreeGraphForm::InitRtThreeChart()
{
    for (const GaugeSetup &setup : kGaugeSetups)
        (ui->*setup.gauge)->setValue(0.0);
    for (const Readout &readout : kReadouts)
        (ui->*readout.label)->setText(formatValue(readout.format, 0));
    for (const Curve &curve : kCurves)
        (ui->*curve.legend)->setText(legendText(0));
    ui->widget_three->initValue();
}

void RTThreeGraphForm::RefreshRtChartInfo(QMap<int, QVariant> map)
{
    Show_RtChart_View(map);
}

void RTThreeGraphForm::Show_RtChart_View(QMap<int, QVariant> map)
{
    showGauges(map);
    showReadouts(map);
    showCurves(map);
}

void RTThreeGraphForm::showGauges(const QMap<int, QVariant> &map)
{
    const int highestLoad = std::max({pointValue(map, kIdOutputLoadR), pointValue(map, kIdOutputLoadS),
                                      pointValue(map, kIdOutputLoadT)});
    ui->widget_capacity->setValue(pointValue(map, kIdCapacity));
    ui->widget_temp->setValue(pointValue(map, kIdTemperature));
    ui->widget_outload->setValue(highestLoad);
    ui->widget_out_freq->setValue(pointValue(map, kIdOutputFrequency) / kTenths);
    ui->widget_by_freq->setValue(pointValue(map, kIdBypassFrequency) / kTenths);
}

void RTThreeGraphForm::showReadouts(const QMap<int, QVariant> &map)
{
    for (const Readout &readout : kReadouts)
        (ui->*readout.label)->setText(formatValue(readout.format, pointValue(map, readout.id)));
}

void RTThreeGraphForm::showCurves(const QMap<int, QVariant> &map)
{
    // All six curves are fed in one pass so that none is empty at the next paint.
    for (const Curve &curve : kCurves) {
        const int value = pointValue(map, curve.id);
        ui->widget_three->addData(curve.index, value);
        (ui->*curve.legend)->setText(legendText(value));
    }
    qCDebug(lcRtThreeGraph) << "refreshed: output R/S/T" << pointValue(map, kIdOutputVoltageR)
                            << pointValue(map, kIdOutputVoltageS) << pointValue(map, kIdOutputVoltageT) << "V";
}
