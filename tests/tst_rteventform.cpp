#include <QtTest>

#include <QTableWidget>

#include "rteventform.h"

using DataPoints = QMap<int, QVariant>;

namespace {

constexpr int kAlarmBase = 2000;

DataPoints alarms(std::initializer_list<std::pair<int, QVariant>> states)
{
    DataPoints map;
    for (const auto &state : states)
        map.insert(kAlarmBase + state.first, state.second);
    return map;
}

QTableWidget *tableOf(RTEventForm &form)
{
    return form.findChild<QTableWidget *>(QStringLiteral("basicTable"));
}

QStringList listedTexts(RTEventForm &form)
{
    QStringList texts;
    QTableWidget *table = tableOf(form);
    for (int row = 0; row < table->rowCount(); ++row)
        texts << (table->item(row, 1) ? table->item(row, 1)->text() : QStringLiteral("<no item>"));
    return texts;
}

// Lets the clock move past the millisecond a start time was taken in.
void tick()
{
    QTest::qSleep(15);
}

} // namespace

class TestRTEventForm : public QObject
{
    Q_OBJECT
private slots:
    void listedRows_data();
    void listedRows();
    void startTimes();
};

void TestRTEventForm::listedRows_data()
{
    QTest::addColumn<QList<DataPoints>>("refreshes");
    QTest::addColumn<QStringList>("expected");

    // 28 is older than 3, but rows follow the alarm index.
    QTest::newRow("index order, not time order")
        << QList<DataPoints>{alarms({{28, 1}}), alarms({{28, 1}, {3, 1}})}
        << QStringList{"Battery low", "Battery switch is off"};
    QTest::newRow("cleared, and missing counts as cleared")
        << QList<DataPoints>{alarms({{3, 1}, {5, 1}, {6, 1}}), alarms({{3, 0}, {6, 1}})}
        << QStringList{"Input fault"};
    // The reserved ids 24, 25, 32 and 33 have no text: timed, but not listed.
    QTest::newRow("reserved ids and ids the client never fills")
        << QList<DataPoints>{alarms({{24, 1}, {25, 1}, {27, 1}, {31, 1}, {32, 1}, {33, 1}, {53, 1}})}
        << QStringList{"Battery equalization", "Bypass switch is off",
                       "Temperature and humidity module 4 humidity is too low"};
    QTest::newRow("ids outside the alarm block ignored")
        << QList<DataPoints>{alarms({{-1, 1}, {54, 1}, {80, 1}, {1, 1}})}
        << QStringList{"Battery fault"};
    QTest::newRow("non-number inactive, negative unknown")
        << QList<DataPoints>{alarms({{9, 1}, {10, 1}}), alarms({{9, QStringLiteral("on")}, {10, -1}})}
        << QStringList();
}

void TestRTEventForm::listedRows()
{
    QFETCH(QList<DataPoints>, refreshes);
    RTEventForm form;
    for (const DataPoints &map : refreshes) {
        tick();
        form.RefreshRTEventInfo(map);
    }
    QTEST(listedTexts(form), "expected");
}

void TestRTEventForm::startTimes()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{3, 1}, {5, 1}, {24, 1}}));
    const QDateTime first = form.alarmStartTime(3);
    const QDateTime fifth = form.alarmStartTime(5);
    // Each alarm takes its own clock reading in the same refresh: close, not equal.
    QVERIFY(form.alarmStartTime(24).isValid());
    QVERIFY(qAbs(first.msecsTo(form.alarmStartTime(24))) < 1000);
    QVERIFY(qAbs(first.secsTo(QDateTime::currentDateTime())) <= 1);
    // Each row shows the start time to the second and the text, centred.
    QCOMPARE(tableOf(form)->item(0, 0)->text(), first.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    QCOMPARE(tableOf(form)->item(0, 1)->textAlignment(), int(Qt::AlignCenter));
    // Kept while active, also across the no-op initialisation.
    tick();
    form.InitRTEventFormInfo();
    form.RefreshRTEventInfo(alarms({{3, 1}, {5, 1}, {6, 1}}));
    QCOMPARE(form.alarmStartTime(3), first);
    QVERIFY(form.alarmStartTime(6) > first);
    // An unknown state (2) freezes: kept but not listed, nor created.
    tick();
    form.RefreshRTEventInfo(alarms({{3, 1}, {5, 2}, {7, 2}}));
    QCOMPARE(form.alarmStartTime(5), fifth);
    QVERIFY(!form.alarmStartTime(7).isValid());
    QCOMPARE(listedTexts(form), QStringList{"Battery low"});
    // Cleared: forgotten, and renewed when raised again.
    form.RefreshRTEventInfo(alarms({{3, 0}, {5, 1}}));
    QVERIFY(!form.alarmStartTime(3).isValid());
    QCOMPARE(form.alarmStartTime(5), fifth);
    tick();
    form.RefreshRTEventInfo(alarms({{3, 1}}));
    QVERIFY(form.alarmStartTime(3) > first);
    // An empty map clears the table (also with a row selected) and every start time.
    tableOf(form)->selectRow(0);
    form.RefreshRTEventInfo(DataPoints());
    QCOMPARE(tableOf(form)->rowCount(), 0);
    QCOMPARE(form.recordedAlarmCount(), 0);
}

QTEST_MAIN(TestRTEventForm)
#include "tst_rteventform.moc"
