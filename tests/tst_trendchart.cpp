// The trend curve widgets of the graphic pages: the four-curve DynamicChart
// and the six-curve ThreeDynamicChart share sample buffers, trimming and
// painting; rows name the widget they run on.
#include <QtTest>

#include <QImage>

#include <cmath>
#include <limits>
#include <memory>

#include "chartscreenshots.h"
#include "dynamicchart.h"
#include "threedynamicchart.h"

namespace {

const QColor DynamicColours[] = {QColor(255, 0, 255), QColor(0, 255, 0), QColor(0, 255, 255), QColor(255, 0, 0)};
const QColor ThreeColours[] = {QColor(255, 255, 0), QColor(0, 255, 0),  QColor(255, 0, 0),
                               QColor(255, 221, 26), QColor(85, 170, 0), QColor(170, 0, 0)};
const QSize kPlotSize(400, 390);

std::unique_ptr<TrendChart> makeChart(bool three, bool antialiased = true)
{
    std::unique_ptr<TrendChart> chart(three ? static_cast<TrendChart *>(new ThreeDynamicChart)
                                            : static_cast<TrendChart *>(new DynamicChart));
    // The host reaches the settings through the meta-object system.
    QMetaObject::invokeMethod(chart.get(), "setUseAntialiasing", Q_ARG(bool, antialiased));
    return chart;
}

// The plot box as the trend charts lay it out: margins of 1/13 of each side.
QRectF expectedPlotBox(const QSize &size)
{
    const double x = size.width() / 13.0;
    const double y = size.height() / 13.0;
    return QRectF(x, y, size.width() - 2 * x, size.height() - 2 * y);
}

int countColour(const QImage &image, const QColor &colour, const QRect &area)
{
    int count = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            count += image.pixelColor(x, y) == colour;
    return count;
}

// Whether `colour` shows at (x, y) or one row above or below (aliased lines
// round fractional rows either way).
bool colourNear(const QImage &image, int x, double y, const QColor &colour)
{
    return countColour(image, colour, QRect(x, qRound(y) - 1, 1, 3)) > 0;
}

int curvePixels(const QImage &image, bool three)
{
    int count = 0;
    for (int k = 0; k < (three ? 6 : 4); ++k)
        count += countColour(image, three ? ThreeColours[k] : DynamicColours[k], image.rect());
    return count;
}

void fill(TrendChart &chart, int curve, int count)
{
    for (int i = 1; i <= count; ++i)
        chart.addData(curve, i);
}

} // namespace

class TestTrendChart : public QObject
{
    Q_OBJECT

private slots:
    void trimming_data();
    void trimming();
    void resizeTrimsPhaseCurvesOnly_data();
    void resizeTrimsPhaseCurvesOnly();
    void curvePlacementAndPens_data();
    void curvePlacementAndPens();
    void gridAndTimeAxis();
    void screenshots_data();
    void screenshots();
};

void TestTrendChart::trimming_data()
{
    QTest::addColumn<bool>("three");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("curve");
    QTest::addColumn<int>("maxSamples");

    QTest::newRow("dynamic, 500 px plot box") << false << 591 << 1 << 100;
    QTest::newRow("dynamic, narrow") << false << 60 << 3 << 10;
    QTest::newRow("three, percent curve") << true << 591 << 5 << 100;
}

void TestTrendChart::trimming()
{
    QFETCH(bool, three);
    QFETCH(int, width);
    QFETCH(int, curve);
    QFETCH(int, maxSamples);

    auto chart = makeChart(three);
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), QSize(width, 300)));
    QCOMPARE(chart->maxPoints(), maxSamples);
    // Indexes outside the curves store nothing but do republish every curve.
    chart->addData(chart->curveCount(), 99.0);
    chart->addData(-1, 99.0);
    QCOMPARE(chart->curveMap().size(), chart->curveCount());
    // The first sample is doubled: the buffer stays one ahead of the pushes.
    fill(*chart, curve, maxSamples - 1);
    QCOMPARE(chart->bufferData(curve).size(), maxSamples);
    QCOMPARE(chart->bufferData(curve).mid(maxSamples - 2), QVector<double>({1.0, 1.0}));
    // Each further push drops the oldest sample.
    const int pushes = maxSamples + 5;
    for (int i = maxSamples; i <= pushes; ++i)
        chart->addData(curve, i);
    const QVector<double> buffer = chart->bufferData(curve);
    QCOMPARE(buffer.size(), maxSamples);
    QCOMPARE(buffer.first(), double(pushes));
    QCOMPARE(buffer.last(), double(pushes - maxSamples + 1));
    QCOMPARE(chart->curveMap().value(curve), buffer);
}

void TestTrendChart::resizeTrimsPhaseCurvesOnly_data()
{
    QTest::addColumn<bool>("three");
    QTest::addColumn<int>("resizeEvents");
    QTest::addColumn<int>("phaseSamples");

    // One sample per resize event, down to what the narrower box holds.
    QTest::newRow("dynamic, three resizes") << false << 3 << 97;
    QTest::newRow("dynamic, until it fits") << false << 60 << 59;
    QTest::newRow("three, one resize") << true << 1 << 99;
}

void TestTrendChart::resizeTrimsPhaseCurvesOnly()
{
    QFETCH(bool, three);
    QFETCH(int, resizeEvents);
    QFETCH(int, phaseSamples);

    auto chart = makeChart(three);
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), QSize(591, 300)));
    for (int k = 0; k < chart->curveCount(); ++k)
        fill(*chart, k, 100);
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), QSize(350, 300))); // lays the box out at the new width
    for (int i = 0; i < resizeEvents; ++i) {
        QResizeEvent event(chart->size(), chart->size());
        QCoreApplication::sendEvent(chart.get(), &event);
    }
    // Curves 0 to 2 are trimmed, in the buffers and in what is drawn; the others keep everything.
    for (int k = 0; k < chart->curveCount(); ++k) {
        QCOMPARE(chart->bufferData(k).size(), k < 3 ? phaseSamples : 100);
        QCOMPARE(chart->curveMap().value(k).size(), k < 3 ? phaseSamples : 100);
    }
}

void TestTrendChart::curvePlacementAndPens_data()
{
    QTest::addColumn<bool>("three");
    QTest::addColumn<int>("curve");
    QTest::addColumn<QVector<double>>("samples");
    QTest::addColumn<double>("heightFraction");

    const QVector<double> at230(70, 230.0), at50(70, 50.0);
    QTest::newRow("dynamic, input 230 V on 400") << false << 0 << at230 << 230.0 / 400.0;
    QTest::newRow("dynamic, 420 above the box") << false << 3 << QVector<double>(70, 420.0) << 1.05;
    // Phase curves use the 0-400 scale, load curves the 0-100 scale.
    QTest::newRow("three, 50 on phase curve 1") << true << 1 << at50 << 0.125;
    QTest::newRow("three, 50 on load curve 4") << true << 4 << at50 << 0.5;
    // -1 read as unsigned, -1e300, NaN and infinity amid sane samples: the
    // samples on both sides are still drawn.
    QVector<double> untrusted = at230;
    untrusted.replace(40, 4294967295.0);
    untrusted.replace(41, -1e300);
    untrusted.replace(42, std::nan(""));
    untrusted.replace(43, std::numeric_limits<double>::infinity());
    QTest::newRow("dynamic, untrusted values") << false << 0 << untrusted << 230.0 / 400.0;
    // One sample makes no segment (and an empty curve must not be read at all:
    // every chart here is painted before it has data).
    QTest::newRow("three, single sample draws nothing") << true << 0 << QVector<double>{200.0} << 0.5;
}

void TestTrendChart::curvePlacementAndPens()
{
    QFETCH(bool, three);
    QFETCH(int, curve);
    QFETCH(QVector<double>, samples);
    QFETCH(double, heightFraction);

    auto chart = makeChart(three, false);
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), kPlotSize));
    chart->setCurveData(curve, samples);
    const QImage image = chart->grab().toImage();
    const QRectF box = expectedPlotBox(kPlotSize);
    QCOMPARE(chart->plotArea(), box);
    const QColor colour = three ? ThreeColours[curve] : DynamicColours[curve];
    if (samples.size() < 2) {
        QCOMPARE(curvePixels(image, three), 0);
    } else {
        const double y = box.bottom() - heightFraction * box.height();
        for (double fromRight : {40.0, 300.0})
            QVERIFY2(colourNear(image, qRound(box.right() - fromRight), y, colour), qPrintable(QString::number(y)));
        // No other curve colour shows: each key has its own pen.
        QCOMPARE(curvePixels(image, three), countColour(image, colour, image.rect()));
    }
    // Tiny sizes lay out and paint without failing.
    chart->resize(1, 1);
    QVERIFY(!chart->grab().isNull());
}

void TestTrendChart::gridAndTimeAxis()
{
    const QSize size(350, 350);
    auto chart = makeChart(false, false);
    QVERIFY(QMetaObject::invokeMethod(chart.get(), "setHorizontalLineColor", Q_ARG(QColor, QColor(Qt::red))));
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), size));
    const QImage image = chart->grab().toImage();
    // The grid stays black and dotted whatever the line colour says.
    QCOMPARE(countColour(image, Qt::red, image.rect()), 0);
    const QRectF box = expectedPlotBox(size);
    const QRect inner = box.toRect().adjusted(10, 10, -10, -10);
    const int y = qRound(box.top() + box.height() / 2);
    const int black = countColour(image, Qt::black, QRect(inner.left(), y - 1, inner.width(), 3));
    QVERIFY2(black > inner.width() / 5 && black < inner.width() * 3 / 4, qPrintable(QString::number(black)));

    // Eleven time labels 10 s apart, over midnight; milliseconds are dropped, not rounded.
    const QStringList labels = TrendChart::timeAxisLabels(QDateTime(QDate(2024, 3, 1), QTime(23, 59, 30, 999)));
    QCOMPARE(labels.size(), 11);
    QCOMPARE(labels.at(0) + ' ' + labels.at(4) + ' ' + labels.at(10), QStringLiteral("23:58:50 23:59:30 00:00:30"));
}

void TestTrendChart::screenshots_data()
{
    QTest::addColumn<bool>("three");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("dynamic") << false << "dynamicchart.png";
    QTest::newRow("three") << true << "threedynamicchart.png";
}

void TestTrendChart::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshots");
    QFETCH(bool, three);
    QFETCH(QString, fileName);
    auto chart = makeChart(three);
    chart->setFont(QFont(QStringLiteral("DejaVu Sans"), 9)); // desktop-sized, as on a real page
    QVERIFY(ChartScreenshots::showOffscreen(chart.get(), QSize(800, 380)));
    for (int i = 0; i < 200; ++i) {
        if (three) {
            // Three phases at 230 V, load at about 35 % on each phase.
            for (int phase = 0; phase < 3; ++phase) {
                chart->addData(phase, 230.0 + 2.0 * std::sin(i / 6.0 + 2.1 * phase));
                chart->addData(3 + phase, 35.0 + 4.0 * phase + 1.5 * std::sin(i / 9.0 + phase));
            }
        } else {
            // Mains with a slow ripple, a regulated output, the battery string
            // at 54.6 V and the bypass following the input.
            chart->addData(0, 230.0 + 3.0 * std::sin(i / 6.0));
            chart->addData(1, 220.0);
            chart->addData(2, 54.6);
            chart->addData(3, 229.0 + 3.0 * std::sin(i / 6.0 + 0.4));
        }
    }
    QVERIFY(!ChartScreenshots::save(chart.get(), fileName).isEmpty());
}

QTEST_MAIN(TestTrendChart)
#include "tst_trendchart.moc"
