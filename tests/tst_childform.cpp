// The device view and the client that hands it out: tabs, the name reaching the pages, user level
// gating, which page a refresh or a tab change reaches, the view made once and owned by the client,
// and a configuration reload the host asks for. (Requests reaching the agent: end-to-end tests.)

#include <QtTest>
#include <QtWidgets>

#include "childform.h"
#include "energyline.h"
#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"
#include "rateinfoform.h"
#include "rteventform.h"
#include "setinfoform.h"
#include "testconfig.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

class TestChildForm : public QObject
{
    Q_OBJECT

private slots:
    void tabsAndUserLevel()
    {
        ChildForm form;
        QTabWidget *tabs = form.tabs();
        QCOMPARE(tabs->objectName(), QStringLiteral("devStacketTable"));
        auto *scroll = qobject_cast<QScrollArea *>(tabs->widget(2));
        QVERIFY(scroll && scroll->widgetResizable());
        const QStringList titles{"EnergyLine", "RT-Alarm", "Detail", "Control"};
        const QList<QWidget *> pages{form.energyPage, form.alarmPage, form.ratePage, form.controlPage};
        QCOMPARE(tabs->count(), titles.size());
        for (int tab = 0; tab < tabs->count(); ++tab) {
            QCOMPARE(tabs->tabText(tab), titles.at(tab));
            QCOMPARE(tab == 2 ? scroll->widget() : tabs->widget(tab), pages.at(tab));
        }

        // Only the Control tab follows the user level, in both directions.
        for (int level : {1, 0, 2, -1}) {
            form.setUserInfo(QStringLiteral("op"), level);
            QCOMPARE(form.controlPage->isEnabled(), level >= 1);
            QVERIFY(form.energyPage->isEnabled() && form.alarmPage->isEnabled() && form.ratePage->isEnabled());
        }
    }

    void refreshReachesOnlyVisiblePage_data()
    {
        QTest::addColumn<int>("tab");
        QTest::addColumn<bool>("byTabChange"); // shown by switching to it from the Control tab, not by refreshData()
        QTest::addColumn<int>("protocol"); // only 2 keeps the restart row, which the Control tab reads when shown
        QTest::newRow("energy") << 0 << false << 1;
        QTest::newRow("alarms") << 1 << false << 1;
        QTest::newRow("detail") << 2 << false << 1;
        QTest::newRow("control") << 3 << false << 1;
        QTest::newRow("control, protocol 2") << 3 << false << 2;
        QTest::newRow("tab change to detail") << 2 << true << 1;
    }

    void refreshReachesOnlyVisiblePage()
    {
        QFETCH(int, tab);
        QFETCH(bool, byTabChange);
        QFETCH(int, protocol);
        // The name reaches every page that reads it; a control page that missed
        // it would read protocol 0.
        const QString device = QStringLiteral("childform-%1").arg(protocol);
        writeDeviceConfig(device, {{"protocol", protocol}});
        ChildForm form;
        form.setName(device);
        QCOMPARE(form.alarmPage->name(), device);
        QCOMPARE(form.ratePage->currentName, device);
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
        const bool controlShown = tab == 3 || byTabChange;
        QCOMPARE(form.controlPage->findChild<QRadioButton *>("OffSet_3")->isHidden(), controlShown && protocol != 2);

        // The visible page takes a broken agent's map and an empty one, and paints, without harm.
        for (const DataMap &broken : {ViewSampleData::hostileData(), DataMap()}) {
            form.flushData(broken);
            form.refreshData();
            form.grab();
        }
    }

    void clientMakesViewOnce()
    {
        QPointer<CollectView> view;
        {
            OrvekClient client;
            client.name = QStringLiteral("ups-a");
            view = client.getView();
            auto *form = qobject_cast<ChildForm *>(view.data());
            QVERIFY(form && !form->parent());

            // Every call renames the same view and shows its data points.
            const QString before = form->energyPage->inputVoltage();
            form->flushData(ViewSampleData::deviceData(false));
            client.name = QStringLiteral("ups-b");
            QCOMPARE(client.getView(), view.data());
            QCOMPARE(form->name, QStringLiteral("ups-b"));
            QVERIFY(form->energyPage->inputVoltage() != before);
        }
        QVERIFY(view.isNull()); // the client owns its view
    }

    void clientReloadsConfig()
    {
        // On a reload the host asks for, the next tick reads dev.ini, drops the connection and reaches the new address.
        FakeAgent agents[2];
        int requests[2] = {};
        const QString device = QStringLiteral("reload-ups");
        OrvekClient client;
        client.name = device;
        client.setConnectTimings(0, 2000);
        EventRecorder rec(&client);
        for (int k : {0, 1}) {
            const quint16 port = agents[k].start();
            writeDeviceConfig(device, {{"ipAddr", "127.0.0.1"}, {"port", port}, {"interval", k ? 60 : 4}});
            client.reloadConfig = 1; // read on the next tick
            for (int tick = 0; tick < 2; ++tick) { // connect, then the first request
                client.nextPollTime = 0;
                client.poll();
            }
            requests[k] = agents[k].requests().size();
            QVERIFY(requests[k] > 0);
            QCOMPARE(rec.ofType(2007).last().second.value("port").toInt(), int(port));
        }
        removeDeviceConfig(device);
        QCOMPARE(client.reloadConfig, 0);
        QCOMPARE(client.interval, 15); // 60 s divided by 4
        QCOMPARE(agents[0].requests().size(), requests[0]);
    }
};

QTEST_MAIN(TestChildForm)
#include "tst_childform.moc"
