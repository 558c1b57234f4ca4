// The Control page and its confirmation dialog: which request a confirmed
// choice sends, the rows the device's protocol shows, the dialog's buttons
// and dragging the frameless dialog.

#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QtTest>

#include "collectthread.h"
#include "modalclicker.h"
#include "msgbox.h"
#include "setinfoform.h"
#include "testconfig.h"

class TestSetInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void confirmedChoiceSendsRequest_data();
    void confirmedChoiceSendsRequest();
    void protocolDependentRows_data();
    void protocolDependentRows();
    void dialogButtons();
    void dialogDragging_data();
    void dialogDragging();
};

void TestSetInfoForm::confirmedChoiceSendsRequest_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QString>("typed"); // into the minutes field: up to four digits, nothing else
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("question");
    QTest::addColumn<int>("id"); // 0: nothing may be sent
    QTest::addColumn<QString>("value");

    const QString selfTest = QStringLiteral("UPS Self-test for 10 seconds?");
    const QString standby = QStringLiteral("UPS to standby?");
    QTest::newRow("self-test") << "DevTest_0" << "60" << true << selfTest << 1003 << "";
    QTest::newRow("self-test dismissed") << "DevTest_0" << "60" << false << selfTest << 0 << "";
    QTest::newRow("discharge test") << "DevTest_2" << "60" << true << "UPS Discharge test to low voltage?" << 1005 << "";
    QTest::newRow("cancel test") << "DevTest_3" << "60" << true << "Cancel the UPS test?" << 1006 << "";
    QTest::newRow("shutdown") << "OffSet_0" << "60" << true << "UPS shutdown?" << 1007 << "12";
    QTest::newRow("standby 15 min") << "OffSet_1" << "15" << true << standby << 1008 << "900";
    QTest::newRow("standby empty") << "OffSet_1" << "" << true << standby << 1008 << "0";
    QTest::newRow("standby, 4 digits kept") << "OffSet_1" << "-1a2345" << true << standby << 1008 << "74040";
    QTest::newRow("wake up") << "OffSet_2" << "60" << true << "UPS will wake up from standby state?" << 1013 << "";
    QTest::newRow("restart ignores minutes") << "OffSet_3" << "15" << true << "Restart the UPS?" << 1008 << "60";
}

void TestSetInfoForm::confirmedChoiceSendsRequest()
{
    QFETCH(QString, choice);
    QFETCH(QString, typed);
    QFETCH(bool, accept);
    QFETCH(int, id);
    SetInfoForm form;
    form.setCurrentName(QStringLiteral("UPS-7"));
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    QSignalSpy spy(&form, &SetInfoForm::postDEvent);

    auto *radio = form.findChild<QRadioButton *>(choice);
    QTest::mouseClick(radio, Qt::LeftButton);
    QVERIFY(radio->isChecked());
    auto *field = form.findChild<QLineEdit *>("OffSet_1_Time");
    field->clear();
    QTest::keyClicks(field, typed);

    // The two "OK" buttons share the object name "btnWhite"; the test group's is made first.
    const QList<QPushButton *> oks = form.findChildren<QPushButton *>(QStringLiteral("btnWhite"));
    QCOMPARE(oks.size(), 2);
    ModalClicker clicker(QLatin1String(accept ? "btnBlue" : "btnWhite")); // OK or Cancel of the confirmation
    QTest::mouseClick(oks.at(choice.startsWith(QLatin1String("DevTest")) ? 0 : 1), Qt::LeftButton);
    QVERIFY(clicker.clicked());
    QFETCH(QString, question);
    QVERIFY2(clicker.dialogTexts().contains(question), qPrintable(clicker.dialogTexts().join('|')));

    QCOMPARE(spy.count(), id ? 1 : 0);
    if (id) {
        QCOMPARE(spy.at(0).at(0).toInt(), id);
        QFETCH(QString, value);
        const EventMap expected{{"name", "UPS-7"}, {"controlId", id}, {"controlValue", value}};
        QCOMPARE(spy.at(0).at(1).value<EventMap>(), expected);
    }
}

void TestSetInfoForm::protocolDependentRows_data()
{
    QTest::addColumn<QVariant>("protocol");
    QTest::addColumn<bool>("standbyShown");
    QTest::newRow("absent") << QVariant() << false;
    QTest::newRow("2") << QVariant(2) << true;
    QTest::newRow("3") << QVariant(3) << false;
    QTest::newRow("not a number") << QVariant(QStringLiteral("two")) << false;
}

void TestSetInfoForm::protocolDependentRows()
{
    QFETCH(QVariant, protocol);
    QFETCH(bool, standbyShown);
    const QString device = QStringLiteral("setinfo-%1").arg(QTest::currentDataTag()).replace(' ', '_');
    const QString key = QStringLiteral("protocol");
    writeDeviceConfig(device, protocol.isValid() ? QVariantMap{{key, protocol}} : QVariantMap());
    SetInfoForm form;
    form.setCurrentName(device);
    form.findChild<QRadioButton *>("OffSet_3")->setChecked(true);
    form.InitSettingFormInfo();
    // A hidden choice is not left selected.
    QCOMPARE(form.findChild<QRadioButton *>("OffSet_0")->isChecked(), !standbyShown);
    // Hidden once, the rows stay hidden when the protocol changes later.
    writeDeviceConfig(device, {{key, 2}});
    form.InitSettingFormInfo();
    removeDeviceConfig(device);

    for (const char *name : {"OffSet_1", "OffSet_1_Time", "label_5", "OffSet_3"})
        QVERIFY2(form.findChild<QWidget *>(name)->isHidden() == !standbyShown, name);
    for (const char *name : {"OffSet_0", "OffSet_2", "DevTest_0", "DevTest_2", "DevTest_3"})
        QVERIFY2(!form.findChild<QWidget *>(name)->isHidden(), name);
}

void TestSetInfoForm::dialogButtons()
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
}

void TestSetInfoForm::dialogDragging_data()
{
    QTest::addColumn<int>("pressButton");
    QTest::addColumn<QPointF>("pressAt");
    QTest::addColumn<QPointF>("moveTo");
    QTest::addColumn<QPoint>("expectedPos");
    QTest::newRow("left drags") << int(Qt::LeftButton) << QPointF(10, 20) << QPointF(400, 300) << QPoint(390, 280);
    QTest::newRow("halves round up") << int(Qt::LeftButton) << QPointF(10.5, 20.4) << QPointF(400.5, 300.5)
                                     << QPoint(390, 281);
    QTest::newRow("right does not drag") << int(Qt::RightButton) << QPointF(10, 20) << QPointF(400, 300)
                                         << QPoint(100, 100);
}

void TestSetInfoForm::dialogDragging()
{
    QFETCH(int, pressButton);
    QFETCH(QPointF, pressAt);
    QFETCH(QPointF, moveTo);
    MsgBox box(1, QStringLiteral("Drag me"));
    box.move(100, 100);
    const auto send = [&box, &pressAt](QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons held,
                                       const QPointF &screen) {
        QMouseEvent event(type, pressAt, pressAt, screen, button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(&box, &event);
    };
    const auto button = Qt::MouseButton(pressButton);
    send(QEvent::MouseButtonPress, button, button, QPointF(box.pos()) + pressAt);
    send(QEvent::MouseMove, Qt::NoButton, button, moveTo);
    QTEST(box.pos(), "expectedPos");

    // Releasing any button ends the drag, even with the left one still held.
    const QPoint stopped = box.pos();
    send(QEvent::MouseButtonRelease, Qt::RightButton, button, moveTo);
    send(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, QPointF(700, 700));
    QCOMPARE(box.pos(), stopped);
}

QTEST_MAIN(TestSetInfoForm)
#include "tst_setinfoform.moc"
