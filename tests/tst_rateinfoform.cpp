#include <QGridLayout>
#include <QLabel>
#include <QtTest>

#include "rateinfoform.h"
#include "viewsampledata.h"

using DataMap = QMap<int, QVariant>;

Q_DECLARE_METATYPE(DataMap)

namespace {

QList<ParameterInformation *> allParams(const RateInfoForm &form)
{
    return form.deviceParams() + form.batteryParams() + form.inputParams() + form.outputParams()
        + form.bypassParams() + form.ratedParams();
}

ParameterInformation *param(const RateInfoForm &form, const QString &name)
{
    for (ParameterInformation *p : allParams(form)) {
        if (p->name == name)
            return p;
    }
    return nullptr;
}

QString shown(const RateInfoForm &form, const QString &name)
{
    ParameterInformation *p = param(form, name);
    if (!p)
        return QStringLiteral("<no record %1>").arg(name);
    QLabel *label = form.valueLabelFor(p);
    return label ? label->text() : QStringLiteral("<no label>");
}

} // namespace

class TestRateInfoForm : public QObject
{
    Q_OBJECT

private slots:
    void valuesBeforeFirstRefresh_data();
    void valuesBeforeFirstRefresh();
    void batteryStateCodes_data();
    void batteryStateCodes();
    void outputModeCodes_data();
    void outputModeCodes();
    void ratedActivePowerLimits_data();
    void ratedActivePowerLimits();
    void phaseSwitching_data();
    void phaseSwitching();
    void getPvalueKinds_data();
    void getPvalueKinds();
    void addComboKeepsLastCodeOfRepeatedText();
    void identityBlocksShowTextWithoutPadding();
    void refreshReplacesStoredMap();
    void hostileValuesNeverBreakTheForm();
    void panelsPlacedInTwoColumns();
};

void TestRateInfoForm::valuesBeforeFirstRefresh_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::newRow("identity, no unit") << "UPS model" << "-";
    QTest::newRow("battery voltage") << "battery voltage:" << "- V";
    QTest::newRow("remain time") << "remain discharge time:" << "- Min";
    QTest::newRow("code, no unit") << "battery state:" << "-";
    QTest::newRow("output power") << "output power:" << "- (k)W";
    QTest::newRow("rated apparent") << "Rated apparent power" << "- VA";
}

void TestRateInfoForm::valuesBeforeFirstRefresh()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    RateInfoForm form;
    QCOMPARE(shown(form, name), text);
}

void TestRateInfoForm::batteryStateCodes_data()
{
    QTest::addColumn<QVariant>("code");
    QTest::addColumn<QString>("text");
    // "Normal" is listed at 0, 2 and 9; only 9 survives.
    QTest::newRow("0 lost Normal") << QVariant(0) << "";
    QTest::newRow("1 Unknown") << QVariant(1) << "Unknown";
    QTest::newRow("2 lost Normal") << QVariant(2) << "";
    QTest::newRow("3 Low") << QVariant(3) << "Low";
    QTest::newRow("4 Depleted") << QVariant(4) << "Depleted";
    QTest::newRow("8 Discharge") << QVariant(8) << "Discharge";
    QTest::newRow("9 Normal") << QVariant(9) << "Normal";
    QTest::newRow("10 beyond list") << QVariant(10) << "";
    QTest::newRow("negative") << QVariant(-1) << "";
    QTest::newRow("65535") << QVariant(65535) << "";
    QTest::newRow("text code") << QVariant(QStringLiteral("3")) << "Low";
    QTest::newRow("byte array") << QVariant(QByteArray("\x03", 1)) << "";
}

void TestRateInfoForm::batteryStateCodes()
{
    QFETCH(QVariant, code);
    QFETCH(QString, text);
    RateInfoForm form;
    form.RefreshRateInfo({{0, code}});
    QCOMPARE(shown(form, "battery state:"), text);
}

void TestRateInfoForm::outputModeCodes_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << "None";
    QTest::newRow("1") << 1 << "Other Supply";
    QTest::newRow("3") << 3 << "Utility Supply";
    QTest::newRow("5") << 5 << "Battery Supply";
    QTest::newRow("7") << 7 << "Reducer Supply";
    QTest::newRow("8 beyond list") << 8 << "";
    QTest::newRow("negative") << -3 << "";
}

void TestRateInfoForm::outputModeCodes()
{
    QFETCH(int, code);
    QFETCH(QString, text);
    RateInfoForm form;
    form.RefreshRateInfo({{24, code}});
    QCOMPARE(shown(form, "Output Mode:"), text);
}

void TestRateInfoForm::ratedActivePowerLimits_data()
{
    QTest::addColumn<QVariant>("raw");
    QTest::addColumn<QString>("text");
    QTest::newRow("0 below min") << QVariant(0) << "-- W";
    QTest::newRow("1 at min") << QVariant(1) << "1 W";
    QTest::newRow("65535") << QVariant(65535) << "65535 W";
    QTest::newRow("9999999 at max") << QVariant(9999999) << "9999999 W";
    QTest::newRow("10000000 above max") << QVariant(10000000) << "-- W";
    QTest::newRow("negative") << QVariant(-20) << "-- W";
    QTest::newRow("missing") << QVariant() << "-- W";
    QTest::newRow("huge 64-bit") << QVariant(qlonglong(1) << 40) << "-- W";
}

void TestRateInfoForm::ratedActivePowerLimits()
{
    QFETCH(QVariant, raw);
    QFETCH(QString, text);
    RateInfoForm form;
    DataMap map;
    if (raw.isValid())
        map.insert(62, raw);
    form.RefreshRateInfo(map);
    QCOMPARE(shown(form, "Rated active power"), text);
}

void TestRateInfoForm::phaseSwitching_data()
{
    QTest::addColumn<int>("inputPhases");
    QTest::addColumn<int>("outputPhases");
    QTest::addColumn<int>("bypassPhases");
    QTest::addColumn<QString>("inVoltage");
    QTest::addColumn<QString>("inCurrent");
    QTest::addColumn<QString>("outVoltage");
    QTest::addColumn<QString>("outFrequency");
    QTest::addColumn<QString>("bypassCurrent");

    QTest::newRow("all single") << 1 << 1 << 1 << "230.0 V" << "11.8 A" << "220.0 V" << "50.1 Hz" << "0.7 A";
    QTest::newRow("input three only")
        << 3 << 1 << 1 << "230.0/231.0/229.0 V" << "11.8/12.1/11.5 A" << "220.0 V" << "50.1 Hz" << "0.7 A";
    QTest::newRow("output three only")
        << 1 << 3 << 1 << "230.0 V" << "11.8 A" << "220.0/221.0/222.0 V" << "50.1 Hz" << "0.7 A";
    QTest::newRow("bypass three only")
        << 1 << 1 << 3 << "230.0 V" << "11.8 A" << "220.0 V" << "50.1 Hz" << "0.7/0.8/0.9 A";
    QTest::newRow("two phases read as single") << 2 << 2 << 2 << "230.0 V" << "11.8 A" << "220.0 V" << "50.1 Hz"
                                               << "0.7 A";
    QTest::newRow("garbage phase count") << -3 << 65535 << 0 << "230.0 V" << "11.8 A" << "220.0 V" << "50.1 Hz"
                                         << "0.7 A";
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

    QTEST(shown(form, "input voltage:"), "inVoltage");
    QTEST(shown(form, "input current:"), "inCurrent");
    QTEST(shown(form, "output voltage:"), "outVoltage");
    QTEST(shown(form, "output frequency:"), "outFrequency");
    QTEST(shown(form, "bypass current:"), "bypassCurrent");
}

void TestRateInfoForm::getPvalueKinds_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<float>("scale");
    QTest::addColumn<int>("phases");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("unit");
    QTest::addColumn<DataMap>("map");
    QTest::addColumn<QString>("text");

    const DataMap none;
    const float one = 1.0f;
    const float tenth = 0.1f;
    // Records read id 10 (and following ids for the multi-value kinds).
    QTest::newRow("0 plain") << 0 << one << 1 << 0 << "" << DataMap{{10, 65535}} << "65535";
    QTest::newRow("0 scaled truncates") << 0 << tenth << 1 << 0 << "" << DataMap{{10, 2309}} << "230";
    QTest::newRow("0 negative truncates toward zero") << 0 << tenth << 1 << 0 << "" << DataMap{{10, -7}} << "0";
    QTest::newRow("0 missing") << 0 << one << 1 << 0 << "" << none << "0";
    QTest::newRow("0 byte array") << 0 << one << 1 << 0 << "" << DataMap{{10, QByteArray("abc")}} << "0";
    QTest::newRow("0 numeric text") << 0 << one << 1 << 0 << "" << DataMap{{10, QStringLiteral("42")}} << "42";
    QTest::newRow("0 huge double saturates") << 0 << one << 1 << 0 << "" << DataMap{{10, 1e30}} << "2147483647";
    QTest::newRow("0 NaN") << 0 << one << 1 << 0 << ""
                           << DataMap{{10, std::numeric_limits<double>::quiet_NaN()}} << "0";
    QTest::newRow("0 unit") << 0 << one << 1 << 0 << "%" << DataMap{{10, 35}} << "35 %";
    QTest::newRow("1 three") << 1 << one << 3 << 0 << "" << DataMap{{10, 1}, {11, 2}, {12, 3}, {13, 4}} << "1/2/3";
    QTest::newRow("1 single") << 1 << one << 1 << 0 << "" << DataMap{{10, 1}, {11, 2}, {12, 3}} << "1";
    QTest::newRow("1 three missing") << 1 << one << 3 << 0 << "" << DataMap{{10, 5}} << "5/0/0";
    QTest::newRow("2 three pairs") << 2 << one << 3 << 0 << ""
                                   << DataMap{{10, 1}, {11, 9}, {12, 2}, {13, 9}, {14, 3}} << "1/2/3";
    QTest::newRow("2 two phases") << 2 << one << 2 << 0 << "" << DataMap{{10, 1}, {12, 2}, {14, 3}} << "1";
    QTest::newRow("4 tenth") << 4 << tenth << 1 << 0 << "V" << DataMap{{10, 2305}} << "230.5 V";
    QTest::newRow("4 max register") << 4 << tenth << 1 << 0 << "" << DataMap{{10, 65535}} << "6553.5";
    QTest::newRow("4 missing") << 4 << tenth << 1 << 0 << "Hz" << none << "0.0 Hz";
    QTest::newRow("4 text") << 4 << one << 1 << 0 << "" << DataMap{{10, QStringLiteral("x")}} << "0.0";
    QTest::newRow("5 three") << 5 << tenth << 3 << 0 << "A" << DataMap{{10, 52}, {11, 48}} << "5.2/4.8/0.0 A";
    QTest::newRow("5 single") << 5 << one << 1 << 0 << "" << DataMap{{10, 230}, {11, 1}} << "230.0";
    QTest::newRow("6 blank") << 6 << one << 1 << 0 << "" << DataMap{{10, 5}} << "";
    QTest::newRow("8 blank") << 8 << one << 1 << 0 << "" << DataMap{{10, 5}} << "";
    QTest::newRow("unknown kind") << 42 << one << 1 << 0 << "" << DataMap{{10, 5}} << "";
    QTest::newRow("negative kind") << -1 << one << 1 << 0 << "" << DataMap{{10, 5}} << "";
    QTest::newRow("9 to zero byte") << 9 << one << 1 << 5 << ""
                                    << DataMap{{10, 'U'}, {11, 'P'}, {12, 'S'}, {13, 0}, {14, 'X'}} << "UPS";
    QTest::newRow("9 length bound") << 9 << one << 1 << 2 << "" << DataMap{{10, 'O'}, {11, 'K'}, {12, '!'}}
                                    << "OK";
    QTest::newRow("9 low byte only") << 9 << one << 1 << 1 << "" << DataMap{{10, 0x141}} << "A";
    QTest::newRow("9 length 0") << 9 << one << 1 << 0 << "" << DataMap{{10, 'A'}} << "";
    QTest::newRow("9 negative length") << 9 << one << 1 << -4 << "" << DataMap{{10, 'A'}} << "";
    QTest::newRow("9 missing id ends") << 9 << one << 1 << 3 << "" << DataMap{{10, 'A'}} << "A";
    QTest::newRow("10 bytes with padding") << 10 << one << 1 << 0 << ""
                                           << DataMap{{10, QByteArray("Model\0\0\0", 8)}} << "Model";
    QTest::newRow("10 number") << 10 << one << 1 << 0 << "" << DataMap{{10, 17}} << "17";
    QTest::newRow("10 missing") << 10 << one << 1 << 0 << "" << none << "";
    QTest::newRow("11 without codes") << 11 << one << 1 << 0 << "" << DataMap{{10, 0}} << "";
}

void TestRateInfoForm::getPvalueKinds()
{
    QFETCH(int, kind);
    QFETCH(float, scale);
    QFETCH(int, phases);
    QFETCH(int, length);
    QFETCH(QString, unit);
    QFETCH(DataMap, map);
    QFETCH(QString, text);

    RateInfoForm form;
    form.RefreshRateInfo(map);
    ParameterInformation p;
    p.kind = kind;
    p.scale = scale;
    p.phases = phases;
    p.length = length;
    p.unit = unit;
    p.dataId = 10;
    QCOMPARE(form.getPvalue(&p), text);
}

void TestRateInfoForm::addComboKeepsLastCodeOfRepeatedText()
{
    ParameterInformation p;
    p.addCombo({"a", "b", "a", "c"});
    QCOMPARE(p.combo.size(), 3);
    QCOMPARE(p.combo.value("a"), 2);
    QCOMPARE(p.combo.value("b"), 1);
    QCOMPARE(p.combo.value("c"), 3);
}

void TestRateInfoForm::identityBlocksShowTextWithoutPadding()
{
    RateInfoForm form;
    form.RefreshRateInfo(ViewSampleData::deviceData(false));
    QCOMPARE(shown(form, "Manufacturer name"), QStringLiteral("Example Power"));
    QCOMPARE(shown(form, "Agent location"), QStringLiteral("Building 2, floor 1"));
    QCOMPARE(shown(form, "battery state:"), QString()); // code 2, the lost "Normal"
    QCOMPARE(shown(form, "Output Mode:"), QStringLiteral("Utility Supply"));
    QCOMPARE(shown(form, "Rated input frequency"), QStringLiteral("50.0 Hz"));
    QCOMPARE(shown(form, "Rated active power"), QStringLiteral("2700 W"));
}

void TestRateInfoForm::refreshReplacesStoredMap()
{
    RateInfoForm form;
    form.RefreshRateInfo({{3, 80}});
    QCOMPARE(shown(form, "battery capacity:"), QStringLiteral("80 %"));
    const DataMap second{{4, 2720}};
    form.RefreshRateInfo(second);
    QCOMPARE(form.lastData(), second);
    QCOMPARE(shown(form, "battery capacity:"), QStringLiteral("0 %"));
    QCOMPARE(shown(form, "battery voltage:"), QStringLiteral("272.0 V"));
}

void TestRateInfoForm::hostileValuesNeverBreakTheForm()
{
    RateInfoForm form;
    form.RefreshRateInfo(ViewSampleData::hostileData());
    // Codes outside the lists show nothing, the limited value shows "--".
    QCOMPARE(shown(form, "battery state:"), QString());
    QCOMPARE(shown(form, "Output Mode:"), QStringLiteral("None")); // non-numeric text reads as code 0
    QCOMPARE(shown(form, "Rated active power"), QStringLiteral("-- W"));
    // Every label shows its own record's value (labels and records stay in step).
    for (ParameterInformation *p : allParams(form)) {
        QLabel *label = form.valueLabelFor(p);
        QVERIFY(label);
        QCOMPARE(label->text(), form.getPvalue(p));
    }
    form.RefreshRateInfo(DataMap());
    QCOMPARE(shown(form, "battery voltage:"), QStringLiteral("0.0 V"));
}

void TestRateInfoForm::panelsPlacedInTwoColumns()
{
    RateInfoForm form;
    auto *grid = qobject_cast<QGridLayout *>(form.layout());
    QVERIFY(grid);
    const QMap<QString, QPair<int, int>> expected{
        {"DEVICE", {0, 0}}, {"INPUT", {1, 0}}, {"BATTERY", {2, 0}},
        {"OUTPUT", {0, 1}}, {"BYPASS", {1, 1}}, {"RATE", {2, 1}},
    };
    QMap<QString, QPair<int, int>> found;
    for (int i = 0; i < grid->count(); ++i) {
        auto *title = grid->itemAt(i)->widget()->findChild<QLabel *>("PanelTitle");
        QVERIFY(title);
        int row, column, rowSpan, columnSpan;
        grid->getItemPosition(i, &row, &column, &rowSpan, &columnSpan);
        found.insert(title->text(), {row, column});
    }
    QCOMPARE(found, expected);
}

QTEST_MAIN(TestRateInfoForm)
#include "tst_rateinfoform.moc"
