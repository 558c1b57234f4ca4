#include <QtTest>

#include <QHeaderView>
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
    void tableSetup();
    void eventTexts_data();
    void eventTexts();
    void listedRows_data();
    void listedRows();
    void rowCells();
    void startTimeKeptWhileActive();
    void startTimeForgottenAndRenewed();
    void unknownStateFreezes();
    void emptyMapClearsEverything();
    void reservedIdsTimedNotListed();
    void nameAndNoOpInit();
};

void TestRTEventForm::tableSetup()
{
    RTEventForm form;
    QTableWidget *table = tableOf(form);
    QVERIFY(table);
    QCOMPARE(table->parentWidget()->objectName(), QStringLiteral("AlarmTable"));
    QCOMPARE(table->columnCount(), 2);
    QCOMPARE(table->horizontalHeaderItem(0)->text(), QStringLiteral("Data/Time"));
    QCOMPARE(table->horizontalHeaderItem(1)->text(), QStringLiteral("Event description"));
    QCOMPARE(table->selectionMode(), QAbstractItemView::SingleSelection);
    QCOMPARE(table->selectionBehavior(), QAbstractItemView::SelectRows);
    QCOMPARE(table->editTriggers(), QAbstractItemView::NoEditTriggers);
    QVERIFY(table->verticalHeader()->isHidden());
    QCOMPARE(table->rowCount(), 0);
}

void TestRTEventForm::eventTexts_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("text");

    QTest::newRow("first alarm") << 0 << "Communication between agent and UPS fault";
    QTest::newRow("20 odd pairing, raised") << 20 << "Communications between the agent and the UPS fault";
    QTest::newRow("24 reserved") << 24 << "";
    QTest::newRow("25 reserved") << 25 << "";
    QTest::newRow("26") << 26 << "Battery Discharge";
    QTest::newRow("27") << 27 << "Battery equalization";
    QTest::newRow("28 switch wording") << 28 << "Battery switch is off";
    QTest::newRow("32 reserved") << 32 << "";
    QTest::newRow("33 reserved") << 33 << "";
    QTest::newRow("34 module 1") << 34 << "Temperature and humidity module 1 communication lost";
    QTest::newRow("53 last alarm") << 53 << "Temperature and humidity module 4 humidity is too low";
    QTest::newRow("54 first normal") << 54 << "Communications between agent and UPS normal";
    QTest::newRow("74 odd pairing, normal") << 74 << "UPS is not awaiting the return of input power";
    QTest::newRow("77") << 77 << "No a test is in progress";
    QTest::newRow("80 no discharge end") << 80 << "";
    QTest::newRow("81 no equalization end") << 81 << "";
    QTest::newRow("82") << 82 << "Battery switch on";
    QTest::newRow("84") << 84 << "Output switch is on";
    QTest::newRow("94 module 2 without is") << 94 << "Temperature and humidity module 2 temperature normal";
    QTest::newRow("95 module 2 without is") << 95 << "Temperature and humidity module 2 temperature normal";
    QTest::newRow("107 last") << 107 << "Temperature and humidity module 4 humidity is normal";
}

void TestRTEventForm::eventTexts()
{
    QFETCH(int, index);
    QFETCH(QString, text);
    RTEventForm form;
    QCOMPARE(form.eventTextCount(), 108);
    QCOMPARE(form.eventText(index), text);
}

void TestRTEventForm::listedRows_data()
{
    QTest::addColumn<QList<DataPoints>>("refreshes");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("nothing active") << QList<DataPoints>{alarms({{3, 0}, {28, 0}})} << QStringList();
    QTest::newRow("index order within one refresh")
        << QList<DataPoints>{alarms({{28, 1}, {3, 1}})}
        << QStringList{"Battery low", "Battery switch is off"};
    // 28 is older than 3, but rows follow the alarm index.
    QTest::newRow("index order, not time order")
        << QList<DataPoints>{alarms({{28, 1}}), alarms({{28, 1}, {3, 1}})}
        << QStringList{"Battery low", "Battery switch is off"};
    QTest::newRow("cleared alarm leaves")
        << QList<DataPoints>{alarms({{3, 1}, {6, 1}}), alarms({{3, 0}, {6, 1}})}
        << QStringList{"Input fault"};
    QTest::newRow("missing id counts as cleared")
        << QList<DataPoints>{alarms({{3, 1}, {6, 1}}), alarms({{6, 1}})}
        << QStringList{"Input fault"};
    QTest::newRow("ids the client never fills")
        << QList<DataPoints>{alarms({{27, 1}, {31, 1}, {53, 1}})}
        << QStringList{"Battery equalization", "Bypass switch is off",
                       "Temperature and humidity module 4 humidity is too low"};
    QTest::newRow("ids outside the alarm block ignored")
        << QList<DataPoints>{alarms({{-1, 1}, {54, 1}, {80, 1}, {1, 1}})}
        << QStringList{"Battery fault"};
    QTest::newRow("value 2 lists nothing") << QList<DataPoints>{alarms({{9, 2}})} << QStringList();
    QTest::newRow("text 1 is active") << QList<DataPoints>{alarms({{9, QStringLiteral("1")}})}
                                      << QStringList{"Bypass powered"};
    QTest::newRow("non-number is inactive")
        << QList<DataPoints>{alarms({{9, 1}}), alarms({{9, QStringLiteral("on")}})} << QStringList();
    QTest::newRow("negative is unknown")
        << QList<DataPoints>{alarms({{9, 1}}), alarms({{9, -1}})} << QStringList();
}

void TestRTEventForm::listedRows()
{
    QFETCH(QList<DataPoints>, refreshes);
    QFETCH(QStringList, expected);

    RTEventForm form;
    for (const DataPoints &map : refreshes) {
        tick();
        form.RefreshRTEventInfo(map);
    }
    QCOMPARE(listedTexts(form), expected);
}

void TestRTEventForm::rowCells()
{
    RTEventForm form;
    const QDateTime before = QDateTime::currentDateTime();
    form.RefreshRTEventInfo(alarms({{1, 1}}));
    QTableWidget *table = tableOf(form);
    QCOMPARE(table->rowCount(), 1);

    const QString stamp = table->item(0, 0)->text();
    const QDateTime shown = QDateTime::fromString(stamp, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    QVERIFY2(shown.isValid(), qPrintable(stamp));
    QVERIFY(qAbs(shown.secsTo(before)) <= 1);
    QCOMPARE(stamp, form.alarmStartTime(1).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    QCOMPARE(table->item(0, 0)->textAlignment(), int(Qt::AlignCenter));
    QCOMPARE(table->item(0, 1)->textAlignment(), int(Qt::AlignCenter));
}

void TestRTEventForm::startTimeKeptWhileActive()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{3, 1}}));
    const QDateTime first = form.alarmStartTime(3);
    QVERIFY(first.isValid());
    for (int i = 0; i < 3; ++i) {
        tick();
        form.RefreshRTEventInfo(alarms({{3, 1}, {6, 1}}));
        QCOMPARE(form.alarmStartTime(3), first);
    }
    QVERIFY(form.alarmStartTime(6) > first);
}

void TestRTEventForm::startTimeForgottenAndRenewed()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{3, 1}}));
    const QDateTime first = form.alarmStartTime(3);
    tick();
    form.RefreshRTEventInfo(alarms({{3, 0}}));
    QVERIFY(!form.alarmStartTime(3).isValid());
    QCOMPARE(form.recordedAlarmCount(), 0);
    tick();
    form.RefreshRTEventInfo(alarms({{3, 1}}));
    QVERIFY(form.alarmStartTime(3) > first);
}

void TestRTEventForm::unknownStateFreezes()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{5, 1}}));
    const QDateTime first = form.alarmStartTime(5);
    tick();
    form.RefreshRTEventInfo(alarms({{5, 2}, {7, 2}}));
    QCOMPARE(form.alarmStartTime(5), first); // kept, not listed
    QVERIFY(!form.alarmStartTime(7).isValid()); // not created either
    QCOMPARE(tableOf(form)->rowCount(), 0);
    tick();
    form.RefreshRTEventInfo(alarms({{5, 1}}));
    QCOMPARE(form.alarmStartTime(5), first);
    QCOMPARE(listedTexts(form), QStringList{"Temperature overrun MAX-value"});
}

void TestRTEventForm::emptyMapClearsEverything()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{0, 1}, {24, 1}, {26, 1}, {40, 1}}));
    QCOMPARE(tableOf(form)->rowCount(), 3);
    QCOMPARE(form.recordedAlarmCount(), 4);
    tableOf(form)->selectRow(1);

    form.RefreshRTEventInfo(DataPoints());
    QCOMPARE(tableOf(form)->rowCount(), 0);
    QCOMPARE(form.recordedAlarmCount(), 0);
}

void TestRTEventForm::reservedIdsTimedNotListed()
{
    RTEventForm form;
    form.RefreshRTEventInfo(alarms({{24, 1}, {25, 1}, {32, 1}, {33, 1}}));
    QCOMPARE(tableOf(form)->rowCount(), 0);
    for (int index : {24, 25, 32, 33})
        QVERIFY2(form.alarmStartTime(index).isValid(), qPrintable(QString::number(index)));
    QCOMPARE(form.recordedAlarmCount(), 4);
}

void TestRTEventForm::nameAndNoOpInit()
{
    RTEventForm form;
    form.setCurrentName(QStringLiteral("UPS-1"));
    QCOMPARE(form.name(), QStringLiteral("UPS-1"));
    form.RefreshRTEventInfo(alarms({{3, 1}}));
    const QDateTime first = form.alarmStartTime(3);
    form.InitRTEventFormInfo();
    QCOMPARE(listedTexts(form), QStringList{"Battery low"});
    QCOMPARE(form.alarmStartTime(3), first);
}

QTEST_MAIN(TestRTEventForm)
#include "tst_rteventform.moc"
