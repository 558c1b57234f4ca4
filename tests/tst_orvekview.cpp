#include <QDateTimeEdit>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>
#include <QtTest>

#include "orvekview.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

class TestOrvekView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void layoutBuiltOnce();
    void layoutRepairsMissingParts();
    void buttonRequests_data();
    void buttonRequests();
    void timeSetWithoutTimeEditSendsNothing();
    void tableValues_data();
    void tableValues();
    void tableRowsFollowMapAndReuseItems();
    void refreshWithoutLayoutIsHarmless();
};

void TestOrvekView::initTestCase()
{
    qRegisterMetaType<QMap<QString, QVariant>>();
}

void TestOrvekView::layoutBuiltOnce()
{
    OrvekView view;
    view.setName(QStringLiteral("UPS-West"));
    view.refreshLayout();
    const int objects = view.findChildren<QObject *>().size();
    QCOMPARE(view.findChild<QLabel *>("nameLabel")->text(), QStringLiteral("UPS-West"));
    auto *tabs = view.findChild<QTabWidget *>("devStacketTable");
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), QStringLiteral("RT-data"));
    QCOMPARE(tabs->tabText(1), QStringLiteral("Control"));
    QCOMPARE(view.layout(), view.findChild<QGridLayout *>("OrvekView_grid"));
    auto *table = view.findChild<QTableWidget *>("realDataTable");
    QCOMPARE(table->columnCount(), 2);
    QCOMPARE(table->horizontalHeaderItem(0)->text(), QStringLiteral("id"));
    QCOMPARE(table->horizontalHeaderItem(1)->text(), QStringLiteral("value"));
    QCOMPARE(view.findChildren<QPushButton *>().size(), 6);

    view.refreshLayout();
    QCOMPARE(view.findChildren<QObject *>().size(), objects);
    QCOMPARE(tabs->count(), 2);
}

void TestOrvekView::layoutRepairsMissingParts()
{
    OrvekView view;
    view.refreshLayout();
    delete view.findChild<QTableWidget *>("realDataTable");
    view.refreshLayout();
    auto *tabs = view.findChild<QTabWidget *>("devStacketTable");
    QCOMPARE(tabs->count(), 2);
    QCOMPARE(tabs->tabText(0), QStringLiteral("RT-data"));
    QCOMPARE(view.findChildren<QTableWidget *>().size(), 1);
    QCOMPARE(view.findChildren<QPushButton *>().size(), 6);
}

void TestOrvekView::buttonRequests_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("id"); // 0: the button sends nothing
    QTest::addColumn<QString>("value");
    QTest::newRow("buzzer off") << "buzzer_off" << 1014 << "0";
    QTest::newRow("buzzer on") << "buzzer_on" << 1014 << "1";
    QTest::newRow("startup") << "power_on" << 1008 << "1";
    QTest::newRow("shutdown") << "power_off" << 1007 << "1";
    QTest::newRow("time set") << "timeSet" << 1011 << "<time>";
    QTest::newRow("shutdown to bypass is inert") << "turn_bypass" << 0 << "";
}

void TestOrvekView::buttonRequests()
{
    QFETCH(QString, button);
    QFETCH(int, id);
    QFETCH(QString, value);
    OrvekView view;
    view.setName(QStringLiteral("UPS-West"));
    view.refreshLayout();
    auto *timeEdit = view.findChild<QDateTimeEdit *>("timeEdit");
    QVERIFY(timeEdit);
    timeEdit->setDateTime(QDateTime(QDate(2024, 3, 9), QTime(14, 5, 0)));
    if (value == QLatin1String("<time>"))
        value = timeEdit->text();
    QSignalSpy spy(&view, &CollectView::postDEvent);

    auto *b = view.findChild<QPushButton *>(button);
    QVERIFY(b);
    b->click();
    if (id == 0) {
        QCOMPARE(spy.count(), 0);
        return;
    }
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), id);
    const auto map = spy.at(0).at(1).value<QMap<QString, QVariant>>();
    QCOMPARE(map.value("name").toString(), QStringLiteral("UPS-West"));
    QCOMPARE(map.value("controlId").toInt(), id);
    QCOMPARE(map.value("controlValue").toString(), value);
}

void TestOrvekView::timeSetWithoutTimeEditSendsNothing()
{
    OrvekView view;
    view.refreshLayout();
    delete view.findChild<QDateTimeEdit *>("timeEdit");
    QSignalSpy spy(&view, &CollectView::postDEvent);
    view.findChild<QPushButton *>("timeSet")->click();
    QCOMPARE(spy.count(), 0);
    // A direct call without a sending button does nothing either.
    view.pushButtonSlot();
    QCOMPARE(spy.count(), 0);
}

void TestOrvekView::tableValues_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("register max") << QVariant(65535) << "65535";
    QTest::newRow("negative") << QVariant(-12) << "-12";
    QTest::newRow("seven digits") << QVariant(1234567) << "1.23457e+06";
    QTest::newRow("fraction") << QVariant(0.5) << "0.5";
    QTest::newRow("identity bytes") << QVariant(QByteArray("Model\0\0", 7)) << "0";
    QTest::newRow("address text") << QVariant(QStringLiteral("127.0.1.10")) << "0";
    QTest::newRow("invalid") << QVariant() << "0";
}

void TestOrvekView::tableValues()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    OrvekView view;
    view.refreshLayout();
    view.flushData({{4000, value}});
    auto *table = view.findChild<QTableWidget *>("realDataTable");
    QCOMPARE(table->rowCount(), 1);
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("4000"));
    QCOMPARE(table->item(0, 1)->text(), text);
}

void TestOrvekView::tableRowsFollowMapAndReuseItems()
{
    OrvekView view;
    view.refreshLayout();
    auto *table = view.findChild<QTableWidget *>("realDataTable");
    const DataMap full = ViewSampleData::deviceData(true);
    view.flushData(full);
    QCOMPARE(table->rowCount(), full.size());
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("0"));
    QCOMPARE(table->item(full.size() - 1, 0)->text(), QStringLiteral("4014"));
    QTableWidgetItem *first = table->item(0, 1);

    view.flushData({{-5, 1}, {9, 231}});
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("-5")); // ascending keys
    QCOMPARE(table->item(1, 1)->text(), QStringLiteral("231"));
    QCOMPARE(table->item(0, 1), first);

    view.flushData(DataMap());
    QCOMPARE(table->rowCount(), 0);
}

void TestOrvekView::refreshWithoutLayoutIsHarmless()
{
    OrvekView view;
    view.flushData(ViewSampleData::hostileData());
    QCOMPARE(view.dataMap.size(), ViewSampleData::hostileData().size());
    QVERIFY(view.findChildren<QTableWidget *>().isEmpty());
}

QTEST_MAIN(TestOrvekView)
#include "tst_orvekview.moc"
