// Paint cost of the chart widgets, rendered offscreen into an image the way
// the backing store would paint them. Trend charts are measured with every
// buffer full (one sample per 5 pixels of plot width).

#include <QtTest>

#include <QImage>
#include <QPainter>

#include <cmath>

#include "datachart.h"
#include "dynamicchart.h"
#include "threedynamicchart.h"

namespace {

bool showAt(QWidget &widget, const QSize &size)
{
    widget.resize(size);
    widget.show();
    return QTest::qWaitForWindowExposed(&widget);
}

void fillAll(TrendChart &chart)
{
    const int samples = chart.maxPoints() + 10;
    for (int i = 0; i < samples; ++i)
        for (int k = 0; k < chart.curveCount(); ++k)
            chart.addData(k, 40.0 + 60.0 * k + 3.0 * std::sin(i / 6.0 + k));
}

void renderOnce(QWidget &widget, QImage &image)
{
    QPainter painter(&image);
    widget.render(&painter);
}

} // namespace

class BenchCharts : public QObject
{
    Q_OBJECT

private slots:
    void dataChartPaint_data();
    void dataChartPaint();
    void dynamicChartPaint_data();
    void dynamicChartPaint();
    void threeDynamicChartPaint_data();
    void threeDynamicChartPaint();
    void dynamicChartAddDataFull();
};

void BenchCharts::dataChartPaint_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("gauge 280x130") << QSize(280, 130);
    QTest::newRow("gauge 150x120") << QSize(150, 120);
    QTest::newRow("gauge 500x250") << QSize(500, 250);
}

void BenchCharts::dataChartPaint()
{
    QFETCH(QSize, size);
    DataChart chart;
    chart.setMinValue(0);
    chart.setMaxValue(160);
    chart.setRadioValue({0, 1, 2}, {100, 120, 160});
    QVERIFY(showAt(chart, size));
    chart.setValue(35.0);
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QBENCHMARK {
        renderOnce(chart, image);
    }
}

void BenchCharts::dynamicChartPaint_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("antialiased");
    QTest::newRow("350x350 antialiased") << QSize(350, 350) << true;
    QTest::newRow("800x380 antialiased") << QSize(800, 380) << true;
    QTest::newRow("800x380 aliased") << QSize(800, 380) << false;
}

void BenchCharts::dynamicChartPaint()
{
    QFETCH(QSize, size);
    QFETCH(bool, antialiased);
    DynamicChart chart;
    chart.setUseAntialiasing(antialiased);
    QVERIFY(showAt(chart, size));
    chart.grab();
    fillAll(chart);
    QCOMPARE(chart.bufferData(3).size(), chart.maxPoints());
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QBENCHMARK {
        renderOnce(chart, image);
    }
}

void BenchCharts::threeDynamicChartPaint_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("350x350") << QSize(350, 350);
    QTest::newRow("800x380") << QSize(800, 380);
}

void BenchCharts::threeDynamicChartPaint()
{
    QFETCH(QSize, size);
    ThreeDynamicChart chart;
    QVERIFY(showAt(chart, size));
    chart.grab();
    fillAll(chart);
    QCOMPARE(chart.bufferData(5).size(), chart.maxPoints());
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    QBENCHMARK {
        renderOnce(chart, image);
    }
}

void BenchCharts::dynamicChartAddDataFull()
{
    // One refresh of the single-phase page: a sample for each of the four
    // curves into full buffers.
    DynamicChart chart;
    QVERIFY(showAt(chart, QSize(800, 380)));
    chart.grab();
    fillAll(chart);
    double v = 230.0;
    QBENCHMARK {
        for (int k = 0; k < DynamicChart::CurveCount; ++k)
            chart.addData(k, v);
        v = v > 240.0 ? 220.0 : v + 0.5;
    }
}

QTEST_MAIN(BenchCharts)
#include "bench_charts.moc"
