// The client as the host drives it: the device view made once, renamed on
// every call and owned by the client; a configuration reload asked for by the
// host. (A confirmed request from the view reaching the agent is covered end
// to end by the host tests.)
#include <QtTest>

#include "childform.h"
#include "eventrecorder.h"
#include "fakeagent.h"
#include "orvekclient.h"
#include "testconfig.h"

class TestClientView : public QObject
{
    Q_OBJECT

private slots:
    void viewIsMadeOnce();
    void reloadConfigTakesEffect();
};

void TestClientView::viewIsMadeOnce()
{
    OrvekClient client;
    client.name = QStringLiteral("ups-a");
    CollectView *first = client.getView();
    QVERIFY(qobject_cast<ChildForm *>(first));
    QVERIFY(!first->parent());
    QCOMPARE(first->name, QStringLiteral("ups-a"));

    client.name = QStringLiteral("ups-b");
    QCOMPARE(client.getView(), first);
    QCOMPARE(first->name, QStringLiteral("ups-b"));
    // The client owns its view: deleting the client deletes the view.
    QPointer<CollectView> watch;
    {
        OrvekClient other;
        watch = other.getView();
    }
    QVERIFY(watch.isNull());
}

void TestClientView::reloadConfigTakesEffect()
{
    FakeAgent before;
    FakeAgent after;
    const QString device = QStringLiteral("reload-ups");
    const auto configure = [&device](quint16 port, int interval) {
        writeDeviceConfig(device, {{"ipAddr", "127.0.0.1"}, {"port", port}, {"interval", interval}});
    };
    configure(before.start(), 4);
    OrvekClient client;
    client.name = device;
    client.loadConfig();
    client.setConnectTimings(0, 2000);
    EventRecorder rec(&client);
    const auto tickTwice = [&client] { // connect, then the first request
        for (int i = 0; i < 2; ++i) {
            client.nextPollTime = 0;
            client.poll();
        }
    };
    tickTwice();
    const int requestsBefore = before.requests().size();
    QVERIFY(requestsBefore > 0);

    // The host changes dev.ini and asks for a reload: the next tick reads it,
    // drops the connection and reaches the new address.
    const quint16 newPort = after.start();
    configure(newPort, 60);
    client.reloadConfig = 1;
    tickTwice();
    removeDeviceConfig(device);
    QCOMPARE(client.reloadConfig, 0);
    QCOMPARE(client.interval, 15); // 60 s divided by 4
    QCOMPARE(before.requests().size(), requestsBefore);
    QVERIFY(!after.requests().isEmpty());
    QCOMPARE(rec.ofType(2007).last().second.value("port").toInt(), int(newPort));
}

QTEST_MAIN(TestClientView)
#include "tst_clientview.moc"
