// Dial proportions kept by GaugeDialKeeper: the height a dial gets for its
// width, and that both graphic pages keep every gauge in proportion.

#include <QtTest>

#include <memory>

#include "datachart.h"
#include "gaugedialkeeper.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"

namespace {

bool hasFixedHeight(const QWidget *widget, int height)
{
    return widget->minimumHeight() == height && widget->maximumHeight() == height;
}

} // namespace

class TestGaugeDialKeeper : public QObject
{
    Q_OBJECT

private slots:
    void dialHeight_data();
    void dialHeight();
    void resizeFixesHeight();
    void pagesKeepProportions_data();
    void pagesKeepProportions();
};

void TestGaugeDialKeeper::dialHeight_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");

    QTest::newRow("negative") << -50 << 60;
    QTest::newRow("last at the floor") << 105 << 60;
    QTest::newRow("first above the floor") << 106 << 61;
    QTest::newRow("odd width") << 301 << 158;
    QTest::newRow("last below the ceiling") << 383 << 199;
    QTest::newRow("at the ceiling") << 384 << 200;
    QTest::newRow("wide") << 2000 << 200;
}

void TestGaugeDialKeeper::dialHeight()
{
    QFETCH(int, width);
    QTEST(GaugeDialKeeper::dialHeight(width), "height");
}

void TestGaugeDialKeeper::resizeFixesHeight()
{
    // Only the width counts: a flat and a tall gauge of one width end alike.
    GaugeDialKeeper keeper;
    DataChart gauge;
    keeper.setUp(&gauge, {0, 160, "%", {GaugeDialKeeper::Green}, {100}});
    gauge.show();
    for (const QSize &size : {QSize(300, 40), QSize(300, 500)}) {
        gauge.resize(size);
        QVERIFY(hasFixedHeight(&gauge, 158));
        QCOMPARE(gauge.size(), QSize(300, 158));
    }
}

void TestGaugeDialKeeper::pagesKeepProportions_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<int>("gaugeCount");
    QTest::newRow("single-phase") << false << 6;
    QTest::newRow("three-phase") << true << 5;
}

void TestGaugeDialKeeper::pagesKeepProportions()
{
    QFETCH(bool, threePhase);
    std::unique_ptr<QWidget> page(threePhase ? static_cast<QWidget *>(new RTThreeGraphForm)
                                             : static_cast<QWidget *>(new RTSingleGraphForm));
    page->resize(900, 680);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));

    const QList<DataChart *> gauges = page->findChildren<DataChart *>();
    QTEST(gauges.size(), "gaugeCount");
    int firstWidth = 0;
    // A wider page gives wider dials, and their heights follow.
    for (int pageWidth : {900, 1400}) {
        page->resize(pageWidth, 680);
        QTRY_VERIFY(gauges.first()->width() > firstWidth);
        firstWidth = gauges.first()->width();
        for (DataChart *gauge : gauges)
            QTRY_VERIFY2(hasFixedHeight(gauge, GaugeDialKeeper::dialHeight(gauge->width())),
                         qPrintable(gauge->objectName()));
    }
}

QTEST_MAIN(TestGaugeDialKeeper)
#include "tst_gaugedialkeeper.moc"
