#include "threedynamicchart.h"

namespace {

// Curves 0 to 2 are the phases R, S, T of a voltage (0 to 400 V, left
// labels); 3 to 5 the phases of a percentage or frequency (0 to 100, right
// labels).
TrendChart::Layout threeDynamicChartLayout()
{
    const double phaseScale = 400.0;
    const double percentScale = 100.0;
    return {
        {QColor(255, 255, 0), QColor(0, 255, 0), QColor(255, 0, 0),
         QColor(255, 221, 26), QColor(85, 170, 0), QColor(170, 0, 0)},
        {phaseScale, phaseScale, phaseScale, percentScale, percentScale, percentScale},
        true,
        QStringLiteral("background-color: rgb(222, 237, 253);"),
    };
}

} // namespace

ThreeDynamicChart::ThreeDynamicChart(QWidget *parent)
    : TrendChart(threeDynamicChartLayout(), parent)
{
}

ThreeDynamicChart::~ThreeDynamicChart() = default;

void ThreeDynamicChart::setUseAntialiasing(bool use)
{
    useAntialiasing = use;
    update();
}

bool ThreeDynamicChart::getUseAntialiasing() const
{
    return useAntialiasing;
}

void ThreeDynamicChart::setHorizontalLineColor(QColor clr)
{
    horizontalLineColor = clr;
    update();
}
