#ifndef THREEDYNAMICCHART_H
#define THREEDYNAMICCHART_H

#include <QColor>

#include "trendchart.h"

// Trend chart of the three-phase page: six curves; 0 to 2 (one per phase,
// e.g. voltages) against a 0 to 400 scale labelled on the left, 3 to 5
// against a 0 to 100 scale labelled on the right.
class ThreeDynamicChart : public TrendChart
{
    Q_OBJECT
public:
    explicit ThreeDynamicChart(QWidget *parent = nullptr);
    ~ThreeDynamicChart() override;

    static constexpr int CurveCount = 6;

public slots:
    void setUseAntialiasing(bool use);
    bool getUseAntialiasing() const;
    void setHorizontalLineColor(QColor clr);
};

#endif // THREEDYNAMICCHART_H
