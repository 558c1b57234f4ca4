// Energy-flow diagram: panel texts, flow flags per supply mode, the flow
// animation, click hit-testing (also scaled), the capacity colours, and
// screenshots with the simulated agent's data.

#include <QtTest>

#include <QImage>
#include <QMouseEvent>

#include "chartscreenshots.h"
#include "energyline.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// Large enough that the diagram is drawn unscaled.
const QSize kFullSize(900, 700);
const QSize kTabPage(741, 483);

// The texts the panels show, joined with '|'.
QString texts(const Energyline &v)
{
    return QStringList{v.inputVoltage(),       v.inputCurrent(),       v.inputFrequency(), v.bypassVoltage(),
                       v.outputCurrent(),      v.outputPower(),        v.outputFrequency(),
                       v.batteryTemperature(), v.batteryStatus(),      v.deviceType()}
        .join(QLatin1Char('|'));
}

// One letter per flag that is on, '-' where it is off: flows I(nput)
// C(harge) D(ischarge) R(ectifier) O(utput) B(ypass); info panels i(nput)
// b(ypass) u(ps) l(oad) (ba)t(tery).
QString flagWord(const QVector<bool> &on, const char *letters)
{
    QString word;
    for (int i = 0; i < on.size(); ++i)
        word += on[i] ? QChar(letters[i]) : QChar('-');
    return word;
}

QString flows(const Energyline &v)
{
    return flagWord({v.isInputFlow(), v.isChargeFlow(), v.isDischargeFlow(), v.isRectifierFlow(),
                     v.isOutputFlow(), v.isBypassFlow()},
                    "ICDROB");
}

QString panels(const Energyline &v)
{
    return flagWord({v.inputInfoShown(), v.bypassInfoShown(), v.deviceInfoShown(), v.loadInfoShown(),
                     v.batteryInfoShown()},
                    "ibult");
}

void press(Energyline &view, const QPointF &pos)
{
    QMouseEvent event(QEvent::MouseButtonPress, pos, view.mapToGlobal(pos.toPoint()), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

QPointF centre(const QSize &size)
{
    return QPointF(size.width() / 2, size.height() / 2);
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
    void flowAnimation();
    void clickToggles_data();
    void clickToggles();
    void capacityColour_data();
    void capacityColour();
    void screenshots_data();
    void screenshots();
};

void TestEnergyline::textFormats_data()
{
    QTest::addColumn<DataPoints>("map");
    QTest::addColumn<QString>("expected");

    QByteArray model("UPS  3KVA\tONLINE   ");
    model.append(QByteArray(40, '\0'));
    QTest::newRow("single phase")
        << DataPoints{{8, 1}, {9, 230}, {12, 35}, {15, 499}, {43, 1}, {44, 220}, {26, 1},
                      {25, 600}, {30, 1523}, {33, 12}, {34, 99}, {6, 1000}, {0, 1}, {4000, model}}
        << "230 V|3.5 A|49.9|220 V|152.3 A|12 kW|60.0 Hz|100.0|Unknown|UPS 3KVA ONLINE";
    // Output power uses the low halves 33, 35, 37, not 33, 34, 35.
    QTest::newRow("three phases")
        << DataPoints{{8, 3}, {9, 230}, {10, 231}, {11, 229}, {12, 35}, {13, 41}, {14, 7}, {43, 3},
                      {44, 220}, {45, 221}, {46, 222}, {26, 3}, {30, 1523}, {31, 1498}, {32, 1510},
                      {33, 12}, {34, 99}, {35, 13}, {36, 98}, {37, 14}, {6, 1001}, {0, 8}}
        << "230/231/229 V|3.5/4.1/0.7 A|0.0|220/221/222 V|152.3/149.8/151.0 A|12/13/14 kW|0.0 Hz|--|Discharge|";
    // Anything but 1 is three-phase; each section has its own count; code 0
    // and codes past the list are "Normal".
    QTest::newRow("odd counts and codes")
        << DataPoints{{8, 2}, {9, QStringLiteral("abc")}, {43, 1}, {44, -12}, {6, -5}, {0, 10}}
        << "0/0/0 V|0.0/0.0/0.0 A|0.0|-12 V|0.0/0.0/0.0 A|0/0/0 kW|0.0 Hz|--|Normal|";
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
    QTest::addColumn<QString>("expectedSource"); // source -1: set_all_off_Flow() instead of new data

    QTest::newRow("utility") << 3 << 2 << "I-DRO-" << "Utility supply";
    QTest::newRow("utility, float charging") << 3 << 7 << "ICDRO-" << "Utility supply";
    QTest::newRow("bypass") << 4 << 2 << "-----B" << "Bypass supply";
    QTest::newRow("bypass, charging") << 4 << 6 << "IC---B" << "Bypass supply";
    QTest::newRow("battery") << 5 << 8 << "--D-O-" << "Battery supply";
    QTest::newRow("code 0 reads as none") << 0 << 6 << "------" << "None supply";
    QTest::newRow("code 8 outside list") << 8 << 6 << "------" << "Other supply";
    QTest::newRow("all off leaves the rectifier") << -1 << 0 << "---R--" << "Utility supply";
}

void TestEnergyline::flowFlagsAndMode()
{
    QFETCH(int, source);
    QFETCH(int, batteryStatus);
    Energyline view;
    // Start with every segment on, so a flag that is not rewritten shows up.
    view.flushData({{24, 3}, {0, 6}});
    if (source < 0)
        view.set_all_off_Flow();
    else
        view.flushData({{24, source}, {0, batteryStatus}});
    QTEST(flows(view), "expectedFlows");
    QTEST(view.outputSource(), "expectedSource");
}

void TestEnergyline::flowAnimation()
{
    Energyline view;
    QCOMPARE(view.currentFlowOffset(), 0.0f);
    QTRY_VERIFY_WITH_TIMEOUT(view.currentFlowOffset() <= -0.8f, 2000); // 0.4 a tick, from its own timer
}

void TestEnergyline::clickToggles_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QPointF>("offset"); // from the centre, in unscaled diagram units
    QTest::addColumn<QString>("expected");

    QTest::newRow("input block edge") << kFullSize << QPointF(-225, 0) << "-bult";
    QTest::newRow("input, half rounds up to -224") << kFullSize << QPointF(-224.5, 0) << "ibult";
    QTest::newRow("bypass bottom edge") << kFullSize << QPointF(-262, -112.6) << "i-ult";
    QTest::newRow("load bottom-right corner") << kFullSize << QPointF(300, 37.4) << "ibu-t";
    QTest::newRow("battery, toggles device too") << kFullSize << QPointF(0, 100) << "ib-l-";
    QTest::newRow("rectifier does not react") << kFullSize << QPointF(-92, 0) << "ibult";
    // The tab page is smaller than the diagram: clicks are mapped back
    // through the scaling before the hit test.
    QTest::newRow("scaled, load") << kTabPage << QPointF(260, 0) << "ibu-t";
    // Its pixel offset (about 260) lies in the load block if the scaling is not undone.
    QTest::newRow("scaled, right of load") << kTabPage << QPointF(350, 0) << "ibult";
}

void TestEnergyline::clickToggles()
{
    QFETCH(QSize, size);
    QFETCH(QPointF, offset);
    Energyline view;
    view.resize(size);
    const double scale = view.diagramScale();
    QCOMPARE(scale < 1.0, size == kTabPage);

    press(view, centre(size) + offset * scale);
    QTEST(panels(view), "expected");
    press(view, centre(size) + offset * scale);
    QCOMPARE(panels(view), QStringLiteral("ibult"));
}

void TestEnergyline::capacityColour_data()
{
    QTest::addColumn<int>("capacity");
    QTest::addColumn<QPointF>("sample"); // from the centre
    QTest::addColumn<QColor>("expected");

    const QPointF nearBottom(-15, 150);
    QTest::newRow("20 red") << 20 << nearBottom << QColor(Qt::red);
    QTest::newRow("21 yellow") << 21 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("60 yellow") << 60 << nearBottom << QColor(Qt::yellow);
    QTest::newRow("61 green") << 61 << nearBottom << QColor(Qt::green);
    QTest::newRow("50 stops half way") << 50 << QPointF(-15, 100) << QColor(Qt::white);
    QTest::newRow("150 not clamped") << 150 << QPointF(-15, 60) << QColor(Qt::green);
}

void TestEnergyline::capacityColour()
{
    QFETCH(int, capacity);
    QFETCH(QPointF, sample);
    Energyline view;
    view.resize(kFullSize);
    view.flushData({{3, capacity}});
    QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::white);
    view.render(&image, QPoint(), QRegion(), QWidget::DrawChildren); // no window background
    QTEST(image.pixelColor((centre(kFullSize) + sample).toPoint()), "expected");
}

void TestEnergyline::screenshots_data()
{
    QTest::addColumn<bool>("threePhase");
    QTest::addColumn<QString>("scenario");
    QTest::addColumn<int>("seconds");
    QTest::addColumn<DataPoints>("pinned"); // registers set over the agent's data
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("fileName");

    QTest::newRow("single, utility") << false << "normal" << 1 << DataPoints() << kTabPage
                                     << "energyline-single-utility.png";
    QTest::newRow("single, utility, unscaled") << false << "normal" << 1 << DataPoints() << QSize(900, 660)
                                               << "energyline-single-utility-900x660.png";
    // The agent does not report charging: pin a boost charge at 15 %.
    QTest::newRow("single, bypass, charging") << false << "bypass" << 10 << DataPoints{{0, 6}, {3, 15}} << kTabPage
                                              << "energyline-single-bypass-charging.png";
    QTest::newRow("three, battery") << true << "demo" << 30 << DataPoints() << kTabPage
                                    << "energyline-three-battery.png";
}

void TestEnergyline::screenshots()
{
    if (!ChartScreenshots::enabled())
        QSKIP("set ORVEK_WRITE_SCREENSHOTS=1 to write the screenshots");
    QFETCH(bool, threePhase);
    QFETCH(QString, scenario);
    QFETCH(int, seconds);
    QFETCH(DataPoints, pinned);
    QFETCH(QSize, size);
    QFETCH(QString, fileName);

    ChartScreenshots::useDesktopFont();
    Energyline view;
    QVERIFY(ChartScreenshots::showOffscreen(&view, size));
    DataPoints points = ChartScreenshots::agentStory(threePhase, seconds, scenario).last();
    for (auto it = pinned.cbegin(); it != pinned.cend(); ++it)
        points[it.key()] = it.value();
    view.flushData(points);
    QTest::qWait(150); // one animation step of the flows
    QVERIFY(!ChartScreenshots::save(&view, fileName).isEmpty());
}

QTEST_MAIN(TestEnergyline)
#include "tst_energyline.moc"
