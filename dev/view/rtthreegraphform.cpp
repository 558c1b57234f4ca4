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

#include "upsformat.h"
#include "upspoints.h"

Q_LOGGING_CATEGORY(lcRtThreeGraph, "orvek.view.rtthreegraphform", QtInfoMsg)

namespace {

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

// Per-phase numbers of the readout grid: phase 0..2 of a three-phase point.
struct Readout
{
    QLabel *Ui_RTThreeGraphForm::*label;
    int id;
    int phase;
};

const Readout kReadouts[] = {
    {&Ui_RTThreeGraphForm::value_in_vol_r, UpsPoint::InputVoltage, 0},
    {&Ui_RTThreeGraphForm::value_in_vol_s, UpsPoint::InputVoltage, 1},
    {&Ui_RTThreeGraphForm::value_in_vol_t, UpsPoint::InputVoltage, 2},
    {&Ui_RTThreeGraphForm::value_in_freq_r, UpsPoint::InputFrequency, 0},
    {&Ui_RTThreeGraphForm::value_in_freq_s, UpsPoint::InputFrequency, 1},
    {&Ui_RTThreeGraphForm::value_in_freq_t, UpsPoint::InputFrequency, 2},
    {&Ui_RTThreeGraphForm::value_by_vol_r, UpsPoint::BypassVoltage, 0},
    {&Ui_RTThreeGraphForm::value_by_vol_s, UpsPoint::BypassVoltage, 1},
    {&Ui_RTThreeGraphForm::value_by_vol_t, UpsPoint::BypassVoltage, 2},
};

// Trend curves with their legend values; curves 0-2 use the 0-400 scale,
// curves 3-5 the 0-100 scale.
struct Curve
{
    int index;
    int id;
    int phase;
    QLabel *Ui_RTThreeGraphForm::*legend;
};

const Curve kCurves[] = {
    {0, UpsPoint::OutputVoltage, 0, &Ui_RTThreeGraphForm::value_out_vol_r},
    {1, UpsPoint::OutputVoltage, 1, &Ui_RTThreeGraphForm::value_out_vol_s},
    {2, UpsPoint::OutputVoltage, 2, &Ui_RTThreeGraphForm::value_out_vol_t},
    {3, UpsPoint::OutputLoad, 0, &Ui_RTThreeGraphForm::value_out_load_r},
    {4, UpsPoint::OutputLoad, 1, &Ui_RTThreeGraphForm::value_out_load_s},
    {5, UpsPoint::OutputLoad, 2, &Ui_RTThreeGraphForm::value_out_load_t},
};

int phaseValue(const QMap<int, QVariant> &map, int id, int phase)
{
    return rounded(map, UpsPoints::phaseId(id, phase));
}

// The rounded value of one phase, scaled and with the decimals of its point.
QString readoutText(const QMap<int, QVariant> &map, const Readout &readout)
{
    const QMap<int, QVariant> single{{readout.id, phaseValue(map, readout.id, readout.phase)}};
    UpsFormat::Options options;
    options.phases = UpsFormat::Phases::Single;
    return UpsFormat::text(single, readout.id, options);
}

// Gauge values in shown units: tenths become hertz.
double scaledValue(const QMap<int, QVariant> &map, int id)
{
    return rounded(map, id) / double(UpsPoints::info(id).divisor);
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
        (ui->*readout.label)->setText(readoutText(QMap<int, QVariant>(), readout));
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
    using UpsPoint::OutputLoad;
    const int highestLoad =
        std::max({phaseValue(map, OutputLoad, 0), phaseValue(map, OutputLoad, 1), phaseValue(map, OutputLoad, 2)});
    ui->widget_capacity->setValue(rounded(map, UpsPoint::BatteryCapacity));
    ui->widget_temp->setValue(rounded(map, UpsPoint::BatteryTemperature));
    ui->widget_outload->setValue(highestLoad);
    ui->widget_out_freq->setValue(scaledValue(map, UpsPoint::OutputFrequency));
    ui->widget_by_freq->setValue(scaledValue(map, UpsPoint::BypassFrequency));
}

void RTThreeGraphForm::showReadouts(const QMap<int, QVariant> &map)
{
    for (const Readout &readout : kReadouts)
        (ui->*readout.label)->setText(readoutText(map, readout));
}

void RTThreeGraphForm::showCurves(const QMap<int, QVariant> &map)
{
    // All six curves are fed in one pass so that none is empty at the next paint.
    for (const Curve &curve : kCurves) {
        const int value = phaseValue(map, curve.id, curve.phase);
        ui->widget_three->addData(curve.index, value);
        (ui->*curve.legend)->setText(legendText(value));
    }
    qCDebug(lcRtThreeGraph) << "refreshed: output R/S/T" << phaseValue(map, UpsPoint::OutputVoltage, 0)
                            << phaseValue(map, UpsPoint::OutputVoltage, 1)
                            << phaseValue(map, UpsPoint::OutputVoltage, 2) << "V";
}
