#ifndef DYNAMICCHART_H
#define DYNAMICCHART_H

#include <QColor>

#include "trendchart.h"

// Trend chart of the single-phase page: four curves (magenta, green, cyan,
// red) on a fixed 0 to 400 scale.
class DynamicChart : public TrendChart
{
    Q_OBJECT
public:
    explicit DynamicChart(QWidget *parent = nullptr);
    ~DynamicChart() override;

    static constexpr int CurveCount = 4;

public slots:
    void setUseAntialiasing(bool use);
    bool getUseAntialiasing() const;
    void setHorizontalLineColor(QColor clr);
};

#endif // DYNAMICCHART_H
