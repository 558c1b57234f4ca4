// Gauge widget: colour scheme and value text at the band thresholds, out of
// range values, repaint rules and the single animation step, scale labels,
// and what the arc shows for realistic values (also written as screenshots).

#include <QtTest>

#include <QImage>
#include <QtMath>

#include <cmath>

#include "chartscreenshots.h"
#include "datachart.h"

namespace {

// Range and colour bands of a gauge, as the graphic pages set them up.
struct Dial
{
    double min;
    double max;
    QList<int> colours;
    QList<int> thresholds;
};

const Dial kDefaultDial = {60, 300, {0, 1, 2}, {1, 1, 1}};
const Dial kVoltageDial = {60, 300, {2, 0, 2}, {180, 264}};
const Dial kBatteryDial = {0, 100, {2, 1, 0}, {30, 60, 100}};
const Dial kLoadDial = {0, 160, {0, 1, 2}, {100, 120, 160}};
const Dial kFrequencyDial = {0, 100, {2, 0, 2}, {40, 60, 100}};
const Dial kTemperatureDial = {0, 100, {0, 2}, {100, 120}}; // two bands

// Solid grey that covers the arc beyond the value.
const QColor kCoverGrey(238, 238, 221);

// Pixel of the arc at `degrees` (counter-clockwise from 3 o'clock), sampled at
// 0.4 R: inside the arc and clear of the sector lines.
QColor arcPixel(const QImage &image, const DataChart &chart, double degrees)
{
    const double r = 0.4 * chart.getOuterRadius();
    const QPointF o(image.width() / 2, image.height() - 10);
    const double a = qDegreesToRadians(degrees);
    return image.pixelColor(QPoint(qRound(o.x() + r * std::cos(a)), qRound(o.y() - r * std::sin(a))));
}

void configure(DataChart &chart, const Dial &dial)
{
    chart.setMinValue(dial.min);
    chart.setMaxValue(dial.max);
    chart.setRadioValue(dial.colours, dial.thresholds);
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

Q_DECLARE_METATYPE(Dial)

class TestDataChart : public QObject
{
    Q_OBJECT

private slots:
    void schemeAndText_data();
    void schemeAndText();
    void repaintRules();
    void scaleLabels_data();
    void scaleLabels();
    void realisticValues_data();
    void realisticValues();
};

void TestDataChart::schemeAndText_data()
{
    QTest::addColumn<Dial>("dial");
    QTest::addColumn<double>("value");
    QTest::addColumn<int>("scheme");
    QTest::addColumn<QString>("text");

    // Out of range shows "--" and counts as 0.
    QTest::newRow("at maximum") << kDefaultDial << 300.0 << 2 << "300";
    QTest::newRow("above maximum") << kDefaultDial << 300.5 << 2 << "--";
    QTest::newRow("below minimum") << kDefaultDial << 59.9 << 2 << "--";
    QTest::newRow("battery 29.9 %") << kBatteryDial << 29.9 << 2 << "29.9";
    QTest::newRow("battery 30 % (band 2 from t0)") << kBatteryDial << 30.0 << 1 << "30";
    QTest::newRow("battery 60.1 %") << kBatteryDial << 60.1 << 0 << "60.1";
    QTest::newRow("load 120 %") << kLoadDial << 120.0 << 1 << "120";
    QTest::newRow("load 121 %") << kLoadDial << 121.0 << 2 << "121";
    // Two colours: first band below t0, the second colour for everything else.
    QTest::newRow("two bands, at t0") << kTemperatureDial << 100.0 << 2 << "100";
    QTest::newRow("two bands, -5 read as unsigned") << kTemperatureDial << 4294967291.0 << 0 << "--";
    // Below the minimum (the out-of-range 0) the thresholds still decide.
    QTest::newRow("below min, t0 at 0") << Dial{10, 100, {0, 1, 2}, {0, 50}} << 500.0 << 1 << "--";
    // A colour list too short for the band taken: no scheme rather than a bad read.
    QTest::newRow("no colours") << Dial{0, 100, {}, {50}} << 20.0 << -1 << "20";
}

void TestDataChart::schemeAndText()
{
    QFETCH(Dial, dial);
    QFETCH(double, value);
    QFETCH(QString, text);
    DataChart chart;
    configure(chart, dial);
    chart.setValue(dial.min + 1.0); // some earlier in-range value
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

void TestDataChart::repaintRules()
{
    PaintCountingChart chart;
    configure(chart, kDefaultDial);
    chart.resize(200, 120);
    chart.show();
    QVERIFY(QTest::qWaitForWindowExposed(&chart));
    // The timer started at construction makes one 0.5 step, never another.
    QTRY_VERIFY(!chart.isAnimating());
    QCOMPARE(chart.getDisplayValue(), 0.5);
    QTest::qWait(20);
    chart.paints = 0;

    // The value is already 0: the flag changes but no repaint is asked for.
    chart.setValue(500.0);
    QTest::qWait(40);
    QCOMPARE(chart.paints, 0);
    QCOMPARE(chart.valueText(), QStringLiteral("--"));
    chart.setValue(100.0);
    QTRY_COMPARE(chart.paints, 1);
    QCOMPARE(chart.getDisplayValue(), 100.0); // jumps, no animation
    QVERIFY(!chart.isAnimating());
    // Out of range after a value: back to 0, repainted.
    chart.setValue(500.0);
    QTRY_COMPARE(chart.paints, 2);
    QCOMPARE(chart.valueText(), QStringLiteral("--"));
}

void TestDataChart::scaleLabels_data()
{
    QTest::addColumn<double>("min");
    QTest::addColumn<double>("max");
    QTest::addColumn<QVector<int>>("labels");
    // Steps are truncated fifths and the truncation accumulates: the last
    // label need not be the maximum.
    QTest::newRow("defaults") << 60.0 << 300.0 << QVector<int>{60, 108, 156, 204, 252, 300};
    QTest::newRow("7 not divisible by 5") << 0.0 << 7.0 << QVector<int>{0, 1, 2, 3, 4, 5};
    QTest::newRow("negative, toward zero") << -10.0 << 11.0 << QVector<int>{-10, -5, 0, 4, 8, 12};
}

void TestDataChart::scaleLabels()
{
    QFETCH(double, min);
    QFETCH(double, max);
    QTEST(DataChart::scaleLabels(min, max), "labels");
}

void TestDataChart::realisticValues_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<Dial>("dial");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("maximumShown"); // the arc is coloured up to 20 degrees

    QTest::newRow("input voltage") << "input-voltage" << kVoltageDial << 230.0 << false;
    QTest::newRow("input frequency") << "input-frequency" << kFrequencyDial << 50.0 << false;
    QTest::newRow("output load") << "output-load" << kLoadDial << 35.0 << false;
    QTest::newRow("battery capacity") << "battery-capacity" << kBatteryDial << 100.0 << true;
    QTest::newRow("temperature without data") << "no-data" << kTemperatureDial << 4294967291.0 << false;
}

void TestDataChart::realisticValues()
{
    QFETCH(QString, name);
    QFETCH(Dial, dial);
    QFETCH(double, value);
    QFETCH(bool, maximumShown);
    DataChart chart;
    chart.setFont(QFont(QStringLiteral("DejaVu Sans"), 9)); // desktop-sized, as on a real page
    configure(chart, dial);
    chart.resize(280, 130);
    QTRY_VERIFY(!chart.isAnimating());
    chart.setValue(value);
    // All these values lie in the green band; the arc shows it up to the
    // value and the grey cover beyond (all of it when out of range).
    QCOMPARE(chart.colorScheme(), 0);
    const QImage image = chart.grab().toImage();
    for (double degrees : {165.0, 20.0}) {
        const QColor pixel = arcPixel(image, chart, degrees);
        const bool coloured = degrees > 90.0 ? !chart.isOutOfRange() : maximumShown;
        QCOMPARE(pixel == kCoverGrey, !coloured);
        if (coloured)
            QVERIFY2(pixel.green() > pixel.red() + 30 && pixel.green() > pixel.blue() + 30, qPrintable(pixel.name()));
    }
    if (ChartScreenshots::enabled())
        QVERIFY(!ChartScreenshots::save(&chart, QStringLiteral("datachart-%1.png").arg(name)).isEmpty());
}

QTEST_MAIN(TestDataChart)
#include "tst_datachart.moc"
