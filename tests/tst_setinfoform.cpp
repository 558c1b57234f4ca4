// The Control page and its confirmation dialog: the request a confirmed choice sends, the rows
// the device's protocol shows, the dialog's buttons and dragging the frameless dialog.

#include <QtTest>
#include <QtWidgets>

#include "collectthread.h"
#include "modalclicker.h"
#include "msgbox.h"
#include "setinfoform.h"
#include "testconfig.h"

class TestSetInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void confirmedChoiceSendsRequest_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QString>("typed"); // into the minutes field: up to four digits, nothing else
        QTest::addColumn<QString>("question");
        QTest::addColumn<int>("id"); // 0: the confirmation is dismissed and nothing may be sent
        QTest::addColumn<QString>("value");

        const QString standby = QStringLiteral("UPS to standby?");
        QTest::newRow("self-test") << "DevTest_0" << "60" << "UPS Self-test for 10 seconds?" << 1003 << "";
        QTest::newRow("self-test dismissed") << "DevTest_0" << "60" << "UPS Self-test for 10 seconds?" << 0 << "";
        QTest::newRow("discharge") << "DevTest_2" << "60" << "UPS Discharge test to low voltage?" << 1005 << "";
        QTest::newRow("cancel test") << "DevTest_3" << "60" << "Cancel the UPS test?" << 1006 << "";
        QTest::newRow("shutdown") << "OffSet_0" << "60" << "UPS shutdown?" << 1007 << "12";
        QTest::newRow("standby 15 min") << "OffSet_1" << "15" << standby << 1008 << "900";
        QTest::newRow("standby empty") << "OffSet_1" << "" << standby << 1008 << "0";
        QTest::newRow("standby, 4 digits kept") << "OffSet_1" << "-1a2345" << standby << 1008 << "74040";
        QTest::newRow("standby dismissed") << "OffSet_1" << "15" << standby << 0 << "";
        QTest::newRow("wake up") << "OffSet_2" << "60" << "UPS will wake up from standby state?" << 1013 << "";
        QTest::newRow("restart ignores minutes") << "OffSet_3" << "15" << "Restart the UPS?" << 1008 << "60";
    }

    void confirmedChoiceSendsRequest()
    {
        QFETCH(QString, choice);
        QFETCH(QString, typed);
        QFETCH(int, id);
        SetInfoForm form;
        form.setCurrentName(QStringLiteral("UPS-7"));
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        QSignalSpy spy(&form, &SetInfoForm::postDEvent);
        QTest::mouseClick(form.findChild<QRadioButton *>(choice), Qt::LeftButton);
        auto *field = form.findChild<QLineEdit *>("OffSet_1_Time");
        field->clear();
        QTest::keyClicks(field, typed);

        // Both "OK" buttons are named "btnWhite"; the test group's is made first.
        const QList<QPushButton *> oks = form.findChildren<QPushButton *>(QStringLiteral("btnWhite"));
        QCOMPARE(oks.size(), 2);
        ModalClicker clicker(QLatin1String(id ? "btnBlue" : "btnWhite")); // the confirmation's OK or Cancel
        QTest::mouseClick(oks.at(choice.startsWith(QLatin1String("DevTest")) ? 0 : 1), Qt::LeftButton);
        QVERIFY(clicker.clicked());
        QFETCH(QString, question);
        QVERIFY2(clicker.dialogTexts().contains(question), qPrintable(clicker.dialogTexts().join('|')));
        QFETCH(QString, value);
        const EventMap request{{"name", "UPS-7"}, {"controlId", id}, {"controlValue", value}};
        const QList<QVariantList> sent = id ? QList<QVariantList>{{id, request}} : QList<QVariantList>();
        const auto text = [](const QList<QVariantList> &signal) { QString t; QDebug(&t) << signal; return t; };
        QCOMPARE(text(spy), text(sent)); // as text, so that a mismatch shows both
    }

    void protocolDependentRows()
    {
        // Without protocol 2 (here: none at all) standby and restart are hidden,
        // and a hidden choice is not left selected.
        const QString device = QStringLiteral("setinfo-rows");
        SetInfoForm form;
        form.setCurrentName(device);
        form.findChild<QRadioButton *>("OffSet_3")->setChecked(true);
        form.InitSettingFormInfo();
        QVERIFY(form.findChild<QRadioButton *>("OffSet_0")->isChecked());
        // Hidden once, the rows stay hidden when the protocol changes later.
        writeDeviceConfig(device, {{QStringLiteral("protocol"), 2}});
        form.InitSettingFormInfo();
        removeDeviceConfig(device);
        for (const char *name : {"OffSet_1", "OffSet_1_Time", "label_5", "OffSet_3"})
            QVERIFY2(form.findChild<QWidget *>(name)->isHidden(), name);
        for (const char *name : {"OffSet_0", "OffSet_2", "DevTest_0", "DevTest_2", "DevTest_3"})
            QVERIFY2(!form.findChild<QWidget *>(name)->isHidden(), name);
    }

    void dialog()
    {
        // Only a question (type 1) offers Cancel; what OK and Cancel return is
        // proven by the requests above. Frameless, and deliberately not kept on top.
        for (int type : {0, 1, 2}) {
            MsgBox box(type, QStringLiteral("Shut the UPS down?"));
            box.show();
            QCOMPARE(box.findChild<QLabel *>()->text(), QStringLiteral("Shut the UPS down?"));
            QVERIFY(box.findChild<QPushButton *>(QStringLiteral("btnBlue"))->isVisible());
            QCOMPARE(box.findChild<QPushButton *>(QStringLiteral("btnWhite"))->isVisible(), type == 1);
            QCOMPARE(box.windowFlags() & (Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), Qt::FramelessWindowHint);
        }

        // Dragging: only the left button starts it, releasing any button ends it.
        MsgBox box(1, QStringLiteral("Drag me"));
        box.move(100, 100);
        const auto send = [&box](QEvent::Type type, Qt::MouseButton changed, Qt::MouseButtons held, QPointF screen) {
            const QPointF local(10.5, 20.4); // kept as (11, 20): halves round up
            QMouseEvent event(type, local, local, screen, changed, held, Qt::NoModifier);
            QCoreApplication::sendEvent(&box, &event);
        };
        send(QEvent::MouseButtonPress, Qt::RightButton, Qt::RightButton, QPointF(110.5, 120.4));
        send(QEvent::MouseMove, Qt::NoButton, Qt::RightButton, QPointF(400.5, 300.5));
        QCOMPARE(box.pos(), QPoint(100, 100));
        send(QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton, QPointF(110.5, 120.4));
        send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, QPointF(400, 300.5)); // rounds to (400, 301)
        QCOMPARE(box.pos(), QPoint(389, 281));
        send(QEvent::MouseButtonRelease, Qt::RightButton, Qt::LeftButton, QPointF(400, 300.5));
        send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, QPointF(700, 700));
        QCOMPARE(box.pos(), QPoint(389, 281));
    }
};

QTEST_MAIN(TestSetInfoForm)
#include "tst_setinfoform.moc"
