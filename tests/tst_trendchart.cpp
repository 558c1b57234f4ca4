// The trend curve widgets of the graphic pages: the four-curve DynamicChart and the six-curve ThreeDynamicChart
// share sample buffers, trimming, painting and a cached layer; rows name the widget they run on.
#include <QtTest>

#include <functional>
#include <memory>

#include "dynamicchart.h"
#include "threedynamicchart.h"

using Change = std::function<void(TrendChart &)>;
Q_DECLARE_METATYPE(Change)

namespace {

// Shown off screen and, unless `painted` is false, painted once so that the plot box is laid out.
// The host reaches the settings through the meta-object system.
std::unique_ptr<TrendChart> makeChart(bool three, const QSize &size, bool antialiased = true, bool painted = true)
{
    std::unique_ptr<TrendChart> chart(three ? static_cast<TrendChart *>(new ThreeDynamicChart) : new DynamicChart);
    QMetaObject::invokeMethod(chart.get(), "setUseAntialiasing", Q_ARG(bool, antialiased));
    chart->resize(size);
    chart->show();
    if (painted && QTest::qWaitForWindowExposed(chart.get()))
        chart->grab();
    return chart;
}

int countColour(const QImage &image, const QColor &colour, const QRect &area)
{
    int count = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            count += image.pixelColor(x, y) == colour;
    return count;
}

void fill(TrendChart &chart, int curve, int first, int last)
{
    for (int i = first; i <= last; ++i)
        chart.addData(curve, i);
}

QImage plotImage(TrendChart &chart) // above the time axis, which follows the wall clock
{
    return chart.grab().toImage().copy(0, 0, chart.width(), int(chart.plotArea().bottom()));
}

} // namespace

class TestTrendChart : public QObject
{
    Q_OBJECT
private slots:
    void trimming_data()
    {
        QTest::addColumn<bool>("three");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("curve");
        QTest::addColumn<int>("maxSamples");
        QTest::newRow("dynamic, 500 px plot box") << false << 591 << 1 << 100;
        QTest::newRow("dynamic, narrow") << false << 60 << 3 << 10;
        QTest::newRow("three, percent curve") << true << 591 << 5 << 100;
    }
    void trimming()
    {
        QFETCH(bool, three);
        QFETCH(int, width);
        QFETCH(int, curve);
        QFETCH(int, maxSamples);
        auto chart = makeChart(three, QSize(width, 300));
        QCOMPARE(chart->maxPoints(), maxSamples);
        // Indexes outside the curves store nothing but do republish every curve.
        chart->addData(chart->curveCount(), 99.0);
        chart->addData(-1, 99.0);
        QCOMPARE(chart->curveMap().size(), chart->curveCount());
        // The first sample is doubled: the buffer stays one ahead of the pushes.
        fill(*chart, curve, 1, maxSamples - 1);
        QCOMPARE(chart->bufferData(curve).mid(maxSamples - 2), QVector<double>({1.0, 1.0}));
        // Each further push drops the oldest sample.
        fill(*chart, curve, maxSamples, maxSamples + 5);
        const QVector<double> buffer = chart->bufferData(curve);
        QCOMPARE(buffer.size(), maxSamples);
        QCOMPARE(buffer.first(), double(maxSamples + 5));
        QCOMPARE(buffer.last(), 6.0);
        QCOMPARE(chart->curveMap().value(curve), buffer);
        // In a narrower box each resize event trims the phase curves 0 to 2 by one sample, in the
        // buffers and in what is drawn; the others wait for their own samples.
        for (int k = 0; k < chart->curveCount(); ++k)
            fill(*chart, k, 1, maxSamples);
        chart->resize(width * 2 / 3, 300);
        chart->grab(); // lays the box out at the new width
        QResizeEvent event(chart->size(), chart->size());
        for (int i = 0; i < 2; ++i)
            QCoreApplication::sendEvent(chart.get(), &event);
        for (int k = 0; k < chart->curveCount(); ++k) {
            QCOMPARE(chart->bufferData(k).size(), k < 3 ? maxSamples - 2 : maxSamples);
            QCOMPARE(chart->curveMap().value(k).size(), k < 3 ? maxSamples - 2 : maxSamples);
        }
    }
    void curvesAndGrid_data()
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
        // Unsigned -1, -1e300, NaN and infinity amid sane samples: both sides are still drawn.
        const QVector<double> untrusted =
            at230.mid(0, 40) + QVector<double>{4294967295.0, -1e300, qQNaN(), qInf()} + at230.mid(44);
        QTest::newRow("dynamic, untrusted values") << false << 0 << untrusted << 230.0 / 400.0;
        // One sample makes no segment (an empty curve is painted before any data).
        QTest::newRow("three, single sample draws nothing") << true << 0 << QVector<double>{200.0} << 0.5;
    }
    void curvesAndGrid()
    {
        QFETCH(bool, three);
        QFETCH(int, curve);
        QFETCH(QVector<double>, samples);
        QFETCH(double, heightFraction);
        auto chart = makeChart(three, QSize(400, 390), false);
        const QColor lineColour(1, 2, 3);
        QVERIFY(QMetaObject::invokeMethod(chart.get(), "setHorizontalLineColor", Q_ARG(QColor, lineColour)));
        chart->setCurveData(curve, samples);
        const QImage image = chart->grab().toImage();
        const QRectF box(400 / 13.0, 390 / 13.0, 400 - 800 / 13.0, 390 - 780 / 13.0); // margins of 1/13
        QCOMPARE(chart->plotArea(), box);
        // The grid stays black and dotted whatever the line colour says.
        QCOMPARE(countColour(image, lineColour, image.rect()), 0);
        const QRect gridRow = QRectF(box.left() + 10, box.top() + box.height() / 10 - 1, box.width() - 20, 3).toRect();
        const int black = countColour(image, Qt::black, gridRow);
        QVERIFY2(black > gridRow.width() / 5 && black < gridRow.width() * 3 / 4, qPrintable(QString::number(black)));
        // Each curve has its own pen, and only this one shows.
        int curvePixels = 0;
        for (const QPen &pen : chart->curvePens())
            curvePixels += countColour(image, pen.color(), image.rect());
        const QColor colour = chart->curvePens().at(curve).color();
        QCOMPARE(curvePixels, samples.size() < 2 ? 0 : countColour(image, colour, image.rect()));
        // Aliased lines round fractional rows either way.
        const int y = qRound(box.bottom() - heightFraction * box.height());
        for (double fromRight : {40.0, 300.0})
            QCOMPARE(countColour(image, colour, QRect(qRound(box.right() - fromRight), y - 1, 1, 3)) > 0,
                     samples.size() > 1);
        chart->resize(1, 1);
        chart->grab(); // tiny sizes lay out and paint
    }
    void timeAxisLabels()
    {
        // Eleven labels 10 s apart, over midnight; milliseconds are dropped, not rounded.
        const QStringList labels = TrendChart::timeAxisLabels(QDateTime(QDate(2024, 3, 1), QTime(23, 59, 30, 999)));
        QCOMPARE(labels.size(), 11);
        QCOMPARE(labels.at(0) + ' ' + labels.at(4) + ' ' + labels.at(10), QStringLiteral("23:58:50 23:59:30 00:00:30"));
    }
    // A chart painted before a change looks afterwards like one that was given the same calls but
    // never painted in between.
    void layersFollowChanges_data()
    {
        QTest::addColumn<bool>("three");
        QTest::addColumn<Change>("change");
        const Change aliased = [](TrendChart &c) {
            QMetaObject::invokeMethod(&c, "setUseAntialiasing", Q_ARG(bool, false));
        };
        QTest::newRow("dynamic, font") << false << Change([](TrendChart &c) { c.setFont(QFont("DejaVu Sans", 16)); });
        QTest::newRow("three, antialiasing off") << true << aliased;
        QTest::newRow("dynamic, resized") << false << Change([](TrendChart &c) { c.resize(300, 260); });
        QTest::newRow("three, new samples") << true << Change([](TrendChart &c) { c.setCurveData(4, {20, 30, 40}); });
    }
    void layersFollowChanges()
    {
        QFETCH(bool, three);
        QFETCH(Change, change);
        auto chart = makeChart(three, QSize(400, 390));
        auto fresh = makeChart(three, QSize(400, 390), true, false);
        for (TrendChart *c : {chart.get(), fresh.get()})
            c->setCurveData(0, QVector<double>(40, 200.0));
        const QImage before = plotImage(*chart);
        change(*chart);
        change(*fresh);
        const QImage after = plotImage(*chart);
        QVERIFY(after != before);
        QCOMPARE(after, plotImage(*fresh));
    }
};

QTEST_MAIN(TestTrendChart)
#include "tst_trendchart.moc"
