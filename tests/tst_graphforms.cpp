// Single- and three-phase graphic pages: gauge set-up, what a refresh puts on
// the gauges, curves and legends (missing, out of range and wrongly typed values
// included), initialisation, gauge proportions, and the chart page container.

#include <QLabel>
#include <QtTest>

#include <limits>
#include <memory>

#include "chartform.h"
#include "datachart.h"
#include "dynamicchart.h"
#include "gaugedialkeeper.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "threedynamicchart.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// Gauge values, legends and the newest sample of each curve ("nan" when
// empty), a group of names per section, sections joined with " | ".
QString view(QWidget *form, std::initializer_list<std::initializer_list<const char *>> sections)
{
    QStringList out;
    for (const auto &names : sections) {
        QStringList texts;
        for (const char *name : names) {
            if (auto *chart = form->findChild<DataChart *>(QLatin1String(name)))
                texts << chart->valueText();
            else
                texts << form->findChild<QLabel *>(QLatin1String(name))->text().remove(QStringLiteral("Current value:"));
        }
        if (names.size() == 0) { // the trend chart's section
            const TrendChart *chart = form->findChild<TrendChart *>();
            for (int k = 0; k < chart->curveCount(); ++k)
                texts << QString::number(chart->bufferData(k).value(0, std::numeric_limits<double>::quiet_NaN()));
        }
        out << texts.join(QLatin1Char(' '));
    }
    return out.join(QStringLiteral(" | "));
}

QString singleView(QWidget *form)
{
    return view(form, {{"widget_load", "widget_outload", "widget_temp", "widget_input_freq", "widget_out_freq",
                        "widget_by_freq"},
                       {},
                       {"value_input", "value_output", "value_batt", "value_bypass"}});
}

// Gauges, readouts (input voltage and frequency, bypass voltage), curves and
// legends (output voltage and load).
QString threeView(QWidget *form)
{
    return view(form, {{"widget_capacity", "widget_temp", "widget_outload", "widget_out_freq", "widget_by_freq"},
                       {"value_in_vol_r", "value_in_vol_s", "value_in_vol_t", "value_in_freq_r", "value_in_freq_s",
                        "value_in_freq_t", "value_by_vol_r", "value_by_vol_s", "value_by_vol_t"},
                       {},
                       {"value_out_vol_r", "value_out_vol_s", "value_out_vol_t", "value_out_load_r",
                        "value_out_load_s", "value_out_load_t"}});
}

} // namespace

class TestGraphForms : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void singlePageGauges_data();
    void singlePageGauges();
    void refresh_data();
    void refresh();
    void gaugesKeepProportions();
    void chartFormFeedsCurrentPageOnly();

private:
    QWidget *page(bool threePhase) const { return threePhase ? static_cast<QWidget *>(three.get()) : single.get(); }

    std::unique_ptr<RTSingleGraphForm> single;
    std::unique_ptr<RTThreeGraphForm> three;
};

void TestGraphForms::init()
{
    single.reset(new RTSingleGraphForm);
    three.reset(new RTThreeGraphForm);
    // A trend chart sizes its sample buffers from the plot box of its last paint.
    for (bool threePhase : {false, true}) {
        page(threePhase)->resize(900, 680);
        page(threePhase)->grab();
        QVERIFY(page(threePhase)->findChild<TrendChart *>()->maxPoints() > 10);
    }
}

void TestGraphForms::singlePageGauges_data()
{
    QTest::addColumn<QString>("gauge");
    QTest::addColumn<QString>("range"); // min..max unit
    QTest::addColumn<QList<int>>("colours"); // 0 green, 1 yellow, 2 red
    QTest::addColumn<QList<int>>("thresholds");

    QTest::newRow("battery") << "widget_load" << "0..100 %" << QList<int>{2, 1, 0} << QList<int>{30, 60, 100};
    QTest::newRow("load") << "widget_outload" << "0..160 %" << QList<int>{0, 1, 2} << QList<int>{100, 120, 160};
    QTest::newRow("temperature") << "widget_temp" << "0..100 C" << QList<int>{0, 2} << QList<int>{100, 120};
    for (const char *gauge : {"widget_input_freq", "widget_out_freq", "widget_by_freq"})
        QTest::newRow(gauge) << gauge << "0..100 Hz" << QList<int>{2, 0, 2} << QList<int>{40, 60, 100};
}

void TestGraphForms::singlePageGauges()
{
    QFETCH(QString, gauge);
    auto *dial = single->findChild<DataChart *>(gauge);
    QVERIFY(dial);
    QTEST(QStringLiteral("%1..%2 %3").arg(dial->getMinValue()).arg(dial->getMaxValue()).arg(dial->getUnitText()),
          "range");
    QTEST(dial->getColorIndexes(), "colours");
    QTEST(dial->getRadioValues(), "thresholds");
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
    const auto shown = [this, threePhase] { return threePhase ? threeView(three.get()) : singleView(single.get()); };
    threePhase ? three->RefreshRtChartInfo(points) : single->RefreshRtSingleChartInfo(points);
    QTEST(shown(), "expected");
    // Every curve got exactly one (doubled first) sample, so none is empty at paint time.
    const TrendChart *chart = page(threePhase)->findChild<TrendChart *>();
    for (int k = 0; k < chart->curveCount(); ++k)
        QCOMPARE(chart->curveMap().value(k).size(), 2);

    // Initialisation: true keeps everything, false clears; 0 lies inside every
    // range, so even the temperature gauge shows 0 until the next refresh.
    const QString before = shown();
    threePhase ? three->InitRTChartFormInfo(true) : single->InitRTChartFormInfo(true);
    QCOMPARE(shown(), before);
    threePhase ? three->InitRTChartFormInfo(false) : single->InitRTChartFormInfo(false);
    QCOMPARE(shown(), threePhase ? QStringLiteral("0 0 0 0 0 | 0 0 0 0.0 0.0 0.0 0 0 0 | nan nan nan nan nan nan | "
                                                  "(0) (0) (0) (0) (0) (0)")
                                 : QStringLiteral("0 0 0 0 0 0 | nan nan nan nan | (0) (0) (0) (0)"));
}

void TestGraphForms::gaugesKeepProportions()
{
    // Dial heights: a floor of 60, a little over half the width, at most 200.
    QCOMPARE(QList<int>({GaugeDialKeeper::dialHeight(105), GaugeDialKeeper::dialHeight(106),
                         GaugeDialKeeper::dialHeight(301), GaugeDialKeeper::dialHeight(384)}),
             QList<int>({60, 61, 158, 200}));
    for (bool threePhase : {false, true}) {
        QWidget *form = page(threePhase);
        form->show();
        QVERIFY(QTest::qWaitForWindowExposed(form));
        const QList<DataChart *> gauges = form->findChildren<DataChart *>();
        QCOMPARE(gauges.size(), threePhase ? 5 : 6);
        // A wider page gives wider dials, and the height of every one follows.
        const int narrowWidth = gauges.first()->width();
        form->resize(1400, 680);
        QTRY_VERIFY(gauges.first()->width() > narrowWidth);
        for (DataChart *gauge : gauges) {
            const int height = GaugeDialKeeper::dialHeight(gauge->width());
            QTRY_VERIFY2(gauge->minimumHeight() == height && gauge->maximumHeight() == height,
                         qPrintable(gauge->objectName()));
        }
    }
}

void TestGraphForms::chartFormFeedsCurrentPageOnly()
{
    // The three-phase page is current after construction; rows with the
    // single-phase page chosen instead.
    for (bool switchToSingle : {false, true}) {
        ChartForm form;
        auto *single = form.findChild<RTSingleGraphForm *>("page_single")->findChild<DynamicChart *>();
        auto *three = form.findChild<RTThreeGraphForm *>("page_three")->findChild<ThreeDynamicChart *>();
        QCOMPARE(form.getCurrentIndex(), 1);
        form.resize(900, 700);
        for (int index : {0, 1}) { // each chart sizes its buffers when painted
            form.setCurrentIndex(index);
            form.grab();
        }
        form.setCurrentIndex(switchToSingle ? 0 : 1);
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
}

QTEST_MAIN(TestGraphForms)
#include "tst_graphforms.moc"
