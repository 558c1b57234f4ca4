// Device tab container: the tabs, the name reaching the pages, user level
// gating, which page a refresh or a tab change reaches, and hostile data on
// every page.

#include <QRadioButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTabWidget>
#include <QtTest>

#include "childform.h"
#include "energyline.h"
#include "rateinfoform.h"
#include "rteventform.h"
#include "setinfoform.h"
#include "testconfig.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

namespace {

// A device group with the given protocol, named after the running test row.
QString deviceWithProtocol(int protocol)
{
    const QString device = QStringLiteral("childform-%1").arg(QLatin1String(QTest::currentDataTag())).replace(' ', '_');
    writeDeviceConfig(device, {{QStringLiteral("protocol"), protocol}});
    return device;
}

} // namespace

class TestChildForm : public QObject
{
    Q_OBJECT

private slots:
    void tabsInOrder();
    void nameReachesPages();
    void userLevelGatesControlPage();
    void refreshReachesOnlyVisiblePage_data();
    void refreshReachesOnlyVisiblePage();
    void hostileDataOnEveryTab();
};

void TestChildForm::tabsInOrder()
{
    ChildForm form;
    QTabWidget *tabs = form.tabs();
    QCOMPARE(tabs->objectName(), QStringLiteral("devStacketTable"));
    QStringList titles;
    for (int tab = 0; tab < tabs->count(); ++tab)
        titles << tabs->tabText(tab);
    QCOMPARE(titles, (QStringList{"EnergyLine", "RT-Alarm", "Detail", "Control"}));
    QCOMPARE(tabs->widget(ChildForm::EnergyTab), form.energyPage);
    QCOMPARE(tabs->widget(ChildForm::AlarmTab), form.alarmPage);
    auto *scroll = qobject_cast<QScrollArea *>(tabs->widget(ChildForm::RateTab));
    QVERIFY(scroll && scroll->widget() == form.ratePage && scroll->widgetResizable());
    QCOMPARE(tabs->widget(ChildForm::ControlTab), form.controlPage);
}

void TestChildForm::nameReachesPages()
{
    // Protocol 2 keeps the standby row: a control page that missed the name
    // would read protocol 0 and hide it.
    const QString device = deviceWithProtocol(2);
    ChildForm form;
    form.setName(device);
    QCOMPARE(form.name, device);
    QCOMPARE(form.alarmPage->name(), device);
    QCOMPARE(form.ratePage->currentName, device);
    form.tabs()->setCurrentIndex(ChildForm::ControlTab);
    removeDeviceConfig(device);
    QVERIFY(!form.controlPage->findChild<QRadioButton *>("OffSet_1")->isHidden());

    // Requests of the control page leave through the view, with the name.
    QSignalSpy spy(&form, &CollectView::postDEvent);
    form.controlPage->control(1003, QString());
    QCOMPARE(spy.count(), 1);
    const auto request = spy.at(0).at(1).value<QMap<QString, QVariant>>();
    QCOMPARE(request.value("name").toString(), device);
}

void TestChildForm::userLevelGatesControlPage()
{
    // Only the Control tab follows the level, in both directions.
    ChildForm form;
    for (int level : {1, 0, 2, -1}) {
        form.setUserInfo(QStringLiteral("op"), level);
        QCOMPARE(form.controlPage->isEnabled(), level >= 1);
        QVERIFY(form.energyPage->isEnabled() && form.ratePage->isEnabled());
    }
}

void TestChildForm::refreshReachesOnlyVisiblePage_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("byTabChange"); // shown by switching to it from the Control tab, not by refreshData()
    QTest::newRow("energy") << 0 << false;
    QTest::newRow("alarms") << 1 << false;
    QTest::newRow("detail") << 2 << false;
    QTest::newRow("control") << 3 << false;
    QTest::newRow("tab change to detail") << 2 << true;
}

void TestChildForm::refreshReachesOnlyVisiblePage()
{
    QFETCH(int, tab);
    QFETCH(bool, byTabChange);
    // Protocol 1 has no restart row; the Control tab reads it when it is shown.
    const QString device = deviceWithProtocol(1);
    ChildForm form;
    form.setName(device);
    form.tabs()->setCurrentIndex(byTabChange ? 3 : tab);
    const QString energy = form.energyPage->inputVoltage();
    const int alarms = form.alarmPage->recordedAlarmCount();
    const DataMap rated = form.ratePage->lastData();
    const DataMap data = ViewSampleData::deviceData(byTabChange);
    form.flushData(data);
    QCOMPARE(form.ratePage->lastData(), rated); // flushData alone shows nothing
    if (byTabChange)
        form.tabs()->setCurrentIndex(tab);
    else
        form.refreshData();
    removeDeviceConfig(device);
    QCOMPARE(form.currentTab, tab);
    QCOMPARE(form.energyPage->inputVoltage() != energy, tab == 0);
    QCOMPARE(form.alarmPage->recordedAlarmCount() != alarms, tab == 1);
    QCOMPARE(form.ratePage->lastData() == data, tab == 2);
    QCOMPARE(form.controlPage->findChild<QRadioButton *>("OffSet_3")->isHidden(), tab == 3 || byTabChange);
}

void TestChildForm::hostileDataOnEveryTab()
{
    // Every page takes a broken agent's map and an empty one without harm.
    ChildForm form;
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    for (int tab = 0; tab < form.tabs()->count(); ++tab) {
        form.tabs()->setCurrentIndex(tab);
        for (const DataMap &data : {ViewSampleData::hostileData(), DataMap()}) {
            form.flushData(data);
            form.refreshData();
            form.repaint();
        }
        QCOMPARE(form.currentTab, tab);
    }
}

QTEST_MAIN(TestChildForm)
#include "tst_childform.moc"
