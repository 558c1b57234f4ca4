#include <QTabWidget>
#include <QtTest>

#include "childform.h"
#include "upsalarms.h"
#include "upspoints.h"
#include "../tests/support/viewsampledata.h"

#if __has_include(<upssimulator.h>)
#include <upssimulator.h>
#define ORVEK_HAVE_SIMULATOR 1
#endif

// Cost of one ChildForm::refreshData with a complete data point map, per
// visible tab, the view shown offscreen at its default size.
class BenchChildForm : public QObject
{
    Q_OBJECT

private slots:
    void refreshData_data();
    void refreshData();
};

namespace {
QMap<int, QVariant> fullMap(bool threePhase)
{
#ifdef ORVEK_HAVE_SIMULATOR
    return UpsSimulator::profileImage(threePhase ? UpsSimulator::Profile::Three : UpsSimulator::Profile::Single);
#else
    return ViewSampleData::deviceData(threePhase);
#endif
}
} // namespace

void BenchChildForm::refreshData_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<bool>("changing");
    const char *tabs[] = {"energyline", "alarm", "detail", "control"};
    for (int tab = 0; tab < 4; ++tab) {
        QTest::addRow("%s-single", tabs[tab]) << tab << false << false;
        QTest::addRow("%s-three", tabs[tab]) << tab << true << false;
        // Every refresh brings new values, so every text really changes.
        QTest::addRow("%s-three-changing", tabs[tab]) << tab << true << true;
    }
}

void BenchChildForm::refreshData()
{
    QFETCH(int, tab);
    QFETCH(bool, threePhase);
    QFETCH(bool, changing);
    // Embedded in a host widget, as the host shows it, at the default size.
    QWidget host;
    host.resize(741, 483);
    auto *form = new ChildForm;
    form->setParent(&host);
    form->setGeometry(0, 0, 741, 483);
    host.show();
    QVERIFY(QTest::qWaitForWindowExposed(&host));
    form->tabs()->setCurrentIndex(tab);
    const QMap<int, QVariant> first = fullMap(threePhase);
    QMap<int, QVariant> second = first;
    for (int id = 0; id < UpsPoint::MeasurementCount; ++id)
        second[id] = second.value(id).toInt() + 1;
    second[UpsPoint::AlarmFirst + UpsAlarm::AgentCommunication] = 1;
    second[UpsPoint::AlarmFirst + UpsAlarm::OutputOverload] = 1;
    form->flushData(first);
    bool flip = false;
    QBENCHMARK {
        if (changing) {
            flip = !flip;
            form->flushData(flip ? second : first);
        }
        form->refreshData();
    }
}

QTEST_MAIN(BenchChildForm)
#include "bench_childform.moc"
