// The console's device line: measurements read from the data points, the
// output source included (not from the plug-in's data-log row).
#include <QtTest>

#include "consolemonitor.h"

using Points = QMap<int, QVariant>;

class TestHostConsole : public QObject
{
    Q_OBJECT

private slots:
    void measurementFields_data();
    void measurementFields();
};

void TestHostConsole::measurementFields_data()
{
    QTest::addColumn<Points>("data");
    QTest::addColumn<QStringList>("fields");

    QTest::newRow("single phase")
        << Points{{8, 1}, {9, 230}, {24, 3}, {26, 1}, {27, 231}, {39, 35}, {3, 100}}
        << QStringList{"Utility supply", "in 230 V", "out 231 V", "load 35 %", "battery 100 %"};
    QTest::newRow("three-phase input, single-phase output")
        << Points{{8, 3}, {9, 230}, {10, 231}, {11, 229}, {24, 5}, {26, 1}, {27, 220}, {28, 9}, {39, 30}, {3, 80}}
        << QStringList{"Battery supply", "in 230/231/229 V", "out 220 V", "load 30 %", "battery 80 %"};
    QTest::newRow("three-phase output")
        << Points{{8, 1}, {9, 230}, {24, 4}, {26, 3}, {27, 220}, {28, 221}, {29, 222}, {39, 30}, {40, 31}, {41, 32}}
        << QStringList{"Bypass supply", "in 230 V", "out 220/221/222 V", "load 30/31/32 %", "battery - %"};
    QTest::newRow("codes outside the list, values missing")
        << Points{{24, 0}, {26, 3}, {27, 220}}
        << QStringList{"Other supply", "in - V", "out 220/-/- V", "load -/-/- %", "battery - %"};
}

void TestHostConsole::measurementFields()
{
    QFETCH(Points, data);
    QFETCH(QStringList, fields);
    QCOMPARE(ConsoleMonitor::measurementFields(data), fields);
}

QTEST_GUILESS_MAIN(TestHostConsole)
#include "tst_host_console.moc"
