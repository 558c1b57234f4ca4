#include <QtTest>

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

#include "msgbox.h"

namespace {

QPushButton *okButton(MsgBox &box)
{
    return box.findChild<QPushButton *>(QStringLiteral("btnBlue"));
}

QPushButton *cancelButton(MsgBox &box)
{
    return box.findChild<QPushButton *>(QStringLiteral("btnWhite"));
}

void sendMouse(MsgBox &box, QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons held,
               const QPointF &local, const QPointF &screen)
{
    QMouseEvent event(type, local, local, screen, button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&box, &event);
}

} // namespace

class TestMsgBox : public QObject
{
    Q_OBJECT
private slots:
    void buttonsPerType_data();
    void buttonsPerType();
    void dialogSetup();
    void execResult_data();
    void execResult();
    void dragging_data();
    void dragging();
    void releaseEndsDrag_data();
    void releaseEndsDrag();
};

void TestMsgBox::buttonsPerType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("cancelShown");
    QTest::newRow("notice 0") << 0 << false;
    QTest::newRow("question 1") << 1 << true;
    QTest::newRow("notice 2") << 2 << false;
    QTest::newRow("negative") << -1 << false;
}

void TestMsgBox::buttonsPerType()
{
    QFETCH(int, type);
    QFETCH(bool, cancelShown);

    MsgBox box(type, QStringLiteral("Shut the UPS down?"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QVERIFY(okButton(box)->isVisible());
    QCOMPARE(okButton(box)->text(), QStringLiteral("Ok"));
    QCOMPARE(cancelButton(box)->isVisible(), cancelShown);
    QCOMPARE(cancelButton(box)->text(), QStringLiteral("Cancel"));
}

void TestMsgBox::dialogSetup()
{
    MsgBox box(1, QStringLiteral("Start the battery test?"));
    QCOMPARE(box.objectName(), QStringLiteral("WhiteDialog"));
    QCOMPARE(box.property("canMove"), QVariant(true));
    QVERIFY(box.windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(!(box.windowFlags() & Qt::WindowStaysOnTopHint));
    QVERIFY(!box.parent());
    QCOMPARE(box.minimumSize(), QSize(300, 150));
    auto *label = box.findChild<QLabel *>();
    QVERIFY(label);
    QCOMPARE(label->text(), QStringLiteral("Start the battery test?"));
    QCOMPARE(label->alignment(), Qt::AlignCenter);
}

void TestMsgBox::execResult_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("result");
    QTest::newRow("ok accepts") << 1 << "btnBlue" << int(QDialog::Accepted);
    QTest::newRow("cancel rejects") << 1 << "btnWhite" << int(QDialog::Rejected);
    QTest::newRow("notice ok accepts") << 0 << "btnBlue" << int(QDialog::Accepted);
}

void TestMsgBox::execResult()
{
    QFETCH(int, type);
    QFETCH(QString, button);
    QFETCH(int, result);

    MsgBox box(type, QStringLiteral("Continue?"));
    bool clicked = false;
    QTimer::singleShot(0, &box, [&] {
        if (auto *target = box.findChild<QPushButton *>(button)) {
            QTest::mouseClick(target, Qt::LeftButton);
            clicked = true;
        }
        if (box.isVisible())
            box.done(-1); // never leave exec() hanging
    });
    QCOMPARE(box.exec(), result);
    QVERIFY(clicked);
}

void TestMsgBox::dragging_data()
{
    QTest::addColumn<int>("pressButton");
    QTest::addColumn<QPointF>("pressAt");
    QTest::addColumn<QPointF>("moveTo");
    QTest::addColumn<QPoint>("expectedPos");

    const QPoint start(100, 100);
    QTest::newRow("left drags") << int(Qt::LeftButton) << QPointF(10, 20) << QPointF(400, 300)
                                << QPoint(390, 280);
    QTest::newRow("halves round up") << int(Qt::LeftButton) << QPointF(10.5, 20.4)
                                     << QPointF(400.5, 300.5) << QPoint(390, 281);
    QTest::newRow("right does not drag") << int(Qt::RightButton) << QPointF(10, 20) << QPointF(400, 300)
                                         << start;
    QTest::newRow("middle does not drag") << int(Qt::MiddleButton) << QPointF(10, 20)
                                          << QPointF(400, 300) << start;
}

void TestMsgBox::dragging()
{
    QFETCH(int, pressButton);
    QFETCH(QPointF, pressAt);
    QFETCH(QPointF, moveTo);
    QFETCH(QPoint, expectedPos);

    MsgBox box(1, QStringLiteral("Drag me"));
    box.move(100, 100);
    const QPoint start = box.pos();
    QCOMPARE(start, QPoint(100, 100));

    const auto button = Qt::MouseButton(pressButton);
    sendMouse(box, QEvent::MouseButtonPress, button, button, pressAt, QPointF(start) + pressAt);
    sendMouse(box, QEvent::MouseMove, Qt::NoButton, button, pressAt, moveTo);
    QCOMPARE(box.pos(), expectedPos);
}

void TestMsgBox::releaseEndsDrag_data()
{
    QTest::addColumn<int>("releaseButton");
    QTest::newRow("left release") << int(Qt::LeftButton);
    QTest::newRow("right release") << int(Qt::RightButton);
}

void TestMsgBox::releaseEndsDrag()
{
    QFETCH(int, releaseButton);

    MsgBox box(1, QStringLiteral("Drag me"));
    box.move(100, 100);
    const QPointF grip(10, 10);
    sendMouse(box, QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton, grip, QPointF(110, 110));
    sendMouse(box, QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, grip, QPointF(210, 160));
    QCOMPARE(box.pos(), QPoint(200, 150));

    // Releasing another button while the left one is still held ends the
    // drag as well: later moves leave the box where it is.
    const auto released = Qt::MouseButton(releaseButton);
    const Qt::MouseButtons stillHeld = released == Qt::LeftButton ? Qt::NoButton : Qt::LeftButton;
    sendMouse(box, QEvent::MouseButtonRelease, released, stillHeld, grip, QPointF(210, 160));
    sendMouse(box, QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, grip, QPointF(400, 400));
    QCOMPARE(box.pos(), QPoint(200, 150));
}

QTEST_MAIN(TestMsgBox)
#include "tst_msgbox.moc"
