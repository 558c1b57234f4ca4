#include "datachart.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QLineF>
#include <QPaintEvent>
#include <QPainter>
#include <QRadialGradient>
#include <QTimer>

#include <climits>
#include <cmath>

#include "upsformat.h"

namespace {

// Geometry, all relative to R (the outer radius).
constexpr double InnerRadiusRatio = 0.85;
constexpr double PieRadiusRatio = 0.7;
constexpr double TickUnit = 1.0 / 20.0;
constexpr double ShortTickRatio = 0.7;
constexpr double HalfTickRatio = 0.5;
constexpr double TickGapRatio = 0.1;
constexpr int BottomGap = 10; // the dial's centre sits this far above the bottom edge

// Angles: pies in 1/16 degree counter-clockwise from 3 o'clock; rotations in
// degrees clockwise, 0 pointing straight down from the centre.
constexpr int ArcStart16 = 10 * 16;
constexpr int ArcSpan16 = 160 * 16;
constexpr int HalfCircle16 = 180 * 16;
constexpr double ArcDegrees = 160.0;
constexpr double MinimumRotation = 100.0;
constexpr double SectorDegrees = 32.0;
constexpr int SectorCount = 5;
constexpr int TickSteps = 100;
constexpr double TickStepDegrees = ArcDegrees / TickSteps;
constexpr int LongTickEvery = 20;
constexpr int ShortTickEvery = 5;

constexpr int AnimationIntervalMs = 10;
constexpr double AnimationStep = 0.5;

constexpr double DefaultMax = 300.0;
constexpr double DefaultMin = 60.0;

constexpr qreal ValueBoxOpacity = 0.7;
constexpr int LabelPointSize = 8;
constexpr int ValuePointSize = 11;
constexpr int BoldWeight = 75;
const char *const GaugeFontFamily = "Microsoft YaHei";

const QColor ArcOutlineColor(128, 128, 128);
const QColor CoverColor(238, 238, 221);
const QColor SectorLineColor(47, 47, 47);
const QColor LongTickColor(16, 49, 98);
const QColor ShortTickColor(47, 47, 47);
const QColor LabelColor(0, 0, 0);

struct SchemeStops {
    QColor at0;
    QColor at07;
    QColor at1;
};

const SchemeStops Schemes[] = {
    {QColor(138, 226, 52), QColor(115, 210, 22), QColor(78, 154, 6)},    // green
    {QColor(255, 235, 69), QColor(255, 205, 0), QColor(255, 166, 0)},    // yellow to amber
    {QColor(238, 119, 34), QColor(221, 85, 34), QColor(205, 34, 51)},    // orange to red
    {QColor(242, 242, 242), QColor(221, 210, 240), QColor(219, 200, 199)}, // pale grey
};
constexpr int SchemeCount = int(sizeof(Schemes) / sizeof(Schemes[0]));

// Truncation toward zero that stays defined for values outside int.
int truncToInt(double v)
{
    if (std::isnan(v))
        return 0;
    if (v >= double(INT_MAX))
        return INT_MAX;
    if (v <= double(INT_MIN))
        return INT_MIN;
    return int(v);
}

QFont gaugeFont(int pointSize, int weight = -1)
{
    QFont font;
    font.setPointSize(pointSize);
    if (weight >= 0)
        font.setWeight(weight);
    font.setFamily(QString::fromLatin1(GaugeFontFamily));
    return font;
}

} // namespace

DataChart::DataChart(QWidget *parent)
    : QWidget(parent),
      currentValue(0.0),
      maxValue(DefaultMax),
      minValue(DefaultMin),
      outerRadius(0.0),
      innerRadius(0.0),
      pieRadius(0.0),
      coverRadius(0.0),
      displayValue(0.0),
      longTickLength(0.0),
      shortTickLength(0.0),
      halfTickLength(0.0),
      tickGap(0.0),
      isDecreasing(false),
      updateTimer(new QTimer(this)),
      unitText(QStringLiteral("V")),
      colorIndexes({0, 1, 2}),
      radioValues({1, 1, 1}),
      outOfRange(false),
      labelFont(gaugeFont(LabelPointSize)),
      valueFont(gaugeFont(ValuePointSize, BoldWeight)),
      labelCacheMin(0.0),
      labelCacheMax(0.0),
      labelCacheHeight(0.0)
{
    updateTimer->setInterval(AnimationIntervalMs);
    connect(updateTimer, &QTimer::timeout, this, &DataChart::UpdateGraph);
    updateTimer->start();
}

DataChart::~DataChart() = default;

void DataChart::setValue(double value)
{
    outOfRange = false;
    // NaN compares false both ways; it is treated like any other bad reading.
    if (value > maxValue || value < minValue || std::isnan(value)) {
        outOfRange = true;
        value = 0.0;
    }
    if (value == currentValue)
        return;
    const int scheme = colorScheme();
    isDecreasing = value < currentValue;
    currentValue = value;
    displayValue = value;
    if (colorScheme() != scheme)
        arcLayer.invalidate();
    update();
}

void DataChart::setMinValue(double value)
{
    minValue = value;
    arcLayer.invalidate(); // the first band starts at the minimum
    overlayLayer.invalidate();
}

void DataChart::setMaxValue(double value)
{
    maxValue = value;
    overlayLayer.invalidate();
}

double DataChart::getMaxValue() const
{
    return maxValue;
}

void DataChart::setUnitText(QString unit)
{
    unitText = unit;
}

void DataChart::setRadioValue(QList<int> colorIndexes, QList<int> radioValues)
{
    this->colorIndexes = colorIndexes;
    this->radioValues = radioValues;
    arcLayer.invalidate();
}

void DataChart::setColor(QRadialGradient &gradient, int index)
{
    if (index < 0 || index >= SchemeCount)
        return;
    const SchemeStops &scheme = Schemes[index];
    gradient.setColorAt(0.0, scheme.at0);
    gradient.setColorAt(0.7, scheme.at07);
    gradient.setColorAt(1.0, scheme.at1);
}

bool DataChart::isAnimating() const
{
    return updateTimer->isActive();
}

void DataChart::UpdateGraph()
{
    if (isDecreasing) {
        displayValue -= AnimationStep;
        if (currentValue >= displayValue)
            updateTimer->stop();
    } else {
        displayValue += AnimationStep;
        if (displayValue >= currentValue)
            updateTimer->stop();
    }
    update();
}

int DataChart::colorScheme() const
{
    const QList<int> &c = colorIndexes;
    const QList<int> &t = radioValues;
    const double v = currentValue;
    // Bands come from the owning form; a list too short for the branch taken
    // yields no scheme rather than reading past its end.
    constexpr int NoScheme = -1;
    if (c.size() == 3) {
        if (t.isEmpty())
            return NoScheme;
        if (v >= minValue && t.at(0) > v)
            return c.at(0);
        if (v >= t.at(0)) {
            if (t.size() < 2)
                return NoScheme;
            if (t.at(1) >= v)
                return c.at(1);
        }
        return c.at(2);
    }
    if (v >= minValue) {
        if (t.isEmpty())
            return NoScheme;
        if (t.at(0) > v)
            return c.value(0, NoScheme);
    }
    return c.value(1, NoScheme);
}

QString DataChart::valueText() const
{
    if (outOfRange)
        return UpsFormat::noReading();
    return tr("%1").arg(currentValue, 0, 'g', -1);
}

QVector<int> DataChart::scaleLabels(double minValue, double maxValue)
{
    QVector<int> labels;
    labels.reserve(SectorCount + 1);
    const double step = (maxValue - minValue) / SectorCount;
    int label = truncToInt(minValue);
    for (int k = 0; k <= SectorCount; ++k) {
        labels.append(label);
        label = truncToInt(label + step);
    }
    return labels;
}

int DataChart::coverSpan(double displayValue, double minValue, double maxValue)
{
    const double scale = ArcDegrees / (maxValue - minValue);
    double d = 0.0;
    if (displayValue >= minValue)
        d = (displayValue - minValue) * scale;
    // Equal bounds make the scale infinite; the cover then simply stays full.
    if (!std::isfinite(d))
        d = 0.0;
    return truncToInt(ArcSpan16 - 16.0 * d);
}

QPointF DataChart::dialCenter() const
{
    return QPointF(width() / 2, height() - BottomGap);
}

void DataChart::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    resetVariables(&painter);
    layoutPieRect();
    const qreal ratio = devicePixelRatioF();
    painter.drawPixmap(0, 0, arcLayer.pixmap(size(), ratio, [this](QPainter *p) { paintArcLayer(p); }));
    drawGraph(&painter);
    painter.drawPixmap(0, 0, overlayLayer.pixmap(size(), ratio, [this](QPainter *p) { paintOverlayLayer(p); }));
    drawTextRect(&painter);
    painter.end();
}

void DataChart::changeEvent(QEvent *event)
{
    // Scale labels are measured with the widget font.
    if (event->type() == QEvent::FontChange)
        overlayLayer.invalidate();
    QWidget::changeEvent(event);
}

void DataChart::paintArcLayer(QPainter *painter)
{
    painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawColorPies(painter);
}

void DataChart::paintOverlayLayer(QPainter *painter)
{
    painter->setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    drawCoverLines(painter);
    drawCoverCircle(painter);
    drawMarkAndText(painter);
}

void DataChart::resetVariables(QPainter *painter)
{
    Q_UNUSED(painter);
    const int w = width();
    const int h = height();
    const double r = double(qMin(w / 2, h));
    outerRadius = r;
    innerRadius = InnerRadiusRatio * r;
    pieRadius = PieRadiusRatio * r;
    coverRadius = 0.5 * pieRadius;
    longTickLength = r * TickUnit;
    shortTickLength = ShortTickRatio * r * TickUnit;
    halfTickLength = HalfTickRatio * r * TickUnit;
    tickGap = TickGapRatio * r * TickUnit;
    centerPoint = QPointF((w - 1) / 2, (h - 1) / 2);
}

void DataChart::layoutPieRect()
{
    pieRect = QRectF(width() / 2 - pieRadius, height() - pieRadius - BottomGap,
                     2 * pieRadius, 2 * pieRadius);
}

void DataChart::drawColorPies(QPainter *painter)
{
    painter->save();
    painter->setPen(ArcOutlineColor);
    const QPointF o = dialCenter();
    QRadialGradient gradient(o, pieRadius, o);
    layoutPieRect();
    setColor(gradient, colorScheme());
    painter->setBrush(gradient);
    painter->drawPie(pieRect, ArcStart16, ArcSpan16);
    painter->restore();
}

void DataChart::drawGraph(QPainter *painter)
{
    painter->save();
    painter->setPen(Qt::NoPen);
    painter->setBrush(CoverColor);
    painter->drawPie(pieRect, ArcStart16, coverSpan(displayValue, minValue, maxValue));
    painter->restore();
}

void DataChart::drawCoverLines(QPainter *painter)
{
    painter->save();
    painter->translate(dialCenter());
    painter->setPen(SectorLineColor);
    const QLineF line(0.0, pieRadius, 0.0, 1.5 * coverRadius);
    for (int k = 0; k <= SectorCount; ++k) {
        painter->save();
        painter->rotate(MinimumRotation + k * SectorDegrees);
        painter->drawLine(line);
        painter->restore();
    }
    painter->restore();
}

void DataChart::drawCoverCircle(QPainter *painter)
{
    // The hub is traced with neither pen nor brush, so it leaves no mark and
    // the arc stays a full pie sector.
    painter->save();
    painter->setPen(Qt::NoPen);
    painter->setBrush(Qt::NoBrush);
    painter->drawChord(QRectF(width() / 2 - coverRadius, height() - coverRadius - BottomGap,
                              2 * coverRadius, 2 * coverRadius),
                       ArcStart16, ArcSpan16);
    painter->restore();
}

void DataChart::refreshLabelCache()
{
    const QFont widgetFont = font();
    if (!labelCache.isEmpty() && labelCacheMin == minValue && labelCacheMax == maxValue
        && labelCacheFont == widgetFont)
        return;
    // Labels are measured with the widget's font although they are drawn in
    // the gauge font; the offsets below depend on exactly these metrics.
    const QFontMetricsF metrics(widgetFont);
    labelCache.clear();
    const QVector<int> labels = scaleLabels(minValue, maxValue);
    for (int label : labels) {
        const QString text = tr("%1").arg(label);
        labelCache.append({text, metrics.horizontalAdvance(text)});
    }
    labelCacheHeight = metrics.height();
    labelCacheMin = minValue;
    labelCacheMax = maxValue;
    labelCacheFont = widgetFont;
}

void DataChart::drawMarkAndText(QPainter *painter)
{
    refreshLabelCache();
    const qreal h = labelCacheHeight;
    const QLineF longTick(0.0, pieRadius + tickGap, 0.0, pieRadius + tickGap + longTickLength);
    const QLineF shortTick(0.0, pieRadius + tickGap, 0.0, pieRadius + tickGap + shortTickLength);
    const QPen longPen(LongTickColor);
    const QPen shortPen(ShortTickColor);
    const QPen labelPen(LabelColor);

    painter->save();
    painter->translate(dialCenter());
    double angle = MinimumRotation;
    int labelIndex = 0;
    for (int i = 0; i <= TickSteps; ++i) {
        painter->save();
        painter->rotate(angle);
        if (i % LongTickEvery == 0) {
            painter->setPen(longPen);
            painter->drawLine(longTick);
            const ScaleLabel &label = labelCache.at(labelIndex++);
            const qreal w = label.width;
            painter->save();
            painter->translate(-0.5 * w, 2 * tickGap + pieRadius + longTickLength + h);
            painter->rotate(-angle);
            painter->setPen(labelPen);
            painter->setFont(labelFont);
            painter->drawText(QPointF(3.0 - w, 0.5 * h + 2.0), label.text);
            painter->restore();
        } else if (i % ShortTickEvery == 0) {
            painter->setPen(shortPen);
            painter->drawLine(shortTick);
        }
        angle += TickStepDegrees;
        painter->restore();
    }
    painter->restore();
}

void DataChart::drawTextRect(QPainter *painter)
{
    const double s = (pieRadius - coverRadius) / 3.0;
    const QRectF box(width() / 2 - 3 * s, height() - 2 * s, 6 * s, 2 * s);
    const int roundness = truncToInt(s);

    painter->save();
    painter->setOpacity(ValueBoxOpacity);
    painter->setPen(Qt::NoPen);
    painter->setBrush(Qt::blue);
    painter->drawRoundedRect(box, roundness, roundness, Qt::RelativeSize);
    painter->setOpacity(1.0);
    painter->setPen(Qt::white);
    painter->setFont(valueFont);
    painter->drawText(box, Qt::AlignCenter, valueText());
    painter->restore();
}

void DataChart::drawOuterCircle(QPainter *painter)
{
    const int halfW = width() / 2;
    const int h = height();
    QRadialGradient gradient(centerPoint, 2 * outerRadius, centerPoint);
    gradient.setColorAt(0.0, QColor(130, 130, 130));
    gradient.setColorAt(0.9, QColor(130, 130, 130));
    gradient.setColorAt(0.95, QColor(200, 200, 200));
    gradient.setColorAt(1.0, QColor(130, 130, 130));
    const QPointF topLeft = halfW >= h ? QPointF(halfW - outerRadius, 0.0)
                                       : QPointF(0.0, h - outerRadius);
    painter->save();
    painter->setBrush(gradient);
    painter->drawChord(QRectF(topLeft, QSizeF(2 * outerRadius, 2 * outerRadius)), 0, HalfCircle16);
    painter->restore();
}

void DataChart::drawInnerCircle(QPainter *painter)
{
    QRadialGradient gradient(centerPoint, 2 * innerRadius, centerPoint);
    gradient.setColorAt(0.0, QColor(180, 180, 180));
    gradient.setColorAt(1.0, QColor(130, 130, 130));
    painter->save();
    painter->setPen(Qt::NoPen);
    painter->setBrush(gradient);
    painter->drawChord(QRectF(width() / 2 - innerRadius, height() - innerRadius,
                              2 * innerRadius, 2 * innerRadius),
                       0, HalfCircle16);
    painter->restore();
}
