// Single- and three-phase graphic pages: what a refresh puts on the gauges,
// the trend curves and the legends, values that are missing, out of range or
// of the wrong type, initialisation after data, and gauge proportions; the
// chart page container that holds both pages and feeds the current one.

#include <QLabel>
#include <QtTest>

#include <limits>

#include "chartform.h"
#include "chartscreenshots.h"
#include "datachart.h"
#include "dynamicchart.h"
#include "gaugedialkeeper.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "threedynamicchart.h"

using DataPoints = QMap<int, QVariant>;

namespace {

const QSize kPageSize(900, 680);

// Gauge and legend texts of the named widgets, joined with ' '.
QString texts(QWidget *form, std::initializer_list<const char *> names)
{
    QStringList out;
    for (const char *name : names) {
        if (auto *chart = form->findChild<DataChart *>(QLatin1String(name)))
            out << chart->valueText();
        else if (auto *label = form->findChild<QLabel *>(QLatin1String(name)))
            out << label->text().remove(QStringLiteral("Current value:"));
        else
            out << QStringLiteral("<missing %1>").arg(QLatin1String(name));
    }
    return out.join(QLatin1Char(' '));
}

// Newest sample of each curve ("nan" for an empty buffer).
QString newestSamples(const TrendChart *chart)
{
    QStringList newest;
    for (int k = 0; k < chart->curveCount(); ++k)
        newest << QString::number(chart->bufferData(k).value(0, std::numeric_limits<double>::quiet_NaN()));
    return newest.join(QLatin1Char(' '));
}

// Gauges, trend curves and legends of the single-phase page.
QString singleView(RTSingleGraphForm *form)
{
    return texts(form, {"widget_load", "widget_outload", "widget_temp", "widget_input_freq", "widget_out_freq",
                        "widget_by_freq"})
        + " | " + newestSamples(form->findChild<DynamicChart *>()) + " | "
        + texts(form, {"value_input", "value_output", "value_batt", "value_bypass"});
}

// Gauges, readouts (input voltage and frequency, bypass voltage), curves and
// legends (output voltage and load) of the three-phase page.
QString threeView(RTThreeGraphForm *form)
{
    return texts(form, {"widget_capacity", "widget_temp", "widget_outload", "widget_out_freq", "widget_by_freq"})
        + " | "
        + texts(form, {"value_in_vol_r", "value_in_vol_s", "value_in_vol_t", "value_in_freq_r", "value_in_freq_s",
                       "value_in_freq_t", "value_by_vol_r", "value_by_vol_s", "value_by_vol_t"})
        + " | " + newestSamples(form->findChild<ThreeDynamicChart *>()) + " | "
        + texts(form, {"value_out_vol_r", "value_out_vol_s", "value_out_vol_t", "value_out_load_r",
                       "value_out_load_s", "value_out_load_t"});
}

} // namespace

class TestGraphForms : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void refresh_data();
    void refresh();
    void gaugesKeepProportions_data();
    void gaugesKeepProportions();
    void chartFormFeedsCurrentPageOnly_data();
    void chartFormFeedsCurrentPageOnly();
    void screenshots_data();
    void screenshots();

private:
    void feed(bool threePhase, const DataPoints &points)
    {
        threePhase ? three->RefreshRtChartInfo(points) : single->RefreshRtSingleChartInfo(points);
    }
    QString view(bool threePhase) const { return threePhase ? threeView(three) : singleView(single); }

    RTSingleGraphForm *single = nullptr;
    RTThreeGraphForm *three = nullptr;
};

void TestGraphForms::init()
{
    single = new RTSingleGraphForm;
    three = new RTThreeGraphForm;
    // A trend chart sizes its sample buffers from the plot box of its last paint.
    for (QWidget *form : {static_cast<QWidget *>(single), static_cast<QWidget *>(three)}) {
        form->resize(kPageSize);
        form->grab();
    }
    QVERIFY(single->findChild<DynamicChart *>()->maxPoints() > 10);
    QVERIFY(three->findChild<ThreeDynamicChart *>()->maxPoints() > 10);
}

void TestGraphForms::cleanup()
{
    delete single;
    delete three;
}

void TestGraphForms::refresh_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<QString>("expected");

    // The temperature gauge of the single-phase page has no data point: always "--".
    QTest::newRow("single, utility mode")
        << false
        << DataPoints{{3, 85}, {39, 45}, {15, 500}, {25, 499}, {42, 501}, {9, 229}, {27, 230}, {4, 2715}, {44, 231}}
        << "85 45 -- 50 49.9 50.1 | 229 230 271.5 231 | (229) (230) (271.5) (231)";
    QTest::newRow("single, range limits")
        << false << DataPoints{{3, 100}, {39, 160}, {15, 1000}, {25, 400}, {42, 600}}
        << "100 160 -- 100 40 60 | 0 0 0 0 | (0) (0) (0) (0)";
    QTest::newRow("single, over range")
        << false << DataPoints{{3, 101}, {39, 161}, {15, 1001}, {25, 1500}, {42, 65535}}
        << "-- -- -- -- -- -- | 0 0 0 0 | (0) (0) (0) (0)";
    QTest::newRow("single, wrong types")
        << false
        << DataPoints{{9, QStringLiteral("abc")}, {27, QStringLiteral("230")}, {44, 1e300},
                      {4, std::numeric_limits<double>::quiet_NaN()}, {3, QVariantList{1}}, {39, 44.6}}
        << "0 45 -- 0 0 0 | 0 230 0 0 | (0) (230) (0) (0)";

    const DataPoints balanced{{3, 97},   {6, 27},   {25, 500}, {42, 499}, {9, 230},  {10, 231}, {11, 229},
                              {15, 500}, {16, 501}, {17, 499}, {44, 228}, {45, 229}, {46, 230}, {27, 230},
                              {28, 229}, {29, 231}, {39, 35},  {40, 36},  {41, 34}};
    const QString readouts = QStringLiteral("230 231 229 50.0 50.1 49.9 228 229 230");
    QTest::newRow("three, balanced")
        << true << balanced
        << "97 27 36 50 49.9 | " + readouts + " | 230 229 231 35 36 34 | (230) (229) (231) (35) (36) (34)";
    // The load gauge shows the highest phase; the temperature is limited to 100.
    DataPoints unbalanced = balanced;
    unbalanced[40] = 95;
    unbalanced[41] = 130;
    unbalanced[6] = 101;
    QTest::newRow("three, unbalanced and hot")
        << true << unbalanced
        << "97 -- 130 50 49.9 | " + readouts + " | 230 229 231 35 95 130 | (230) (229) (231) (35) (95) (130)";
    QTest::newRow("three, out of range and negative")
        << true << DataPoints{{3, -1}, {6, 65535}, {39, 161}, {25, 1001}, {42, -20}, {9, -1}, {15, -5}, {27, -7}}
        << "-- -- -- -- -- | -1 0 0 -0.5 0.0 0.0 0 0 0 | -7 0 0 161 0 0 | (-7) (0) (0) (161) (0) (0)";
}

void TestGraphForms::refresh()
{
    QFETCH(bool, threePhase);
    QFETCH(DataPoints, points);
    feed(threePhase, points);
    QTEST(view(threePhase), "expected");
    // Every curve got exactly one (doubled first) sample, so none is empty at paint time.
    const TrendChart *chart = threePhase ? static_cast<TrendChart *>(three->findChild<ThreeDynamicChart *>())
                                         : single->findChild<DynamicChart *>();
    for (int k = 0; k < chart->curveCount(); ++k)
        QCOMPARE(chart->curveMap().value(k).size(), 2);

    // Initialisation: true keeps everything, false clears; 0 lies inside every
    // range, so even the temperature gauge shows 0 until the next refresh.
    const QString before = view(threePhase);
    threePhase ? three->InitRTChartFormInfo(true) : single->InitRTChartFormInfo(true);
    QCOMPARE(view(threePhase), before);
    threePhase ? three->InitRTChartFormInfo(false) : single->InitRTChartFormInfo(false);
    QCOMPARE(view(threePhase),
             threePhase ? QStringLiteral("0 0 0 0 0 | 0 0 0 0.0 0.0 0.0 0 0 0 | nan nan nan nan nan nan | "
                                         "(0) (0) (0) (0) (0) (0)")
                        : QStringLiteral("0 0 0 0 0 0 | nan nan nan nan | (0) (0) (0) (0)"));
}

void TestGraphForms::gaugesKeepProportions_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<int>("gaugeCount");
    QTest::newRow("single-phase") << false << 6;
    QTest::newRow("three-phase") << true << 5;
}

void TestGraphForms::gaugesKeepProportions()
{
    // Dial heights: a floor of 60, a little over half the width, at most 200.
    QCOMPARE(QList<int>({GaugeDialKeeper::dialHeight(105), GaugeDialKeeper::dialHeight(106),
                         GaugeDialKeeper::dialHeight(301), GaugeDialKeeper::dialHeight(384)}),
             QList<int>({60, 61, 158, 200}));
    QFETCH(bool, threePhase);
    QWidget *page = threePhase ? static_cast<QWidget *>(three) : static_cast<QWidget *>(single);
    page->show();
    QVERIFY(QTest::qWaitForWindowExposed(page));
    const QList<DataChart *> gauges = page->findChildren<DataChart *>();
    QTEST(gauges.size(), "gaugeCount");
    // A wider page gives wider dials, and the height of every one follows.
    const int narrowWidth = gauges.first()->width();
    page->resize(1400, 680);
    QTRY_VERIFY(gauges.first()->width() > narrowWidth);
    for (DataChart *gauge : gauges) {
        const int height = GaugeDialKeeper::dialHeight(gauge->width());
        QTRY_VERIFY2(gauge->minimumHeight() == height && gauge->maximumHeight() == height,
                     qPrintable(gauge->objectName()));
    }
}

void TestGraphForms::chartFormFeedsCurrentPageOnly_data()
{
    QTest::addColumn<bool>("switchToSingle");
    QTest::newRow("three-phase page as constructed") << false;
    QTest::newRow("single-phase page chosen") << true;
}

void TestGraphForms::chartFormFeedsCurrentPageOnly()
{
    QFETCH(bool, switchToSingle);
    ChartForm form;
    auto *single = form.findChild<RTSingleGraphForm *>(QStringLiteral("page_single"))->findChild<DynamicChart *>();
    auto *three = form.findChild<RTThreeGraphForm *>(QStringLiteral("page_three"))->findChild<ThreeDynamicChart *>();
    // Paint each page once so that its chart sizes its buffers, then go back
    // to the page current after construction (or choose the single one).
    form.resize(900, 700);
    const int constructed = form.getCurrentIndex();
    for (int index : {0, 1}) {
        form.setCurrentIndex(index);
        form.grab();
    }
    form.setCurrentIndex(switchToSingle ? 0 : constructed);
    QCOMPARE(form.getCurrentIndex(), switchToSingle ? 0 : 1);

    // Output voltage: curve 1 of the single page, curve 0 of the three-phase page.
    form.refreshFormInfo({{27, 229}, {9, 229}});
    QCOMPARE(single->bufferData(1).value(0, -1.0), switchToSingle ? 229.0 : -1.0);
    QCOMPARE(three->bufferData(0).value(0, -1.0), switchToSingle ? -1.0 : 229.0);

    // Initialisation: true keeps everything; false clears the current page only.
    form.setCurrentIndex(switchToSingle ? 1 : 0);
    form.refreshFormInfo({{27, 230}, {9, 230}});
    form.setCurrentIndex(switchToSingle ? 0 : 1);
    form.initFormInfo(true);
    QVERIFY(!single->bufferData(1).isEmpty() && !three->bufferData(0).isEmpty());
    form.initFormInfo(false);
    QCOMPARE(single->bufferData(1).isEmpty(), switchToSingle);
    QCOMPARE(three->bufferData(0).isEmpty(), !switchToSingle);
}

void TestGraphForms::screenshots_data()
{
    QTest::addColumn<int>("page"); // 0 single-phase, 1 three-phase, 2 the container
    QTest::addColumn<QString>("fileName");
    QTest::newRow("single") << 0 << "rtsinglegraphform.png";
    QTest::newRow("three") << 1 << "rtthreegraphform.png";
    QTest::newRow("container") << 2 << "chartform.png";
}

void TestGraphForms::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshots");
    QFETCH(int, page);
    QFETCH(QString, fileName);

    // Pages made again after the font change: widgets keep the font they were created with.
    ChartScreenshots::useDesktopFont();
    cleanup();
    init();
    ChartForm container;
    container.setCurrentName(QStringLiteral("UPS-3"));
    QWidget *form = page == 2 ? &container : page == 1 ? static_cast<QWidget *>(three) : single;
    QVERIFY(ChartScreenshots::showOffscreen(form, page == 2 ? QSize(900, 700) : kPageSize));
    container.initFormInfo(false);
    // A minute of the agent's demo story: mains failure, battery, mains return.
    for (const DataPoints &points : ChartScreenshots::agentStory(page != 0, 60))
        page == 2 ? container.refreshFormInfo(points) : feed(page == 1, points);
    QVERIFY(!ChartScreenshots::save(form, fileName).isEmpty());
}

QTEST_MAIN(TestGraphForms)
#include "tst_graphforms.moc"
