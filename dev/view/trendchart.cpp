#include "trendchart.h"

#include <QCoreApplication>
#include <QDate>
#include <QEvent>
#include <QFontMetricsF>
#include <QLine>
#include <QLineF>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QTime>
#include <QVarLengthArray>

#include <cmath>

namespace {

constexpr int PreferredSide = 350;
constexpr int MinimumSide = 280;

constexpr double MarginDivisor = 13.0;
constexpr int GridDivisions = 10;
constexpr int LeftLabelStep = 40;  // 400, 360, ... 0
constexpr int RightLabelStep = 10; // 100, 90, ... 0
constexpr double LabelGap = 5.0;

constexpr int TimeAxisFirstOffsetSecs = -40;
constexpr int TimeAxisStepSecs = 10;
constexpr double TimeTickLength = 5.0;
constexpr int TimeLabelHalfWidth = 50;
constexpr int TimeLabelHeight = 15;
const char *const TimeAxisFormat = "hh:mm:ss";

constexpr int InlineSegments = 256;

constexpr int DefaultScaleTop = 400;
constexpr int DefaultScaleBottom = 0;
constexpr int DefaultScaleRight = 100;
constexpr int DefaultScaleLeft = 0;

} // namespace

TrendChart::TrendChart(const Layout &layout, QWidget *parent)
    : QWidget(parent),
      xMargin(0.0),
      yMargin(0.0),
      curveData(layout.penColors.size()),
      useAntialiasing(true),
      showHorizontalLines(true),
      horizontalLineColor(Qt::black),
      scaleTop(DefaultScaleTop),
      scaleBottom(DefaultScaleBottom),
      scaleRight(DefaultScaleRight),
      scaleLeft(DefaultScaleLeft),
      fullScale(layout.fullScale),
      rightScaleLabels(layout.rightScaleLabels),
      labelCacheValid(false),
      labelHeight(0.0),
      staticLayerAntialiased(useAntialiasing),
      staticLayerGrid(showHorizontalLines)
{
    initVariables();
    setStyleSheet(layout.styleSheet);
    for (const QColor &color : layout.penColors)
        pens.append(QPen(color));
    // A curve without its own scale falls back to the first one.
    const double fallbackScale = fullScale.isEmpty() ? double(DefaultScaleTop) : fullScale.first();
    while (fullScale.size() < curveData.size())
        fullScale.append(fallbackScale);
}

TrendChart::~TrendChart() = default;

QSize TrendChart::sizeHint() const
{
    return QSize(PreferredSide, PreferredSide);
}

QSize TrendChart::minimumSizeHint() const
{
    return QSize(MinimumSide, MinimumSide);
}

void TrendChart::initVariables()
{
    useAntialiasing = true;
    showHorizontalLines = true;
    horizontalLineColor = Qt::black;
}

void TrendChart::initValue()
{
    for (QVector<double> &buffer : curveData)
        buffer.clear();
}

void TrendChart::addData(int index, double value)
{
    if (index >= 0 && index < curveData.size()) {
        QVector<double> &buffer = curveData[index];
        buffer.prepend(value);
        // A lone first sample is doubled so that it already shows as a line.
        if (buffer.size() == 1)
            buffer.prepend(value);
    }
    updateVector(index);
}

void TrendChart::setCurveData(int index, const QVector<double> &data)
{
    curves[index] = data;
    update();
}

int TrendChart::maxPoints() const
{
    return int(plotRect.width() / SampleSpacing);
}

void TrendChart::updateVector(int index)
{
    const int limit = maxPoints();
    if (index >= 0 && index < curveData.size()) {
        QVector<double> &buffer = curveData[index];
        if (buffer.size() > limit && limit >= 0)
            buffer.remove(limit);
    }
    for (int k = 0; k < curveData.size(); ++k)
        setCurveData(k, curveData.at(k));
}

double TrendChart::valueToY(int index, double value) const
{
    const double top = fullScale.value(index, fullScale.value(0, DefaultScaleTop));
    return plotRect.bottom() - (plotRect.height() / top) * value;
}

QStringList TrendChart::timeAxisLabels(const QDateTime &now)
{
    QStringList labels;
    labels.reserve(TimeAxisLabelCount);
    const QString format = QString::fromLatin1(TimeAxisFormat);
    for (int i = 0; i < TimeAxisLabelCount; ++i)
        labels.append(QDateTime(now.date(), now.time().addSecs(TimeAxisFirstOffsetSecs + TimeAxisStepSecs * i))
                          .toString(format));
    return labels;
}

void TrendChart::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    if (useAntialiasing)
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    resetVariables(&painter);
    // drawBox and the value labels of drawText, from the cached layer.
    layoutPlotRect();
    // The concrete charts switch these flags directly, without telling.
    if (staticLayerAntialiased != useAntialiasing || staticLayerGrid != showHorizontalLines) {
        staticLayerAntialiased = useAntialiasing;
        staticLayerGrid = showHorizontalLines;
        staticLayer.invalidate();
    }
    painter.drawPixmap(0, 0, staticLayer.pixmap(size(), devicePixelRatioF(),
                                                [this](QPainter *p) { paintStaticLayer(p); }));
    // Leave the painter as drawBox does: the time ticks use the grid's pen.
    painter.setPen(showHorizontalLines ? QPen(Qt::DotLine) : QPen(Qt::black));
    painter.setBrush(Qt::NoBrush);
    drawTimeAxis(&painter);
    drawGraph(&painter);
}

void TrendChart::paintStaticLayer(QPainter *painter)
{
    if (useAntialiasing)
        painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawBox(painter);
    drawValueLabels(painter);
}

void TrendChart::changeEvent(QEvent *event)
{
    // Value labels are drawn and measured in the widget font.
    if (event->type() == QEvent::FontChange)
        staticLayer.invalidate();
    QWidget::changeEvent(event);
}

void TrendChart::resizeEvent(QResizeEvent *event)
{
    Q_UNUSED(event);
    // The phase curves follow the new width; curve 3 onwards keeps its
    // length until its own samples trim it.
    updateVector(0);
    updateVector(1);
    updateVector(2);
}

void TrendChart::resetVariables(QPainter *painter)
{
    Q_UNUSED(painter);
    const int w = width();
    const int h = height();
    const int upper = 2 * (h / 3);
    topRect = QRectF(0, 0, w, upper);
    bottomRect = QRectF(0, upper, w, h - upper);
    xMargin = w / MarginDivisor;
    yMargin = h / MarginDivisor;
}

void TrendChart::layoutPlotRect()
{
    plotRect = QRectF(xMargin, yMargin, width() - 2 * xMargin, height() - 2 * yMargin);
}

void TrendChart::drawBox(QPainter *painter)
{
    painter->setPen(Qt::black);
    painter->setBrush(Qt::NoBrush);
    layoutPlotRect();
    painter->drawRect(plotRect);
    if (!showHorizontalLines)
        return;
    painter->setPen(horizontalLineColor);
    const double step = plotRect.height() / GridDivisions;
    for (int k = 1; k < GridDivisions; ++k) {
        // Setting only the style yields a black dotted pen, whatever colour
        // was set above.
        painter->setPen(Qt::DotLine);
        const double y = plotRect.top() + k * step;
        painter->drawLine(QLineF(plotRect.left(), y, plotRect.right(), y));
    }
}

QVector<TrendChart::ValueLabel> TrendChart::buildValueLabels(int top, int step) const
{
    const QFontMetricsF metrics(font());
    QVector<ValueLabel> labels;
    labels.reserve(GridDivisions + 1);
    for (int k = 0; k <= GridDivisions; ++k) {
        const QString text = QCoreApplication::translate(metaObject()->className(), "%1").arg(top - step * k);
        labels.append({text, metrics.horizontalAdvance(text)});
    }
    return labels;
}

void TrendChart::refreshLabelCache()
{
    const QFont widgetFont = font();
    if (labelCacheValid && labelCacheFont == widgetFont)
        return;
    leftLabels = buildValueLabels(scaleTop, LeftLabelStep);
    rightLabels = rightScaleLabels ? buildValueLabels(scaleRight, RightLabelStep)
                                   : QVector<ValueLabel>();
    labelHeight = QFontMetricsF(widgetFont).height();
    labelCacheFont = widgetFont;
    labelCacheValid = true;
}

void TrendChart::drawText(QPainter *painter)
{
    drawValueLabels(painter);
    drawTimeAxis(painter);
}

void TrendChart::drawValueLabels(QPainter *painter)
{
    refreshLabelCache();
    const double step = plotRect.height() / GridDivisions;
    for (int k = 0; k <= GridDivisions; ++k) {
        const double y = plotRect.top() + k * step + 0.5 * labelHeight;
        const ValueLabel &left = leftLabels.at(k);
        painter->drawText(QPointF(plotRect.left() - LabelGap - left.width, y), left.text);
        if (!rightLabels.isEmpty()) {
            const ValueLabel &right = rightLabels.at(k);
            painter->drawText(QPointF(plotRect.right() + LabelGap + 0.5 * right.width, y), right.text);
        }
    }
}

void TrendChart::drawTimeAxis(QPainter *painter)
{
    // Re-read from the wall clock on every paint.
    const QStringList times = timeAxisLabels(QDateTime(QDate::currentDate(), QTime::currentTime()));
    const int tickTop = int(plotRect.bottom());
    const int tickBottom = int(plotRect.bottom() + TimeTickLength);
    for (int i = 0; i < TimeAxisLabelCount; ++i) {
        int x = int(i * plotRect.width() / GridDivisions + plotRect.left());
        if (i < GridDivisions)
            ++x;
        painter->drawLine(QLine(x, tickTop, x, tickBottom));
        const QRect textRect(QPoint(x - TimeLabelHalfWidth, tickBottom),
                             QPoint(x + TimeLabelHalfWidth - 1, tickBottom + TimeLabelHeight - 1));
        painter->drawText(textRect, Qt::AlignHCenter | Qt::AlignTop, times.at(i));
    }
}

void TrendChart::drawGraph(QPainter *painter)
{
    const QMap<int, QVector<double>> snapshot = curves;
    const double x0 = plotRect.right();
    const double bottom = plotRect.bottom();
    QVarLengthArray<QLineF, InlineSegments> segments;
    for (auto it = snapshot.constBegin(); it != snapshot.constEnd(); ++it) {
        const int key = it.key();
        const QVector<double> &samples = it.value();
        // Fewer than two samples make no segment; keys without a pen are
        // not curves of this chart.
        if (samples.size() < 2 || key < 0 || key >= pens.size())
            continue;
        const double scale = plotRect.height() / fullScale.at(key);
        segments.clear();
        QPointF previous(x0, bottom - scale * samples.at(1));
        segments.append(QLineF(QPointF(x0, bottom - scale * samples.at(0)), previous));
        for (int j = 2; j < samples.size(); ++j) {
            const QPointF next(x0 - SampleSpacing * (j - 1), bottom - scale * samples.at(j));
            segments.append(QLineF(previous, next));
            previous = next;
        }
        painter->setPen(pens.at(key));
        painter->setBrush(Qt::NoBrush);
        painter->drawLines(segments.constData(), segments.size());
    }
}
