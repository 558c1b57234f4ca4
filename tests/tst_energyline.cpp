#include <QtTest>

#include <QImage>
#include <QMouseEvent>
#include <QPixmap>
#include <QRandomGenerator>

#include "energyline.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// Large enough that the diagram is drawn unscaled.
constexpr int kFullWidth = 900;
constexpr int kFullHeight = 700;

DataPoints points(std::initializer_list<std::pair<int, QVariant>> values)
{
    DataPoints map;
    for (const auto &value : values)
        map.insert(value.first, value.second);
    return map;
}

QString field(const Energyline &view, const QString &name)
{
    static const QHash<QString, QString (Energyline::*)() const> getters = {
        {"inputVoltage", &Energyline::inputVoltage},
        {"inputCurrent", &Energyline::inputCurrent},
        {"inputFrequency", &Energyline::inputFrequency},
        {"bypassVoltage", &Energyline::bypassVoltage},
        {"bypassFrequency", &Energyline::bypassFrequency},
        {"outputVoltage", &Energyline::outputVoltage},
        {"outputCurrent", &Energyline::outputCurrent},
        {"outputFrequency", &Energyline::outputFrequency},
        {"outputPower", &Energyline::outputPower},
        {"outputLoad", &Energyline::outputLoad},
        {"batteryVoltage", &Energyline::batteryVoltage},
        {"batteryTemperature", &Energyline::batteryTemperature},
        {"batteryRemainTime", &Energyline::batteryRemainTime},
        {"batteryCapacity", &Energyline::batteryCapacity},
        {"deviceType", &Energyline::deviceType},
        {"deviceName", &Energyline::deviceName},
        {"manufacturer", &Energyline::manufacturer},
    };
    const auto getter = getters.value(name);
    return getter ? (view.*getter)() : QStringLiteral("<no such field %1>").arg(name);
}

// Flow flags as a six-letter word: I(nput) C(harge) D(ischarge) R(ectifier)
// O(utput) B(ypass), '-' where off.
QString flows(const Energyline &view)
{
    QString word;
    word += view.isInputFlow() ? 'I' : '-';
    word += view.isChargeFlow() ? 'C' : '-';
    word += view.isDischargeFlow() ? 'D' : '-';
    word += view.isRectifierFlow() ? 'R' : '-';
    word += view.isOutputFlow() ? 'O' : '-';
    word += view.isBypassFlow() ? 'B' : '-';
    return word;
}

QString panels(const Energyline &view)
{
    QString word;
    word += view.inputInfoShown() ? 'i' : '-';
    word += view.bypassInfoShown() ? 'b' : '-';
    word += view.deviceInfoShown() ? 'u' : '-';
    word += view.loadInfoShown() ? 'l' : '-';
    word += view.batteryInfoShown() ? 't' : '-';
    return word;
}

void press(Energyline &view, const QPointF &pos)
{
    QMouseEvent event(QEvent::MouseButtonPress, pos, view.mapToGlobal(pos.toPoint()), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

QImage renderOf(Energyline &view)
{
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren); // no window background
    return image;
}

} // namespace

class TestEnergyline : public QObject
{
    Q_OBJECT
private slots:
    void initialState();
    void textFormats_data();
    void textFormats();
    void batteryTemperature_data();
    void batteryTemperature();
    void flowFlagsAndMode_data();
    void flowFlagsAndMode();
    void batteryStatus_data();
    void batteryStatus();
    void allOffLeavesRectifier();
    void flowOffsetStepsAndWraps();
    void timerAnimates();
    void clickToggles_data();
    void clickToggles();
    void clickOnScaledDiagram();
    void capacityColour_data();
    void capacityColour();
    void textsFollowScale();
    void longValuesKeepClearOfLabels_data();
    void longValuesKeepClearOfLabels();
    void pictureResources_data();
    void pictureResources();
    void hostileValues();
};

void TestEnergyline::initialState()
{
    Energyline view;
    QCOMPARE(flows(view), QStringLiteral("------"));
    QCOMPARE(panels(view), QStringLiteral("ibult"));
    QCOMPARE(view.currentFlowOffset(), 0.0f);
    QVERIFY(view.inputVoltage().isEmpty());
    QVERIFY(view.outputSource().isEmpty());
    QVERIFY(view.batteryStatus().isEmpty());
}

void TestEnergyline::textFormats_data()
{
    QTest::addColumn<DataPoints>("map");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");

    const DataPoints input = points({{9, 230}, {10, 231}, {11, 229}, {12, 35}, {13, 41}, {14, 7}, {15, 499}});
    auto with = [](DataPoints map, int id, int value) {
        map.insert(id, value);
        return map;
    };
    QTest::newRow("input 1 phase voltage") << with(input, 8, 1) << "inputVoltage" << "230 V";
    QTest::newRow("input 1 phase current") << with(input, 8, 1) << "inputCurrent" << "3.5 A";
    QTest::newRow("input 3 phase voltage") << with(input, 8, 3) << "inputVoltage" << "230/231/229 V";
    QTest::newRow("input 3 phase current") << with(input, 8, 3) << "inputCurrent" << "3.5/4.1/0.7 A";
    QTest::newRow("input 2 phases is three-value") << with(input, 8, 2) << "inputVoltage" << "230/231/229 V";
    QTest::newRow("input phase missing is three-value") << input << "inputVoltage" << "230/231/229 V";
    QTest::newRow("input frequency, no unit") << input << "inputFrequency" << "49.9";

    const DataPoints bypass = points({{42, 501}, {44, 220}, {45, 221}, {46, 222}});
    QTest::newRow("bypass 1 phase") << with(bypass, 43, 1) << "bypassVoltage" << "220 V";
    QTest::newRow("bypass 3 phases") << with(bypass, 43, 3) << "bypassVoltage" << "220/221/222 V";
    QTest::newRow("bypass frequency") << bypass << "bypassFrequency" << "50.1";

    // Output power uses the low halves 33, 35, 37, not 33, 34, 35.
    const DataPoints output = points({{25, 600}, {27, 220}, {28, 221}, {29, 219}, {30, 1523}, {31, 1498},
                                      {32, 1510}, {33, 12}, {34, 99}, {35, 13}, {36, 98}, {37, 14},
                                      {39, 78}, {40, 76}, {41, 77}});
    QTest::newRow("output 1 phase voltage") << with(output, 26, 1) << "outputVoltage" << "220 V";
    QTest::newRow("output 1 phase current") << with(output, 26, 1) << "outputCurrent" << "152.3 A";
    QTest::newRow("output 1 phase power") << with(output, 26, 1) << "outputPower" << "12 kW";
    QTest::newRow("output 1 phase load") << with(output, 26, 1) << "outputLoad" << "78 %";
    QTest::newRow("output 3 phase voltage") << with(output, 26, 3) << "outputVoltage" << "220/221/219 V";
    QTest::newRow("output 3 phase current") << with(output, 26, 3) << "outputCurrent"
                                            << "152.3/149.8/151.0 A";
    QTest::newRow("output 3 phase power") << with(output, 26, 3) << "outputPower" << "12/13/14 kW";
    QTest::newRow("output 3 phase load") << with(output, 26, 3) << "outputLoad" << "78/76/77 %";
    QTest::newRow("output frequency with unit") << output << "outputFrequency" << "60.0 Hz";

    QTest::newRow("battery voltage") << points({{4, 545}}) << "batteryVoltage" << "54.5";
    QTest::newRow("remaining time") << points({{2, 45}}) << "batteryRemainTime" << "45";
    QTest::newRow("capacity") << points({{3, 85}}) << "batteryCapacity" << "85";

    QTest::newRow("negative value") << points({{8, 1}, {9, -12}}) << "inputVoltage" << "-12 V";
    QTest::newRow("numeric text") << points({{8, 1}, {9, QStringLiteral("231")}}) << "inputVoltage"
                                  << "231 V";
    QTest::newRow("non-number reads 0") << points({{8, 1}, {9, QStringLiteral("abc")}})
                                        << "inputVoltage" << "0 V";
    QTest::newRow("list reads 0") << points({{8, 1}, {9, QStringList{"1", "2"}}}) << "inputVoltage"
                                  << "0 V";
    QTest::newRow("empty map") << DataPoints() << "outputVoltage" << "0/0/0 V";

    QByteArray model("UPS  3KVA\tONLINE   ");
    model.append(QByteArray(40, '\0'));
    QTest::newRow("type simplified, NUL padding dropped") << points({{4000, model}}) << "deviceType"
                                                          << "UPS 3KVA ONLINE";
    QTest::newRow("manufacturer") << points({{4001, QByteArray("Orvek Power\0\0\0", 14)}})
                                  << "manufacturer" << "Orvek Power";
    QTest::newRow("name") << points({{4002, QByteArray("Server room A   ")}}) << "deviceName"
                          << "Server room A";
    QTest::newRow("identity missing") << DataPoints() << "deviceType" << "";
}

void TestEnergyline::textFormats()
{
    QFETCH(DataPoints, map);
    QFETCH(QString, name);
    QFETCH(QString, expected);

    Energyline view;
    view.flushData(map);
    QCOMPARE(field(view, name), expected);
}

void TestEnergyline::batteryTemperature_data()
{
    QTest::addColumn<int>("raw");
    QTest::addColumn<QString>("expected");
    QTest::newRow("25.5") << 255 << "25.5";
    QTest::newRow("zero") << 0 << "0.0";
    QTest::newRow("upper bound") << 1000 << "100.0";
    QTest::newRow("above 100") << 1001 << "--";
    QTest::newRow("negative") << -5 << "--";
    QTest::newRow("unsigned wrap of -1") << 65535 << "--";
}

void TestEnergyline::batteryTemperature()
{
    QFETCH(int, raw);
    QFETCH(QString, expected);
    Energyline view;
    view.flushData(points({{6, raw}}));
    QCOMPARE(view.batteryTemperature(), expected);
}

void TestEnergyline::flowFlagsAndMode_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("batteryStatus");
    QTest::addColumn<QString>("expectedFlows");
    QTest::addColumn<QString>("expectedSource");

    QTest::newRow("utility") << 3 << 2 << "I-DRO-" << "Utility supply";
    QTest::newRow("utility, boost charging") << 3 << 6 << "ICDRO-" << "Utility supply";
    QTest::newRow("utility, float charging") << 3 << 7 << "ICDRO-" << "Utility supply";
    QTest::newRow("bypass") << 4 << 2 << "-----B" << "Bypass supply";
    QTest::newRow("bypass, charging") << 4 << 6 << "IC---B" << "Bypass supply";
    QTest::newRow("battery") << 5 << 8 << "--D-O-" << "Battery supply";
    QTest::newRow("battery, charging code") << 5 << 7 << "--D-O-" << "Battery supply";
    QTest::newRow("code 0 reads as none") << 0 << 6 << "------" << "None supply";
    QTest::newRow("other") << 1 << 6 << "------" << "Other supply";
    QTest::newRow("none") << 2 << 6 << "------" << "None supply";
    QTest::newRow("booster") << 6 << 6 << "------" << "Booster supply";
    QTest::newRow("reducer") << 7 << 6 << "------" << "Reducer supply";
    QTest::newRow("code 8 outside list") << 8 << 6 << "------" << "Other supply";
    QTest::newRow("code 65535 outside list") << 65535 << 6 << "------" << "Other supply";
    QTest::newRow("negative code") << -3 << 6 << "------" << "Other supply";
}

void TestEnergyline::flowFlagsAndMode()
{
    QFETCH(int, source);
    QFETCH(int, batteryStatus);
    QFETCH(QString, expectedFlows);
    QFETCH(QString, expectedSource);

    Energyline view;
    // Start from a state with every segment on, so a flag that is not
    // rewritten shows up.
    view.flushData(points({{24, 3}, {0, 6}}));
    view.flushData(points({{24, source}, {0, batteryStatus}}));
    QCOMPARE(flows(view), expectedFlows);
    QCOMPARE(view.outputSource(), expectedSource);
}

void TestEnergyline::batteryStatus_data()
{
    QTest::addColumn<QVariant>("code");
    QTest::addColumn<QString>("expected");
    const char *texts[] = {"Normal", "Unknown", "Normal", "Low", "Depleted",
                           "Selftest", "Boost", "Floating", "Discharge", "Normal"};
    for (int code = 0; code < 10; ++code)
        QTest::addRow("code %d", code) << QVariant(code) << texts[code];
    QTest::newRow("code 10") << QVariant(10) << "Normal";
    QTest::newRow("code -1") << QVariant(-1) << "Normal";
    QTest::newRow("code 65535") << QVariant(65535) << "Normal";
    QTest::newRow("missing") << QVariant() << "Normal";
}

void TestEnergyline::batteryStatus()
{
    QFETCH(QVariant, code);
    QFETCH(QString, expected);
    Energyline view;
    DataPoints map;
    if (code.isValid())
        map.insert(0, code);
    view.flushData(map);
    QCOMPARE(view.batteryStatus(), expected);
}

void TestEnergyline::allOffLeavesRectifier()
{
    Energyline view;
    view.flushData(points({{24, 3}, {0, 6}}));
    QCOMPARE(flows(view), QStringLiteral("ICDRO-"));
    view.set_all_off_Flow();
    QCOMPARE(flows(view), QStringLiteral("---R--"));

    view.flushData(points({{24, 4}, {0, 2}}));
    view.set_all_off_Flow();
    QCOMPARE(flows(view), QStringLiteral("------"));
}

void TestEnergyline::flowOffsetStepsAndWraps()
{
    Energyline view;
    view.advanceFlow();
    QCOMPARE(view.currentFlowOffset(), -0.4f);
    view.advanceFlow();
    QCOMPARE(view.currentFlowOffset(), -0.8f);

    int steps = 2;
    float lowest = 0.0f;
    while (view.currentFlowOffset() != 0.0f && steps < 3000) {
        lowest = std::min(lowest, view.currentFlowOffset());
        view.advanceFlow();
        ++steps;
    }
    // About 250 s of animation at 0.4 units a tick; never shown below -1000.
    QVERIFY2(steps >= 2500 && steps <= 2502, qPrintable(QString::number(steps)));
    QVERIFY(lowest >= -1000.0f);
    QVERIFY(lowest < -999.0f);
    view.advanceFlow();
    QCOMPARE(view.currentFlowOffset(), -0.4f);
}

void TestEnergyline::timerAnimates()
{
    Energyline view;
    QTRY_VERIFY_WITH_TIMEOUT(view.currentFlowOffset() <= -0.8f, 2000);
}

void TestEnergyline::clickToggles_data()
{
    QTest::addColumn<QPointF>("offset"); // from the centre
    QTest::addColumn<QString>("expected");

    QTest::newRow("input block edge") << QPointF(-225, 0) << "-bult";
    QTest::newRow("input, half rounds up to -224") << QPointF(-224.5, 0) << "ibult";
    QTest::newRow("input, -225.5 rounds to -225") << QPointF(-225.5, 0) << "-bult";
    QTest::newRow("input top-left corner") << QPointF(-300, -37.4) << "-bult";
    QTest::newRow("above input block") << QPointF(-300, -37.6) << "ibult";
    QTest::newRow("left of input block") << QPointF(-300.6, 0) << "ibult";
    QTest::newRow("bypass block") << QPointF(-262, -150) << "i-ult";
    QTest::newRow("bypass bottom edge rounds out") << QPointF(-262, -112.5) << "ibult";
    QTest::newRow("bypass bottom edge") << QPointF(-262, -112.6) << "i-ult";
    QTest::newRow("load block") << QPointF(260, 0) << "ibu-t";
    QTest::newRow("load bottom-right corner") << QPointF(300, 37.4) << "ibu-t";
    QTest::newRow("right of load block") << QPointF(300.5, 0) << "ibult";
    QTest::newRow("battery, toggles device too") << QPointF(0, 100) << "ib-l-";
    QTest::newRow("battery bottom-right corner") << QPointF(25, 155) << "ib-l-";
    QTest::newRow("below battery") << QPointF(0, 155.5) << "ibult";
    QTest::newRow("battery terminal") << QPointF(0, 75) << "ibult";
    QTest::newRow("rectifier does not react") << QPointF(-92, 0) << "ibult";
    QTest::newRow("inverter does not react") << QPointF(92, 0) << "ibult";
    QTest::newRow("device panel does not react") << QPointF(0, -280) << "ibult";
}

void TestEnergyline::clickToggles()
{
    QFETCH(QPointF, offset);
    QFETCH(QString, expected);

    Energyline view;
    view.resize(kFullWidth, kFullHeight);
    QCOMPARE(view.diagramScale(), 1.0);
    const QPointF center(kFullWidth / 2, kFullHeight / 2);

    press(view, center + offset);
    QCOMPARE(panels(view), expected);
    press(view, center + offset);
    QCOMPARE(panels(view), QStringLiteral("ibult"));
}

void TestEnergyline::clickOnScaledDiagram()
{
    // The tab page is smaller than the diagram: it is drawn scaled about the
    // centre, and clicks are mapped back before the hit test.
    Energyline view;
    view.resize(741, 483);
    const double scale = view.diagramScale();
    QVERIFY(scale < 1.0);
    const QPointF center(741 / 2, 483 / 2);

    press(view, center + QPointF(260, 0) * scale);
    QCOMPARE(panels(view), QStringLiteral("ibu-t"));
    // Unscaled, this point would be inside the load block (225..300).
    press(view, center + QPointF(230, 0) * scale * 0.9);
    QCOMPARE(panels(view), QStringLiteral("ibu-t"));
    press(view, center + QPointF(-262, -150) * scale);
    QCOMPARE(panels(view), QStringLiteral("i-u-t"));
}

void TestEnergyline::capacityColour_data()
{
    QTest::addColumn<int>("capacity");
    QTest::addColumn<QPoint>("sample"); // from the centre
    QTest::addColumn<QColor>("expected");

    const QPoint nearBottom(-15, 150);
    const QColor background(Qt::white);
    QTest::newRow("5 red") << 5 << nearBottom << QColor(Qt::red);
    QTest::newRow("20 red") << 20 << nearBottom << QColor(Qt::red);
    QTest::newRow("21 yellow") << 21 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("60 yellow") << 60 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("61 green") << 61 << nearBottom << QColor(Qt::green);
    QTest::newRow("100 green") << 100 << nearBottom << QColor(Qt::green);
    QTest::newRow("100 fills to the top") << 100 << QPoint(-15, 86) << QColor(Qt::green);
    QTest::newRow("50 stops half way") << 50 << QPoint(-15, 100) << background;
    QTest::newRow("150 not clamped") << 150 << QPoint(-15, 60) << QColor(Qt::green);
    QTest::newRow("0 empty") << 0 << nearBottom << background;
    QTest::newRow("negative empty") << -40 << nearBottom << background;
    QTest::newRow("negative draws nothing below") << -40 << QPoint(-15, 179) << background;
}

void TestEnergyline::capacityColour()
{
    QFETCH(int, capacity);
    QFETCH(QPoint, sample);
    QFETCH(QColor, expected);

    Energyline view;
    view.resize(kFullWidth, kFullHeight);
    view.flushData(points({{3, capacity}}));
    const QImage image = renderOf(view);
    const QPoint center(kFullWidth / 2, kFullHeight / 2);
    QCOMPARE(image.pixelColor(center + sample), expected);
}

void TestEnergyline::textsFollowScale()
{
    // On a scaled diagram the capacity text sits next to the battery title,
    // inside its scaled rectangle, and nowhere near its unscaled place.
    Energyline view;
    view.resize(741, 483);
    view.flushData(points({{3, 47}}));
    const QImage image = renderOf(view);
    const double scale = view.diagramScale();
    const QPointF center(741 / 2, 483 / 2);
    const QRectF scaled(center + QPointF(25, 160) * scale, QSizeF(50, 50) * scale);
    const QRectF unscaled(center + QPointF(25, 160), QSizeF(50, 50));

    auto bluePixels = [&image](const QRectF &area) {
        int count = 0;
        const QRect pixels = area.toAlignedRect() & image.rect();
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += c.blue() > 200 && c.red() < 150 && c.green() < 170;
            }
        }
        return count;
    };
    QVERIFY(bluePixels(scaled) > 10);
    QVERIFY(!unscaled.intersects(scaled));
    QCOMPARE(bluePixels(unscaled), 0);
}

void TestEnergyline::longValuesKeepClearOfLabels_data()
{
    QTest::addColumn<DataPoints>("map");
    QTest::addColumn<QPointF>("panelOrigin"); // from the centre
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("label");

    const QPointF load(110, 45);
    const QPointF device(-165, -320);
    QTest::newRow("three-phase power in W")
        << points({{26, 3}, {33, 65535}, {35, 65535}, {37, 65535}}) << load << 4 << "Active power:";
    QTest::newRow("three-phase current")
        << points({{26, 3}, {30, 65535}, {31, 65535}, {32, 65535}}) << load << 2 << "Current:";
    QTest::newRow("long model")
        << points({{4000, QByteArray(64, 'W')}}) << device << 1 << "Type:";
    QTest::newRow("long manufacturer")
        << points({{4001, QByteArray("Manufacturer Manufacturer Manufacturer")}}) << device << 3
        << "Manufacturer:";
}

void TestEnergyline::longValuesKeepClearOfLabels()
{
    QFETCH(DataPoints, map);
    QFETCH(QPointF, panelOrigin);
    QFETCH(int, row);
    QFETCH(QString, label);

    Energyline view;
    view.resize(kFullWidth, kFullHeight);
    view.flushData(map);
    const QImage image = renderOf(view);

    const QPointF center(kFullWidth / 2, kFullHeight / 2);
    const QPointF rowTopLeft = center + panelOrigin + QPointF(0, 25 * row);
    const double labelWidth = QFontMetricsF(QFont(QStringLiteral("Microsoft YaHei"), 11)).horizontalAdvance(label);
    auto valuePixels = [&image](const QRectF &area) {
        int count = 0;
        const QRect pixels = area.toAlignedRect() & image.rect();
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += c.blue() > 200 && c.red() < 150 && c.green() < 170;
            }
        }
        return count;
    };
    QVERIFY(valuePixels(QRectF(rowTopLeft + QPointF(labelWidth, 0), QSizeF(300 - labelWidth, 25))) > 20);
    QCOMPARE(valuePixels(QRectF(rowTopLeft, QSizeF(labelWidth + 2, 25))), 0);
}

void TestEnergyline::pictureResources_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QSize>("size");
    QTest::newRow("input") << "://image/INPUT.png" << QSize(30, 10);
    QTest::newRow("load") << "://image/LOAD.png" << QSize(70, 55);
    QTest::newRow("rectifier") << "://image/REC.png" << QSize(70, 55);
    QTest::newRow("inverter") << "://image/INV.png" << QSize(70, 55);
}

void TestEnergyline::pictureResources()
{
    QFETCH(QString, path);
    QFETCH(QSize, size);
    Energyline view; // registers the library's resources
    QPixmap picture;
    QVERIFY(picture.load(path));
    QCOMPARE(picture.size(), size);
}

void TestEnergyline::hostileValues()
{
    // Random values and types on every id the widget reads: texts are
    // rebuilt and the diagram painted without assertions or bad reads.
    QRandomGenerator random(20240611);
    const QVariant kinds[] = {QVariant(), QVariant(QStringLiteral("x")), QVariant(QByteArray("\xff\xfe", 2)),
                              QVariant(QVariantMap()), QVariant(-1.5), QVariant(qint64(1) << 40)};
    Energyline view;
    view.resize(741, 483);
    for (int round = 0; round < 40; ++round) {
        DataPoints map;
        for (int id = 0; id < 73; ++id) {
            if (random.bounded(4) == 0)
                map.insert(id, kinds[random.bounded(6)]);
            else
                map.insert(id, random.bounded(-70000, 70000));
        }
        map.insert(4000, kinds[random.bounded(6)]);
        map.insert(4001, QByteArray(64, char(random.bounded(256))));
        view.flushData(map);
        QVERIFY(!view.batteryStatus().isEmpty());
        QVERIFY(!view.outputSource().isEmpty());
        QVERIFY(!renderOf(view).isNull());
    }
}

QTEST_MAIN(TestEnergyline)
#include "tst_energyline.moc"
