// Gauge set-up and dial proportions shared by the graphic pages: what setUp
// applies, the height a dial gets for its width, and that both pages keep
// every gauge in proportion once laid out.

#include <QtTest>

#include <functional>
#include <memory>

#include "datachart.h"
#include "gaugedialkeeper.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"

Q_DECLARE_METATYPE(std::function<QWidget *()>)

namespace {

using PageFactory = std::function<QWidget *()>;

const GaugeDialKeeper::Dial kLoadDial = {
    0, 160, "%", {GaugeDialKeeper::Green, GaugeDialKeeper::Yellow, GaugeDialKeeper::Red}, {100, 120, 160}};

bool hasFixedHeight(const QWidget *widget, int height)
{
    return widget->minimumHeight() == height && widget->maximumHeight() == height;
}

} // namespace

class TestGaugeDialKeeper : public QObject
{
    Q_OBJECT

private slots:
    void setUpAppliesDial();
    void dialHeight_data();
    void dialHeight();
    void resizeFixesHeight_data();
    void resizeFixesHeight();
    void otherWidgetsUntouched();
    void gaugeOutlivesKeeper();
    void pagesKeepProportions_data();
    void pagesKeepProportions();
};

void TestGaugeDialKeeper::setUpAppliesDial()
{
    GaugeDialKeeper keeper;
    DataChart gauge;
    keeper.setUp(&gauge, kLoadDial);
    QCOMPARE(gauge.getMinValue(), 0.0);
    QCOMPARE(gauge.getMaxValue(), 160.0);
    QCOMPARE(gauge.getUnitText(), QStringLiteral("%"));
    QCOMPARE(gauge.getColorIndexes(), (QList<int>{0, 1, 2}));
    QCOMPARE(gauge.getRadioValues(), (QList<int>{100, 120, 160}));
}

void TestGaugeDialKeeper::dialHeight_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");

    QTest::newRow("empty") << 0 << 60;
    QTest::newRow("narrow") << 100 << 60;
    QTest::newRow("last at the floor") << 105 << 60;
    QTest::newRow("first above the floor") << 106 << 61;
    QTest::newRow("odd width") << 301 << 158;
    QTest::newRow("last below the ceiling") << 383 << 199;
    QTest::newRow("at the ceiling") << 384 << 200;
    QTest::newRow("wide") << 2000 << 200;
    QTest::newRow("negative") << -50 << 60;
}

void TestGaugeDialKeeper::dialHeight()
{
    QFETCH(int, width);
    QFETCH(int, height);
    QCOMPARE(GaugeDialKeeper::dialHeight(width), height);
}

void TestGaugeDialKeeper::resizeFixesHeight_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("height");

    QTest::newRow("flat") << QSize(300, 40) << 158;
    QTest::newRow("tall") << QSize(300, 500) << 158;
    QTest::newRow("wide") << QSize(900, 100) << 200;
}

void TestGaugeDialKeeper::resizeFixesHeight()
{
    QFETCH(QSize, size);
    QFETCH(int, height);

    GaugeDialKeeper keeper;
    DataChart gauge;
    keeper.setUp(&gauge, kLoadDial);
    gauge.show();
    gauge.resize(size);
    QVERIFY(hasFixedHeight(&gauge, height));
    QCOMPARE(gauge.height(), height);
    QCOMPARE(gauge.width(), size.width());
}

void TestGaugeDialKeeper::otherWidgetsUntouched()
{
    GaugeDialKeeper keeper;
    QWidget plain;
    plain.installEventFilter(&keeper);
    plain.show();
    plain.resize(300, 40);
    QCOMPARE(plain.minimumHeight(), 0);
    QCOMPARE(plain.maximumHeight(), QWIDGETSIZE_MAX);
    QCOMPARE(plain.height(), 40);
}

void TestGaugeDialKeeper::gaugeOutlivesKeeper()
{
    DataChart gauge;
    auto keeper = std::make_unique<GaugeDialKeeper>();
    keeper->setUp(&gauge, kLoadDial);
    keeper.reset();
    gauge.show();
    gauge.resize(300, 40);
    QCOMPARE(gauge.height(), 40);
}

void TestGaugeDialKeeper::pagesKeepProportions_data()
{
    QTest::addColumn<PageFactory>("create");
    QTest::addColumn<int>("gaugeCount");

    QTest::newRow("single-phase") << PageFactory([] { return new RTSingleGraphForm; }) << 6;
    QTest::newRow("three-phase") << PageFactory([] { return new RTThreeGraphForm; }) << 5;
}

void TestGaugeDialKeeper::pagesKeepProportions()
{
    QFETCH(PageFactory, create);
    QFETCH(int, gaugeCount);

    std::unique_ptr<QWidget> page(create());
    page->resize(900, 680);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page.get()));

    const QList<DataChart *> gauges = page->findChildren<DataChart *>();
    QCOMPARE(gauges.size(), gaugeCount);
    for (DataChart *gauge : gauges) {
        QTRY_VERIFY2(hasFixedHeight(gauge, GaugeDialKeeper::dialHeight(gauge->width())),
                     qPrintable(gauge->objectName()));
        QVERIFY2(gauge->width() > 0, qPrintable(gauge->objectName()));
    }

    // A wider page gives wider dials, and their heights follow.
    const int before = gauges.first()->width();
    page->resize(1400, 680);
    QTRY_VERIFY(gauges.first()->width() > before);
    for (DataChart *gauge : gauges)
        QTRY_VERIFY2(hasFixedHeight(gauge, GaugeDialKeeper::dialHeight(gauge->width())),
                     qPrintable(gauge->objectName()));
}

QTEST_MAIN(TestGaugeDialKeeper)

#include "tst_gaugedialkeeper.moc"
