#include <QtTest>

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QRadialGradient>
#include <QtMath>

#include <cmath>
#include <limits>

#include "datachart.h"

Q_DECLARE_METATYPE(QList<int>)

namespace {

// Colour at gradient position 0.4 R / 0.7 R of each scheme, and of the grey
// cover, for classifying sampled arc pixels.
const QColor CoverGrey(238, 238, 221);
constexpr int CoverClass = -2;
constexpr double SampleRadiusRatio = 0.4; // of R: inside the arc, clear of the sector lines

QColor schemeColourAt(int scheme, double position)
{
    QRadialGradient gradient(QPointF(0, 0), 1.0);
    DataChart chart;
    chart.setColor(gradient, scheme);
    const QGradientStops stops = gradient.stops();
    for (int i = 1; i < stops.size(); ++i) {
        if (position <= stops.at(i).first) {
            const QGradientStop &a = stops.at(i - 1);
            const QGradientStop &b = stops.at(i);
            const double t = (position - a.first) / (b.first - a.first);
            return QColor::fromRgbF(a.second.redF() + t * (b.second.redF() - a.second.redF()),
                                    a.second.greenF() + t * (b.second.greenF() - a.second.greenF()),
                                    a.second.blueF() + t * (b.second.blueF() - a.second.blueF()));
        }
    }
    return stops.isEmpty() ? QColor() : stops.last().second;
}

int colourDistance(const QColor &a, const QColor &b)
{
    return qAbs(a.red() - b.red()) + qAbs(a.green() - b.green()) + qAbs(a.blue() - b.blue());
}

// Which scheme (0..3) or the cover (CoverClass) a pixel of the arc shows.
int classifyArcPixel(const QColor &pixel)
{
    const double position = SampleRadiusRatio / 0.7;
    int best = CoverClass;
    int bestDistance = colourDistance(pixel, CoverGrey);
    for (int scheme = 0; scheme < 4; ++scheme) {
        const int d = colourDistance(pixel, schemeColourAt(scheme, position));
        if (d < bestDistance) {
            best = scheme;
            bestDistance = d;
        }
    }
    return bestDistance < 30 ? best : -99;
}

// Pixel of the arc at `degrees` (counter-clockwise from 3 o'clock).
QColor arcPixel(const QImage &image, const DataChart &chart, double degrees)
{
    const double r = SampleRadiusRatio * chart.getOuterRadius();
    const QPointF o(image.width() / 2, image.height() - 10);
    const double a = qDegreesToRadians(degrees);
    return image.pixelColor(QPoint(qRound(o.x() + r * std::cos(a)), qRound(o.y() - r * std::sin(a))));
}

void configure(DataChart &chart, double min, double max, const QList<int> &colours,
               const QList<int> &thresholds)
{
    chart.setMinValue(min);
    chart.setMaxValue(max);
    chart.setRadioValue(colours, thresholds);
}

// Waits for the one animation step the gauge performs after construction,
// so that later values are shown exactly where they are set.
void settle(DataChart &chart)
{
    QTRY_VERIFY(!chart.isAnimating());
}

class PaintCountingChart : public DataChart
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        ++paints;
        DataChart::paintEvent(event);
    }
};

} // namespace

class TestDataChart : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAndSingleAnimationStep();
    void animationStepDirection_data();
    void animationStepDirection();
    void colorScheme_data();
    void colorScheme();
    void arcColourAndCover_data();
    void arcColourAndCover();
    void coverSpan_data();
    void coverSpan();
    void valueTextAndRange_data();
    void valueTextAndRange();
    void repaintRules_data();
    void repaintRules();
    void geometry_data();
    void geometry();
    void scaleLabels_data();
    void scaleLabels();
    void bezelStepsStillPaint();
    void realisticValues_data();
    void realisticValues();
};

void TestDataChart::defaultsAndSingleAnimationStep()
{
    DataChart chart;
    QCOMPARE(chart.getMinValue(), 60.0);
    QCOMPARE(chart.getMaxValue(), 300.0);
    QCOMPARE(chart.getUnitText(), QStringLiteral("V"));
    QCOMPARE(chart.getColorIndexes(), QList<int>({0, 1, 2}));
    QCOMPARE(chart.getRadioValues(), QList<int>({1, 1, 1}));
    QVERIFY(chart.isAnimating());
    settle(chart);
    // One step of 0.5 upwards, then the timer stays stopped for good.
    QCOMPARE(chart.getDisplayValue(), 0.5);
    chart.setValue(100.0);
    QTest::qWait(30);
    QVERIFY(!chart.isAnimating());
    QCOMPARE(chart.getDisplayValue(), 100.0);
}

void TestDataChart::animationStepDirection_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("displayAfterStep");

    QTest::newRow("rising value ends 0.5 above") << 0.0 << 50.0 << 50.5;
    QTest::newRow("falling value ends 0.5 below") << -100.0 << -50.0 << -50.5;
    QTest::newRow("out of range counts as 0") << 10.0 << 1000.0 << 0.5;
}

void TestDataChart::animationStepDirection()
{
    QFETCH(double, min);
    QFETCH(double, value);
    QFETCH(double, displayAfterStep);

    DataChart chart;
    chart.setMinValue(min);
    chart.setValue(value); // before the timer's only timeout
    settle(chart);
    QCOMPARE(chart.getDisplayValue(), displayAfterStep);
}

void TestDataChart::colorScheme_data()
{
    QTest::addColumn<QList<int>>("colours");
    QTest::addColumn<QList<int>>("thresholds");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("scheme");

    const QList<int> battC{2, 1, 0}, battT{30, 60, 100};
    QTest::newRow("defaults, 0 out of range") << QList<int>{0, 1, 2} << QList<int>{1, 1, 1} << 60.0 << 300.0 << 0.0 << 2;
    QTest::newRow("battery 0 %") << battC << battT << 0.0 << 100.0 << 0.0 << 2;
    QTest::newRow("battery 29.9 %") << battC << battT << 0.0 << 100.0 << 29.9 << 2;
    QTest::newRow("battery 30 % (band 2 from t0)") << battC << battT << 0.0 << 100.0 << 30.0 << 1;
    QTest::newRow("battery 60 % (t1 inclusive)") << battC << battT << 0.0 << 100.0 << 60.0 << 1;
    QTest::newRow("battery 60.1 %") << battC << battT << 0.0 << 100.0 << 60.1 << 0;

    const QList<int> loadC{0, 1, 2}, loadT{100, 120, 160};
    QTest::newRow("load 99 %") << loadC << loadT << 0.0 << 160.0 << 99.0 << 0;
    QTest::newRow("load 100 %") << loadC << loadT << 0.0 << 160.0 << 100.0 << 1;
    QTest::newRow("load 120 %") << loadC << loadT << 0.0 << 160.0 << 120.0 << 1;
    QTest::newRow("load 121 %") << loadC << loadT << 0.0 << 160.0 << 121.0 << 2;

    const QList<int> freqC{2, 0, 2}, freqT{40, 60, 100};
    QTest::newRow("frequency 39.9 Hz") << freqC << freqT << 0.0 << 100.0 << 39.9 << 2;
    QTest::newRow("frequency 40 Hz") << freqC << freqT << 0.0 << 100.0 << 40.0 << 0;
    QTest::newRow("frequency 60 Hz") << freqC << freqT << 0.0 << 100.0 << 60.0 << 0;
    QTest::newRow("frequency 60.1 Hz") << freqC << freqT << 0.0 << 100.0 << 60.1 << 2;

    // Two colours: first band below t0, the second colour for everything else.
    const QList<int> tempC{0, 2}, tempT{100, 120};
    QTest::newRow("two bands, below t0") << tempC << tempT << 0.0 << 100.0 << 99.0 << 0;
    QTest::newRow("two bands, at t0") << tempC << tempT << 0.0 << 100.0 << 100.0 << 2;
    QTest::newRow("two bands, out of range reads 0") << tempC << tempT << 0.0 << 100.0 << 4294967291.0 << 0;
    QTest::newRow("two bands, 0 below min") << tempC << tempT << 10.0 << 100.0 << -5.0 << 2;

    // Below the minimum (the out-of-range 0) the thresholds still decide.
    QTest::newRow("below min, t0 above") << QList<int>{0, 1, 2} << QList<int>{5, 50} << 10.0 << 100.0 << 500.0 << 2;
    QTest::newRow("below min, t0 at 0") << QList<int>{0, 1, 2} << QList<int>{0, 50} << 10.0 << 100.0 << 500.0 << 1;

    // Bounds the owner got wrong still paint.
    QTest::newRow("equal bounds") << QList<int>{0, 1, 2} << QList<int>{1, 1, 1} << 100.0 << 100.0 << 100.0 << 2;
    QTest::newRow("inverted bounds") << QList<int>{0, 1, 2} << QList<int>{1, 1, 1} << 300.0 << 60.0 << 100.0 << 2;

    // Lists too short for the branch taken give no scheme instead of failing.
    QTest::newRow("one threshold, upper band") << QList<int>{0, 1, 2} << QList<int>{50} << 0.0 << 100.0 << 70.0 << -1;
    QTest::newRow("one threshold, first band") << QList<int>{0, 1, 2} << QList<int>{50} << 0.0 << 100.0 << 20.0 << 0;
    QTest::newRow("no thresholds") << QList<int>{0, 1, 2} << QList<int>{} << 0.0 << 100.0 << 20.0 << -1;
    QTest::newRow("one colour, second band") << QList<int>{0} << QList<int>{50} << 0.0 << 100.0 << 70.0 << -1;
    QTest::newRow("no colours") << QList<int>{} << QList<int>{50} << 0.0 << 100.0 << 20.0 << -1;
}

void TestDataChart::colorScheme()
{
    QFETCH(QList<int>, colours);
    QFETCH(QList<int>, thresholds);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, value);
    QFETCH(int, scheme);

    DataChart chart;
    configure(chart, min, max, colours, thresholds);
    chart.setValue(value);
    QCOMPARE(chart.colorScheme(), scheme);
    // Painting with any lists and bounds, at any size, must not fail.
    for (const QSize &size : {QSize(200, 120), QSize(3, 2), QSize(1, 40)}) {
        chart.resize(size);
        QVERIFY(!chart.grab().isNull());
    }
}

void TestDataChart::arcColourAndCover_data()
{
    QTest::addColumn<QList<int>>("colours");
    QTest::addColumn<QList<int>>("thresholds");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("nearMinimum"); // at 160 degrees
    QTest::addColumn<int>("nearMaximum"); // at 20 degrees

    QTest::newRow("defaults, 0: all grey") << QList<int>{0, 1, 2} << QList<int>{1, 1, 1} << 60.0 << 300.0
                                           << 0.0 << CoverClass << CoverClass;
    QTest::newRow("battery 100 %: all green") << QList<int>{2, 1, 0} << QList<int>{30, 60, 100} << 0.0 << 100.0
                                               << 100.0 << 0 << 0;
    QTest::newRow("load 35 %: green, rest grey") << QList<int>{0, 1, 2} << QList<int>{100, 120, 160} << 0.0
                                                 << 160.0 << 35.0 << 0 << CoverClass;
    QTest::newRow("load 110 %: yellow") << QList<int>{0, 1, 2} << QList<int>{100, 120, 160} << 0.0 << 160.0
                                        << 110.0 << 1 << CoverClass;
    QTest::newRow("frequency 30 Hz: red") << QList<int>{2, 0, 2} << QList<int>{40, 60, 100} << 0.0 << 100.0
                                          << 30.0 << 2 << CoverClass;
    QTest::newRow("scheme 3: pale") << QList<int>{3, 3, 3} << QList<int>{40, 60, 100} << 0.0 << 100.0
                                    << 100.0 << 3 << 3;
}

void TestDataChart::arcColourAndCover()
{
    QFETCH(QList<int>, colours);
    QFETCH(QList<int>, thresholds);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, value);
    QFETCH(int, nearMinimum);
    QFETCH(int, nearMaximum);

    DataChart chart;
    configure(chart, min, max, colours, thresholds);
    chart.resize(300, 170);
    settle(chart);
    chart.setValue(value);
    const QImage image = chart.grab().toImage();
    QCOMPARE(classifyArcPixel(arcPixel(image, chart, 160.0)), nearMinimum);
    QCOMPARE(classifyArcPixel(arcPixel(image, chart, 20.0)), nearMaximum);
}

void TestDataChart::coverSpan_data()
{
    QTest::addColumn<double>("display");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<int>("span");

    QTest::newRow("at minimum: whole arc") << 60.0 << 60.0 << 300.0 << 2560;
    QTest::newRow("below minimum: whole arc") << 0.5 << 60.0 << 300.0 << 2560;
    QTest::newRow("at maximum: nothing") << 300.0 << 60.0 << 300.0 << 0;
    QTest::newRow("half way") << 180.0 << 60.0 << 300.0 << 1280;
    QTest::newRow("fraction truncated") << 230.5 << 60.0 << 300.0 << 741;
    QTest::newRow("past maximum truncates toward zero") << 300.5 << 60.0 << 300.0 << -5;
    QTest::newRow("equal bounds stay defined") << 100.0 << 100.0 << 100.0 << 2560;
    QTest::newRow("huge value stays defined") << 1e300 << 0.0 << 100.0 << std::numeric_limits<int>::min();
}

void TestDataChart::coverSpan()
{
    QFETCH(double, display);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(int, span);
    QCOMPARE(DataChart::coverSpan(display, min, max), span);
}

void TestDataChart::valueTextAndRange_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("current");

    QTest::newRow("voltage") << 60.0 << 300.0 << 230.0 << "230" << 230.0;
    QTest::newRow("frequency") << 0.0 << 100.0 << 49.95 << "49.95" << 49.95;
    QTest::newRow("zero in range") << 0.0 << 100.0 << 0.0 << "0" << 0.0;
    QTest::newRow("at minimum") << 60.0 << 300.0 << 60.0 << "60" << 60.0;
    QTest::newRow("at maximum") << 60.0 << 300.0 << 300.0 << "300" << 300.0;
    QTest::newRow("six significant digits") << 0.0 << 1e9 << 123456789.0 << "1.23457e+08" << 123456789.0;
    QTest::newRow("above maximum") << 60.0 << 300.0 << 300.5 << "--" << 0.0;
    QTest::newRow("below minimum") << 60.0 << 300.0 << 59.9 << "--" << 0.0;
    QTest::newRow("negative reading as unsigned") << 0.0 << 100.0 << 4294967291.0 << "--" << 0.0;
    QTest::newRow("not a number") << 0.0 << 100.0 << std::nan("") << "--" << 0.0;
    QTest::newRow("infinity") << 0.0 << 100.0 << std::numeric_limits<double>::infinity() << "--" << 0.0;
}

void TestDataChart::valueTextAndRange()
{
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, value);
    QFETCH(QString, text);
    QFETCH(double, current);

    DataChart chart;
    chart.setMinValue(min);
    chart.setMaxValue(max);
    chart.setValue(42.0 < min ? min : 42.0); // some earlier in-range value
    chart.setValue(value);
    QCOMPARE(chart.valueText(), text);
    QCOMPARE(chart.getCurrentValue(), current);
    QCOMPARE(chart.isOutOfRange(), text == QLatin1String("--"));
}

void TestDataChart::repaintRules_data()
{
    QTest::addColumn<double>("first");
    QTest::addColumn<double>("second");
    QTest::addColumn<int>("paintsAfterFirst");
    QTest::addColumn<int>("paintsAfterSecond");
    QTest::addColumn<QString>("finalText");

    QTest::newRow("same value twice") << 100.0 << 100.0 << 1 << 1 << "100";
    QTest::newRow("new value") << 100.0 << 200.0 << 1 << 2 << "200";
    QTest::newRow("out of range after a value") << 100.0 << 500.0 << 1 << 2 << "--";
    QTest::newRow("back in range") << 500.0 << 100.0 << 0 << 1 << "100";
    // The value is already 0: the flag changes but no repaint is asked for.
    QTest::newRow("out of range while at 0") << 0.0 << 500.0 << 0 << 0 << "--";
    QTest::newRow("two different out-of-range values") << 500.0 << -5.0 << 0 << 0 << "--";
}

void TestDataChart::repaintRules()
{
    QFETCH(double, first);
    QFETCH(double, second);
    QFETCH(int, paintsAfterFirst);
    QFETCH(int, paintsAfterSecond);
    QFETCH(QString, finalText);

    PaintCountingChart chart;
    chart.setMinValue(60.0);
    chart.setMaxValue(300.0);
    chart.resize(200, 120);
    chart.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chart));
    settle(chart);
    QTest::qWait(20);
    chart.paints = 0;

    chart.setValue(first);
    if (paintsAfterFirst > 0)
        QTRY_COMPARE(chart.paints, paintsAfterFirst);
    else
        QTest::qWait(40);
    QCOMPARE(chart.paints, paintsAfterFirst);

    chart.setValue(second);
    if (paintsAfterSecond > paintsAfterFirst)
        QTRY_COMPARE(chart.paints, paintsAfterSecond);
    else
        QTest::qWait(40);
    QCOMPARE(chart.paints, paintsAfterSecond);
    QCOMPARE(chart.valueText(), finalText);
}

void TestDataChart::geometry_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("radius");
    QTest::addColumn<QPointF>("centerPoint");

    QTest::newRow("wide takes R = H") << QSize(400, 100) << 100.0 << QPointF(199, 49);
    QTest::newRow("tall takes R = W / 2") << QSize(100, 300) << 50.0 << QPointF(49, 149);
    QTest::newRow("odd sizes halve as integers") << QSize(301, 151) << 150.0 << QPointF(150, 75);
    QTest::newRow("exactly twice as wide") << QSize(240, 120) << 120.0 << QPointF(119, 59);
}

void TestDataChart::geometry()
{
    QFETCH(QSize, size);
    QFETCH(double, radius);
    QFETCH(QPointF, centerPoint);

    DataChart chart;
    chart.resize(size);
    chart.grab();
    QCOMPARE(chart.getOuterRadius(), radius);
    QCOMPARE(chart.getCenterPoint(), centerPoint);
    const QRectF pie = chart.getPieRect();
    QCOMPARE(pie.width(), 1.4 * radius);
    // The dial's centre sits 10 pixels above the bottom edge.
    QCOMPARE(pie.center(), QPointF(size.width() / 2, size.height() - 10));
}

void TestDataChart::scaleLabels_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<QVector<int>>("labels");

    QTest::newRow("defaults") << 60.0 << 300.0 << QVector<int>{60, 108, 156, 204, 252, 300};
    QTest::newRow("load") << 0.0 << 160.0 << QVector<int>{0, 32, 64, 96, 128, 160};
    QTest::newRow("7 not divisible by 5") << 0.0 << 7.0 << QVector<int>{0, 1, 2, 3, 4, 5};
    QTest::newRow("13: truncation accumulates") << 0.0 << 13.0 << QVector<int>{0, 2, 4, 6, 8, 10};
    QTest::newRow("fractional minimum") << 0.5 << 10.5 << QVector<int>{0, 2, 4, 6, 8, 10};
    QTest::newRow("negative range truncates toward zero") << -10.0 << 11.0 << QVector<int>{-10, -5, 0, 4, 8, 12};
}

void TestDataChart::scaleLabels()
{
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(QVector<int>, labels);
    QCOMPARE(DataChart::scaleLabels(min, max), labels);
}

void TestDataChart::bezelStepsStillPaint()
{
    // The outer and inner bezels are not part of the gauge's own paint but
    // must still draw their half discs when called.
    DataChart chart;
    chart.resize(200, 100);
    QImage image(chart.size(), QImage::Format_ARGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    chart.resetVariables(&painter);
    chart.drawOuterCircle(&painter);
    QCOMPARE(image.pixelColor(100, 50), QColor(130, 130, 130));
    QCOMPARE(image.pixelColor(5, 5), QColor(Qt::white)); // outside the half disc
    chart.drawInnerCircle(&painter);
    painter.end();
    const QColor inner = image.pixelColor(100, 60);
    QVERIFY2(inner.red() > 170 && inner.red() <= 180, qPrintable(inner.name()));
}

void TestDataChart::realisticValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<QList<int>>("colours");
    QTest::addColumn<QList<int>>("thresholds");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("scheme");

    QTest::newRow("input voltage") << "input-voltage" << 60.0 << 300.0 << QList<int>{2, 0, 2}
                                   << QList<int>{180, 264} << 230.0 << "230" << 0;
    QTest::newRow("input frequency") << "input-frequency" << 0.0 << 100.0 << QList<int>{2, 0, 2}
                                     << QList<int>{40, 60, 100} << 50.0 << "50" << 0;
    QTest::newRow("output load") << "output-load" << 0.0 << 160.0 << QList<int>{0, 1, 2}
                                 << QList<int>{100, 120, 160} << 35.0 << "35" << 0;
    QTest::newRow("battery capacity") << "battery-capacity" << 0.0 << 100.0 << QList<int>{2, 1, 0}
                                      << QList<int>{30, 60, 100} << 100.0 << "100" << 0;
    QTest::newRow("temperature without data") << "no-data" << 0.0 << 100.0 << QList<int>{0, 2}
                                               << QList<int>{100, 120} << 4294967291.0 << "--" << 0;
}

void TestDataChart::realisticValues()
{
    QFETCH(QString, name);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(QList<int>, colours);
    QFETCH(QList<int>, thresholds);
    QFETCH(double, value);
    QFETCH(QString, text);
    QFETCH(int, scheme);

    DataChart chart;
    chart.setFont(QFont(QStringLiteral("DejaVu Sans"), 9)); // desktop-sized, as on a real page
    configure(chart, min, max, colours, thresholds);
    chart.resize(280, 130);
    settle(chart);
    chart.setValue(value);
    QCOMPARE(chart.valueText(), text);
    QCOMPARE(chart.colorScheme(), scheme);
    const QImage image = chart.grab().toImage();
    QCOMPARE(classifyArcPixel(arcPixel(image, chart, 165.0)), text == "--" ? CoverClass : scheme);

    if (qgetenv("ORVEK_WRITE_SCREENSHOTS") == "1") {
        const QDir dir(qEnvironmentVariable("ORVEK_SOURCE_DIR", QStringLiteral(".")) + "/docs/screenshots");
        QVERIFY(QDir().mkpath(dir.path()));
        QVERIFY(image.save(dir.filePath(QStringLiteral("datachart-%1.png").arg(name))));
    }
}

QTEST_MAIN(TestDataChart)
#include "tst_datachart.moc"
