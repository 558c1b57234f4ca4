// The client's device view: made once, renamed on every call, and its
// confirmed control requests leave through the client.
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QtTest>

#include "childform.h"
#include "modalclicker.h"
#include "orvekclient.h"
#include "setinfoform.h"

class TestClientView : public QObject
{
    Q_OBJECT

private slots:
    void viewIsMadeOnce();
    void clickedRequestReachesClient();
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
    QPointer<CollectView> watch(first);
    {
        OrvekClient other;
        watch = other.getView();
    }
    QVERIFY(watch.isNull());
}

void TestClientView::clickedRequestReachesClient()
{
    OrvekClient client;
    client.name = QStringLiteral("ups-east");
    auto *view = qobject_cast<ChildForm *>(client.getView());
    QVERIFY(view);
    view->setUserInfo(QStringLiteral("operator"), 1);
    view->resize(741, 483);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view));
    view->tabs()->setCurrentIndex(3);

    // The host routes a view request (type = control id) to control().
    QSignalSpy spy(&client, &CollectThread::postDEvent);
    connect(&client, &CollectThread::postDEvent, &client,
            [&client](int type, QMap<QString, QVariant> map) {
                if (map.contains(QStringLiteral("controlId")))
                    client.control(type, map.value(QStringLiteral("controlValue")).toString());
            });

    auto *selfTest = view->controlPage->findChild<QRadioButton *>("DevTest_0");
    QVERIFY(selfTest);
    QTest::mouseClick(selfTest, Qt::LeftButton);
    QPushButton *ok = nullptr;
    for (QPushButton *b : view->controlPage->findChildren<QPushButton *>("btnWhite")) {
        if (!ok || b->mapTo(view, QPoint()).y() < ok->mapTo(view, QPoint()).y())
            ok = b;
    }
    QVERIFY(ok);
    ModalClicker clicker(QStringLiteral("btnBlue")); // accepts the confirmation
    QTest::mouseClick(ok, Qt::LeftButton);
    QVERIFY(clicker.clicked());
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 1003);
    QCOMPARE(spy.at(0).at(1).value<EventMap>().value("name").toString(), QStringLiteral("ups-east"));
    QCOMPARE(client.cmdList.size(), 1);
    QCOMPARE(client.cmdList.first().id, 1003);
}

QTEST_MAIN(TestClientView)
#include "tst_clientview.moc"
