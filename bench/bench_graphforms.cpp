// Paint cost of the single- and three-phase graphic pages rendered off screen:
// an empty page right after initialisation and a page whose trend curves are
// full, at a typical and a large window size. Also the cost of one refresh.

#include <QImage>
#include <QPainter>
#include <QtTest>

#include <functional>
#include <memory>

#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "trendchart.h"
#include "upssimulator.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// Enough refreshes to fill every curve of a wide chart.
constexpr int kFillRefreshes = 400;

struct Page
{
    std::unique_ptr<QWidget> widget;
    std::function<void(const DataPoints &)> refresh;
};

Page makePage(bool threePhase)
{
    Page page;
    if (threePhase) {
        auto *form = new RTThreeGraphForm;
        form->InitRTChartFormInfo(false);
        page.refresh = [form](const DataPoints &map) { form->RefreshRtChartInfo(map); };
        page.widget.reset(form);
    } else {
        auto *form = new RTSingleGraphForm;
        form->InitRTChartFormInfo(false);
        page.refresh = [form](const DataPoints &map) { form->RefreshRtSingleChartInfo(map); };
        page.widget.reset(form);
    }
    return page;
}

DataPoints profile(bool threePhase)
{
    return UpsSimulator::profileImage(threePhase ? UpsSimulator::Profile::Three : UpsSimulator::Profile::Single);
}

// Voltages and loads varied a little so that curves are not flat lines.
constexpr int kVariants = 7;

DataPoints sample(DataPoints map, int step)
{
    const int wobble = step % kVariants - 3;
    for (int id : {4, 9, 10, 11, 27, 28, 29, 44, 45, 46})
        map[id] = map.value(id).toInt() + wobble;
    for (int id : {39, 40, 41})
        map[id] = map.value(id).toInt() + wobble / 2;
    return map;
}

} // namespace

class BenchGraphForms : public QObject
{
    Q_OBJECT

private slots:
    void paint_data();
    void paint();
    void refresh_data();
    void refresh();
};

void BenchGraphForms::paint_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("fullCurves");

    for (bool threePhase : {false, true}) {
        const char *name = threePhase ? "three" : "single";
        for (const QSize &size : {QSize(900, 680), QSize(1600, 1000)}) {
            QTest::addRow("%s %dx%d empty", name, size.width(), size.height()) << threePhase << size << false;
            QTest::addRow("%s %dx%d full curves", name, size.width(), size.height()) << threePhase << size << true;
        }
    }
}

void BenchGraphForms::paint()
{
    QFETCH(bool, threePhase);
    QFETCH(QSize, size);
    QFETCH(bool, fullCurves);

    Page page = makePage(threePhase);
    page.widget->resize(size);
    QImage target(page.widget->size(), QImage::Format_ARGB32_Premultiplied);
    page.widget->render(&target); // lays the page out and sizes the chart buffers

    if (fullCurves) {
        const DataPoints base = profile(threePhase);
        for (int step = 0; step < kFillRefreshes; ++step)
            page.refresh(sample(base, step));
        const auto *chart = page.widget->findChild<TrendChart *>();
        QVERIFY(chart);
        QCOMPARE(chart->bufferData(0).size(), chart->maxPoints());
    }

    QBENCHMARK {
        page.widget->render(&target);
    }
}

void BenchGraphForms::refresh_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::newRow("single") << false;
    QTest::newRow("three") << true;
}

void BenchGraphForms::refresh()
{
    QFETCH(bool, threePhase);

    Page page = makePage(threePhase);
    page.widget->resize(900, 680);
    QImage target(page.widget->size(), QImage::Format_ARGB32_Premultiplied);
    page.widget->render(&target);
    const DataPoints base = profile(threePhase);
    QVector<DataPoints> variants;
    for (int step = 0; step < kVariants; ++step)
        variants << sample(base, step);
    for (int step = 0; step < kFillRefreshes; ++step)
        page.refresh(variants.at(step % kVariants));

    int step = 0;
    QBENCHMARK {
        page.refresh(variants.at(++step % kVariants));
    }
}

QTEST_MAIN(BenchGraphForms)
#include "bench_graphforms.moc"
