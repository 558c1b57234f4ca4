#include "widgetscenes.h"

#include <QCoreApplication>
#include <QFont>
#include <QScopeGuard>
#include <QSettings>
#include <QTabWidget>

#include <cmath>
#include <memory>

#include "agentdata.h"
#include "chartform.h"
#include "childform.h"
#include "datachart.h"
#include "dynamicchart.h"
#include "energyline.h"
#include "rtdataform.h"
#include "rtsinglegraphform.h"
#include "rtthreegraphform.h"
#include "screenshotwriter.h"
#include "threedynamicchart.h"
#include "upsalarms.h"
#include "upscontract.h"
#include "upspoints.h"

using DataPoints = QMap<int, QVariant>;

namespace {

// The size the host gives a device view, and a graphic page at a comfortable size.
const QSize kTabPage(741, 483);
const QSize kGraphPage(900, 680);
// One step of the energy-flow animation and of the gauges' sweep.
constexpr int kAnimationStepMs = 150;

QFont desktopChartFont()
{
    return QFont(QStringLiteral("DejaVu Sans"), 9);
}

// Range and colour bands of a gauge, as the graphic pages set them up.
struct Dial
{
    const char *fileName;
    double min;
    double max;
    QList<int> colours;
    QList<int> thresholds;
    double value;
};

// The simulated agent's map with a couple of active alarms, so that the
// alarm page has rows to show.
DataPoints deviceMap(bool threePhase)
{
    DataPoints map = AgentData::image(threePhase);
    map[UpsPoint::AlarmFirst + (threePhase ? UpsAlarm::FanFailure : UpsAlarm::DiagnosticFailed)] = 1;
    if (threePhase)
        map[UpsPoint::AlarmFirst + UpsAlarm::TestInProgress] = 1;
    map.insert(UpsPoint::AgentAddress, QStringLiteral("127.0.1.10"));
    return map;
}

} // namespace

WidgetScenes::WidgetScenes(ScreenshotWriter &writer)
    : m_writer(writer)
{
}

void WidgetScenes::renderAll()
{
    gauges();
    trendCharts();
    energyDiagrams();
    graphPages();
    dataTables();
    deviceTabs();
}

void WidgetScenes::gauges()
{
    // All values lie in the green band; the last one is out of range, as the
    // temperature gauge of the single-phase page always is.
    const Dial dials[] = {
        {"datachart-input-voltage.png", 60, 300, {2, 0, 2}, {180, 264}, 230.0},
        {"datachart-input-frequency.png", 0, 100, {2, 0, 2}, {40, 60, 100}, 50.0},
        {"datachart-output-load.png", 0, 160, {0, 1, 2}, {100, 120, 160}, 35.0},
        {"datachart-battery-capacity.png", 0, 100, {2, 1, 0}, {30, 60, 100}, 100.0},
        {"datachart-no-data.png", 0, 100, {0, 2}, {100, 120}, 4294967291.0},
    };
    for (const Dial &dial : dials) {
        DataChart chart;
        chart.setFont(desktopChartFont());
        chart.setMinValue(dial.min);
        chart.setMaxValue(dial.max);
        chart.setRadioValue(dial.colours, dial.thresholds);
        chart.resize(280, 130);
        ScreenshotWriter::waitFor([&chart] { return !chart.isAnimating(); }, 5000);
        chart.setValue(dial.value);
        m_writer.save(&chart, QLatin1String(dial.fileName));
    }
}

void WidgetScenes::trendCharts()
{
    for (bool three : {false, true}) {
        std::unique_ptr<TrendChart> chart(three ? static_cast<TrendChart *>(new ThreeDynamicChart)
                                                : static_cast<TrendChart *>(new DynamicChart));
        chart->setFont(desktopChartFont());
        m_writer.showOffscreen(chart.get(), QSize(800, 380));
        for (int i = 0; i < 200; ++i) {
            if (three) {
                // Three phases at 230 V, load at about 35 % on each phase.
                for (int phase = 0; phase < 3; ++phase) {
                    chart->addData(phase, 230.0 + 2.0 * std::sin(i / 6.0 + 2.1 * phase));
                    chart->addData(3 + phase, 35.0 + 4.0 * phase + 1.5 * std::sin(i / 9.0 + phase));
                }
            } else {
                // Mains with a slow ripple, a regulated output, the battery
                // string at 54.6 V and the bypass following the input.
                chart->addData(0, 230.0 + 3.0 * std::sin(i / 6.0));
                chart->addData(1, 220.0);
                chart->addData(2, 54.6);
                chart->addData(3, 229.0 + 3.0 * std::sin(i / 6.0 + 0.4));
            }
        }
        m_writer.save(chart.get(), three ? QStringLiteral("threedynamicchart.png") : QStringLiteral("dynamicchart.png"));
    }
}

void WidgetScenes::energyDiagrams()
{
    struct Scene
    {
        bool threePhase;
        const char *scenario;
        int seconds;
        DataPoints pinned; // registers set over the agent's data
        QSize size;
        const char *fileName;
    };
    // The agent does not report charging: a boost charge at 15 % is pinned.
    const Scene scenes[] = {
        {false, "normal", 1, {}, kTabPage, "energyline-single-utility.png"},
        {false, "normal", 1, {}, QSize(900, 660), "energyline-single-utility-900x660.png"},
        {false, "bypass", 10, {{UpsPoint::BatteryStatus, 6}, {UpsPoint::BatteryCapacity, 15}}, kTabPage,
         "energyline-single-bypass-charging.png"},
        {true, "demo", 30, {}, kTabPage, "energyline-three-battery.png"},
    };
    for (const Scene &scene : scenes) {
        Energyline view;
        m_writer.showOffscreen(&view, scene.size);
        DataPoints points = AgentData::story(scene.threePhase, scene.seconds, QLatin1String(scene.scenario)).last();
        for (auto it = scene.pinned.cbegin(); it != scene.pinned.cend(); ++it)
            points[it.key()] = it.value();
        view.flushData(points);
        ScreenshotWriter::settle(kAnimationStepMs);
        m_writer.save(&view, QLatin1String(scene.fileName));
    }
}

void WidgetScenes::graphPages()
{
    // A minute of the agent's demo story: mains failure, battery, mains return.
    const QList<DataPoints> singleStory = AgentData::story(false, 60);
    const QList<DataPoints> threeStory = AgentData::story(true, 60);

    RTSingleGraphForm single;
    m_writer.showOffscreen(&single, kGraphPage);
    for (const DataPoints &points : singleStory)
        single.RefreshRtSingleChartInfo(points);
    m_writer.save(&single, QStringLiteral("rtsinglegraphform.png"));

    RTThreeGraphForm three;
    m_writer.showOffscreen(&three, kGraphPage);
    for (const DataPoints &points : threeStory)
        three.RefreshRtChartInfo(points);
    m_writer.save(&three, QStringLiteral("rtthreegraphform.png"));

    // The container shows its three-phase page as constructed.
    ChartForm container;
    container.setCurrentName(QStringLiteral("UPS-3"));
    m_writer.showOffscreen(&container, QSize(900, 700));
    container.initFormInfo(false);
    for (const DataPoints &points : threeStory)
        container.refreshFormInfo(points);
    m_writer.save(&container, QStringLiteral("chartform.png"));
}

void WidgetScenes::dataTables()
{
    for (bool threePhase : {false, true}) {
        RTDataForm page;
        page.InitRTData();
        page.RefreshRTDataInfo(AgentData::image(threePhase));
        m_writer.showOffscreen(&page, QSize(600, 560));
        m_writer.save(&page, threePhase ? QStringLiteral("rtdataform-three.png") : QStringLiteral("rtdataform-single.png"));
    }
}

void WidgetScenes::deviceTabs()
{
    deviceTabs(false);
    deviceTabs(true);
}

void WidgetScenes::deviceTabs(bool threePhase)
{
    const QLatin1String phase(threePhase ? "three" : "single");
    // The three-phase unit speaks the protocol with standby minutes and
    // restart. The group goes into the dev.ini beside this program and is
    // removed again afterwards.
    const QString device = QStringLiteral("screenshot-%1-%2").arg(phase).arg(QCoreApplication::applicationPid());
    const QString configFile = UpsConfig::filePath();
    QSettings(configFile, QSettings::IniFormat).setValue(UpsConfig::key(device, UpsConfig::Protocol), threePhase ? 2 : 1);
    const auto removeDevice = qScopeGuard([&] { QSettings(configFile, QSettings::IniFormat).remove(device); });

    // Embedded like the host does it: a child widget keeps the default size
    // even where a page asks for more.
    QWidget host;
    host.resize(kTabPage);
    auto *form = new ChildForm;
    form->setParent(&host);
    form->setGeometry(QRect(QPoint(), kTabPage));
    form->setName(device);
    form->setUserInfo(QStringLiteral("admin"), 2);
    m_writer.showOffscreen(&host, kTabPage);
    form->flushData(deviceMap(threePhase));
    const char *names[] = {"energyline", "alarm", "detail", "control"};
    for (int tab = 0; tab < form->tabs()->count(); ++tab) {
        form->tabs()->setCurrentIndex(tab);
        form->refreshData();
        ScreenshotWriter::settle(kAnimationStepMs);
        m_writer.save(form, QStringLiteral("childform-%1-%2.png").arg(QLatin1String(names[tab]), phase));
    }
}
