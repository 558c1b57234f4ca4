// Real-time data table: value and label texts in single- and three-phase
// layouts, code fallbacks, hidden rows, odd values and the start texts.
#include <QTableWidget>
#include <QtTest>

#include <limits>

#include "rtdataform.h"

using DataPoints = QMap<int, QVariant>;

constexpr int kLabelColumn = 1;
constexpr int kValueColumn = 2;
const QList<int> kHiddenRows = {2, 3, 6, 10, 12, 16, 17, 21, 22};
// First and last row of the input, output and bypass sections, and their single-phase labels.
const QList<int> kPhaseRows = {9, 12, 15, 18, 20, 22};
const QStringList kSingleLabels = {"Input voltage(V)",  "Input power(W)",    "Output voltage(V)",
                                   "Output load(%)",    "Bypass voltage(V)", "Bypass power(W)"};
const QList<int> kValueRows = [] { QList<int> rows; for (int row = 1; row <= 22; ++row) rows << row; return rows; }();

// Texts of `column` in the given rows (default: value rows 1-22), joined with '|'.
static QString cells(const RTDataForm &form, int column = kValueColumn, const QList<int> &rows = kValueRows)
{
    const auto *table = form.findChild<QTableWidget *>(QStringLiteral("tableWidget"));
    QStringList texts;
    for (int row : rows)
        texts << (table->item(row, column) ? table->item(row, column)->text() : "<no item>");
    return texts.join(QLatin1Char('|'));
}

class TestRTDataForm : public QObject
{
    Q_OBJECT

private slots:
    void values_data()
    {
        QTest::addColumn<DataPoints>("points");
        QTest::addColumn<QString>("expected"); // values of rows 1-22

        // Battery current (5) is a signed 16-bit quantity in an unsigned register.
        QTest::newRow("single phase")
            << DataPoints{{0, 3}, {1, 3600}, {2, 27}, {3, 98}, {4, 2715}, {5, 65526}, {6, 100}, {7, 4}, {8, 1},
                          {9, 229}, {10, 999}, {12, 38}, {15, 499}, {18, 860}, {19, 1}, {24, 5}, {25, 600}, {27, 230},
                          {30, 35}, {33, 805}, {39, 35}, {42, 501}, {44, 231}, {47, 7}, {50, 90}}
            << "Low|3600|27|98|271.5|-1.0|100|4|229|3.8|49.9|860|Battery supply|60.0|230|3.5|805|35|50.1|231|0.7|90";
        // Each section follows its own phase count; anything but 3 is single-phase.
        QTest::newRow("codes outside lists, sign limit, hot sensor, bypass three only")
            << DataPoints{{0, 5}, {24, 8}, {5, 32768}, {6, 101}, {8, 2}, {26, 0}, {43, 3}}
            << "Normal|0|0|0|0.0|-3276.8|--|0|0|0.0|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0/0/0|0.0/0.0/0.0|0/0/0";
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
        // Values are rounded to whole numbers before they are scaled.
        QTest::newRow("wrong types, input three only")
            << DataPoints{{0, true}, {9, QStringLiteral("volts")}, {3, QByteArray("87")}, {4, 2714.6}, {6, -3},
                          {15, std::numeric_limits<double>::infinity()}, {27, 1e300}, {30, QVariantList{1, 2}},
                          {12, QStringLiteral("231")}, {-1, 3}, {73, 3}, {2006, 1}, {4000, QByteArray("X")},
                          {8, 3}, {26, 2}, {43, 1}}
            << "Unknown|0|0|87|271.5|0.0|-3|0|0/0/0|23.1/0.0/0.0|0.0/0.0/0.0|0/0/0|"
               "None supply|0.0|0|0.0|0|0|0.0|0|0.0|0";
    }

    void values()
    {
        QFETCH(DataPoints, points);
        const int phases[] = {points.value(8).toInt(), points.value(26).toInt(), points.value(43).toInt()};
        RTDataForm form;
        form.InitRTData();
        QCOMPARE(cells(form), QStringLiteral("Normal|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0|0"));
        // From the other layout first: labels must follow every refresh.
        const auto other = [](int count) { return count == 3 ? 1 : 3; };
        form.RefreshRTDataInfo({{8, other(phases[0])}, {26, other(phases[1])}, {43, other(phases[2])}});
        form.RefreshRTDataInfo(points);
        QTEST(cells(form), "expected");
        const QStringList labels = cells(form, kLabelColumn, kPhaseRows).split(QLatin1Char('|'));
        for (int i = 0; i < kPhaseRows.size(); ++i) {
            const QString single = kSingleLabels.at(i);
            QCOMPARE(labels.at(i), phases[i / 2] == 3 ? QString(single).replace("(", " R/S/T(") : single);
        }
        const auto *table = form.findChild<QTableWidget *>(QStringLiteral("tableWidget"));
        for (int row = 0; row < table->rowCount(); ++row) // written, but still hidden
            QCOMPARE(table->isRowHidden(row), kHiddenRows.contains(row));
        form.InitRTDataFormInfo();
        QCOMPARE(cells(form),
                 QStringLiteral("Normal|0|0|0|0.0|0.0|0|0|0|0.0|0.0|0|None supply|0.0|0|0.0|0|0|0.0|0|0.0|0"));
        QCOMPARE(cells(form, kLabelColumn, kPhaseRows), kSingleLabels.join(QLatin1Char('|')));
    }
};

QTEST_MAIN(TestRTDataForm)
#include "tst_rtdataform.moc"
