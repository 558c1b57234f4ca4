// Rated information page: each record's value text (float arithmetic,
// limits, code lists, phase layouts) and how the page follows refreshes.
#include <QLabel>
#include <QtTest>

#include "rateinfoform.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

// The text of the value label of the record called name.
static QString shown(const RateInfoForm &form, const QString &name)
{
    const QList<ParameterInformation *> records = form.deviceParams() + form.batteryParams() + form.inputParams()
        + form.outputParams() + form.bypassParams() + form.ratedParams();
    for (ParameterInformation *p : records) {
        if (p->name == name)
            return form.valueLabelFor(p) ? form.valueLabelFor(p)->text() : QStringLiteral("<no label>");
    }
    return QStringLiteral("<no record %1>").arg(name);
}

class TestRateInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void values_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<DataMap>("data");
        QTest::addColumn<QString>("text");

        // "Normal" is listed at codes 0, 2 and 9; only 9 survives.
        QTest::newRow("battery 2 lost") << "battery state:" << DataMap{{0, 2}} << "";
        QTest::newRow("battery 9") << "battery state:" << DataMap{{0, 9}} << "Normal";
        QTest::newRow("battery code as text") << "battery state:" << DataMap{{0, QStringLiteral("3")}} << "Low";
        QTest::newRow("mode 0") << "Output Mode:" << DataMap{{24, 0}} << "None";
        QTest::newRow("mode 3") << "Output Mode:" << DataMap{{24, 3}} << "Utility Supply";
        QTest::newRow("mode 8 beyond list") << "Output Mode:" << DataMap{{24, 8}} << "";
        QTest::newRow("power 0 below min") << "Rated active power" << DataMap{{62, 0}} << "-- W";
        QTest::newRow("power 1 at min") << "Rated active power" << DataMap{{62, 1}} << "1 W";
        QTest::newRow("power at max") << "Rated active power" << DataMap{{62, 9999999}} << "9999999 W";
        QTest::newRow("power above max") << "Rated active power" << DataMap{{62, 10000000}} << "-- W";
        QTest::newRow("power saturates") << "Rated active power" << DataMap{{62, (Q_INT64_C(1) << 40) + 5}} << "-- W";
        QTest::newRow("absent reads 0") << "battery capacity:" << DataMap() << "0 %";
        QTest::newRow("identity") << "Manufacturer name" << ViewSampleData::deviceData(false) << "Example Power";
        // Scaling is done in single precision; the battery current is not read as signed.
        QTest::newRow("integer, float precision") << "battery capacity:" << DataMap{{3, 16777217}} << "16777216 %";
        QTest::newRow("decimal, float precision") << "battery voltage:" << DataMap{{4, 16777217}} << "1677721.6 V";
        QTest::newRow("current as stored") << "battery current:" << DataMap{{5, 65526}} << "6552.6 A";
        // Each panel follows its own phase count; anything but 3 is single-phase.
        QTest::newRow("input 3") << "input voltage:" << DataMap{{8, 3}, {9, 230}, {10, 231}, {11, 229}}
            << "230.0/231.0/229.0 V";
        QTest::newRow("input 2") << "input current:" << DataMap{{8, 2}, {26, 3}, {43, 3}, {12, 118}, {13, 121}}
            << "11.8 A";
        QTest::newRow("output 3") << "output voltage:" << DataMap{{26, 3}, {27, 220}, {28, 221}, {29, 222}}
            << "220.0/221.0/222.0 V";
        QTest::newRow("output frequency single") << "output frequency:" << DataMap{{26, 3}, {25, 501}} << "50.1 Hz";
        QTest::newRow("bypass 3") << "bypass current:" << DataMap{{43, 3}, {47, 7}, {48, 8}, {49, 9}}
            << "0.7/0.8/0.9 A";
    }

    void values()
    {
        QFETCH(QString, name);
        QFETCH(DataMap, data);
        RateInfoForm form;
        QVERIFY(shown(form, name).startsWith(QLatin1Char('-'))); // before the first refresh
        // A full map in the other layout first: each refresh replaces the map, phases follow.
        DataMap other = ViewSampleData::deviceData(true);
        for (int phaseId : {8, 26, 43})
            other[phaseId] = data.value(phaseId).toInt() == 3 ? 1 : 3;
        form.RefreshRateInfo(other);
        form.RefreshRateInfo(data);
        QTEST(shown(form, name), "text");
    }
};

QTEST_MAIN(TestRateInfoForm)
#include "tst_rateinfoform.moc"
