// Single- and three-phase graphic pages: gauge set-up, what a refresh puts on
// the gauges, the trend curves and the legends, initialisation, and values
// that are missing, out of range or of the wrong type.

#include <QLabel>
#include <QRegularExpression>
#include <QtTest>

#include <limits>

#include "chartscreenshots.h"
#include "datachart.h"
#include "dynamicchart.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "threedynamicchart.h"

using DataPoints = QMap<int, QVariant>;

namespace {

const QSize kPageSize(900, 680);

const QStringList kSingleGauges = {QStringLiteral("widget_load"),       QStringLiteral("widget_outload"),
                                   QStringLiteral("widget_temp"),       QStringLiteral("widget_input_freq"),
                                   QStringLiteral("widget_out_freq"),   QStringLiteral("widget_by_freq")};
const QStringList kSingleLegends = {QStringLiteral("value_input"), QStringLiteral("value_output"),
                                    QStringLiteral("value_batt"), QStringLiteral("value_bypass")};

const QStringList kThreeGauges = {QStringLiteral("widget_capacity"), QStringLiteral("widget_temp"),
                                  QStringLiteral("widget_outload"), QStringLiteral("widget_out_freq"),
                                  QStringLiteral("widget_by_freq")};
const QStringList kThreeReadouts = {
    QStringLiteral("value_in_vol_r"),  QStringLiteral("value_in_vol_s"),  QStringLiteral("value_in_vol_t"),
    QStringLiteral("value_in_freq_r"), QStringLiteral("value_in_freq_s"), QStringLiteral("value_in_freq_t"),
    QStringLiteral("value_by_vol_r"),  QStringLiteral("value_by_vol_s"),  QStringLiteral("value_by_vol_t")};
const QStringList kThreeLegends = {
    QStringLiteral("value_out_vol_r"),  QStringLiteral("value_out_vol_s"),  QStringLiteral("value_out_vol_t"),
    QStringLiteral("value_out_load_r"), QStringLiteral("value_out_load_s"), QStringLiteral("value_out_load_t")};

DataPoints pointsFrom(std::initializer_list<std::pair<int, QVariant>> values)
{
    DataPoints map;
    for (const auto &entry : values)
        map.insert(entry.first, entry.second);
    return map;
}

QString legend(const QString &value)
{
    return QStringLiteral("(Current value:%1)").arg(value);
}

DataChart *gauge(QWidget *form, const QString &name)
{
    return form->findChild<DataChart *>(name);
}

QStringList gaugeTexts(QWidget *form, const QStringList &names)
{
    QStringList texts;
    for (const QString &name : names) {
        DataChart *chart = gauge(form, name);
        texts << (chart ? chart->valueText() : QStringLiteral("<missing %1>").arg(name));
    }
    return texts;
}

QStringList labelTexts(QWidget *form, const QStringList &names)
{
    QStringList texts;
    for (const QString &name : names) {
        auto *label = form->findChild<QLabel *>(name);
        texts << (label ? label->text() : QStringLiteral("<missing %1>").arg(name));
    }
    return texts;
}

// Newest sample of each curve's buffer (NaN for an empty buffer).
QVector<double> newestSamples(const TrendChart *chart)
{
    QVector<double> newest;
    for (int k = 0; k < chart->curveCount(); ++k) {
        const QVector<double> buffer = chart->bufferData(k);
        newest << (buffer.isEmpty() ? std::numeric_limits<double>::quiet_NaN() : buffer.first());
    }
    return newest;
}

QColor stripeColor(QWidget *form, const QString &lineName)
{
    auto *line = form->findChild<QWidget *>(lineName);
    if (!line)
        return QColor();
    static const QRegularExpression rgb(QStringLiteral("rgb\\(\\s*(\\d+)\\s*,\\s*(\\d+)\\s*,\\s*(\\d+)\\s*\\)"));
    const QRegularExpressionMatch match = rgb.match(line->styleSheet());
    if (!match.hasMatch())
        return QColor();
    return QColor(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
}

// Shows the page off screen and paints it once: a trend chart sizes its
// sample buffers from the plot box of its last paint.
void showAndPaint(QWidget *form)
{
    form->resize(kPageSize);
    form->grab();
}

} // namespace

class TestGraphForms : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void singleGaugeSetup_data();
    void singleGaugeSetup();
    void singleCaptions();
    void singleRefresh_data();
    void singleRefresh();
    void singleCurvesGrowOneSamplePerRefresh();
    void singleInitFlag_data();
    void singleInitFlag();

    void threeCaptions();
    void threeRefresh_data();
    void threeRefresh();
    void threeInitFlag_data();
    void threeInitFlag();

    void legendStripesMatchCurvePens_data();
    void legendStripesMatchCurvePens();

    void screenshots_data();
    void screenshots();

private:
    RTSingleGraphForm *single = nullptr;
    RTThreeGraphForm *three = nullptr;
    DynamicChart *singleChart = nullptr;
    ThreeDynamicChart *threeChart = nullptr;
};

void TestGraphForms::init()
{
    single = new RTSingleGraphForm;
    three = new RTThreeGraphForm;
    singleChart = single->findChild<DynamicChart *>(QStringLiteral("widget_single"));
    threeChart = three->findChild<ThreeDynamicChart *>(QStringLiteral("widget_three"));
    QVERIFY(singleChart);
    QVERIFY(threeChart);
    showAndPaint(single);
    showAndPaint(three);
    QVERIFY(singleChart->maxPoints() > 10);
    QVERIFY(threeChart->maxPoints() > 10);
}

void TestGraphForms::cleanup()
{
    delete single;
    delete three;
    single = nullptr;
    three = nullptr;
}

void TestGraphForms::singleGaugeSetup_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("minimum");
    QTest::addColumn<double>("maximum");
    QTest::addColumn<QList<int>>("colors");
    QTest::addColumn<QList<int>>("thresholds");

    QTest::newRow("capacity") << "widget_load" << 0.0 << 100.0 << QList<int>{2, 1, 0} << QList<int>{30, 60, 100};
    QTest::newRow("load") << "widget_outload" << 0.0 << 160.0 << QList<int>{0, 1, 2} << QList<int>{100, 120, 160};
    QTest::newRow("temperature") << "widget_temp" << 0.0 << 100.0 << QList<int>{0, 2} << QList<int>{100, 120};
    for (const char *name : {"widget_input_freq", "widget_out_freq", "widget_by_freq"})
        QTest::newRow(name) << name << 0.0 << 100.0 << QList<int>{2, 0, 2} << QList<int>{40, 60, 100};
}

void TestGraphForms::singleGaugeSetup()
{
    QFETCH(QString, name);
    QFETCH(double, minimum);
    QFETCH(double, maximum);
    QFETCH(QList<int>, colors);
    QFETCH(QList<int>, thresholds);

    DataChart *chart = gauge(single, name);
    QVERIFY(chart);
    QCOMPARE(chart->getMinValue(), minimum);
    QCOMPARE(chart->getMaxValue(), maximum);
    QCOMPARE(chart->getColorIndexes(), colors);
    QCOMPARE(chart->getRadioValues(), thresholds);
}

void TestGraphForms::singleCaptions()
{
    const QStringList names = {QStringLiteral("label_load"),       QStringLiteral("label_outload"),
                               QStringLiteral("label_temp"),       QStringLiteral("label_input"),
                               QStringLiteral("label_output"),     QStringLiteral("label_bypass"),
                               QStringLiteral("label_input_vol"),  QStringLiteral("label_output_vol"),
                               QStringLiteral("label_batt_vol"),   QStringLiteral("label_bypass_vol")};
    const QStringList expected = {
        QStringLiteral("Remaining battery time(Min)"), QStringLiteral("Output load(%)"),
        QStringLiteral("Battery temperature(C)"),      QStringLiteral("Input frequency(Hz)"),
        QStringLiteral("Output frequency(Hz)"),        QStringLiteral("Bypass frequency(Hz)"),
        QStringLiteral("Input voltage(V)"),            QStringLiteral("Output voltage(V)"),
        QStringLiteral("Battery voltage(V)"),          QStringLiteral("Bypass voltage(V)")};
    QCOMPARE(labelTexts(single, names), expected);
    QCOMPARE(labelTexts(single, {QStringLiteral("label_table"), QStringLiteral("label_graphic")}),
             QStringList({QStringLiteral("Single-phase UPS Data Table Display"),
                          QStringLiteral("Single-phase UPS Data Graphic Display")}));
}

void TestGraphForms::singleRefresh_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<QStringList>("gauges");   // load, outload, temp, input/output/bypass frequency
    QTest::addColumn<QVector<double>>("curves"); // newest sample of curves 0-3
    QTest::addColumn<QStringList>("legends");  // input, output, battery, bypass

    const QString dashes = QStringLiteral("--");

    QTest::newRow("utility mode")
        << pointsFrom({{3, 85}, {39, 45}, {15, 500}, {25, 499}, {42, 501}, {9, 229}, {27, 230}, {4, 2715}, {44, 231}})
        << QStringList{"85", "45", dashes, "50", "49.9", "50.1"} << QVector<double>{229, 230, 271.5, 231}
        << QStringList{legend("229"), legend("230"), legend("271.5"), legend("231")};
    // Every missing id reads 0; the temperature gauge has no data point at all.
    QTest::newRow("empty map") << DataPoints() << QStringList{"0", "0", dashes, "0", "0", "0"}
                               << QVector<double>{0, 0, 0, 0}
                               << QStringList{legend("0"), legend("0"), legend("0"), legend("0")};
    QTest::newRow("range limits") << pointsFrom({{3, 100}, {39, 160}, {15, 1000}, {25, 400}, {42, 600}})
                                  << QStringList{"100", "160", dashes, "100", "40", "60"}
                                  << QVector<double>{0, 0, 0, 0}
                                  << QStringList{legend("0"), legend("0"), legend("0"), legend("0")};
    QTest::newRow("over range") << pointsFrom({{3, 101}, {39, 161}, {15, 1001}, {25, 1500}, {42, 65535}})
                                << QStringList{dashes, dashes, dashes, dashes, dashes, dashes}
                                << QVector<double>{0, 0, 0, 0}
                                << QStringList{legend("0"), legend("0"), legend("0"), legend("0")};
    // Registers are read as unsigned 32 bits: -1 becomes 4294967295.
    QTest::newRow("negative battery voltage")
        << pointsFrom({{4, -1}, {3, -1}}) << QStringList{dashes, "0", dashes, "0", "0", "0"}
        << QVector<double>{0, 0, 429496729.5, 0}
        << QStringList{legend("0"), legend("0"), legend("4.29497e+08"), legend("0")};
    QTest::newRow("voltage above chart scale")
        << pointsFrom({{9, 500}, {27, 65535}}) << QStringList{"0", "0", dashes, "0", "0", "0"}
        << QVector<double>{500, 65535, 0, 0}
        << QStringList{legend("500"), legend("65535"), legend("0"), legend("0")};
    QTest::newRow("wrong types")
        << pointsFrom({{9, QStringLiteral("abc")}, {27, QStringLiteral("230")}, {44, 1e300},
                       {4, std::numeric_limits<double>::quiet_NaN()}, {3, QVariantList{1}}, {39, 44.6}})
        << QStringList{"0", "45", dashes, "0", "0", "0"} << QVector<double>{0, 230, 0, 0}
        << QStringList{legend("0"), legend("230"), legend("0"), legend("0")};
    QTest::newRow("ids outside 0..72 ignored")
        << pointsFrom({{-1, 50}, {73, 230}, {2003, 1}, {4000, QByteArray("model")}, {100000, 5}})
        << QStringList{"0", "0", dashes, "0", "0", "0"} << QVector<double>{0, 0, 0, 0}
        << QStringList{legend("0"), legend("0"), legend("0"), legend("0")};
}

void TestGraphForms::singleRefresh()
{
    QFETCH(DataPoints, points);
    QFETCH(QStringList, gauges);
    QFETCH(QVector<double>, curves);
    QFETCH(QStringList, legends);

    single->RefreshRtSingleChartInfo(points);

    QCOMPARE(gaugeTexts(single, kSingleGauges), gauges);
    QCOMPARE(newestSamples(singleChart), curves);
    QCOMPARE(labelTexts(single, kSingleLegends), legends);
    // Every curve got exactly one (doubled first) sample, so none is empty at paint time.
    for (int k = 0; k < DynamicChart::CurveCount; ++k)
        QCOMPARE(singleChart->curveMap().value(k).size(), 2);
}

void TestGraphForms::singleCurvesGrowOneSamplePerRefresh()
{
    const int voltages[] = {228, 229, 231};
    for (int volts : voltages)
        single->Show_RtChart_View(pointsFrom({{9, volts}, {27, volts + 1}}));

    QCOMPARE(singleChart->bufferData(0), QVector<double>({231, 229, 228, 228}));
    QCOMPARE(singleChart->bufferData(1), QVector<double>({232, 230, 229, 229}));
    QCOMPARE(singleChart->bufferData(3), QVector<double>({0, 0, 0, 0}));
}

void TestGraphForms::singleInitFlag_data()
{
    QTest::addColumn<bool>("flag");
    QTest::newRow("true keeps everything") << true;
    QTest::newRow("false re-initialises") << false;
}

void TestGraphForms::singleInitFlag()
{
    QFETCH(bool, flag);

    const DataPoints points =
        pointsFrom({{3, 85}, {39, 45}, {15, 500}, {25, 499}, {42, 501}, {9, 229}, {27, 230}, {4, 2715}, {44, 231}});
    single->RefreshRtSingleChartInfo(points);
    single->RefreshRtSingleChartInfo(points);
    const QStringList gaugesBefore = gaugeTexts(single, kSingleGauges);
    const QStringList legendsBefore = labelTexts(single, kSingleLegends);

    single->InitRTChartFormInfo(flag);

    if (flag) {
        QCOMPARE(gaugeTexts(single, kSingleGauges), gaugesBefore);
        QCOMPARE(labelTexts(single, kSingleLegends), legendsBefore);
        QCOMPARE(singleChart->bufferData(0).size(), 3);
    } else {
        // 0 lies inside every range, so even the temperature gauge shows 0 until the next refresh.
        QCOMPARE(gaugeTexts(single, kSingleGauges), QStringList({"0", "0", "0", "0", "0", "0"}));
        QCOMPARE(labelTexts(single, kSingleLegends), QStringList({"(0)", "(0)", "(0)", "(0)"}));
        for (int k = 0; k < DynamicChart::CurveCount; ++k)
            QVERIFY(singleChart->bufferData(k).isEmpty());
        single->RefreshRtSingleChartInfo(points);
        QCOMPARE(singleChart->bufferData(0), QVector<double>({229, 229}));
    }
}

void TestGraphForms::threeCaptions()
{
    QStringList captions;
    for (const QLabel *label : three->findChildren<QLabel *>())
        captions << label->text();
    const QStringList required = {"Input Voltage:", "Input Frequery:", "R(V)", "S(V)", "T(V)", "R(Hz)", "S(Hz)",
                                  "T(Hz)", "Three-phase UPS Data Table Display",
                                  "Three-phase UPS Data Graphic Display"};
    for (const QString &caption : required)
        QVERIFY2(captions.contains(caption), qPrintable(caption));
    QCOMPARE(three->findChildren<DataChart *>().size(), 5);
}

void TestGraphForms::threeRefresh_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<QStringList>("gauges");    // capacity, temperature, highest load, output/bypass frequency
    QTest::addColumn<QStringList>("readouts");  // input voltage R/S/T, input frequency R/S/T, bypass voltage R/S/T
    QTest::addColumn<QVector<double>>("curves"); // output voltage R/S/T, output load R/S/T
    QTest::addColumn<QStringList>("legends");

    const QString dashes = QStringLiteral("--");
    const DataPoints balanced =
        pointsFrom({{3, 97},   {6, 27},   {25, 500}, {42, 499}, {9, 230},  {10, 231}, {11, 229}, {15, 500},
                    {16, 501}, {17, 499}, {44, 228}, {45, 229}, {46, 230}, {27, 230}, {28, 229}, {29, 231},
                    {39, 35},  {40, 36},  {41, 34}});
    QTest::newRow("balanced") << balanced << QStringList{"97", "27", "36", "50", "49.9"}
                              << QStringList{"230", "231", "229", "50.0", "50.1", "49.9", "228", "229", "230"}
                              << QVector<double>{230, 229, 231, 35, 36, 34}
                              << QStringList{"(230)", "(229)", "(231)", "(35)", "(36)", "(34)"};

    DataPoints unbalanced = balanced;
    unbalanced[39] = 40;
    unbalanced[40] = 95;
    unbalanced[41] = 130;
    QTest::newRow("unbalanced load") << unbalanced << QStringList{"97", "27", "130", "50", "49.9"}
                                     << QStringList{"230", "231", "229", "50.0", "50.1", "49.9", "228", "229", "230"}
                                     << QVector<double>{230, 229, 231, 40, 95, 130}
                                     << QStringList{"(230)", "(229)", "(231)", "(40)", "(95)", "(130)"};

    DataPoints hot = balanced;
    hot[6] = 101;
    QTest::newRow("temperature above 100") << hot << QStringList{"97", dashes, "36", "50", "49.9"}
                                           << QStringList{"230", "231", "229", "50.0", "50.1", "49.9", "228",
                                                          "229", "230"}
                                           << QVector<double>{230, 229, 231, 35, 36, 34}
                                           << QStringList{"(230)", "(229)", "(231)", "(35)", "(36)", "(34)"};

    QTest::newRow("empty map") << DataPoints() << QStringList{"0", "0", "0", "0", "0"}
                               << QStringList{"0", "0", "0", "0.0", "0.0", "0.0", "0", "0", "0"}
                               << QVector<double>{0, 0, 0, 0, 0, 0}
                               << QStringList{"(0)", "(0)", "(0)", "(0)", "(0)", "(0)"};

    QTest::newRow("out of range and negative")
        << pointsFrom({{3, -1}, {6, 65535}, {39, 161}, {25, 1001}, {42, -20}, {9, -1}, {15, -5}, {27, -7}})
        << QStringList{dashes, dashes, dashes, dashes, dashes}
        << QStringList{"-1", "0", "0", "-0.5", "0.0", "0.0", "0", "0", "0"}
        << QVector<double>{-7, 0, 0, 161, 0, 0} << QStringList{"(-7)", "(0)", "(0)", "(161)", "(0)", "(0)"};

    QTest::newRow("wrong types")
        << pointsFrom({{3, QStringLiteral("88")}, {6, QByteArray("x")}, {9, 1e300},
                       {10, std::numeric_limits<double>::infinity()}, {15, 499.6}, {27, QVariantList{230}},
                       {39, true}})
        << QStringList{"88", "0", "1", "0", "0"} << QStringList{"0", "0", "0", "50.0", "0.0", "0.0", "0", "0", "0"}
        << QVector<double>{0, 0, 0, 1, 0, 0} << QStringList{"(0)", "(0)", "(0)", "(1)", "(0)", "(0)"};

    QTest::newRow("ids outside 0..72 ignored")
        << pointsFrom({{-3, 97}, {73, 230}, {2006, 1}, {4001, QByteArray("maker")}, {100000, 5}})
        << QStringList{"0", "0", "0", "0", "0"} << QStringList{"0", "0", "0", "0.0", "0.0", "0.0", "0", "0", "0"}
        << QVector<double>{0, 0, 0, 0, 0, 0} << QStringList{"(0)", "(0)", "(0)", "(0)", "(0)", "(0)"};
}

void TestGraphForms::threeRefresh()
{
    QFETCH(DataPoints, points);
    QFETCH(QStringList, gauges);
    QFETCH(QStringList, readouts);
    QFETCH(QVector<double>, curves);
    QFETCH(QStringList, legends);

    three->RefreshRtChartInfo(points);

    QCOMPARE(gaugeTexts(three, kThreeGauges), gauges);
    QCOMPARE(labelTexts(three, kThreeReadouts), readouts);
    QCOMPARE(newestSamples(threeChart), curves);
    QCOMPARE(labelTexts(three, kThreeLegends), legends);
    for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k)
        QCOMPARE(threeChart->curveMap().value(k).size(), 2);
}

void TestGraphForms::threeInitFlag_data()
{
    QTest::addColumn<bool>("flag");
    QTest::newRow("true keeps everything") << true;
    QTest::newRow("false re-initialises") << false;
}

void TestGraphForms::threeInitFlag()
{
    QFETCH(bool, flag);

    const DataPoints points = pointsFrom({{3, 97}, {6, 27}, {25, 500}, {42, 499}, {9, 230}, {15, 500},
                                          {44, 228}, {27, 230}, {39, 35}, {40, 36}, {41, 34}});
    three->RefreshRtChartInfo(points);
    const QStringList gaugesBefore = gaugeTexts(three, kThreeGauges);
    const QStringList readoutsBefore = labelTexts(three, kThreeReadouts);
    const QStringList legendsBefore = labelTexts(three, kThreeLegends);

    three->InitRTChartFormInfo(flag);

    if (flag) {
        QCOMPARE(gaugeTexts(three, kThreeGauges), gaugesBefore);
        QCOMPARE(labelTexts(three, kThreeReadouts), readoutsBefore);
        QCOMPARE(labelTexts(three, kThreeLegends), legendsBefore);
        QCOMPARE(threeChart->bufferData(5).size(), 2);
    } else {
        QCOMPARE(gaugeTexts(three, kThreeGauges), QStringList({"0", "0", "0", "0", "0"}));
        QCOMPARE(labelTexts(three, kThreeReadouts),
                 QStringList({"0", "0", "0", "0.0", "0.0", "0.0", "0", "0", "0"}));
        QCOMPARE(labelTexts(three, kThreeLegends), QStringList({"(0)", "(0)", "(0)", "(0)", "(0)", "(0)"}));
        for (int k = 0; k < ThreeDynamicChart::CurveCount; ++k)
            QVERIFY(threeChart->bufferData(k).isEmpty());
    }
}

void TestGraphForms::legendStripesMatchCurvePens_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("curve");

    const char *singleLines[] = {"line_3", "line_4", "line_5", "line_6"};
    for (int k = 0; k < 4; ++k)
        QTest::addRow("single curve %d", k) << false << singleLines[k] << k;
    for (int k = 0; k < 6; ++k)
        QTest::addRow("three curve %d", k) << true << QStringLiteral("line_%1").arg(k + 3) << k;
}

void TestGraphForms::legendStripesMatchCurvePens()
{
    QFETCH(bool, threePhase);
    QFETCH(QString, line);
    QFETCH(int, curve);

    QWidget *form = threePhase ? static_cast<QWidget *>(three) : static_cast<QWidget *>(single);
    const TrendChart *chart = threePhase ? static_cast<TrendChart *>(threeChart) : singleChart;
    QCOMPARE(stripeColor(form, line), chart->curvePens().value(curve).color());
}

void TestGraphForms::screenshots_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("single") << false << "rtsinglegraphform.png";
    QTest::newRow("three") << true << "rtthreegraphform.png";
}

void TestGraphForms::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshots");
    QFETCH(bool, threePhase);
    QFETCH(QString, fileName);

    ChartScreenshots::useDesktopFont();
    RTSingleGraphForm singlePage;
    RTThreeGraphForm threePage;
    QWidget *form = threePhase ? static_cast<QWidget *>(&threePage) : static_cast<QWidget *>(&singlePage);
    QVERIFY(ChartScreenshots::showOffscreen(form, kPageSize));
    // A minute of the agent's demo story: mains failure, battery, mains return.
    const QList<DataPoints> story = ChartScreenshots::agentStory(threePhase, 60);
    QVERIFY(!story.isEmpty());
    for (const DataPoints &points : story) {
        if (threePhase)
            threePage.RefreshRtChartInfo(points);
        else
            singlePage.RefreshRtSingleChartInfo(points);
    }
    QVERIFY(!ChartScreenshots::save(form, fileName).isEmpty());
}

QTEST_MAIN(TestGraphForms)
#include "tst_graphforms.moc"
