// The client's device view: made once, renamed on every call, owned by the
// client. (A confirmed request from the view reaching the agent is covered
// end to end by the host tests.)
#include <QtTest>

#include "childform.h"
#include "orvekclient.h"

class TestClientView : public QObject
{
    Q_OBJECT

private slots:
    void viewIsMadeOnce();
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

QTEST_MAIN(TestClientView)
#include "tst_clientview.moc"
