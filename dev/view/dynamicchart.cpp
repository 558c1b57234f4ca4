#include "dynamicchart.h"

namespace {

// Curve pens: input, output, battery and bypass voltage on the single-phase page.
TrendChart::Layout dynamicChartLayout()
{
    const double voltScale = 400.0;
    return {
        {QColor(255, 0, 255), QColor(0, 255, 0), QColor(0, 255, 255), QColor(255, 0, 0)},
        {voltScale, voltScale, voltScale, voltScale},
        false,
        QStringLiteral("background-color: rgb(250, 250, 250);"),
    };
}

} // namespace

DynamicChart::DynamicChart(QWidget *parent)
    : TrendChart(dynamicChartLayout(), parent)
{
}

DynamicChart::~DynamicChart() = default;

void DynamicChart::setUseAntialiasing(bool use)
{
    useAntialiasing = use;
    update();
}

bool DynamicChart::getUseAntialiasing() const
{
    return useAntialiasing;
}

void DynamicChart::setHorizontalLineColor(QColor clr)
{
    horizontalLineColor = clr;
    update();
}
