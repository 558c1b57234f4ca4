#include <QDir>
#include <QFileInfo>
#include <QPushButton>
#include <QScopeGuard>
#include <QRadioButton>
#include <QSettings>
#include <QTabWidget>
#include <QtTest>

#include "chartscreenshots.h"
#include "childform.h"
#include "energyline.h"
#include "rateinfoform.h"
#include "rteventform.h"
#include "setinfoform.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

namespace {

// What a page currently shows, reduced to one comparable value per page.
struct PageState {
    QString energy;
    int alarms;
    DataMap rated;
};

PageState pageState(const ChildForm &form)
{
    return {form.energyPage->inputVoltage(), form.alarmPage->recordedAlarmCount(), form.ratePage->lastData()};
}

// The simulated agent's map with a couple of active alarms, so that the
// alarm page has rows to show.
DataMap fullMap(bool threePhase)
{
    DataMap map = ChartScreenshots::agentImage(threePhase);
    map[threePhase ? 2016 : 2019] = 1;
    if (threePhase)
        map[2023] = 1;
    map.insert(4014, QStringLiteral("127.0.1.10"));
    return map;
}

void writeProtocol(const QString &device, int protocol)
{
    const QString path = SetInfoForm::configFilePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue(device + QStringLiteral("/protocol"), protocol);
    settings.sync();
}

void removeDevice(const QString &device)
{
    QSettings settings(SetInfoForm::configFilePath(), QSettings::IniFormat);
    settings.remove(device);
}

} // namespace

class TestChildForm : public QObject
{
    Q_OBJECT

private slots:
    void userLevelGatesControlPage_data();
    void userLevelGatesControlPage();
    void refreshReachesOnlyVisiblePage_data();
    void refreshReachesOnlyVisiblePage();
    void controlTabAppliesProtocol();
    void hostileDataOnEveryTab();
    void screenshots_data();
    void screenshots();
};

void TestChildForm::userLevelGatesControlPage_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("enabled");
    QTest::newRow("negative") << -1 << false;
    QTest::newRow("0") << 0 << false;
    QTest::newRow("1") << 1 << true;
}

void TestChildForm::userLevelGatesControlPage()
{
    QFETCH(int, level);
    QFETCH(bool, enabled);
    ChildForm form;
    // Start from the opposite state so that both directions are exercised.
    form.setUserInfo(QStringLiteral("op"), enabled ? 0 : 1);
    form.setUserInfo(QStringLiteral("op"), level);
    QCOMPARE(form.controlPage->isEnabled(), enabled);
    for (QPushButton *ok : form.controlPage->findChildren<QPushButton *>())
        QCOMPARE(ok->isEnabled(), enabled);
    QVERIFY(form.energyPage->isEnabled());
    QVERIFY(form.ratePage->isEnabled());
}

void TestChildForm::refreshReachesOnlyVisiblePage_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("byTabChange"); // shown by switching to the tab, not by refreshData()
    QTest::newRow("energy") << 0 << false;
    QTest::newRow("alarms") << 1 << false;
    QTest::newRow("detail") << 2 << false;
    QTest::newRow("control") << 3 << false;
    QTest::newRow("tab change to alarms") << 1 << true;
    QTest::newRow("tab change to detail") << 2 << true;
}

void TestChildForm::refreshReachesOnlyVisiblePage()
{
    QFETCH(int, tab);
    QFETCH(bool, byTabChange);
    ChildForm form;
    form.tabs()->setCurrentIndex(byTabChange ? 3 : tab);
    const PageState before = pageState(form);
    const DataMap data = fullMap(byTabChange);
    form.flushData(data);
    QCOMPARE(pageState(form).rated, before.rated); // flushData alone shows nothing
    if (byTabChange)
        form.tabs()->setCurrentIndex(tab);
    else
        form.refreshData();
    QCOMPARE(form.currentTab, tab);
    const PageState after = pageState(form);
    QCOMPARE(after.energy != before.energy, tab == 0);
    QCOMPARE(after.alarms != before.alarms, tab == 1);
    QCOMPARE(after.rated == data, tab == 2);
}

void TestChildForm::controlTabAppliesProtocol()
{
    // Protocol 1 has no restart; the rows themselves are SetInfoForm's business.
    const QString device = QStringLiteral("viewsb-childform-%1").arg(QCoreApplication::applicationPid());
    writeProtocol(device, 1);
    auto removeConfig = qScopeGuard([&device] { removeDevice(device); });
    ChildForm form;
    form.setName(device);
    auto *restart = form.controlPage->findChild<QRadioButton *>("OffSet_3");
    QVERIFY(!restart->isHidden()); // nothing is read before the tab is shown
    form.tabs()->setCurrentIndex(3);
    QVERIFY(restart->isHidden());
}

void TestChildForm::hostileDataOnEveryTab()
{
    ChildForm form;
    form.show();
    QVERIFY(QTest::qWaitForWindowExposed(&form));
    for (int tab = 0; tab < form.tabs()->count(); ++tab) {
        form.tabs()->setCurrentIndex(tab);
        form.flushData(ViewSampleData::hostileData());
        form.refreshData();
        QVERIFY(!form.grab().isNull()); // paints the visible page with the data
        form.flushData(DataMap());
        form.refreshData();
        QCOMPARE(form.currentTab, tab);
    }
}

void TestChildForm::screenshots_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::newRow("single") << false;
    QTest::newRow("three") << true;
}

void TestChildForm::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the pictures");
    QFETCH(bool, threePhase);
    const QLatin1String phase(threePhase ? "three" : "single");
    ChartScreenshots::useDesktopFont();

    // Embedded like the host does it: a child widget keeps the default size
    // even where a page asks for more.
    QWidget host;
    host.resize(741, 483);
    auto *form = new ChildForm;
    form->setParent(&host);
    form->setGeometry(0, 0, 741, 483);
    // The three-phase unit speaks the protocol with standby minutes and restart.
    const QString device = QStringLiteral("viewsb-shot-%1-%2").arg(phase).arg(QCoreApplication::applicationPid());
    writeProtocol(device, threePhase ? 2 : 1);
    auto removeConfig = qScopeGuard([&device] { removeDevice(device); });
    form->setName(device);
    form->setUserInfo(QStringLiteral("admin"), 2);
    host.show();
    QVERIFY(QTest::qWaitForWindowExposed(&host));
    form->flushData(fullMap(threePhase));
    const char *names[] = {"energyline", "alarm", "detail", "control"};
    for (int tab = 0; tab < 4; ++tab) {
        form->tabs()->setCurrentIndex(tab);
        form->refreshData();
        QTest::qWait(150); // one animation step of the diagram
        QCOMPARE(form->size(), QSize(741, 483));
        const QString file = QStringLiteral("childform-%1-%2.png").arg(QLatin1String(names[tab]), phase);
        QVERIFY(!ChartScreenshots::save(form, file).isEmpty());
    }
}

QTEST_MAIN(TestChildForm)
#include "tst_childform.moc"
