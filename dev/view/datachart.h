#ifndef DATACHART_H
#define DATACHART_H

#include <QColor>
#include <QFont>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSize>
#include <QString>
#include <QVector>
#include <QWidget>

#include "layercache.h"

class QEvent;
class QPainter;
class QPaintEvent;
class QRadialGradient;
class QTimer;

// Half-round gauge (160 degree arc) for one measured value such as a voltage,
// a frequency or a load. The whole arc takes one colour scheme chosen from the
// value and the owner's band thresholds; the part beyond the value is greyed
// out; 21 ticks with 6 integer labels run along the arc and the value is
// printed in a small box under the centre ("--" when it is out of range).
//
// The owner sets range, unit and bands once, then calls setValue() on every
// data refresh. The value jumps to its place; the only animation is a single
// 0.5 step of the grey cover, run once by a timer started at construction.
class DataChart : public QWidget
{
    Q_OBJECT
public:
    explicit DataChart(QWidget *parent = nullptr);
    ~DataChart() override;

    void setValue(double value);
    void setMinValue(double value);
    void setMaxValue(double value);
    double getMaxValue() const;
    void setUnitText(QString unit);
    // First the colour scheme per band, then the band thresholds.
    void setRadioValue(QList<int> colorIndexes, QList<int> radioValues);
    // Adds the stops of colour scheme `index` (0 green, 1 yellow, 2 red,
    // 3 pale grey); any other index adds nothing.
    void setColor(QRadialGradient &gradient, int index);

    // Painting steps. paintEvent() runs resetVariables, drawColorPies,
    // drawGraph, drawCoverLines, drawCoverCircle, drawMarkAndText and
    // drawTextRect; drawOuterCircle and drawInnerCircle are extra bezels
    // that the gauge does not use but callers may paint with.
    void resetVariables(QPainter *painter);
    void drawColorPies(QPainter *painter);
    void drawGraph(QPainter *painter);
    void drawCoverLines(QPainter *painter);
    void drawCoverCircle(QPainter *painter);
    void drawMarkAndText(QPainter *painter);
    void drawTextRect(QPainter *painter);
    void drawOuterCircle(QPainter *painter);
    void drawInnerCircle(QPainter *painter);

    // Colour scheme the arc takes for the current target value (not the
    // animated one); -1 when the band lists are too short for the branch.
    int colorScheme() const;
    // Text of the value box: "--" out of range, else the value ('g', 6 digits).
    QString valueText() const;
    // Six scale labels from minimum to maximum, each step a truncated fifth.
    static QVector<int> scaleLabels(double minValue, double maxValue);
    // Span in 1/16 degree of the grey cover for an animated value.
    static int coverSpan(double displayValue, double minValue, double maxValue);

    // Read access for owners and tests.
    double getMinValue() const { return minValue; }
    double getCurrentValue() const { return currentValue; }
    double getDisplayValue() const { return displayValue; }
    bool isOutOfRange() const { return outOfRange; }
    bool isAnimating() const;
    QString getUnitText() const { return unitText; }
    QList<int> getColorIndexes() const { return colorIndexes; }
    QList<int> getRadioValues() const { return radioValues; }
    double getOuterRadius() const { return outerRadius; }
    QPointF getCenterPoint() const { return centerPoint; }
    QRectF getPieRect() const { return pieRect; }

public slots:
    void UpdateGraph();

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QPointF dialCenter() const;
    void layoutPieRect();
    void refreshLabelCache();
    void paintArcLayer(QPainter *painter);
    void paintOverlayLayer(QPainter *painter);

    double currentValue;
    double maxValue;
    double minValue;
    double outerRadius;
    double innerRadius;
    double pieRadius;
    double coverRadius;
    double displayValue;
    double longTickLength;
    double shortTickLength;
    double halfTickLength;
    double tickGap;
    bool isDecreasing;
    QTimer *updateTimer;
    QPointF centerPoint;
    QRectF pieRect;
    QString unitText;
    QList<int> colorIndexes;
    QList<int> radioValues;
    QList<QColor> colorList;
    bool outOfRange;

    // Paint caches: fonts are fixed; label texts and their widths only change
    // with the range or the widget font.
    QFont labelFont;
    QFont valueFont;
    struct ScaleLabel {
        QString text;
        qreal width;
    };
    QVector<ScaleLabel> labelCache;
    double labelCacheMin;
    double labelCacheMax;
    QFont labelCacheFont;
    qreal labelCacheHeight;

    // The coloured arc only changes with the scheme, the ticks, labels and
    // sector lines only with the range and the font; both are drawn once
    // into layers and blitted around the grey cover.
    LayerCache arcLayer;
    LayerCache overlayLayer;
};

#endif // DATACHART_H
