// Gauge widget: colour scheme, value text and what the arc shows at the band thresholds and out
// of range, repaint rules, scale labels, and the paint layers following every setting.
#include <QtTest>

#include <QtMath>

#include <functional>

#include "datachart.h"

namespace {

// Range and colour bands of a gauge, as the graphic pages set them up.
struct Dial { double min, max; QList<int> colours, thresholds; };

const Dial kDefaultDial = {60, 300, {0, 1, 2}, {1, 1, 1}};
const Dial kBatteryDial = {0, 100, {2, 1, 0}, {30, 60, 100}};
const Dial kLoadDial = {0, 160, {0, 1, 2}, {100, 120, 160}};
const Dial kTemperatureDial = {0, 100, {0, 2}, {100, 120}}; // two bands
const QColor kCoverGrey(238, 238, 221); // covers the arc beyond the value

void configure(DataChart &chart, const Dial &dial)
{
    chart.setMinValue(dial.min);
    chart.setMaxValue(dial.max);
    chart.setRadioValue(dial.colours, dial.thresholds);
}

struct PaintCountingChart : DataChart
{
    int paints = 0;
    void paintEvent(QPaintEvent *event) override { ++paints, DataChart::paintEvent(event); }
};

} // namespace

using Change = std::function<void(DataChart &)>;
Q_DECLARE_METATYPE(Dial)
Q_DECLARE_METATYPE(Change)

class TestDataChart : public QObject
{
    Q_OBJECT
private slots:
    void schemeAndText_data()
    {
        QTest::addColumn<Dial>("dial");
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("scheme");
        QTest::addColumn<QString>("text"); // out of range shows "--" and counts as 0
        QTest::newRow("at maximum") << kDefaultDial << 300.0 << 2 << "300";
        QTest::newRow("above maximum") << kDefaultDial << 300.5 << 2 << "--";
        QTest::newRow("below minimum") << kDefaultDial << 59.9 << 2 << "--";
        QTest::newRow("battery 29.9 %") << kBatteryDial << 29.9 << 2 << "29.9";
        QTest::newRow("battery 30 % (band 2 from t0)") << kBatteryDial << 30.0 << 1 << "30";
        QTest::newRow("battery 60.1 %") << kBatteryDial << 60.1 << 0 << "60.1";
        QTest::newRow("battery 100 %") << kBatteryDial << 100.0 << 0 << "100";
        QTest::newRow("input voltage") << Dial{60, 300, {2, 0, 2}, {180, 264}} << 230.0 << 0 << "230";
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
    void schemeAndText()
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
        QCOMPARE(chart.getCurrentValue(), chart.isOutOfRange() ? 0.0 : value);
        // The arc shows the scheme up to the value and the grey cover beyond (all of it when out
        // of range); 170 degrees is the minimum. At 0.4 R pixels are clear of the sector lines.
        chart.resize(280, 130);
        const QImage image = chart.grab().toImage();
        const double r = 0.4 * chart.getOuterRadius();
        for (double degrees : {165.0, 20.0}) {
            const double a = qDegreesToRadians(degrees);
            const QColor pixel = image.pixelColor(QPoint(qRound(140 + r * qCos(a)), qRound(120 - r * qSin(a))));
            const double reached = dial.min + (170 - degrees) / 160 * (dial.max - dial.min);
            const bool coloured = !chart.isOutOfRange() && value >= reached;
            QCOMPARE(pixel == kCoverGrey, !coloured);
            if (coloured && chart.colorScheme() == 0)
                QVERIFY2(pixel.green() > qMax(pixel.red(), pixel.blue()) + 30, qPrintable(pixel.name()));
        }
        for (const QSize &size : {QSize(3, 2), QSize(1, 40)})
            chart.resize(size), chart.grab(); // any lists and bounds paint at any size
    }
    void repaintRules()
    {
        PaintCountingChart chart;
        configure(chart, kDefaultDial);
        chart.resize(200, 120);
        chart.show();
        QVERIFY(QTest::qWaitForWindowExposed(&chart));
        QTRY_VERIFY(!chart.isAnimating()); // the timer started at construction makes one 0.5 step
        QCOMPARE(chart.getDisplayValue(), 0.5);
        QTest::qWait(20);
        chart.paints = 0;
        chart.setValue(500.0); // out of range reads 0, which it already is: no repaint
        QTest::qWait(40);
        QCOMPARE(chart.paints, 0);
        chart.setValue(100.0);
        QTRY_COMPARE(chart.paints, 1);
        QCOMPARE(chart.getDisplayValue(), 100.0); // jumps, no animation
        QVERIFY(!chart.isAnimating());
        chart.setValue(500.0); // out of range after a value: back to 0, repainted
        QTRY_COMPARE(chart.paints, 2);
    }
    void scaleLabels()
    {
        // Steps are truncated fifths and the truncation accumulates: the last
        // label need not be the maximum.
        QCOMPARE(DataChart::scaleLabels(60, 300), QVector<int>({60, 108, 156, 204, 252, 300}));
        QCOMPARE(DataChart::scaleLabels(0, 7), QVector<int>({0, 1, 2, 3, 4, 5}));
        QCOMPARE(DataChart::scaleLabels(-10, 11), QVector<int>({-10, -5, 0, 4, 8, 12})); // toward zero
    }
    // A gauge painted before a change looks afterwards like one that was
    // given the same calls but never painted in between.
    void layersFollowChanges_data()
    {
        QTest::addColumn<Change>("change");
        QTest::newRow("value in another band") << Change([](DataChart &c) { c.setValue(130); });
        QTest::newRow("minimum") << Change([](DataChart &c) { c.setMinValue(20); });
        QTest::newRow("minimum above the value") << Change([](DataChart &c) { c.setMinValue(50), c.setValue(35); });
        QTest::newRow("maximum") << Change([](DataChart &c) { c.setMaxValue(200); });
        QTest::newRow("bands") << Change([](DataChart &c) { c.setRadioValue({1, 2, 0}, {100, 120, 160}); });
        QTest::newRow("font") << Change([](DataChart &c) { c.setFont(QFont(QStringLiteral("DejaVu Sans"), 14)); });
    }
    void layersFollowChanges()
    {
        QFETCH(Change, change);
        DataChart chart, fresh;
        for (DataChart *c : {&chart, &fresh}) {
            c->resize(280, 130);
            c->setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
            configure(*c, kLoadDial);
            c->setValue(35);
        }
        const QImage before = chart.grab().toImage();
        change(chart);
        change(fresh);
        const QImage after = chart.grab().toImage();
        QVERIFY(after != before);
        QCOMPARE(after, fresh.grab().toImage());
    }
};

QTEST_MAIN(TestDataChart)
#include "tst_datachart.moc"
