#ifndef WIDGETSCENES_H
#define WIDGETSCENES_H

class ScreenshotWriter;

// The pictures of the plug-in's own widgets: gauges, trend curves, the
// energy-flow diagram, the graphic pages, the data table and the device
// tab container, each fed with the simulated agent's data.
class WidgetScenes
{
public:
    explicit WidgetScenes(ScreenshotWriter &writer);

    void renderAll();

    void gauges();
    void trendCharts();
    void energyDiagrams();
    void graphPages();
    void dataTables();
    void deviceTabs();

private:
    void deviceTabs(bool threePhase);

    ScreenshotWriter &m_writer;
};

#endif // WIDGETSCENES_H
