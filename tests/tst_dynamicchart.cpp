#include <QtTest>

#include <QDir>
#include <QImage>
#include <QResizeEvent>

#include <cmath>
#include <limits>

#include "chartprobe.h"
#include "dynamicchart.h"

using namespace chartprobe;

namespace {

void fill(DynamicChart &chart, int curve, int count)
{
    for (int i = 1; i <= count; ++i)
        chart.addData(curve, i);
}

const QColor CurveColours[] = {QColor(255, 0, 255), QColor(0, 255, 0), QColor(0, 255, 255),
                               QColor(255, 0, 0)};

} // namespace

class TestDynamicChart : public QObject
{
    Q_OBJECT

private slots:
    void firstSampleIsDoubled();
    void trimming_data();
    void trimming();
    void unpaintedChartKeepsOneSample();
    void resizeTrimsPhaseCurvesOnly_data();
    void resizeTrimsPhaseCurvesOnly();
    void initValueKeepsDrawnCurvesUntilRepublished();
    void emptyAndShortCurves_data();
    void emptyAndShortCurves();
    void curvePlacement_data();
    void curvePlacement();
    void newestSampleOnTheRightEdge();
    void untrustedValuesStillPaint_data();
    void untrustedValuesStillPaint();
    void gridIsDottedBlackWhateverLineColour();
    void backgroundAndLabelSides();
    void timeAxisLabels_data();
    void timeAxisLabels();
    void slotsReachableByName();
    void realisticScreenshot();
};

void TestDynamicChart::firstSampleIsDoubled()
{
    DynamicChart chart;
    QVERIFY(showAt(chart, QSize(350, 350)));
    chart.addData(0, 230.0);
    QCOMPARE(chart.bufferData(0), QVector<double>({230.0, 230.0}));
    // Every curve is republished; those without samples yet are stored empty.
    const QMap<int, QVector<double>> curves = chart.curveMap();
    QCOMPARE(curves.keys(), QList<int>({0, 1, 2, 3}));
    QCOMPARE(curves.value(0), QVector<double>({230.0, 230.0}));
    QVERIFY(curves.value(1).isEmpty());

    chart.addData(0, 231.0);
    chart.addData(3, 12.5);
    QCOMPARE(chart.bufferData(0), QVector<double>({231.0, 230.0, 230.0}));
    QCOMPARE(chart.bufferData(3), QVector<double>({12.5, 12.5}));
    QCOMPARE(chart.curveMap().value(3), chart.bufferData(3));

    // Indexes outside 0..3 store nothing but do republish.
    chart.addData(4, 99.0);
    chart.addData(-1, 99.0);
    QCOMPARE(chart.curveMap().keys(), QList<int>({0, 1, 2, 3}));
    QCOMPARE(chart.bufferData(0).size(), 3);
}

void TestDynamicChart::trimming_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("maxSamples");

    QTest::newRow("500 px plot box") << 591 << 100;
    QTest::newRow("preferred size") << 350 << 59;
    QTest::newRow("minimum size") << 280 << 47;
    QTest::newRow("narrow") << 60 << 10;
}

void TestDynamicChart::trimming()
{
    QFETCH(int, width);
    QFETCH(int, maxSamples);

    DynamicChart chart;
    QVERIFY(showAt(chart, QSize(width, 300)));
    QCOMPARE(chart.maxPoints(), maxSamples);

    // The doubled first sample keeps the buffer one ahead of the pushes.
    fill(chart, 1, maxSamples - 1);
    QCOMPARE(chart.bufferData(1).size(), maxSamples);
    QCOMPARE(chart.bufferData(1).last(), 1.0);
    QCOMPARE(chart.bufferData(1).at(maxSamples - 2), 1.0);

    // Each further push drops the oldest sample.
    const int pushes = maxSamples + 5;
    for (int i = maxSamples; i <= pushes; ++i)
        chart.addData(1, i);
    const QVector<double> buffer = chart.bufferData(1);
    QCOMPARE(buffer.size(), maxSamples);
    QCOMPARE(buffer.first(), double(pushes));
    QCOMPARE(buffer.last(), double(pushes - maxSamples + 1));
    QCOMPARE(chart.curveMap().value(1), buffer);
    QVERIFY(chart.bufferData(0).isEmpty());
}

void TestDynamicChart::unpaintedChartKeepsOneSample()
{
    // Before the first paint the box has no width: each push is trimmed
    // straight away and the oldest sample stays. The resize delivered before
    // the first paint then empties the phase curves.
    DynamicChart chart;
    chart.resize(350, 350);
    QCOMPARE(chart.maxPoints(), 0);
    for (double v : {10.0, 20.0, 30.0}) {
        chart.addData(2, v);
        chart.addData(3, v);
    }
    QCOMPARE(chart.bufferData(2), QVector<double>({10.0}));
    QCOMPARE(chart.bufferData(3), QVector<double>({10.0}));
    chart.grab();
    QVERIFY(chart.bufferData(2).isEmpty());
    QCOMPARE(chart.bufferData(3), QVector<double>({10.0}));
    chart.addData(2, 40.0);
    chart.addData(3, 40.0);
    QCOMPARE(chart.bufferData(2), QVector<double>({40.0, 40.0}));
    QCOMPARE(chart.bufferData(3), QVector<double>({40.0, 10.0}));
}

void TestDynamicChart::resizeTrimsPhaseCurvesOnly_data()
{
    QTest::addColumn<int>("fromWidth");
    QTest::addColumn<int>("toWidth");
    QTest::addColumn<int>("resizeEvents");
    QTest::addColumn<int>("fillTo");
    QTest::addColumn<int>("phaseSamples");
    QTest::addColumn<int>("lastCurveSamples");

    QTest::newRow("narrower, one resize") << 591 << 350 << 1 << 100 << 99 << 100;
    QTest::newRow("narrower, three resizes") << 591 << 350 << 3 << 100 << 97 << 100;
    QTest::newRow("narrower, until it fits") << 591 << 350 << 60 << 100 << 59 << 100;
    QTest::newRow("wider keeps all") << 350 << 591 << 2 << 59 << 59 << 59;
}

void TestDynamicChart::resizeTrimsPhaseCurvesOnly()
{
    QFETCH(int, fromWidth);
    QFETCH(int, toWidth);
    QFETCH(int, resizeEvents);
    QFETCH(int, fillTo);
    QFETCH(int, phaseSamples);
    QFETCH(int, lastCurveSamples);

    DynamicChart chart;
    QVERIFY(showAt(chart, QSize(fromWidth, 300)));
    for (int k = 0; k < DynamicChart::CurveCount; ++k)
        fill(chart, k, fillTo);
    for (int k = 0; k < DynamicChart::CurveCount; ++k)
        QCOMPARE(chart.bufferData(k).size(), fillTo);

    QVERIFY(showAt(chart, QSize(toWidth, 300))); // lays the box out at the new width
    for (int i = 0; i < resizeEvents; ++i)
        sendResize(chart);
    for (int k = 0; k < 3; ++k)
        QCOMPARE(chart.bufferData(k).size(), phaseSamples);
    QCOMPARE(chart.bufferData(3).size(), lastCurveSamples);
    // What is drawn follows the buffers.
    QCOMPARE(chart.curveMap().value(0).size(), phaseSamples);
    QCOMPARE(chart.curveMap().value(3).size(), lastCurveSamples);
}

void TestDynamicChart::initValueKeepsDrawnCurvesUntilRepublished()
{
    DynamicChart chart;
    QVERIFY(showAt(chart, QSize(350, 350)));
    for (int k = 0; k < DynamicChart::CurveCount; ++k)
        fill(chart, k, 5);
    chart.initValue();
    for (int k = 0; k < DynamicChart::CurveCount; ++k)
        QVERIFY(chart.bufferData(k).isEmpty());
    QCOMPARE(chart.curveMap().value(2).size(), 6);

    chart.addData(0, 7.0);
    QCOMPARE(chart.curveMap().value(0), QVector<double>({7.0, 7.0}));
    QVERIFY(chart.curveMap().value(2).isEmpty());
    QVERIFY(!chart.grab().isNull());
}

void TestDynamicChart::emptyAndShortCurves_data()
{
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<bool>("curvePainted");

    QTest::newRow("resize before any data") << "resize" << false;
    QTest::newRow("cleared after data") << "cleared" << false;
    QTest::newRow("single sample") << "single" << false;
    QTest::newRow("keys without a pen") << "nopen" << false;
    QTest::newRow("two samples (control)") << "two" << true;
}

void TestDynamicChart::emptyAndShortCurves()
{
    QFETCH(QString, scenario);
    QFETCH(bool, curvePainted);

    DynamicChart chart;
    chart.setUseAntialiasing(false);
    // Lay out first: the resize delivered before the first paint republishes
    // the buffers over anything set directly.
    QVERIFY(showAt(chart, QSize(350, 350)));
    if (scenario == "resize") {
        sendResize(chart);
        QCOMPARE(chart.curveMap().size(), DynamicChart::CurveCount);
    } else if (scenario == "cleared") {
        for (int k = 0; k < DynamicChart::CurveCount; ++k)
            fill(chart, k, 3);
        chart.initValue();
        chart.updateVector(0);
    } else if (scenario == "single") {
        chart.setCurveData(0, {200.0});
    } else if (scenario == "nopen") {
        chart.setCurveData(4, {100.0, 200.0, 300.0});
        chart.setCurveData(-1, {100.0, 200.0, 300.0});
    } else if (scenario == "two") {
        chart.setCurveData(0, {300.0, 100.0});
    }
    const QImage image = chart.grab().toImage();
    int curvePixels = 0;
    for (const QColor &colour : CurveColours)
        curvePixels += countColour(image, colour, image.rect());
    QCOMPARE(curvePixels > 0, curvePainted);
}

void TestDynamicChart::curvePlacement_data()
{
    QTest::addColumn<int>("curve");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("heightFraction");

    QTest::newRow("input 230 V") << 0 << 230.0 << 230.0 / 400.0;
    QTest::newRow("output at half scale") << 1 << 200.0 << 0.5;
    QTest::newRow("battery at zero") << 2 << 0.0 << 0.0;
    QTest::newRow("bypass at full scale") << 3 << 400.0 << 1.0;
    QTest::newRow("420 above the box") << 0 << 420.0 << 1.05;
}

void TestDynamicChart::curvePlacement()
{
    QFETCH(int, curve);
    QFETCH(double, value);
    QFETCH(double, heightFraction);

    const QSize size(400, 390);
    DynamicChart chart;
    chart.setUseAntialiasing(false);
    QVERIFY(showAt(chart, size));
    chart.setCurveData(curve, QVector<double>(20, value));
    const QImage image = chart.grab().toImage();
    const QRectF box = expectedPlotBox(size);
    QCOMPARE(chart.plotArea(), box);
    const double y = box.bottom() - heightFraction * box.height();
    const int x = qRound(box.right() - 40.0);
    QVERIFY2(colourNear(image, x, y, CurveColours[curve]), qPrintable(QString::number(y)));
}

void TestDynamicChart::newestSampleOnTheRightEdge()
{
    const QSize size(400, 390);
    DynamicChart chart;
    chart.setUseAntialiasing(false);
    QVERIFY(showAt(chart, size));
    for (int i = 0; i < 20; ++i)
        chart.addData(1, 100.0);
    chart.addData(1, 300.0);
    const QImage image = chart.grab().toImage();
    const QRectF box = expectedPlotBox(size);
    const QColor green = CurveColours[1];
    // The newest sample and the one before share the right edge, joined by
    // a vertical segment; older samples step 5 px to the left.
    const int right = int(box.right());
    const auto yOf = [&](double v) { return box.bottom() - box.height() * v / 400.0; };
    QVERIFY(colourNear(image, right - 1, yOf(200.0), green) || colourNear(image, right, yOf(200.0), green)
            || colourNear(image, right + 1, yOf(200.0), green));
    QVERIFY(colourNear(image, qRound(box.right() - 50.0), yOf(100.0), green));
    QVERIFY(!colourNear(image, qRound(box.right() - 50.0), yOf(300.0), green));
}

void TestDynamicChart::untrustedValuesStillPaint_data()
{
    QTest::addColumn<double>("bad");

    QTest::newRow("-1 read as unsigned, scaled") << 429496729.5;
    QTest::newRow("-1 read as unsigned") << 4294967295.0;
    QTest::newRow("huge negative") << -1e300;
    QTest::newRow("not a number") << std::nan("");
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity();
}

void TestDynamicChart::untrustedValuesStillPaint()
{
    QFETCH(double, bad);

    const QSize size(400, 390);
    DynamicChart chart;
    chart.setUseAntialiasing(false);
    QVERIFY(showAt(chart, size));
    for (int i = 0; i < 70; ++i)
        chart.addData(0, i == 40 ? bad : 200.0);
    const QImage image = chart.grab().toImage();
    // The sane samples on both sides of the bad one are still drawn.
    const QRectF box = expectedPlotBox(size);
    const double y = box.bottom() - 0.5 * box.height();
    QVERIFY(colourNear(image, qRound(box.right() - 50.0), y, CurveColours[0]));
    QVERIFY(colourNear(image, qRound(box.right() - 300.0), y, CurveColours[0]));
}

void TestDynamicChart::gridIsDottedBlackWhateverLineColour()
{
    const QSize size(350, 350);
    DynamicChart chart;
    chart.setUseAntialiasing(false);
    chart.setHorizontalLineColor(Qt::red);
    QCOMPARE(chart.lineColor(), QColor(Qt::red));
    QVERIFY(showAt(chart, size));
    const QImage image = chart.grab().toImage();
    const QRectF box = expectedPlotBox(size);
    const QRect inner = box.toRect().adjusted(10, 10, -10, -10);
    QCOMPARE(countColour(image, Qt::red, image.rect()), 0);
    const double step = box.height() / 10.0;
    for (int k = 1; k < 10; ++k) {
        const int y = qRound(box.top() + k * step);
        int black = 0;
        for (int dy = -1; dy <= 1; ++dy)
            black = qMax(black, countColour(image, Qt::black, QRect(inner.left(), y + dy, inner.width(), 1)));
        // Dotted: black dots with gaps of background between them.
        QVERIFY2(black > inner.width() / 5 && black < inner.width() * 3 / 4, qPrintable(QString::number(black)));
    }
}

void TestDynamicChart::backgroundAndLabelSides()
{
    const QSize size(350, 350);
    DynamicChart chart;
    QVERIFY(showAt(chart, size));
    const QImage image = chart.grab().toImage();
    QCOMPARE(image.pixelColor(2, 2), QColor(250, 250, 250));
    const QRect box = expectedPlotBox(size).toRect();
    // Value labels on the left only.
    QVERIFY(countDark(image, QRect(0, box.top(), box.left() - 2, box.height())) > 50);
    QCOMPARE(countDark(image, QRect(box.right() + 3, box.top(), size.width(), box.height())), 0);
    // Time labels below the box.
    QVERIFY(countDark(image, QRect(box.left(), box.bottom() + 7, box.width(), 13)) > 50);
}

void TestDynamicChart::timeAxisLabels_data()
{
    QTest::addColumn<QTime>("now");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("fifth");
    QTest::addColumn<QString>("last");

    QTest::newRow("noon") << QTime(12, 0, 0) << "11:59:20" << "12:00:00" << "12:01:00";
    QTest::newRow("before midnight") << QTime(23, 59, 30) << "23:58:50" << "23:59:30" << "00:00:30";
    QTest::newRow("after midnight") << QTime(0, 0, 10) << "23:59:30" << "00:00:10" << "00:01:10";
    QTest::newRow("milliseconds dropped") << QTime(8, 15, 42, 999) << "08:15:02" << "08:15:42" << "08:16:42";
}

void TestDynamicChart::timeAxisLabels()
{
    QFETCH(QTime, now);
    QFETCH(QString, first);
    QFETCH(QString, fifth);
    QFETCH(QString, last);

    const QStringList labels = TrendChart::timeAxisLabels(QDateTime(QDate(2024, 3, 1), now));
    QCOMPARE(labels.size(), 11);
    QCOMPARE(labels.first(), first);
    QCOMPARE(labels.at(4), fifth);
    QCOMPARE(labels.last(), last);
    for (int i = 1; i < labels.size(); ++i) {
        const int step = QTime::fromString(labels.at(i - 1), "hh:mm:ss").secsTo(QTime::fromString(labels.at(i), "hh:mm:ss"));
        QVERIFY(step == 10 || step == 10 - 86400);
    }
}

void TestDynamicChart::slotsReachableByName()
{
    DynamicChart chart;
    const QMetaObject *meta = chart.metaObject();
    for (const char *slot : {"setUseAntialiasing(bool)", "getUseAntialiasing()", "setHorizontalLineColor(QColor)"})
        QVERIFY2(meta->indexOfSlot(slot) >= meta->methodOffset(), slot);
    QVERIFY(QMetaObject::invokeMethod(&chart, "setUseAntialiasing", Q_ARG(bool, false)));
    bool antialiased = true;
    QVERIFY(QMetaObject::invokeMethod(&chart, "getUseAntialiasing", Q_RETURN_ARG(bool, antialiased)));
    QVERIFY(!antialiased);
}

void TestDynamicChart::realisticScreenshot()
{
    // Mains at 230 V with a slow ripple, a regulated output, the battery
    // string at 54.6 V and the bypass following the input. Rendered with a
    // desktop-sized font (the offscreen default is 12 pt at 100 dpi).
    DynamicChart chart;
    chart.setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    QVERIFY(showAt(chart, QSize(800, 380)));
    for (int i = 0; i < 200; ++i) {
        chart.addData(0, 230.0 + 3.0 * std::sin(i / 6.0));
        chart.addData(1, 220.0);
        chart.addData(2, 54.6);
        chart.addData(3, 229.0 + 3.0 * std::sin(i / 6.0 + 0.4));
    }
    QCOMPARE(chart.bufferData(0).size(), chart.maxPoints());
    const QImage image = chart.grab().toImage();
    int greenish = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            greenish += c.green() > 200 && c.green() - qMax(c.red(), c.blue()) > 60;
        }
    QVERIFY(greenish > chart.plotArea().width() * 0.9);

    if (qgetenv("ORVEK_WRITE_SCREENSHOTS") == "1") {
        const QDir dir(qEnvironmentVariable("ORVEK_SOURCE_DIR", QStringLiteral(".")) + "/docs/screenshots");
        QVERIFY(QDir().mkpath(dir.path()));
        QVERIFY(image.save(dir.filePath(QStringLiteral("dynamicchart.png"))));
    }
}

QTEST_MAIN(TestDynamicChart)
#include "tst_dynamicchart.moc"
