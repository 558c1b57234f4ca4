// Real-time data table: value and label texts in single- and three-phase
// layouts, phase switching, code fallbacks and hostile values.

#include <QLabel>
#include <QSet>
#include <QTableWidget>
#include <QtTest>

#include <algorithm>
#include <iterator>
#include <limits>

#include "chartscreenshots.h"
#include "rtdataform.h"

using DataPoints = QMap<int, QVariant>;

namespace {

constexpr int kLabelColumn = 1;
constexpr int kValueColumn = 2;

const int kHiddenRows[] = {2, 3, 6, 10, 12, 16, 17, 21, 22};

// Single-phase labels of rows 1-22 (row r shows item r - 1).
const char *const kSingleLabels[] = {
    "Battery state", "Time on battery(s)", "Remaining battery time(Min)", "Remaining battery capacity(%)",
    "Battery voltage(V)", "Battery current(A)", "Battery temperature(C)", "Number of mains failure",
    "Input voltage(V)", "Input current(A)", "Input frequency(Hz)", "Input power(W)", "Output mode",
    "Output frequency(Hz)", "Output voltage(V)", "Output current(A)", "Output power(W)", "Output load(%)",
    "Bypass frequency(Hz)", "Bypass voltage(V)", "Bypass current(A)", "Bypass power(W)",
};

DataPoints pointsFrom(std::initializer_list<std::pair<int, QVariant>> values)
{
    DataPoints map;
    for (const auto &entry : values)
        map.insert(entry.first, entry.second);
    return map;
}

} // namespace

class TestRTDataForm : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void constructionBuildsSectionsAndLabels();
    void initRTDataFillsStartValuesAndHidesRows();
    void emptyMapShowsDefaults();
    void singlePhaseTexts_data();
    void singlePhaseTexts();
    void threePhaseTexts_data();
    void threePhaseTexts();
    void phaseCountSwitching_data();
    void phaseCountSwitching();
    void hostileValues_data();
    void hostileValues();
    void screenshots_data();
    void screenshots();

private:
    QString value(int row) const;
    QString label(int row) const;

    RTDataForm *form = nullptr;
    QTableWidget *table = nullptr;
};

void TestRTDataForm::init()
{
    form = new RTDataForm;
    table = form->findChild<QTableWidget *>(QStringLiteral("tableWidget"));
    QVERIFY(table);
    form->InitRTData();
}

void TestRTDataForm::cleanup()
{
    delete form;
    form = nullptr;
    table = nullptr;
}

QString TestRTDataForm::value(int row) const
{
    const QTableWidgetItem *item = table->item(row, kValueColumn);
    return item ? item->text() : QStringLiteral("<no item>");
}

QString TestRTDataForm::label(int row) const
{
    const QTableWidgetItem *item = table->item(row, kLabelColumn);
    return item ? item->text() : QStringLiteral("<no item>");
}

void TestRTDataForm::constructionBuildsSectionsAndLabels()
{
    RTDataForm fresh;
    auto *freshTable = fresh.findChild<QTableWidget *>(QStringLiteral("tableWidget"));
    QVERIFY(freshTable);
    QCOMPARE(freshTable->rowCount(), 23);
    QCOMPARE(freshTable->columnCount(), 3);
    QCOMPARE(fresh.findChild<QLabel *>(QStringLiteral("label_10"))->text(),
             QStringLiteral("Real-time information interface"));

    QCOMPARE(freshTable->item(0, 0)->text(), QStringLiteral("Real-time Info"));
    const struct {
        int row;
        int span;
        const char *title;
    } sections[] = {{1, 7, "Battery Info"}, {8, 5, "Input Info"}, {13, 6, "Output Info"}, {19, 4, "Bypass Info"}};
    for (const auto &section : sections) {
        QCOMPARE(freshTable->item(section.row, 0)->text(), QString::fromLatin1(section.title));
        QCOMPARE(freshTable->rowSpan(section.row, 0), section.span);
    }
    for (int row = 1; row <= 22; ++row)
        QCOMPARE(freshTable->item(row, kLabelColumn)->text(), QString::fromLatin1(kSingleLabels[row - 1]));
    // Column 2 stays empty until InitRTData or a refresh.
    for (int row = 1; row <= 22; ++row)
        QVERIFY(!freshTable->item(row, kValueColumn));
}

void TestRTDataForm::initRTDataFillsStartValuesAndHidesRows()
{
    QCOMPARE(value(1), QStringLiteral("Normal"));
    for (int row = 2; row <= 22; ++row)
        QCOMPARE(value(row), QStringLiteral("0"));

    for (int row = 0; row < table->rowCount(); ++row) {
        const bool expectHidden = std::find(std::begin(kHiddenRows), std::end(kHiddenRows), row) != std::end(kHiddenRows);
        QCOMPARE(table->isRowHidden(row), expectHidden);
    }

    // Hidden rows are still written and stay hidden, also across a phase switch.
    form->RefreshRTDataInfo(pointsFrom({{1, 120}, {8, 3}, {12, 55}}));
    form->RefreshRTDataInfo(pointsFrom({{1, 125}, {8, 1}, {12, 57}}));
    QCOMPARE(value(2), QStringLiteral("125"));
    QCOMPARE(value(10), QStringLiteral("5.7"));
    for (int row : kHiddenRows)
        QVERIFY(table->isRowHidden(row));
}

void TestRTDataForm::emptyMapShowsDefaults()
{
    // First a full three-phase set, so that every cell and label must change back.
    DataPoints full;
    for (int id = 0; id <= 72; ++id)
        full.insert(id, 7);
    full[8] = full[26] = full[43] = 3;
    form->RefreshRTDataInfo(full);

    form->InitRTDataFormInfo();

    const QSet<int> tenthsRows = {5, 6, 10, 11, 14, 16, 19, 21};
    for (int row = 2; row <= 22; ++row) {
        QString expected = tenthsRows.contains(row) ? QStringLiteral("0.0") : QStringLiteral("0");
        if (row == 13)
            expected = QStringLiteral("None supply");
        QCOMPARE(value(row), expected);
        QCOMPARE(label(row), QString::fromLatin1(kSingleLabels[row - 1]));
    }
    QCOMPARE(value(1), QStringLiteral("Normal"));
}

void TestRTDataForm::singlePhaseTexts_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("expected");

    const struct {
        int code;
        const char *text;
    } batteryStates[] = {{1, "Unknown"}, {2, "Normal"}, {3, "Low"}, {4, "Depleted"},
                         {0, "Normal"},  {5, "Normal"}, {-1, "Normal"}, {65535, "Normal"}};
    for (const auto &state : batteryStates)
        QTest::addRow("battery state %d", state.code) << pointsFrom({{0, state.code}}) << 1 << state.text;

    const struct {
        int code;
        const char *text;
    } sources[] = {{1, "Other supply"},   {2, "None supply"},    {3, "Utility supply"},
                   {4, "Bypass supply"},  {5, "Battery supply"}, {6, "Booster supply"},
                   {7, "Reducer supply"}, {0, "None supply"},    {8, "None supply"}};
    for (const auto &source : sources)
        QTest::addRow("output source %d", source.code) << pointsFrom({{24, source.code}}) << 13 << source.text;

    // Battery current: a signed 16-bit quantity in an unsigned register.
    const struct {
        int raw;
        const char *text;
    } currents[] = {{65526, "-1.0"}, {65535, "-0.1"}, {32768, "-3276.8"}, {32767, "3276.7"}, {12, "1.2"}};
    for (const auto &current : currents)
        QTest::addRow("battery current %d", current.raw) << pointsFrom({{5, current.raw}}) << 6 << current.text;

    QTest::newRow("temperature 25") << pointsFrom({{6, 25}}) << 7 << "25";
    QTest::newRow("temperature 100") << pointsFrom({{6, 100}}) << 7 << "100";
    QTest::newRow("temperature 101") << pointsFrom({{6, 101}}) << 7 << "--";
    QTest::newRow("temperature 65535") << pointsFrom({{6, 65535}}) << 7 << "--";

    QTest::newRow("time on battery") << pointsFrom({{1, 3600}}) << 2 << "3600";
    QTest::newRow("remaining time") << pointsFrom({{2, 27}}) << 3 << "27";
    QTest::newRow("capacity") << pointsFrom({{3, 98}}) << 4 << "98";
    QTest::newRow("battery voltage") << pointsFrom({{4, 2715}}) << 5 << "271.5";
    QTest::newRow("mains failures") << pointsFrom({{7, 4}}) << 8 << "4";
    QTest::newRow("input voltage") << pointsFrom({{9, 229}, {10, 999}}) << 9 << "229";
    QTest::newRow("input current") << pointsFrom({{12, 38}}) << 10 << "3.8";
    QTest::newRow("input frequency") << pointsFrom({{15, 499}}) << 11 << "49.9";
    QTest::newRow("input power") << pointsFrom({{18, 860}, {19, 1}}) << 12 << "860";
    QTest::newRow("output frequency") << pointsFrom({{25, 600}}) << 14 << "60.0";
    QTest::newRow("output voltage") << pointsFrom({{27, 230}}) << 15 << "230";
    QTest::newRow("output current") << pointsFrom({{30, 35}}) << 16 << "3.5";
    QTest::newRow("output power") << pointsFrom({{33, 805}}) << 17 << "805";
    QTest::newRow("output load") << pointsFrom({{39, 35}}) << 18 << "35";
    QTest::newRow("bypass frequency") << pointsFrom({{42, 501}}) << 19 << "50.1";
    QTest::newRow("bypass voltage") << pointsFrom({{44, 231}}) << 20 << "231";
    QTest::newRow("bypass current") << pointsFrom({{47, 7}}) << 21 << "0.7";
    QTest::newRow("bypass power") << pointsFrom({{50, 90}}) << 22 << "90";
    QTest::newRow("phase count 2 is single-phase") << pointsFrom({{8, 2}, {9, 229}, {10, 231}}) << 9 << "229";
}

void TestRTDataForm::singlePhaseTexts()
{
    QFETCH(DataPoints, points);
    QFETCH(int, row);
    QFETCH(QString, expected);

    form->RefreshRTDataInfo(points);
    QCOMPARE(value(row), expected);
    if (row > 1)
        QCOMPARE(label(row), QString::fromLatin1(kSingleLabels[row - 1]));
}

void TestRTDataForm::threePhaseTexts_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("expectedLabel");
    QTest::addColumn<QString>("expectedValue");

    DataPoints three;
    for (int id = 0; id <= 72; ++id)
        three.insert(id, 1000 + id); // every id distinguishable
    three[8] = three[26] = three[43] = 3;

    QTest::newRow("input voltage") << three << 9 << "Input voltage R/S/T(V)" << "1009/1010/1011";
    QTest::newRow("input current") << three << 10 << "Input current R/S/T(A)" << "101.2/101.3/101.4";
    QTest::newRow("input frequency") << three << 11 << "Input frequency R/S/T(Hz)" << "101.5/101.6/101.7";
    // Power halves 19 and 21 are skipped.
    QTest::newRow("input power") << three << 12 << "Input power R/S/T(W)" << "1018/1020/1022";
    QTest::newRow("output voltage") << three << 15 << "Output voltage R/S/T(V)" << "1027/1028/1029";
    QTest::newRow("output current") << three << 16 << "Output current R/S/T(A)" << "103.0/103.1/103.2";
    QTest::newRow("output power") << three << 17 << "Output power R/S/T(W)" << "1033/1035/1037";
    QTest::newRow("output load") << three << 18 << "Output load R/S/T(%)" << "1039/1040/1041";
    QTest::newRow("bypass voltage") << three << 20 << "Bypass voltage R/S/T(V)" << "1044/1045/1046";
    QTest::newRow("bypass current") << three << 21 << "Bypass current R/S/T(A)" << "104.7/104.8/104.9";
    QTest::newRow("bypass power") << three << 22 << "Bypass power R/S/T(W)" << "1050/1052/1054";
    // Rows without phases keep one value.
    QTest::newRow("output frequency") << three << 14 << "Output frequency(Hz)" << "102.5";
    QTest::newRow("bypass frequency") << three << 19 << "Bypass frequency(Hz)" << "104.2";

    // Each section follows its own phase count.
    DataPoints mixed = three;
    mixed[26] = 1;
    QTest::newRow("mixed: input three") << mixed << 9 << "Input voltage R/S/T(V)" << "1009/1010/1011";
    QTest::newRow("mixed: output single") << mixed << 15 << "Output voltage(V)" << "1027";
    QTest::newRow("mixed: bypass three") << mixed << 20 << "Bypass voltage R/S/T(V)" << "1044/1045/1046";
    DataPoints bypassOnly = pointsFrom({{43, 3}, {44, 230}, {45, 231}, {46, 232}, {9, 229}});
    QTest::newRow("bypass only: bypass three") << bypassOnly << 20 << "Bypass voltage R/S/T(V)" << "230/231/232";
    QTest::newRow("bypass only: input single") << bypassOnly << 9 << "Input voltage(V)" << "229";
}

void TestRTDataForm::threePhaseTexts()
{
    QFETCH(DataPoints, points);
    QFETCH(int, row);
    QFETCH(QString, expectedLabel);
    QFETCH(QString, expectedValue);

    form->RefreshRTDataInfo(points);
    QCOMPARE(label(row), expectedLabel);
    QCOMPARE(value(row), expectedValue);
}

void TestRTDataForm::phaseCountSwitching_data()
{
    QTest::addColumn<int>("phaseId");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("singleLabel");
    QTest::addColumn<QString>("threeLabel");

    QTest::newRow("input") << 8 << 9 << "Input voltage(V)" << "Input voltage R/S/T(V)";
    QTest::newRow("input power") << 8 << 12 << "Input power(W)" << "Input power R/S/T(W)";
    QTest::newRow("output") << 26 << 15 << "Output voltage(V)" << "Output voltage R/S/T(V)";
    QTest::newRow("output load") << 26 << 18 << "Output load(%)" << "Output load R/S/T(%)";
    QTest::newRow("bypass") << 43 << 20 << "Bypass voltage(V)" << "Bypass voltage R/S/T(V)";
    QTest::newRow("bypass power") << 43 << 22 << "Bypass power(W)" << "Bypass power R/S/T(W)";
}

void TestRTDataForm::phaseCountSwitching()
{
    QFETCH(int, phaseId);
    QFETCH(int, row);
    QFETCH(QString, singleLabel);
    QFETCH(QString, threeLabel);

    DataPoints points;
    for (int id = 0; id <= 72; ++id)
        points.insert(id, 200 + id);

    // Single -> three -> single -> three -> "2" (single) -> three -> empty map.
    const int sequence[] = {1, 3, 1, 3, 2, 3};
    for (int phases : sequence) {
        points[phaseId] = phases;
        form->RefreshRTDataInfo(points);
        const bool three = phases == 3;
        QCOMPARE(label(row), three ? threeLabel : singleLabel);
        QCOMPARE(value(row).count(QLatin1Char('/')), three ? 2 : 0);
    }
    form->RefreshRTDataInfo(DataPoints());
    QCOMPARE(label(row), singleLabel);
    QVERIFY(!value(row).contains(QLatin1Char('/')));
}

void TestRTDataForm::hostileValues_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("expected");

    QTest::newRow("numeric string") << pointsFrom({{9, QStringLiteral("231")}}) << 9 << "231";
    QTest::newRow("text") << pointsFrom({{9, QStringLiteral("volts")}}) << 9 << "0";
    QTest::newRow("byte array") << pointsFrom({{3, QByteArray("87")}}) << 4 << "87";
    QTest::newRow("double rounds") << pointsFrom({{4, 2714.6}}) << 5 << "271.5";
    QTest::newRow("nan") << pointsFrom({{4, std::numeric_limits<double>::quiet_NaN()}}) << 5 << "0.0";
    QTest::newRow("infinity") << pointsFrom({{15, std::numeric_limits<double>::infinity()}}) << 11 << "0.0";
    QTest::newRow("huge double") << pointsFrom({{27, 1e300}}) << 15 << "0";
    QTest::newRow("list") << pointsFrom({{27, QVariantList{1, 2}}}) << 15 << "0";
    QTest::newRow("negative voltage") << pointsFrom({{27, -5}}) << 15 << "-5";
    QTest::newRow("negative temperature") << pointsFrom({{6, -3}}) << 7 << "-3";
    QTest::newRow("int max") << pointsFrom({{7, std::numeric_limits<int>::max()}}) << 8 << "2147483647";
    QTest::newRow("bool") << pointsFrom({{0, true}}) << 1 << "Unknown";
    QTest::newRow("battery state as text") << pointsFrom({{0, QStringLiteral("low")}}) << 1 << "Normal";
    QTest::newRow("ids outside 0..72 ignored")
        << pointsFrom({{-1, 3}, {73, 3}, {100, 3}, {2006, 1}, {4000, QByteArray("X")}}) << 9 << "0";
    QTest::newRow("phase count as text") << pointsFrom({{8, QStringLiteral("3")}, {9, 1}, {10, 2}, {11, 3}}) << 9
                                         << "1/2/3";
}

void TestRTDataForm::hostileValues()
{
    QFETCH(DataPoints, points);
    QFETCH(int, row);
    QFETCH(QString, expected);

    form->RefreshRTDataInfo(points);
    QCOMPARE(value(row), expected);
}

void TestRTDataForm::screenshots_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<QString>("fileName");
    QTest::newRow("single") << false << "rtdataform-single.png";
    QTest::newRow("three") << true << "rtdataform-three.png";
}

void TestRTDataForm::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshots");
    QFETCH(bool, threePhase);
    QFETCH(QString, fileName);

    ChartScreenshots::useDesktopFont();
    RTDataForm page;
    page.InitRTData();
    const DataPoints image = ChartScreenshots::agentImage(threePhase);
    QCOMPARE(image.value(8).toInt() == 3, threePhase);
    page.RefreshRTDataInfo(image);
    QVERIFY(ChartScreenshots::showOffscreen(&page, QSize(600, 560)));
    QVERIFY(!ChartScreenshots::save(&page, fileName).isEmpty());
}

QTEST_MAIN(TestRTDataForm)
#include "tst_rtdataform.moc"
