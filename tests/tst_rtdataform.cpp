// Real-time data table: value and label texts in single- and three-phase
// layouts, code fallbacks, hidden rows, hostile values and the start texts.

#include <QTableWidget>
#include <QtTest>

#include <limits>

#include "rtdataform.h"

using DataPoints = QMap<int, QVariant>;

namespace {

constexpr int kLabelColumn = 1;
constexpr int kValueColumn = 2;
const QList<int> kHiddenRows = {2, 3, 6, 10, 12, 16, 17, 21, 22};
const QList<int> kValueRows = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22};

} // namespace

class TestRTDataForm : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void values_data();
    void values();
    void threePhaseLabels_data();
    void threePhaseLabels();

private:
    // Texts of `column` in the given rows, joined with '|'.
    QString cells(int column, const QList<int> &rows) const;
    QString valueTexts() const { return cells(kValueColumn, kValueRows); }

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
}

QString TestRTDataForm::cells(int column, const QList<int> &rows) const
{
    QStringList texts;
    for (int row : rows)
        texts << (table->item(row, column) ? table->item(row, column)->text() : QStringLiteral("<no item>"));
    return texts.join(QLatin1Char('|'));
}

void TestRTDataForm::values_data()
{
    QTest::addColumn<DataPoints>("points");
    QTest::addColumn<QString>("expected"); // values of rows 1-22

    // Battery current (5) is a signed 16-bit quantity in an unsigned register.
    QTest::newRow("single phase")
        << DataPoints{{0, 3},   {1, 3600}, {2, 27},  {3, 98},  {4, 2715}, {5, 65526}, {6, 100}, {7, 4},
                       {8, 1},   {9, 229},  {10, 999}, {12, 38}, {15, 499}, {18, 860}, {19, 1},  {24, 5},
                       {25, 600}, {27, 230}, {30, 35},  {33, 805}, {39, 35}, {42, 501}, {44, 231}, {47, 7}, {50, 90}}
        << "Low|3600|27|98|271.5|-1.0|100|4|229|3.8|49.9|860|Battery supply|60.0|230|3.5|805|35|50.1|231|0.7|90";
    // Codes outside their lists, the signed limits, temperatures above 100.
    QTest::newRow("codes and limits")
        << DataPoints{{0, 5}, {24, 8}, {5, 32768}, {6, 101}}
        << "Normal|0|0|0|0.0|-3276.8|--|0|0|0.0|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0|0.0|0";
    QTest::newRow("codes and limits 2")
        << DataPoints{{0, 0}, {24, 0}, {5, 32767}, {6, 65535}}
        << "Normal|0|0|0|0.0|3276.7|--|0|0|0.0|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0|0.0|0";
    // Three-phase power uses the low halves: 18, 20, 22 (19 and 21 are skipped).
    DataPoints three;
    for (int id = 0; id <= 72; ++id)
        three.insert(id, 1000 + id); // every id distinguishable
    three[8] = three[26] = three[43] = 3;
    QTest::newRow("three phases")
        << three
        << "Normal|1001|1002|1003|100.4|100.5|--|1007|1009/1010/1011|101.2/101.3/101.4|101.5/101.6/101.7|"
           "1018/1020/1022|None supply|102.5|1027/1028/1029|103.0/103.1/103.2|1033/1035/1037|1039/1040/1041|"
           "104.2|1044/1045/1046|104.7/104.8/104.9|1050/1052/1054";
    QTest::newRow("wrong types")
        << DataPoints{{0, true}, {9, QStringLiteral("volts")}, {3, QByteArray("87")}, {4, 2714.6},
                       {15, std::numeric_limits<double>::infinity()}, {27, 1e300}, {6, -3}, {30, QVariantList{1, 2}},
                       {12, QStringLiteral("231")}, {-1, 3}, {73, 3}, {2006, 1}, {4000, QByteArray("X")}}
        << "Unknown|0|0|87|271.5|0.0|-3|0|0|23.1|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0|0.0|0";
}

void TestRTDataForm::values()
{
    QFETCH(DataPoints, points);
    form->RefreshRTDataInfo(points);
    QTEST(valueTexts(), "expected");
    // The rows hidden at start are written but stay hidden, whatever the
    // phase count (also when it switches back, see threePhaseLabels).
    for (int row = 0; row < table->rowCount(); ++row)
        QCOMPARE(table->isRowHidden(row), kHiddenRows.contains(row));
    form->InitRTDataFormInfo(); // back to the start texts
    QCOMPARE(valueTexts(),
             QStringLiteral("Normal|0|0|0|0.0|0.0|0|0|0|0.0|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0|0.0|0"));
}

void TestRTDataForm::threePhaseLabels_data()
{
    QTest::addColumn<int>("input");
    QTest::addColumn<int>("output");
    QTest::addColumn<int>("bypass");
    QTest::addColumn<QString>("expected"); // labels of rows 9, 12, 15, 18, 20, 22

    // Each section follows its own phase count; anything but 3 is single-phase.
    QTest::newRow("all three") << 3 << 3 << 3
                               << "Input voltage R/S/T(V)|Input power R/S/T(W)|Output voltage R/S/T(V)|"
                                  "Output load R/S/T(%)|Bypass voltage R/S/T(V)|Bypass power R/S/T(W)";
    QTest::newRow("output single") << 3 << 1 << 3
                                   << "Input voltage R/S/T(V)|Input power R/S/T(W)|Output voltage(V)|"
                                      "Output load(%)|Bypass voltage R/S/T(V)|Bypass power R/S/T(W)";
    QTest::newRow("bypass only") << 2 << 0 << 3
                                 << "Input voltage(V)|Input power(W)|Output voltage(V)|Output load(%)|"
                                    "Bypass voltage R/S/T(V)|Bypass power R/S/T(W)";
}

void TestRTDataForm::threePhaseLabels()
{
    QFETCH(int, input);
    QFETCH(int, output);
    QFETCH(int, bypass);
    const QList<int> rows = {9, 12, 15, 18, 20, 22};
    // From the other layout first: labels must follow every refresh.
    form->RefreshRTDataInfo({{8, input == 3 ? 1 : 3}, {26, output == 3 ? 1 : 3}, {43, bypass == 3 ? 1 : 3}});
    form->RefreshRTDataInfo({{8, input}, {26, output}, {43, bypass}});
    QTEST(cells(kLabelColumn, rows), "expected");
    for (int row = 0; row < table->rowCount(); ++row)
        QCOMPARE(table->isRowHidden(row), kHiddenRows.contains(row));
    form->InitRTDataFormInfo(); // back to the single-phase labels
    QCOMPARE(cells(kLabelColumn, rows), QStringLiteral("Input voltage(V)|Input power(W)|Output voltage(V)|"
                                                       "Output load(%)|Bypass voltage(V)|Bypass power(W)"));
}

QTEST_MAIN(TestRTDataForm)
#include "tst_rtdataform.moc"
