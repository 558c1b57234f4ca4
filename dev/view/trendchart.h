#ifndef TRENDCHART_H
#define TRENDCHART_H

#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QList>
#include <QMap>
#include <QPen>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWidget>

#include "layercache.h"

class QEvent;
class QPainter;
class QPaintEvent;
class QResizeEvent;

// Common strip chart behind DynamicChart and ThreeDynamicChart: a framed plot
// box with a dotted grid, value labels on the left (optionally a second scale
// on the right) and a wall-clock time axis below. Each curve keeps its
// samples newest first; the newest sits on the right edge and older ones move
// left by 5 pixels per sample. The box holds plot width / 5 samples; longer
// buffers lose one sample per trim.
class TrendChart : public QWidget
{
    Q_OBJECT
public:
    // What distinguishes the concrete charts.
    struct Layout {
        QList<QColor> penColors;   // one per curve
        QVector<double> fullScale; // top of the vertical scale per curve
        bool rightScaleLabels;     // second label column (scaleRight) on the right
        QString styleSheet;
    };

    ~TrendChart() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

    void initVariables();
    // Empties the sample buffers; what is drawn stays until updateVector().
    void initValue();
    // Pushes a sample to the front of curve `index` (the first sample of a
    // curve is doubled), then updateVector(index).
    void addData(int index, double value);
    void setCurveData(int index, const QVector<double> &data);
    // Trims buffer `index` by at most one sample, then republishes all curves.
    void updateVector(int index);

    void resetVariables(QPainter *painter);
    void drawBox(QPainter *painter);
    void drawText(QPainter *painter);
    void drawGraph(QPainter *painter);

    // Samples that fit into the plot box as last painted (0 before that).
    int maxPoints() const;
    int curveCount() const { return curveData.size(); }
    // Buffer of curve `index` (empty for an unknown index).
    QVector<double> bufferData(int index) const { return curveData.value(index); }
    // What is drawn: curve index -> samples, newest first.
    QMap<int, QVector<double>> curveMap() const { return curves; }
    QList<QPen> curvePens() const { return pens; }
    QRectF plotArea() const { return plotRect; }
    QColor lineColor() const { return horizontalLineColor; }
    // Pixel row of `value` on curve `index`'s vertical scale.
    double valueToY(int index, double value) const;

    // Time axis texts for a clock reading `now`: 40 s back on the left to
    // 60 s ahead on the right in 10 s steps.
    static QStringList timeAxisLabels(const QDateTime &now);
    static constexpr int TimeAxisLabelCount = 11;
    static constexpr double SampleSpacing = 5.0;

protected:
    TrendChart(const Layout &layout, QWidget *parent);

    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

    double xMargin;
    double yMargin;
    QVector<QVector<double>> curveData;
    QList<QPen> pens;
    QMap<int, QVector<double>> curves;
    bool useAntialiasing;
    bool showHorizontalLines;
    QRectF topRect;
    QRectF bottomRect;
    QRectF plotRect;
    QColor horizontalLineColor;
    int scaleTop;
    int scaleBottom;
    int scaleRight;
    int scaleLeft;

private:
    struct ValueLabel {
        QString text;
        qreal width;
    };
    QVector<ValueLabel> buildValueLabels(int top, int step) const;
    void refreshLabelCache();
    void layoutPlotRect();
    void drawValueLabels(QPainter *painter);
    void drawTimeAxis(QPainter *painter);
    void paintStaticLayer(QPainter *painter);

    QVector<double> fullScale;
    bool rightScaleLabels;

    // Label texts and widths change only with the widget font.
    QFont labelCacheFont;
    bool labelCacheValid;
    qreal labelHeight;
    QVector<ValueLabel> leftLabels;
    QVector<ValueLabel> rightLabels;

    // Box, grid and value labels only change with the size, the font and the
    // render hints; they are drawn once into this layer and blitted.
    LayerCache staticLayer;
    bool staticLayerAntialiased;
    bool staticLayerGrid;
};

#endif // TRENDCHART_H
