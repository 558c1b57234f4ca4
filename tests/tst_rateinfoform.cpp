#include <QLabel>
#include <QtTest>

#include "rateinfoform.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

namespace {

QList<ParameterInformation *> allParams(const RateInfoForm &form)
{
    return form.deviceParams() + form.batteryParams() + form.inputParams() + form.outputParams()
        + form.bypassParams() + form.ratedParams();
}

QString shown(const RateInfoForm &form, const QString &name)
{
    for (ParameterInformation *p : allParams(form)) {
        if (p->name == name) {
            QLabel *label = form.valueLabelFor(p);
            return label ? label->text() : QStringLiteral("<no label>");
        }
    }
    return QStringLiteral("<no record %1>").arg(name);
}

} // namespace

class TestRateInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void codesAndLimits_data();
    void codesAndLimits();
    void phaseSwitching_data();
    void phaseSwitching();
    void deviceMapAndRefreshes();
};

void TestRateInfoForm::codesAndLimits_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("id");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");

    // "Normal" is listed at 0, 2 and 9; only 9 survives.
    QTest::newRow("battery 0 lost Normal") << "battery state:" << 0 << QVariant(0) << "";
    QTest::newRow("battery 9 Normal") << "battery state:" << 0 << QVariant(9) << "Normal";
    QTest::newRow("battery text code") << "battery state:" << 0 << QVariant(QStringLiteral("3")) << "Low";
    QTest::newRow("mode 0") << "Output Mode:" << 24 << QVariant(0) << "None";
    QTest::newRow("mode 8 beyond list") << "Output Mode:" << 24 << QVariant(8) << "";
    QTest::newRow("mode text reads as 0") << "Output Mode:" << 24 << QVariant(QStringLiteral("utility")) << "None";
    QTest::newRow("power 0 below min") << "Rated active power" << 62 << QVariant(0) << "-- W";
    QTest::newRow("power 1 at min") << "Rated active power" << 62 << QVariant(1) << "1 W";
    QTest::newRow("power at max") << "Rated active power" << 62 << QVariant(9999999) << "9999999 W";
    QTest::newRow("power above max") << "Rated active power" << 62 << QVariant(10000000) << "-- W";
}

void TestRateInfoForm::codesAndLimits()
{
    QFETCH(QString, name);
    QFETCH(int, id);
    QFETCH(QVariant, value);
    RateInfoForm form;
    form.RefreshRateInfo({{id, value}});
    QTEST(shown(form, name), "text");
}

void TestRateInfoForm::phaseSwitching_data()
{
    QTest::addColumn<int>("inputPhases");
    QTest::addColumn<int>("outputPhases");
    QTest::addColumn<int>("bypassPhases");
    QTest::addColumn<QString>("expected"); // input voltage, input current, output voltage and frequency, bypass current

    // Anything but 3 is single-phase.
    QTest::newRow("input three only") << 3 << 2 << 1 << "230.0/231.0/229.0 V|11.8/12.1/11.5 A|220.0 V|50.1 Hz|0.7 A";
    QTest::newRow("output three only") << 1 << 3 << 2 << "230.0 V|11.8 A|220.0/221.0/222.0 V|50.1 Hz|0.7 A";
    QTest::newRow("bypass three only") << 2 << 1 << 3 << "230.0 V|11.8 A|220.0 V|50.1 Hz|0.7/0.8/0.9 A";
}

void TestRateInfoForm::phaseSwitching()
{
    QFETCH(int, inputPhases);
    QFETCH(int, outputPhases);
    QFETCH(int, bypassPhases);
    DataMap map{{8, inputPhases},  {9, 230},  {10, 231}, {11, 229}, {12, 118}, {13, 121}, {14, 115},
                {26, outputPhases}, {27, 220}, {28, 221}, {29, 222}, {25, 501},
                {43, bypassPhases}, {47, 7},   {48, 8},   {49, 9}};
    RateInfoForm form;
    // A refresh in the other mode first: phases must follow every refresh.
    DataMap other = map;
    other[8] = inputPhases == 3 ? 1 : 3;
    other[26] = outputPhases == 3 ? 1 : 3;
    other[43] = bypassPhases == 3 ? 1 : 3;
    form.RefreshRateInfo(other);
    form.RefreshRateInfo(map);
    QStringList texts;
    for (const char *name :
         {"input voltage:", "input current:", "output voltage:", "output frequency:", "bypass current:"})
        texts << shown(form, QLatin1String(name));
    QTEST(texts.join(QLatin1Char('|')), "expected");
}

void TestRateInfoForm::deviceMapAndRefreshes()
{
    RateInfoForm form;
    QCOMPARE(shown(form, "battery voltage:"), QStringLiteral("- V")); // before the first refresh
    form.RefreshRateInfo(ViewSampleData::deviceData(false));
    QCOMPARE(shown(form, "Manufacturer name"), QStringLiteral("Example Power")); // no NUL padding
    QCOMPARE(shown(form, "Output Mode:"), QStringLiteral("Utility Supply"));
    QCOMPARE(shown(form, "Rated input frequency"), QStringLiteral("50.0 Hz"));

    // Each refresh replaces the whole map.
    const DataMap second{{4, 2720}};
    form.RefreshRateInfo(second);
    QCOMPARE(form.lastData(), second);
    QCOMPARE(shown(form, "battery capacity:"), QStringLiteral("0 %"));
    QCOMPARE(shown(form, "battery voltage:"), QStringLiteral("272.0 V"));

    // Hostile values: every label still shows its own record's value.
    form.RefreshRateInfo(ViewSampleData::hostileData());
    for (ParameterInformation *p : allParams(form)) {
        QLabel *label = form.valueLabelFor(p);
        QVERIFY(label);
        QCOMPARE(label->text(), form.getPvalue(p));
    }
}

QTEST_MAIN(TestRateInfoForm)
#include "tst_rateinfoform.moc"
