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

#include "datapointvalue.h"
#include "gaugedialkeeper.h"

#include <QLoggingCategory>

#include <algorithm>

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

using Band = GaugeDialKeeper::Band;
using DataPointValue::rounded;

using GaugeSetup = GaugeDialKeeper::Gauge<Ui_RTThreeGraphForm>;

const GaugeSetup kGaugeSetups[] = {
    {&Ui_RTThreeGraphForm::widget_capacity, {0, 100, "%", {Band::Red, Band::Yellow, Band::Green}, {30, 60, 100}}},
    // Lead-acid batteries age quickly above 40 C.
    {&Ui_RTThreeGraphForm::widget_temp, {0, 100, "C", {Band::Green, Band::Yellow, Band::Red}, {40, 50, 100}}},
    {&Ui_RTThreeGraphForm::widget_outload, {0, 160, "%", {Band::Green, Band::Yellow, Band::Red}, {100, 120, 160}}},
    {&Ui_RTThreeGraphForm::widget_out_freq, {0, 100, "Hz", {Band::Red, Band::Green, Band::Red}, {40, 60, 100}}},
    {&Ui_RTThreeGraphForm::widget_by_freq, {0, 100, "Hz", {Band::Red, Band::Green, Band::Red}, {40, 60, 100}}},
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
    auto *keeper = new GaugeDialKeeper(this); // owned by the page
    keeper->setUp(ui, kGaugeSetups);
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
    const int highestLoad =
        std::max({rounded(map, kIdOutputLoadR), rounded(map, kIdOutputLoadS), rounded(map, kIdOutputLoadT)});
    ui->widget_capacity->setValue(rounded(map, kIdCapacity));
    ui->widget_temp->setValue(rounded(map, kIdTemperature));
    ui->widget_outload->setValue(highestLoad);
    ui->widget_out_freq->setValue(rounded(map, kIdOutputFrequency) / kTenths);
    ui->widget_by_freq->setValue(rounded(map, kIdBypassFrequency) / kTenths);
}

void RTThreeGraphForm::showReadouts(const QMap<int, QVariant> &map)
{
    for (const Readout &readout : kReadouts)
        (ui->*readout.label)->setText(formatValue(readout.format, rounded(map, readout.id)));
}

void RTThreeGraphForm::showCurves(const QMap<int, QVariant> &map)
{
    // All six curves are fed in one pass so that none is empty at the next paint.
    for (const Curve &curve : kCurves) {
        const int value = rounded(map, curve.id);
        ui->widget_three->addData(curve.index, value);
        (ui->*curve.legend)->setText(legendText(value));
    }
    qCDebug(lcRtThreeGraph) << "refreshed: output R/S/T" << rounded(map, kIdOutputVoltageR)
                            << rounded(map, kIdOutputVoltageS) << rounded(map, kIdOutputVoltageT) << "V";
}
