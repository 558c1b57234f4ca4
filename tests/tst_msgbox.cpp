#include <QtTest>

#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>

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
    void buttonsAndResult_data();
    void buttonsAndResult();
    void dragging_data();
    void dragging();
};

void TestMsgBox::buttonsAndResult_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("result");
    QTest::newRow("question, ok accepts") << 1 << "btnBlue" << int(QDialog::Accepted);
    QTest::newRow("question, cancel rejects") << 1 << "btnWhite" << int(QDialog::Rejected);
    QTest::newRow("notice: no cancel") << 0 << "btnWhite" << -1;
    QTest::newRow("negative type: no cancel") << -1 << "btnWhite" << -1;
}

void TestMsgBox::buttonsAndResult()
{
    QFETCH(int, type);
    QFETCH(QString, button);
    MsgBox box(type, QStringLiteral("Shut the UPS down?"));
    QCOMPARE(box.findChild<QLabel *>()->text(), QStringLiteral("Shut the UPS down?"));
    // Frameless, and deliberately not kept on top.
    QVERIFY(box.windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(!(box.windowFlags() & Qt::WindowStaysOnTopHint));
    QTimer::singleShot(0, &box, [&box, button] {
        QVERIFY(box.findChild<QPushButton *>(QStringLiteral("btnBlue"))->isVisible());
        auto *target = box.findChild<QPushButton *>(button);
        if (target && target->isVisible())
            QTest::mouseClick(target, Qt::LeftButton);
        if (box.isVisible())
            box.done(-1); // the button is not there: never leave exec() hanging
    });
    QTEST(box.exec(), "result");
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
