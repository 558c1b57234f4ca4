#include <QtTest>

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QRadialGradient>
#include <QtMath>

#include <cmath>

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
    QRadialGradient radial(QPointF(0, 0), 1.0);
    DataChart().setColor(radial, scheme);
    QLinearGradient line(0, 0, 1000, 0);
    line.setStops(radial.stops());
    QImage strip(1001, 1, QImage::Format_ARGB32);
    QPainter(&strip).fillRect(strip.rect(), line);
    return strip.pixelColor(qRound(position * 1000), 0);
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
    void animationStepDirection_data();
    void animationStepDirection();
    void schemeAndText_data();
    void schemeAndText();
    void repaintRules_data();
    void repaintRules();
    void realisticValues_data();
    void realisticValues();
};

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
    DataChart chart;
    QVERIFY(chart.isAnimating());
    chart.setMinValue(min);
    chart.setValue(value); // before the timer's only timeout
    settle(chart);
    QTEST(chart.getDisplayValue(), "displayAfterStep");
    // One step only: later values are shown at once, without animation.
    chart.setValue(min + 1.0);
    QTest::qWait(30);
    QVERIFY(!chart.isAnimating());
    QCOMPARE(chart.getDisplayValue(), min + 1.0);
}

void TestDataChart::schemeAndText_data()
{
    QTest::addColumn<QList<int>>("colours");
    QTest::addColumn<QList<int>>("thresholds");
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("scheme");
    QTest::addColumn<QString>("text");

    // Out of range shows "--" and counts as 0.
    const QList<int> defC{0, 1, 2}, defT{1, 1, 1};
    QTest::newRow("defaults, 0 out of range") << defC << defT << 60.0 << 300.0 << 0.0 << 2 << "--";
    QTest::newRow("at maximum") << defC << defT << 60.0 << 300.0 << 300.0 << 2 << "300";
    QTest::newRow("above maximum") << defC << defT << 60.0 << 300.0 << 300.5 << 2 << "--";
    QTest::newRow("below minimum") << defC << defT << 60.0 << 300.0 << 59.9 << 2 << "--";
    const QList<int> battC{2, 1, 0}, battT{30, 60, 100};
    QTest::newRow("battery 29.9 %") << battC << battT << 0.0 << 100.0 << 29.9 << 2 << "29.9";
    QTest::newRow("battery 30 % (band 2 from t0)") << battC << battT << 0.0 << 100.0 << 30.0 << 1 << "30";
    QTest::newRow("battery 60.1 %") << battC << battT << 0.0 << 100.0 << 60.1 << 0 << "60.1";
    const QList<int> loadC{0, 1, 2}, loadT{100, 120, 160};
    QTest::newRow("load 120 %") << loadC << loadT << 0.0 << 160.0 << 120.0 << 1 << "120";
    QTest::newRow("load 121 %") << loadC << loadT << 0.0 << 160.0 << 121.0 << 2 << "121";
    const QList<int> freqC{2, 0, 2}, freqT{40, 60, 100};
    QTest::newRow("frequency 40 Hz") << freqC << freqT << 0.0 << 100.0 << 40.0 << 0 << "40";
    QTest::newRow("frequency 49.95 Hz") << freqC << freqT << 0.0 << 100.0 << 49.95 << 0 << "49.95";
    QTest::newRow("frequency 60.1 Hz") << freqC << freqT << 0.0 << 100.0 << 60.1 << 2 << "60.1";
    // Two colours: first band below t0, the second colour for everything else.
    const QList<int> tempC{0, 2}, tempT{100, 120};
    QTest::newRow("two bands, at t0") << tempC << tempT << 0.0 << 100.0 << 100.0 << 2 << "100";
    QTest::newRow("two bands, -5 read as unsigned") << tempC << tempT << 0.0 << 100.0 << 4294967291.0 << 0 << "--";
    // Below the minimum (the out-of-range 0) the thresholds still decide.
    QTest::newRow("below min, t0 at 0") << defC << QList<int>{0, 50} << 10.0 << 100.0 << 500.0 << 1 << "--";
    // A colour list too short for the band taken: no scheme rather than a bad read.
    QTest::newRow("no colours") << QList<int>{} << QList<int>{50} << 0.0 << 100.0 << 20.0 << -1 << "20";
}

void TestDataChart::schemeAndText()
{
    QFETCH(QList<int>, colours);
    QFETCH(QList<int>, thresholds);
    QFETCH(double, min);
    QFETCH(double, max);
    QFETCH(double, value);
    QFETCH(QString, text);
    DataChart chart;
    configure(chart, min, max, colours, thresholds);
    chart.setValue(min + 1.0); // some earlier in-range value
    chart.setValue(value);
    QTEST(chart.colorScheme(), "scheme");
    QCOMPARE(chart.valueText(), text);
    QCOMPARE(chart.isOutOfRange(), text == QLatin1String("--"));
    QCOMPARE(chart.getCurrentValue(), text == QLatin1String("--") ? 0.0 : value);
    // Painting with any lists and bounds, at any size, must not fail.
    for (const QSize &size : {QSize(200, 120), QSize(3, 2), QSize(1, 40)}) {
        chart.resize(size);
        QVERIFY(!chart.grab().isNull());
    }
}

void TestDataChart::repaintRules_data()
{
    QTest::addColumn<double>("first");
    QTest::addColumn<double>("second");
    QTest::addColumn<int>("paintsAfterFirst");
    QTest::addColumn<int>("paintsAfterSecond");
    QTest::addColumn<QString>("finalText");

    QTest::newRow("out of range after a value") << 100.0 << 500.0 << 1 << 2 << "--";
    // The value is already 0: the flag changes but no repaint is asked for.
    QTest::newRow("out of range while at 0") << 0.0 << 500.0 << 0 << 0 << "--";
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
    QTest::addColumn<int>("nearMaximum"); // what the arc shows at 20 degrees

    QTest::newRow("input voltage") << "input-voltage" << 60.0 << 300.0 << QList<int>{2, 0, 2}
                                   << QList<int>{180, 264} << 230.0 << "230" << 0 << CoverClass;
    QTest::newRow("input frequency") << "input-frequency" << 0.0 << 100.0 << QList<int>{2, 0, 2}
                                     << QList<int>{40, 60, 100} << 50.0 << "50" << 0 << CoverClass;
    QTest::newRow("output load") << "output-load" << 0.0 << 160.0 << QList<int>{0, 1, 2}
                                 << QList<int>{100, 120, 160} << 35.0 << "35" << 0 << CoverClass;
    QTest::newRow("battery capacity") << "battery-capacity" << 0.0 << 100.0 << QList<int>{2, 1, 0}
                                      << QList<int>{30, 60, 100} << 100.0 << "100" << 0 << 0;
    QTest::newRow("temperature without data") << "no-data" << 0.0 << 100.0 << QList<int>{0, 2}
                                               << QList<int>{100, 120} << 4294967291.0 << "--" << 0 << CoverClass;
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
    QTEST(classifyArcPixel(arcPixel(image, chart, 20.0)), "nearMaximum");

    if (qgetenv("ORVEK_WRITE_SCREENSHOTS") == "1") {
        const QDir dir(qEnvironmentVariable("ORVEK_SOURCE_DIR", QStringLiteral(".")) + "/docs/screenshots");
        QVERIFY(QDir().mkpath(dir.path()));
        QVERIFY(image.save(dir.filePath(QStringLiteral("datachart-%1.png").arg(name))));
    }
}

QTEST_MAIN(TestDataChart)
#include "tst_datachart.moc"
