// Active alarm page: which alarms are listed, in which order and wording,
// and the start time each keeps while it stays active.
#include <QTableWidget>
#include <QtTest>

#include "rteventform.h"

using DataPoints = QMap<int, QVariant>;

// A map with the given alarm indexes (data points 2000 + index) set.
static DataPoints alarms(std::initializer_list<std::pair<int, QVariant>> states)
{
    DataPoints map;
    for (const auto &state : states)
        map.insert(2000 + state.first, state.second);
    return map;
}

// Texts of the listed alarms, top to bottom, joined with '|'.
static QString listedTexts(RTEventForm &form)
{
    const auto *table = form.findChild<QTableWidget *>(QStringLiteral("basicTable"));
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row)
        texts << (table->item(row, 1) ? table->item(row, 1)->text() : "<no item>");
    return texts.join(QLatin1Char('|'));
}

// Lets the clock move past the millisecond a start time was taken in.
static void tick() { QTest::qSleep(15); }

class TestRTEventForm : public QObject
{
    Q_OBJECT
private slots:
    void listedRows_data()
    {
        QTest::addColumn<QList<DataPoints>>("refreshes");
        QTest::addColumn<QString>("expected");
        // The page's own wording, in index order however old the alarm; missing ids count as cleared.
        QTest::newRow("order, clearing, ids outside the block")
            << QList<DataPoints>{alarms({{28, 1}, {5, 1}, {6, 1}}),
                                 alarms({{28, 1}, {3, 1}, {6, 0}, {-1, 1}, {54, 1}, {80, 1}, {1, 1}})}
            << "Battery fault|Battery low|Battery switch is off";
        // The reserved ids 24, 25, 32 and 33 have no text: timed, but not listed. A
        // value that is no number reads as cleared; other states are ignored.
        QTest::newRow("reserved ids, ids the client never fills, odd states")
            << QList<DataPoints>{alarms({{9, 1}, {10, 1}}),
                                 alarms({{24, 1}, {25, 1}, {27, 1}, {31, 1}, {32, 1}, {33, 1}, {53, 1},
                                         {9, QStringLiteral("on")}, {10, -1}})}
            << "Battery equalization|Bypass switch is off|Temperature and humidity module 4 humidity is too low";
    }

    void listedRows()
    {
        QFETCH(QList<DataPoints>, refreshes);
        RTEventForm form;
        for (const DataPoints &map : refreshes) {
            tick();
            form.RefreshRTEventInfo(map);
        }
        QTEST(listedTexts(form), "expected");
    }

    void startTimes()
    {
        RTEventForm form;
        auto *table = form.findChild<QTableWidget *>(QStringLiteral("basicTable"));
        form.RefreshRTEventInfo(alarms({{3, 1}, {5, 1}, {24, 1}}));
        const QDateTime first = form.alarmStartTime(3), fifth = form.alarmStartTime(5);
        QVERIFY(qAbs(first.secsTo(QDateTime::currentDateTime())) < 60);
        QVERIFY(form.alarmStartTime(24).isValid()); // timed, though never listed
        // Each row shows the start time to the second and the text, centred.
        QCOMPARE(table->item(0, 0)->text(), first.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
        QCOMPARE(table->item(0, 1)->textAlignment(), int(Qt::AlignCenter));
        // Kept while active, also across the no-op initialisation.
        tick();
        form.InitRTEventFormInfo();
        form.RefreshRTEventInfo(alarms({{3, 1}, {5, 1}, {6, 1}}));
        QCOMPARE(form.alarmStartTime(3), first);
        QVERIFY(form.alarmStartTime(6) > first);
        // An unknown state (2) freezes: kept but not listed, nor created.
        form.RefreshRTEventInfo(alarms({{3, 1}, {5, 2}, {7, 2}}));
        QCOMPARE(form.alarmStartTime(5), fifth);
        QVERIFY(!form.alarmStartTime(7).isValid());
        // Cleared: forgotten, and renewed when raised again.
        form.RefreshRTEventInfo(alarms({{3, 0}, {5, 1}}));
        QVERIFY(!form.alarmStartTime(3).isValid());
        tick();
        form.RefreshRTEventInfo(alarms({{3, 1}}));
        QVERIFY(form.alarmStartTime(3) > first);
        // An empty map clears the table (also with a row selected) and every start time.
        table->selectRow(0);
        form.RefreshRTEventInfo(DataPoints());
        QCOMPARE(table->rowCount(), 0);
        QCOMPARE(form.recordedAlarmCount(), 0);
    }
};

QTEST_MAIN(TestRTEventForm)
#include "tst_rteventform.moc"
