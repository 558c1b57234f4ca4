#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

#include "modalclicker.h"
#include "setinfoform.h"

namespace {

// Writes (or with an invalid value removes) the protocol of one device group.
void writeProtocol(const QString &device, const QVariant &protocol)
{
    const QString path = SetInfoForm::configFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSettings settings(path, QSettings::IniFormat);
    settings.remove(device);
    if (protocol.isValid())
        settings.setValue(device + QStringLiteral("/protocol"), protocol);
    settings.sync();
}

// The two "OK" buttons share the object name "btnWhite"; the test group's is the upper one.
QPushButton *okButton(SetInfoForm &form, bool testGroup)
{
    QList<QPushButton *> buttons = form.findChildren<QPushButton *>(QStringLiteral("btnWhite"));
    if (buttons.size() != 2)
        return nullptr;
    std::sort(buttons.begin(), buttons.end(), [](QPushButton *a, QPushButton *b) {
        return a->mapTo(a->window(), QPoint()).y() < b->mapTo(b->window(), QPoint()).y();
    });
    return testGroup ? buttons.first() : buttons.last();
}

} // namespace

class TestSetInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void confirmedChoiceSendsRequest_data();
    void confirmedChoiceSendsRequest();
    void protocolDependentRows_data();
    void protocolDependentRows();
};

void TestSetInfoForm::confirmedChoiceSendsRequest_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<bool>("testGroup");
    QTest::addColumn<QString>("typed"); // into the minutes field: up to four digits, nothing else
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("question");
    QTest::addColumn<int>("id");       // 0: nothing may be sent
    QTest::addColumn<QString>("value");

    const QString selfTest = QStringLiteral("UPS Self-test for 10 seconds?");
    QTest::newRow("self-test") << "DevTest_0" << true << "60" << true << selfTest << 1003 << "";
    QTest::newRow("self-test dismissed") << "DevTest_0" << true << "60" << false << selfTest << 0 << "";
    QTest::newRow("discharge test")
        << "DevTest_2" << true << "60" << true << "UPS Discharge test to low voltage?" << 1005 << "";
    QTest::newRow("shutdown") << "OffSet_0" << false << "60" << true << "UPS shutdown?" << 1007 << "12";
    QTest::newRow("standby 15 min") << "OffSet_1" << false << "15" << true << "UPS to standby?" << 1008 << "900";
    QTest::newRow("standby empty") << "OffSet_1" << false << "" << true << "UPS to standby?" << 1008 << "0";
    QTest::newRow("standby, 4 digits kept") << "OffSet_1" << false << "-1a2345" << true << "UPS to standby?" << 1008
                                            << "74040";
    QTest::newRow("wake up")
        << "OffSet_2" << false << "60" << true << "UPS will wake up from standby state?" << 1013 << "";
    QTest::newRow("restart ignores minutes") << "OffSet_3" << false << "15" << true << "Restart the UPS?" << 1008 << "60";
}

void TestSetInfoForm::confirmedChoiceSendsRequest()
{
    QFETCH(QString, choice);
    QFETCH(bool, testGroup);
    QFETCH(QString, typed);
    QFETCH(bool, accept);
    QFETCH(QString, question);
    QFETCH(int, id);
    QFETCH(QString, value);

    SetInfoForm form;
    form.setCurrentName(QStringLiteral("UPS-7"));
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    QSignalSpy spy(&form, &SetInfoForm::postDEvent);

    auto *radio = form.findChild<QRadioButton *>(choice);
    QVERIFY(radio);
    QTest::mouseClick(radio, Qt::LeftButton);
    QVERIFY(radio->isChecked());
    auto *field = form.findChild<QLineEdit *>("OffSet_1_Time");
    field->clear();
    QTest::keyClicks(field, typed);

    QPushButton *ok = okButton(form, testGroup);
    QVERIFY(ok);
    ModalClicker clicker(QLatin1String(accept ? "btnBlue" : "btnWhite")); // OK or Cancel of the confirmation
    QTest::mouseClick(ok, Qt::LeftButton);
    QVERIFY(clicker.clicked());
    QVERIFY2(clicker.dialogTexts().contains(question), qPrintable(clicker.dialogTexts().join('|')));

    if (id == 0) {
        QCOMPARE(spy.count(), 0);
        return;
    }
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), id);
    const auto map = spy.at(0).at(1).value<QMap<QString, QVariant>>();
    QCOMPARE(map, (QMap<QString, QVariant>{{"name", "UPS-7"}, {"controlId", id}, {"controlValue", value}}));
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
    const QString device = QStringLiteral("viewsb-setinfo-%1-%2")
                               .arg(QLatin1String(QTest::currentDataTag()))
                               .arg(QCoreApplication::applicationPid());
    writeProtocol(device, protocol);
    SetInfoForm form;
    form.setCurrentName(device);
    form.findChild<QRadioButton *>("OffSet_3")->setChecked(true);
    form.InitSettingFormInfo();
    // A hidden choice is not left selected.
    QCOMPARE(form.findChild<QRadioButton *>("OffSet_0")->isChecked(), !standbyShown);
    // Hidden once, the rows stay hidden when the protocol changes later.
    writeProtocol(device, 2);
    form.InitSettingFormInfo();
    writeProtocol(device, QVariant());

    for (const char *name : {"OffSet_1", "OffSet_1_Time", "label_5", "OffSet_3"})
        QVERIFY2(form.findChild<QWidget *>(name)->isHidden() == !standbyShown, name);
    for (const char *name : {"OffSet_0", "OffSet_2", "DevTest_0", "DevTest_2", "DevTest_3"})
        QVERIFY2(!form.findChild<QWidget *>(name)->isHidden(), name);
}

QTEST_MAIN(TestSetInfoForm)
#include "tst_setinfoform.moc"
