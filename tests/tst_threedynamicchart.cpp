#include <QtTest>

#include <QDir>
#include <QImage>

#include <cmath>

#include "chartprobe.h"
#include "threedynamicchart.h"

using namespace chartprobe;

namespace {

const QColor CurveColours[] = {QColor(255, 255, 0), QColor(0, 255, 0),  QColor(255, 0, 0),
                               QColor(255, 221, 26), QColor(85, 170, 0), QColor(170, 0, 0)};

void fill(ThreeDynamicChart &chart, int curve, int count)
{
    for (int i = 1; i <= count; ++i)
        chart.addData(curve, i);
}

int curvePixels(const QImage &image)
{
    int count = 0;
    for (const QColor &colour : CurveColours)
        count += countColour(image, colour, image.rect());
    return count;
}

} // namespace

class TestThreeDynamicChart : public QObject
{
    Q_OBJECT

private slots:
    void curvePlacementAndPens_data();
    void curvePlacementAndPens();
    void sixBuffers_data();
    void sixBuffers();
    void trimmingAtWidth_data();
    void trimmingAtWidth();
    void resizeTrimsPhaseCurvesOnly_data();
    void resizeTrimsPhaseCurvesOnly();
    void emptyCurvesPaintNothing();
    void backgroundAndLabelsOnBothSides();
    void slotsReachableByName();
    void realisticScreenshot();
};

void TestThreeDynamicChart::curvePlacementAndPens_data()
{
    QTest::addColumn<int>("curve");
    QTest::addColumn<double>("value");
    QTest::addColumn<double>("heightFraction");

    QTest::newRow("phase R 230 V on 400") << 0 << 230.0 << 230.0 / 400.0;
    QTest::newRow("50 on curve 1 at an eighth") << 1 << 50.0 << 0.125;
    QTest::newRow("phase T at full scale") << 2 << 400.0 << 1.0;
    QTest::newRow("load 35 % on 100") << 3 << 35.0 << 0.35;
    QTest::newRow("50 on curve 4 half way") << 4 << 50.0 << 0.5;
    QTest::newRow("100 on curve 5 at the top") << 5 << 100.0 << 1.0;
    QTest::newRow("0 on curve 5 at the bottom") << 5 << 0.0 << 0.0;
}

void TestThreeDynamicChart::curvePlacementAndPens()
{
    QFETCH(int, curve);
    QFETCH(double, value);
    QFETCH(double, heightFraction);

    const QSize size(400, 390);
    ThreeDynamicChart chart;
    chart.setUseAntialiasing(false);
    QVERIFY(showAt(chart, size));
    chart.setCurveData(curve, QVector<double>(20, value));
    const QImage image = chart.grab().toImage();
    const QRectF box = expectedPlotBox(size);
    const double y = box.bottom() - heightFraction * box.height();
    QVERIFY2(colourNear(image, qRound(box.right() - 40.0), y, CurveColours[curve]), qPrintable(QString::number(y)));
    // No other curve colour shows: each key has its own pen.
    QCOMPARE(curvePixels(image), countColour(image, CurveColours[curve], image.rect()));
}

void TestThreeDynamicChart::sixBuffers_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("stored");

    QTest::newRow("first phase curve") << 0 << true;
    QTest::newRow("last phase curve") << 2 << true;
    QTest::newRow("first percent curve") << 3 << true;
    QTest::newRow("last percent curve") << 5 << true;
    QTest::newRow("past the last") << 6 << false;
    QTest::newRow("negative") << -1 << false;
}

void TestThreeDynamicChart::sixBuffers()
{
    QFETCH(int, index);
    QFETCH(bool, stored);

    ThreeDynamicChart chart;
    QVERIFY(showAt(chart, QSize(350, 350)));
    chart.addData(index, 49.9);
    chart.addData(index, 50.1);
    const QMap<int, QVector<double>> curves = chart.curveMap();
    QCOMPARE(curves.keys(), QList<int>({0, 1, 2, 3, 4, 5}));
    for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k) {
        const QVector<double> expected = (stored && k == index) ? QVector<double>{50.1, 49.9, 49.9}
                                                                 : QVector<double>();
        QCOMPARE(chart.bufferData(k), expected);
        QCOMPARE(curves.value(k), expected);
    }
    chart.initValue();
    for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k)
        QVERIFY(chart.bufferData(k).isEmpty());
}

void TestThreeDynamicChart::trimmingAtWidth_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("curve");
    QTest::addColumn<int>("maxSamples");

    QTest::newRow("500 px box, phase curve") << 591 << 0 << 100;
    QTest::newRow("500 px box, percent curve") << 591 << 5 << 100;
    QTest::newRow("preferred size") << 350 << 4 << 59;
}

void TestThreeDynamicChart::trimmingAtWidth()
{
    QFETCH(int, width);
    QFETCH(int, curve);
    QFETCH(int, maxSamples);

    ThreeDynamicChart chart;
    QVERIFY(showAt(chart, QSize(width, 300)));
    QCOMPARE(chart.maxPoints(), maxSamples);
    const int pushes = maxSamples + 3;
    fill(chart, curve, pushes);
    const QVector<double> buffer = chart.bufferData(curve);
    QCOMPARE(buffer.size(), maxSamples);
    QCOMPARE(buffer.first(), double(pushes));
    QCOMPARE(buffer.last(), double(pushes - maxSamples + 1));
}

void TestThreeDynamicChart::resizeTrimsPhaseCurvesOnly_data()
{
    QTest::addColumn<int>("resizeEvents");
    QTest::addColumn<int>("phaseSamples");

    QTest::newRow("one resize") << 1 << 99;
    QTest::newRow("two resizes") << 2 << 98;
}

void TestThreeDynamicChart::resizeTrimsPhaseCurvesOnly()
{
    QFETCH(int, resizeEvents);
    QFETCH(int, phaseSamples);

    ThreeDynamicChart chart;
    QVERIFY(showAt(chart, QSize(591, 300)));
    for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k)
        fill(chart, k, 100);
    QVERIFY(showAt(chart, QSize(350, 300)));
    for (int i = 0; i < resizeEvents; ++i)
        sendResize(chart);
    for (int k = 0; k < 3; ++k)
        QCOMPARE(chart.bufferData(k).size(), phaseSamples);
    for (int k = 3; k < ThreeDynamicChart::CurveCount; ++k)
        QCOMPARE(chart.bufferData(k).size(), 100);
}

void TestThreeDynamicChart::emptyCurvesPaintNothing()
{
    ThreeDynamicChart chart;
    chart.setUseAntialiasing(false);
    QVERIFY(showAt(chart, QSize(350, 350)));
    sendResize(chart); // before any data: six empty curves are stored
    const QMap<int, QVector<double>> curves = chart.curveMap();
    QCOMPARE(curves.size(), ThreeDynamicChart::CurveCount);
    for (const QVector<double> &samples : curves)
        QVERIFY(samples.isEmpty());
    QCOMPARE(curvePixels(chart.grab().toImage()), 0);

    // One sample is no line either; a second one is.
    chart.setCurveData(4, {50.0});
    QCOMPARE(curvePixels(chart.grab().toImage()), 0);
    chart.setCurveData(4, {50.0, 60.0});
    QVERIFY(curvePixels(chart.grab().toImage()) > 0);

    // Tiny sizes lay out and paint without failing.
    for (const QSize &size : {QSize(1, 1), QSize(12, 9)}) {
        chart.resize(size);
        QVERIFY(!chart.grab().isNull());
    }
}

void TestThreeDynamicChart::backgroundAndLabelsOnBothSides()
{
    const QSize size(350, 350);
    ThreeDynamicChart chart;
    QVERIFY(showAt(chart, size));
    const QImage image = chart.grab().toImage();
    QCOMPARE(image.pixelColor(2, 2), QColor(222, 237, 253));
    const QRect box = expectedPlotBox(size).toRect();
    QVERIFY(countDark(image, QRect(0, box.top(), box.left() - 2, box.height())) > 50);
    // The right labels start half their width away from the box.
    QVERIFY(countDark(image, QRect(box.right() + 3, box.top(), size.width(), box.height())) > 30);
    QCOMPARE(countDark(image, QRect(box.right() + 2, box.top() + 5, 4, box.height() - 10)), 0);
}

void TestThreeDynamicChart::slotsReachableByName()
{
    ThreeDynamicChart chart;
    const QMetaObject *meta = chart.metaObject();
    for (const char *slot : {"setUseAntialiasing(bool)", "getUseAntialiasing()", "setHorizontalLineColor(QColor)"})
        QVERIFY2(meta->indexOfSlot(slot) >= meta->methodOffset(), slot);
    QVERIFY(QMetaObject::invokeMethod(&chart, "setHorizontalLineColor", Q_ARG(QColor, QColor(Qt::blue))));
    QCOMPARE(chart.lineColor(), QColor(Qt::blue));
}

void TestThreeDynamicChart::realisticScreenshot()
{
    // Three phases at 230 V, load at 35 % on each phase, battery string full.
    ThreeDynamicChart chart;
    chart.setFont(QFont(QStringLiteral("DejaVu Sans"), 9)); // desktop-sized, as on a real page
    QVERIFY(showAt(chart, QSize(800, 380)));
    for (int i = 0; i < 200; ++i) {
        for (int phase = 0; phase < 3; ++phase) {
            chart.addData(phase, 230.0 + 2.0 * std::sin(i / 6.0 + 2.1 * phase));
            chart.addData(3 + phase, 35.0 + 4.0 * phase + 1.5 * std::sin(i / 9.0 + phase));
        }
    }
    for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k)
        QCOMPARE(chart.bufferData(k).size(), chart.maxPoints());
    const QImage image = chart.grab().toImage();
    const QRectF box = expectedPlotBox(image.size());
    // The 35 % load curve sits at about a third of the box, on the right scale.
    bool found = false;
    for (int dy = -7; dy <= 7 && !found; ++dy) {
        const QColor c = image.pixelColor(qRound(box.right() - 100), qRound(box.bottom() - 0.35 * box.height()) + dy);
        found = c.red() > 200 && c.green() > 150 && c.blue() < 150;
    }
    QVERIFY(found);

    if (qgetenv("ORVEK_WRITE_SCREENSHOTS") == "1") {
        const QDir dir(qEnvironmentVariable("ORVEK_SOURCE_DIR", QStringLiteral(".")) + "/docs/screenshots");
        QVERIFY(QDir().mkpath(dir.path()));
        QVERIFY(image.save(dir.filePath(QStringLiteral("threedynamicchart.png"))));
    }
}

QTEST_MAIN(TestThreeDynamicChart)
#include "tst_threedynamicchart.moc"
