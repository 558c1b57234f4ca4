// Confirmation dialog: which buttons a type shows, and dragging the
// frameless box with the mouse.

#include <QtTest>

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>

#include "msgbox.h"

namespace {

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
    void buttons_data();
    void buttons();
    void dragging_data();
    void dragging();
};

void TestMsgBox::buttons_data()
{
    // What OK and Cancel return is proven by the control path tests of the
    // settings form, which answer the dialog.
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("cancelShown");
    QTest::newRow("question") << 1 << true;
    QTest::newRow("notice: only Ok") << 0 << false;
    QTest::newRow("type 2: only Ok") << 2 << false;
}

void TestMsgBox::buttons()
{
    QFETCH(int, type);
    MsgBox box(type, QStringLiteral("Shut the UPS down?"));
    box.show();
    QVERIFY(QTest::qWaitForWindowExposed(&box));
    QCOMPARE(box.findChild<QLabel *>()->text(), QStringLiteral("Shut the UPS down?"));
    QVERIFY(box.findChild<QPushButton *>(QStringLiteral("btnBlue"))->isVisible());
    QTEST(box.findChild<QPushButton *>(QStringLiteral("btnWhite"))->isVisible(), "cancelShown");
    // Frameless, and deliberately not kept on top.
    QVERIFY(box.windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(!(box.windowFlags() & Qt::WindowStaysOnTopHint));
}

void TestMsgBox::dragging_data()
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

void TestMsgBox::dragging()
{
    QFETCH(int, pressButton);
    QFETCH(QPointF, pressAt);
    QFETCH(QPointF, moveTo);

    MsgBox box(1, QStringLiteral("Drag me"));
    box.move(100, 100);
    const auto button = Qt::MouseButton(pressButton);
    sendMouse(box, QEvent::MouseButtonPress, button, button, pressAt, QPointF(box.pos()) + pressAt);
    sendMouse(box, QEvent::MouseMove, Qt::NoButton, button, pressAt, moveTo);
    QTEST(box.pos(), "expectedPos");

    // Releasing any button ends the drag, even with the left one still held.
    const QPoint stopped = box.pos();
    sendMouse(box, QEvent::MouseButtonRelease, Qt::RightButton, button, pressAt, moveTo);
    sendMouse(box, QEvent::MouseMove, Qt::NoButton, Qt::LeftButton, pressAt, QPointF(700, 700));
    QCOMPARE(box.pos(), stopped);
}

QTEST_MAIN(TestMsgBox)
#include "tst_msgbox.moc"
