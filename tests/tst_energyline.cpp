// Energy-flow diagram: panel texts, flow flags per supply mode, the flow animation, clicks (also
// on a scaled-down diagram), the paint layers with the capacity colours, and long panel texts.
#include <QtTest>

#include <QPainter>

#include <functional>

#include "energyline.h"
#include "energylinegeometry.h"
#include "paneltextcache.h"
#include "viewsampledata.h"

using DataPoints = QMap<int, QVariant>;
using Change = std::function<void(Energyline &)>;
Q_DECLARE_METATYPE(Change)

namespace {

const QSize kFullSize(900, 700); // the diagram is drawn unscaled
const QSize kTabPage(741, 483);

QString flagWord(std::initializer_list<bool> on, const char *letters)
{
    QString word = QString::fromLatin1(letters);
    for (int i = 0; i < word.size(); ++i)
        word[i] = on.begin()[i] ? word[i] : QChar('-');
    return word;
}

// Panels i(nput) b(ypass) u(ps) l(oad) (ba)t(tery).
QString panels(const Energyline &v)
{
    return flagWord({v.inputInfoShown(), v.bypassInfoShown(), v.deviceInfoShown(), v.loadInfoShown(),
                     v.batteryInfoShown()}, "ibult");
}

// Where `offset` diagram units from the centre lie, scaled as the widget scales.
QPointF at(const Energyline &view, const QPointF &offset)
{
    return QPointF(view.width() / 2, view.height() / 2) + offset * view.diagramScale();
}

void press(Energyline &view, const QPointF &offset)
{
    QMouseEvent event(QEvent::MouseButtonPress, at(view, offset), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
}

DataPoints utility(int capacity)
{
    return {{24, 3}, {0, 7}, {3, capacity}, {9, 230}, {27, 229}, {4000, QByteArray("UPS 3KVA")}};
}

} // namespace

class TestEnergyline : public QObject
{
    Q_OBJECT
private slots:
    void textFormats_data()
    {
        QTest::addColumn<DataPoints>("map");
        QTest::addColumn<QString>("expected");
        const QByteArray model = ViewSampleData::identityBlock("UPS  3KVA\tONLINE   ", 59);
        QTest::newRow("single phase")
            << DataPoints{{8, 1}, {9, 230}, {12, 35}, {15, 499}, {43, 1}, {44, 220}, {26, 1}, {25, 600}, {27, 229},
                          {30, 1523}, {33, 12}, {34, 99}, {39, 35}, {40, 36}, {6, 1000}, {0, 1}, {4000, model}}
            << "230 V|3.5 A|49.9|220 V|229 V|152.3 A|12 kW|35 %|60.0 Hz|100.0|Unknown|UPS 3KVA ONLINE";
        // Output power uses the low halves 33, 35, 37, not 33, 34, 35.
        QTest::newRow("three phases")
            << DataPoints{{8, 3}, {9, 230}, {10, 231}, {11, 229}, {12, 35}, {13, 41}, {14, 7}, {43, 3},
                          {44, 220}, {45, 221}, {46, 222}, {26, 3}, {27, 228}, {28, 229}, {29, 230}, {30, 1523},
                          {31, 1498}, {32, 1510}, {33, 12}, {34, 99}, {35, 13}, {36, 98}, {37, 14}, {39, 35},
                          {40, 36}, {41, 37}, {6, 1001}, {0, 8}}
            << "230/231/229 V|3.5/4.1/0.7 A|0.0|220/221/222 V|228/229/230 V|152.3/149.8/151.0 A|12/13/14 kW"
               "|35/36/37 %|0.0 Hz|--|Discharge|";
        // Anything but 1 is three-phase; each section has its own count; code 0
        // and codes past the list are "Normal".
        QTest::newRow("odd counts and codes")
            << DataPoints{{8, 2}, {9, QStringLiteral("abc")}, {43, 1}, {44, -12}, {26, 2}, {6, -5}, {0, 10}}
            << "0/0/0 V|0.0/0.0/0.0 A|0.0|-12 V|0/0/0 V|0.0/0.0/0.0 A|0/0/0 kW|0/0/0 %|0.0 Hz|--|Normal|";
    }
    void textFormats()
    {
        QFETCH(DataPoints, map);
        Energyline v;
        v.flushData(map);
        QTEST(QStringList({v.inputVoltage(), v.inputCurrent(), v.inputFrequency(), v.bypassVoltage(),
                           v.outputVoltage(), v.outputCurrent(), v.outputPower(), v.outputLoad(),
                           v.outputFrequency(), v.batteryTemperature(), v.batteryStatus(), v.deviceType()})
                  .join('|'), "expected");
    }
    void flowFlagsAndMode_data()
    {
        QTest::addColumn<int>("source"); // -1: set_all_off_Flow() instead of new data
        QTest::addColumn<int>("batteryStatus");
        QTest::addColumn<QString>("expectedFlows"); // I(nput) C(harge) D(ischarge) R(ectifier) O(utput) B(ypass)
        QTest::addColumn<QString>("expectedSource");
        QTest::newRow("utility") << 3 << 2 << "I-DRO-" << "Utility supply";
        QTest::newRow("utility, float charging") << 3 << 7 << "ICDRO-" << "Utility supply";
        QTest::newRow("bypass") << 4 << 2 << "-----B" << "Bypass supply";
        QTest::newRow("bypass, charging") << 4 << 6 << "IC---B" << "Bypass supply";
        QTest::newRow("battery") << 5 << 8 << "--D-O-" << "Battery supply";
        QTest::newRow("code 0 reads as none") << 0 << 6 << "------" << "None supply";
        QTest::newRow("code 8 outside list") << 8 << 6 << "------" << "Other supply";
        QTest::newRow("all off leaves the rectifier") << -1 << 0 << "---R--" << "Utility supply";
    }
    void flowFlagsAndMode()
    {
        QFETCH(int, source);
        QFETCH(int, batteryStatus);
        Energyline v;
        v.flushData({{24, 3}, {0, 6}}); // every segment on, so a flag that is not rewritten shows
        if (source < 0)
            v.set_all_off_Flow();
        else
            v.flushData({{24, source}, {0, batteryStatus}});
        QTEST(flagWord({v.isInputFlow(), v.isChargeFlow(), v.isDischargeFlow(), v.isRectifierFlow(),
                        v.isOutputFlow(), v.isBypassFlow()}, "ICDROB"), "expectedFlows");
        QTEST(v.outputSource(), "expectedSource");
    }
    void flowAnimation()
    {
        Energyline view; // its own timer moves the dashes 0.4 a tick; past -1000 they start over
        QTRY_VERIFY_WITH_TIMEOUT(view.currentFlowOffset() <= -0.8f, 5000);
        float lowest = 0.0f;
        for (int i = 0; i < 2600 && view.currentFlowOffset() < 0.0f; ++i)
            lowest = view.currentFlowOffset(), view.advanceFlow();
        QCOMPARE(view.currentFlowOffset(), 0.0f);
        QVERIFY2(lowest < -999.5f && lowest >= -1000.0f, qPrintable(QString::number(lowest)));
    }
    void clickToggles_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPointF>("offset"); // from the centre, in diagram units
        QTest::addColumn<QString>("expected");
        QTest::newRow("input block edge") << kFullSize << QPointF(-225, 0) << "-bult";
        QTest::newRow("input, half rounds up to -224") << kFullSize << QPointF(-224.5, 0) << "ibult";
        QTest::newRow("bypass bottom edge") << kFullSize << QPointF(-262, -112.6) << "i-ult";
        QTest::newRow("load bottom-right corner") << kFullSize << QPointF(300, 37.4) << "ibu-t";
        QTest::newRow("battery, toggles device too") << kFullSize << QPointF(0, 100) << "ib-l-";
        QTest::newRow("rectifier does not react") << kFullSize << QPointF(-92, 0) << "ibult";
        QTest::newRow("tab page, load") << kTabPage << QPointF(260, 0) << "ibu-t";
        // Its pixel offset (about 260) lies in the load block if the scaling is not undone.
        QTest::newRow("tab page, right of load") << kTabPage << QPointF(350, 0) << "ibult";
        QTest::newRow("small, battery") << QSize(400, 300) << QPointF(0, 150) << "ib-l-";
    }
    void clickToggles()
    {
        QFETCH(QSize, size);
        QFETCH(QPointF, offset);
        Energyline view;
        view.resize(size);
        QCOMPARE(view.diagramScale() < 1.0, size != kFullSize);
        press(view, offset);
        QTEST(panels(view), "expected");
        press(view, offset);
        QCOMPARE(panels(view), QStringLiteral("ibult"));
    }
    // A diagram painted before a change looks afterwards like one that was given the same calls
    // but never painted in between; the battery level shows the capacity's colour.
    void layersFollowChanges_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<Change>("change");
        QTest::addColumn<QPointF>("sample"); // from the centre
        QTest::addColumn<QColor>("colour");
        const auto capacity = [](int percent) { return Change([=](Energyline &v) { v.flushData(utility(percent)); }); };
        const QPointF nearBottom(-15, 150);
        for (const auto &[percent, colour] : {std::pair<int, QColor>(20, Qt::red), {21, Qt::yellow}, {60, Qt::yellow},
                                              {61, Qt::green}})
            QTest::addRow("%d %%", percent) << kFullSize << capacity(percent) << nearBottom << colour;
        QTest::newRow("50 % stops half way") << kFullSize << capacity(50) << QPointF(-15, 100)
                                             << QApplication::palette().window().color();
        QTest::newRow("150 % not clamped") << kFullSize << capacity(150) << QPointF(-15, 60) << QColor(Qt::green);
        QTest::newRow("new data, scaled") << kTabPage << capacity(10) << nearBottom << QColor(Qt::red);
        const Change toggle = [](Energyline &v) { press(v, QPointF(0, 100)); };
        QTest::newRow("panels toggled") << kFullSize << toggle << nearBottom << QColor(Qt::yellow);
        const Change resize = [](Energyline &v) { v.resize(kFullSize); };
        QTest::newRow("resized") << kTabPage << resize << nearBottom << QColor(Qt::yellow);
    }
    void layersFollowChanges()
    {
        QFETCH(QSize, size);
        QFETCH(Change, change);
        QFETCH(QPointF, sample);
        Energyline view, fresh;
        for (Energyline *v : {&view, &fresh})
            v->resize(size), v->flushData(utility(40));
        const QImage before = view.grab().toImage();
        change(view);
        change(fresh);
        const QImage after = view.grab().toImage();
        QVERIFY(after != before);
        QCOMPARE(after, fresh.grab().toImage());
        QTEST(after.pixelColor(at(view, sample).toPoint()), "colour");
    }
    // A long identity text is drawn smaller, then elided, within its panel.
    void longTextsShrinkThenElide()
    {
        PanelTextCache texts(QFont(QStringLiteral("DejaVu Sans"), 11));
        const QString name = QStringLiteral("Server room A, rack 12");
        const qreal room = 0.95 * texts.fit(name).size.width();
        const PanelTextCache::Fitted shrunk = texts.fit(name, room), elided = texts.fit(name.repeated(4), room);
        QCOMPARE(texts.fit(name.left(13), room).pointSize, 11.0);
        QVERIFY(shrunk.text == name && shrunk.pointSize < 11.0 && shrunk.size.width() <= room);
        QVERIFY(elided.text.startsWith(name) && elided.text.size() < name.size() * 2 && elided.pointSize >= 0.85 * 11.0
                && elided.size.width() <= room);
        // In the diagram, nothing outside the device panel changes.
        const QString longText = QStringLiteral("Power Systems International Manufacturing ").repeated(3);
        Energyline plain, crowded;
        plain.resize(kFullSize), crowded.resize(kFullSize);
        plain.flushData({});
        crowded.flushData({{4000, longText}, {4001, longText}, {4002, longText}});
        const QImage a = plain.grab().toImage();
        QImage b = crowded.grab().toImage();
        const QRect panel = EnergylineGeometry(kFullSize).panelRect(EnergylineGeometry::DevicePanel).toAlignedRect();
        QVERIFY(a.copy(panel) != b.copy(panel));
        QPainter(&b).drawImage(panel.topLeft(), a.copy(panel));
        QCOMPARE(b, a);
    }
};

QTEST_MAIN(TestEnergyline)
#include "tst_energyline.moc"
