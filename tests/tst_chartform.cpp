// Chart page container: which page is current after construction, and that
// initialisation and refreshes reach only the current page.

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

} // namespace

class TestChartForm : public QObject
{
    Q_OBJECT

private slots:
    void currentPageOnly_data();
    void currentPageOnly();
    void screenshot();
};

void TestChartForm::currentPageOnly_data()
{
    QTest::addColumn<QList<int>>("indexCalls");
    QTest::addColumn<int>("expectedIndex");

    QTest::newRow("as constructed") << QList<int>{} << kThreePage;
    QTest::newRow("three then single") << QList<int>{kThreePage, kSinglePage} << kSinglePage;
}

void TestChartForm::currentPageOnly()
{
    QFETCH(QList<int>, indexCalls);
    QFETCH(int, expectedIndex);

    ChartForm form;
    auto *single = form.findChild<RTSingleGraphForm *>(QStringLiteral("page_single"))->findChild<DynamicChart *>();
    auto *three = form.findChild<RTThreeGraphForm *>(QStringLiteral("page_three"))->findChild<ThreeDynamicChart *>();
    // A trend chart sizes its buffers from its last paint: paint each page
    // once, then go back to the page current after construction.
    form.resize(900, 700);
    for (int index : {kSinglePage, kThreePage}) {
        form.setCurrentIndex(index);
        form.grab();
    }
    for (int index : indexCalls)
        form.setCurrentIndex(index);
    QCOMPARE(form.getCurrentIndex(), expectedIndex);

    // Output voltage: curve 1 of the single page, curve 0 of the three-phase page.
    form.refreshFormInfo({{27, 229}, {9, 229}});
    const bool singleCurrent = expectedIndex == kSinglePage;
    QCOMPARE(single->bufferData(1).value(0, -1.0), singleCurrent ? 229.0 : -1.0);
    QCOMPARE(three->bufferData(0).value(0, -1.0), singleCurrent ? -1.0 : 229.0);

    // Initialisation: true keeps everything; false clears the current page only.
    form.setCurrentIndex(singleCurrent ? kThreePage : kSinglePage);
    form.refreshFormInfo({{27, 230}, {9, 230}});
    form.setCurrentIndex(expectedIndex);
    form.initFormInfo(true);
    QVERIFY(!single->bufferData(1).isEmpty() && !three->bufferData(0).isEmpty());
    form.initFormInfo(false);
    QCOMPARE(single->bufferData(1).isEmpty(), singleCurrent);
    QCOMPARE(three->bufferData(0).isEmpty(), !singleCurrent);
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
