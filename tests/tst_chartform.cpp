// Chart page container: which page is current after construction, and that
// initialisation and refreshes reach only the current page.

#include <QLabel>
#include <QStackedWidget>
#include <QtTest>

#include "chartform.h"
#include "chartscreenshots.h"
#include "dynamicchart.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "threedynamicchart.h"

using DataPoints = QMap<int, QVariant>;

namespace {

constexpr int kSinglePage = 0;
constexpr int kThreePage = 1;

// Output voltage on both pages: curve 1 of the single page, curve 0 of the three-phase page.
DataPoints outputVoltage(int volts)
{
    DataPoints map;
    map.insert(27, volts);
    map.insert(9, volts);
    return map;
}

} // namespace

class TestChartForm : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void constructionShowsThreePhasePage();
    void refreshReachesCurrentPageOnly_data();
    void refreshReachesCurrentPageOnly();
    void initReachesCurrentPageOnly_data();
    void initReachesCurrentPageOnly();
    void hiddenPageKeepsItsStateUntilRefreshed();
    void screenshot();

private:
    QVector<double> singleSamples() const { return singleChart->bufferData(1); }
    QVector<double> threeSamples() const { return threeChart->bufferData(0); }
    void feedBothPages();

    ChartForm *form = nullptr;
    RTSingleGraphForm *single = nullptr;
    RTThreeGraphForm *three = nullptr;
    DynamicChart *singleChart = nullptr;
    ThreeDynamicChart *threeChart = nullptr;
};

void TestChartForm::init()
{
    form = new ChartForm;
    single = form->findChild<RTSingleGraphForm *>(QStringLiteral("page_single"));
    three = form->findChild<RTThreeGraphForm *>(QStringLiteral("page_three"));
    QVERIFY(single);
    QVERIFY(three);
    singleChart = single->findChild<DynamicChart *>(QStringLiteral("widget_single"));
    threeChart = three->findChild<ThreeDynamicChart *>(QStringLiteral("widget_three"));
    QVERIFY(singleChart);
    QVERIFY(threeChart);

    // A trend chart sizes its buffers from its last paint: paint each page
    // once, then go back to the page current after construction.
    form->resize(900, 700);
    for (int index : {kSinglePage, kThreePage}) {
        form->setCurrentIndex(index);
        form->grab();
    }
    QVERIFY(singleChart->maxPoints() > 10);
    QVERIFY(threeChart->maxPoints() > 10);
}

void TestChartForm::cleanup()
{
    delete form;
    form = nullptr;
}

void TestChartForm::feedBothPages()
{
    form->setCurrentIndex(kSinglePage);
    form->refreshFormInfo(outputVoltage(231));
    form->setCurrentIndex(kThreePage);
    form->refreshFormInfo(outputVoltage(232));
    QVERIFY(!singleSamples().isEmpty());
    QVERIFY(!threeSamples().isEmpty());
}

void TestChartForm::constructionShowsThreePhasePage()
{
    delete form;
    form = new ChartForm;
    single = form->findChild<RTSingleGraphForm *>(QStringLiteral("page_single"));
    three = form->findChild<RTThreeGraphForm *>(QStringLiteral("page_three"));
    singleChart = single->findChild<DynamicChart *>(QStringLiteral("widget_single"));
    threeChart = three->findChild<ThreeDynamicChart *>(QStringLiteral("widget_three"));

    auto *stack = form->findChild<QStackedWidget *>(QStringLiteral("stackedWidget"));
    QVERIFY(stack);
    QCOMPARE(form->getCurrentIndex(), kThreePage);
    QCOMPARE(stack->currentWidget(), static_cast<QWidget *>(three));
    QCOMPARE(stack->indexOf(single), kSinglePage);
    QCOMPARE(form->objectName(), QStringLiteral("ChartForm"));
    QCOMPARE(form->windowTitle(), QStringLiteral("Form"));
    QCOMPARE(form->size(), QSize(422, 316));
    QCOMPARE(single->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    QCOMPARE(three->sizePolicy().verticalPolicy(), QSizePolicy::Expanding);

    // The first refresh after construction goes to the three-phase page.
    form->refreshFormInfo(outputVoltage(230));
    QCOMPARE(threeSamples().value(0), 230.0);
    QVERIFY(singleSamples().isEmpty());
}

void TestChartForm::refreshReachesCurrentPageOnly_data()
{
    QTest::addColumn<QList<int>>("indexCalls");
    QTest::addColumn<int>("expectedIndex");

    QTest::newRow("as constructed") << QList<int>{} << kThreePage;
    QTest::newRow("single") << QList<int>{kSinglePage} << kSinglePage;
    QTest::newRow("three") << QList<int>{kThreePage} << kThreePage;
    QTest::newRow("single then three") << QList<int>{kSinglePage, kThreePage} << kThreePage;
    QTest::newRow("three then single") << QList<int>{kThreePage, kSinglePage} << kSinglePage;
    // The stack ignores indexes without a page; the current page stays.
    QTest::newRow("index 2 ignored") << QList<int>{kSinglePage, 2} << kSinglePage;
    QTest::newRow("index -1 ignored") << QList<int>{-1} << kThreePage;
}

void TestChartForm::refreshReachesCurrentPageOnly()
{
    QFETCH(QList<int>, indexCalls);
    QFETCH(int, expectedIndex);

    for (int index : indexCalls)
        form->setCurrentIndex(index);
    QCOMPARE(form->getCurrentIndex(), expectedIndex);

    form->refreshFormInfo(outputVoltage(229));

    const bool singleCurrent = expectedIndex == kSinglePage;
    QCOMPARE(singleSamples().value(0, -1.0), singleCurrent ? 229.0 : -1.0);
    QCOMPARE(threeSamples().value(0, -1.0), singleCurrent ? -1.0 : 229.0);
    QCOMPARE(single->findChild<QLabel *>(QStringLiteral("value_output"))->text() == "(Current value:229)",
             singleCurrent);
    QCOMPARE(three->findChild<QLabel *>(QStringLiteral("value_out_vol_r"))->text() == "(229)", !singleCurrent);
}

void TestChartForm::initReachesCurrentPageOnly_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("flag");
    QTest::addColumn<bool>("singleCleared");
    QTest::addColumn<bool>("threeCleared");

    QTest::newRow("single, re-initialise") << kSinglePage << false << true << false;
    QTest::newRow("three, re-initialise") << kThreePage << false << false << true;
    QTest::newRow("single, keep") << kSinglePage << true << false << false;
    QTest::newRow("three, keep") << kThreePage << true << false << false;
}

void TestChartForm::initReachesCurrentPageOnly()
{
    QFETCH(int, index);
    QFETCH(bool, flag);
    QFETCH(bool, singleCleared);
    QFETCH(bool, threeCleared);

    feedBothPages();
    form->setCurrentIndex(index);
    form->initFormInfo(flag);

    QCOMPARE(singleSamples().isEmpty(), singleCleared);
    QCOMPARE(threeSamples().isEmpty(), threeCleared);
    QCOMPARE(single->findChild<QLabel *>(QStringLiteral("value_output"))->text() == "(0)", singleCleared);
    QCOMPARE(three->findChild<QLabel *>(QStringLiteral("value_out_vol_r"))->text() == "(0)", threeCleared);
}

void TestChartForm::hiddenPageKeepsItsStateUntilRefreshed()
{
    form->refreshFormInfo(outputVoltage(230));
    form->setCurrentIndex(kSinglePage);
    form->refreshFormInfo(outputVoltage(0));
    form->refreshFormInfo(outputVoltage(1));

    form->setCurrentIndex(kThreePage);
    auto *legend = three->findChild<QLabel *>(QStringLiteral("value_out_vol_r"));
    QCOMPARE(legend->text(), QStringLiteral("(230)"));
    QCOMPARE(threeSamples().value(0), 230.0);

    form->refreshFormInfo(outputVoltage(228));
    QCOMPARE(legend->text(), QStringLiteral("(228)"));
    QCOMPARE(threeSamples().value(0), 228.0);
    QCOMPARE(singleSamples().value(0), 1.0);
}

void TestChartForm::screenshot()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshot");

    ChartScreenshots::useDesktopFont();
    ChartForm page;
    page.setCurrentName(QStringLiteral("UPS-3"));
    QVERIFY(ChartScreenshots::showOffscreen(&page, QSize(900, 700)));
    page.initFormInfo(false);
    const QList<DataPoints> story = ChartScreenshots::agentStory(true, 60);
    QVERIFY(!story.isEmpty());
    for (const DataPoints &points : story)
        page.refreshFormInfo(points);
    QVERIFY(!ChartScreenshots::save(&page, QStringLiteral("chartform.png")).isEmpty());
}

QTEST_MAIN(TestChartForm)
#include "tst_chartform.moc"
