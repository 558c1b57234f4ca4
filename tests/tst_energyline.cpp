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
const QSize kTabPage(741, 483);

DataPoints points(std::initializer_list<std::pair<int, QVariant>> values)
{
    DataPoints map;
    for (const auto &value : values)
        map.insert(value.first, value.second);
    return map;
}

// The texts the panels show, joined with '|': input voltage, current and
// frequency, bypass voltage, output current, power and frequency, battery
// temperature and state, device type.
QString texts(const Energyline &v)
{
    return QStringList{v.inputVoltage(),       v.inputCurrent(),       v.inputFrequency(), v.bypassVoltage(),
                       v.outputCurrent(),      v.outputPower(),        v.outputFrequency(),
                       v.batteryTemperature(), v.batteryStatus(),      v.deviceType()}
        .join(QLatin1Char('|'));
}

// Flow flags as a six-letter word: I(nput) C(harge) D(ischarge) R(ectifier)
// O(utput) B(ypass), '-' where off.
QString flows(const Energyline &view)
{
    const bool on[] = {view.isInputFlow(),     view.isChargeFlow(),  view.isDischargeFlow(),
                       view.isRectifierFlow(), view.isOutputFlow(), view.isBypassFlow()};
    QString word;
    for (int i = 0; i < 6; ++i)
        word += on[i] ? QChar("ICDROB"[i]) : QChar('-');
    return word;
}

QString panels(const Energyline &view)
{
    const bool on[] = {view.inputInfoShown(), view.bypassInfoShown(), view.deviceInfoShown(),
                       view.loadInfoShown(), view.batteryInfoShown()};
    QString word;
    for (int i = 0; i < 5; ++i)
        word += on[i] ? QChar("ibult"[i]) : QChar('-');
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
    void textFormats_data();
    void textFormats();
    void flowFlagsAndMode_data();
    void flowFlagsAndMode();
    void allOffLeavesRectifier();
    void flowAnimation();
    void clickToggles_data();
    void clickToggles();
    void clickOnScaledDiagram();
    void capacityColour_data();
    void capacityColour();
    void pictureResources();
    void hostileValues();
};

void TestEnergyline::textFormats_data()
{
    QTest::addColumn<DataPoints>("map");
    QTest::addColumn<QString>("expected");

    QByteArray model("UPS  3KVA\tONLINE   ");
    model.append(QByteArray(40, '\0'));
    QTest::newRow("single phase")
        << points({{8, 1}, {9, 230}, {12, 35}, {15, 499}, {43, 1}, {44, 220}, {26, 1}, {25, 600}, {30, 1523},
                   {33, 12}, {34, 99}, {6, 1000}, {0, 1}, {4000, model}})
        << "230 V|3.5 A|49.9|220 V|152.3 A|12 kW|60.0 Hz|100.0|Unknown|UPS 3KVA ONLINE";
    // Output power uses the low halves 33, 35, 37, not 33, 34, 35.
    QTest::newRow("three phases")
        << points({{8, 3}, {9, 230}, {10, 231}, {11, 229}, {12, 35}, {13, 41}, {14, 7}, {43, 3}, {44, 220},
                   {45, 221}, {46, 222}, {26, 3}, {30, 1523}, {31, 1498}, {32, 1510}, {33, 12}, {34, 99},
                   {35, 13}, {36, 98}, {37, 14}, {6, 1001}, {0, 8}})
        << "230/231/229 V|3.5/4.1/0.7 A|0.0|220/221/222 V|152.3/149.8/151.0 A|12/13/14 kW|0.0 Hz|--|Discharge|";
    // Anything but 1 is three-phase; each section has its own count; code 0
    // and codes past the list are "Normal".
    QTest::newRow("odd counts and codes")
        << points({{8, 2}, {9, QStringLiteral("abc")}, {43, 1}, {44, -12}, {6, -5}, {0, 10}})
        << "0/0/0 V|0.0/0.0/0.0 A|0.0|-12 V|0.0/0.0/0.0 A|0/0/0 kW|0.0 Hz|--|Normal|";
    QTest::newRow("empty map") << DataPoints()
                               << "0/0/0 V|0.0/0.0/0.0 A|0.0|0/0/0 V|0.0/0.0/0.0 A|0/0/0 kW|0.0 Hz|0.0|Normal|";
}

void TestEnergyline::textFormats()
{
    QFETCH(DataPoints, map);
    Energyline view;
    view.flushData(map);
    QTEST(texts(view), "expected");
}

void TestEnergyline::flowFlagsAndMode_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("batteryStatus");
    QTest::addColumn<QString>("expectedFlows");
    QTest::addColumn<QString>("expectedSource");

    QTest::newRow("utility") << 3 << 2 << "I-DRO-" << "Utility supply";
    QTest::newRow("utility, float charging") << 3 << 7 << "ICDRO-" << "Utility supply";
    QTest::newRow("bypass") << 4 << 2 << "-----B" << "Bypass supply";
    QTest::newRow("bypass, charging") << 4 << 6 << "IC---B" << "Bypass supply";
    QTest::newRow("battery") << 5 << 8 << "--D-O-" << "Battery supply";
    QTest::newRow("code 0 reads as none") << 0 << 6 << "------" << "None supply";
    QTest::newRow("code 8 outside list") << 8 << 6 << "------" << "Other supply";
}

void TestEnergyline::flowFlagsAndMode()
{
    QFETCH(int, source);
    QFETCH(int, batteryStatus);
    Energyline view;
    // Start with every segment on, so a flag that is not rewritten shows up.
    view.flushData(points({{24, 3}, {0, 6}}));
    view.flushData(points({{24, source}, {0, batteryStatus}}));
    QTEST(flows(view), "expectedFlows");
    QTEST(view.outputSource(), "expectedSource");
}

void TestEnergyline::allOffLeavesRectifier()
{
    Energyline view;
    QCOMPARE(flows(view), QStringLiteral("------"));
    view.flushData(points({{24, 3}, {0, 6}}));
    view.set_all_off_Flow();
    QCOMPARE(flows(view), QStringLiteral("---R--"));
}

void TestEnergyline::flowAnimation()
{
    Energyline view;
    QCOMPARE(view.currentFlowOffset(), 0.0f);
    QTRY_VERIFY_WITH_TIMEOUT(view.currentFlowOffset() <= -0.8f, 2000); // 0.4 a tick, from its own timer
}

void TestEnergyline::clickToggles_data()
{
    QTest::addColumn<QPointF>("offset"); // from the centre
    QTest::addColumn<QString>("expected");

    QTest::newRow("input block edge") << QPointF(-225, 0) << "-bult";
    QTest::newRow("input, half rounds up to -224") << QPointF(-224.5, 0) << "ibult";
    QTest::newRow("left of input block") << QPointF(-300.6, 0) << "ibult";
    QTest::newRow("bypass bottom edge") << QPointF(-262, -112.6) << "i-ult";
    QTest::newRow("load bottom-right corner") << QPointF(300, 37.4) << "ibu-t";
    QTest::newRow("battery, toggles device too") << QPointF(0, 100) << "ib-l-";
    QTest::newRow("rectifier does not react") << QPointF(-92, 0) << "ibult";
}

void TestEnergyline::clickToggles()
{
    QFETCH(QPointF, offset);
    Energyline view;
    view.resize(kFullWidth, kFullHeight);
    QCOMPARE(view.diagramScale(), 1.0);
    const QPointF center(kFullWidth / 2, kFullHeight / 2);

    press(view, center + offset);
    QTEST(panels(view), "expected");
    press(view, center + offset);
    QCOMPARE(panels(view), QStringLiteral("ibult"));
}

void TestEnergyline::clickOnScaledDiagram()
{
    // The tab page is smaller than the diagram: it is drawn scaled about the
    // centre, and clicks are mapped back before the hit test.
    Energyline view;
    view.resize(kTabPage);
    const double scale = view.diagramScale();
    QVERIFY(scale < 1.0);
    const QPointF center(kTabPage.width() / 2, kTabPage.height() / 2);

    press(view, center + QPointF(260, 0) * scale);
    QCOMPARE(panels(view), QStringLiteral("ibu-t"));
    // Unscaled, this point would be inside the load block (225..300).
    press(view, center + QPointF(230, 0) * scale * 0.9);
    QCOMPARE(panels(view), QStringLiteral("ibu-t"));
}

void TestEnergyline::capacityColour_data()
{
    QTest::addColumn<int>("capacity");
    QTest::addColumn<QPoint>("sample"); // from the centre
    QTest::addColumn<QColor>("expected");

    const QPoint nearBottom(-15, 150);
    const QColor background(Qt::white);
    QTest::newRow("20 red") << 20 << nearBottom << QColor(Qt::red);
    QTest::newRow("21 yellow") << 21 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("60 yellow") << 60 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("61 green") << 61 << nearBottom << QColor(Qt::green);
    QTest::newRow("50 stops half way") << 50 << QPoint(-15, 100) << background;
    QTest::newRow("150 not clamped") << 150 << QPoint(-15, 60) << QColor(Qt::green);
}

void TestEnergyline::capacityColour()
{
    QFETCH(int, capacity);
    QFETCH(QPoint, sample);
    Energyline view;
    view.resize(kFullWidth, kFullHeight);
    view.flushData(points({{3, capacity}}));
    QTEST(renderOf(view).pixelColor(QPoint(kFullWidth / 2, kFullHeight / 2) + sample), "expected");
}

void TestEnergyline::pictureResources()
{
    Energyline view; // registers the library's resources
    for (const char *path : {"://image/INPUT.png", "://image/LOAD.png", "://image/REC.png", "://image/INV.png"})
        QVERIFY2(!QPixmap(QLatin1String(path)).isNull(), path);
}

void TestEnergyline::hostileValues()
{
    // Random values and types on every id the widget reads: texts are
    // rebuilt and the diagram painted without assertions or bad reads.
    QRandomGenerator random(20240611);
    const QVariant kinds[] = {QVariant(), QVariant(QStringLiteral("x")), QVariant(QByteArray("\xff\xfe", 2)),
                              QVariant(QVariantMap()), QVariant(-1.5), QVariant(qint64(1) << 40)};
    Energyline view;
    view.resize(kTabPage);
    for (int round = 0; round < 40; ++round) {
        DataPoints map;
        for (int id = 0; id < 73; ++id)
            map.insert(id, random.bounded(4) == 0 ? kinds[random.bounded(6)]
                                                  : QVariant(random.bounded(-70000, 70000)));
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
