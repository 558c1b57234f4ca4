#ifndef ENERGYLINE_H
#define ENERGYLINE_H

#include <QBrush>
#include <QFont>
#include <QMap>
#include <QPen>
#include <QPixmap>
#include <QString>
#include <QVariant>
#include <QWidget>

#include "energylinegeometry.h"
#include "layercache.h"
#include "paneltextcache.h"

class QTimer;
class QPainter;
class QPaintEvent;
class QMouseEvent;
class QEvent;

// Block diagram of the UPS power path (input, bypass, rectifier, inverter,
// battery, load). Power lines that carry energy in the present operating mode
// are drawn with a moving dash pattern; information panels beside the blocks
// show the measured values and are toggled by clicking the blocks.
//
// The widget only keeps formatted texts and flags; everything is drawn in
// paintEvent, which a 100 ms timer triggers so that the dashes move. Where
// things lie comes from EnergylineGeometry, the panel texts are shaped and
// fitted by PanelTextCache.
class Energyline : public QWidget
{
    Q_OBJECT
public:
    explicit Energyline(QWidget *parent = nullptr);
    ~Energyline() override;

    // Rebuilds every display text and flow flag from a whole data point map.
    // Does not repaint; the next animation tick does.
    void flushData(QMap<int, QVariant> map);

    // Clears the flow flags except rectifierFlow (left as it is on purpose).
    void set_all_off_Flow();
    void toggle_view_Flag(bool &flag);

    // One animation step (the 100 ms timer calls it): moves the dashes and
    // schedules a repaint.
    void advanceFlow();

    // Read access for the views and tests.
    bool isInputFlow() const { return inputFlow; }
    bool isChargeFlow() const { return chargeFlow; }
    bool isDischargeFlow() const { return dischargeFlow; }
    bool isRectifierFlow() const { return rectifierFlow; }
    bool isOutputFlow() const { return outputFlow; }
    bool isBypassFlow() const { return bypassFlow; }

    bool inputInfoShown() const { return showInputInfo; }
    bool bypassInfoShown() const { return showBypassInfo; }
    bool deviceInfoShown() const { return showDeviceInfo; }
    bool loadInfoShown() const { return showLoadInfo; }
    bool batteryInfoShown() const { return showBatteryInfo; }

    float currentFlowOffset() const { return flowOffset; }

    QString inputVoltage() const { return inputVoltageText; }
    QString inputCurrent() const { return inputCurrentText; }
    QString inputFrequency() const { return inputFrequencyText; }
    QString bypassVoltage() const { return bypassVoltageText; }
    QString bypassFrequency() const { return bypassFrequencyText; }
    QString deviceType() const { return deviceTypeText; }
    QString deviceName() const { return deviceNameText; }
    QString manufacturer() const { return manufacturerText; }
    QString outputVoltage() const { return outputVoltageText; }
    QString outputCurrent() const { return outputCurrentText; }
    QString outputFrequency() const { return outputFrequencyText; }
    QString outputPower() const { return outputPowerText; }
    QString outputLoad() const { return outputLoadText; }
    QString outputSource() const { return outputSourceText; }
    QString batteryVoltage() const { return batteryVoltageText; }
    QString batteryTemperature() const { return batteryTemperatureText; }
    QString batteryRemainTime() const { return batteryRemainTimeText; }
    QString batteryCapacity() const { return batteryCapacityText; }
    QString batteryStatus() const { return batteryStatusText; }

    // Scale applied to the diagram so that it fits the widget (1 when the
    // widget is large enough; the diagram is never enlarged).
    double diagramScale() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

    void drawBase(QPainter *painter);
    void drawBattery(QPainter *painter);
    void drawflow(QPainter *painter);
    void drawdate(QPainter *painter);

private:
    void showInputAndBypass(const QMap<int, QVariant> &map);
    void showOutput(const QMap<int, QVariant> &map);
    bool showBattery(const QMap<int, QVariant> &map);
    void showOutputSource(int source, bool charging);
    EnergylineGeometry geometry() const;
    void loadPictures();
    void paintBaseLayer(QPainter *painter);
    void paintStaticLayer(QPainter *painter);
    void drawBlock(QPainter *painter, const EnergylineGeometry &geometry, EnergylineGeometry::Part block);
    void drawPanel(QPainter *painter, const EnergylineGeometry &geometry, EnergylineGeometry::Panel panel);
    // Invalidates the layer of battery and panels after new data or a click.
    void invalidateStaticLayer();

    // Display texts, rewritten by flushData.
    QString inputVoltageText;
    QString inputCurrentText;
    QString inputFrequencyText;
    QString bypassVoltageText;
    QString bypassFrequencyText;
    QString deviceTypeText;
    QString deviceNameText;
    QString manufacturerText;
    QString outputVoltageText;
    QString outputCurrentText;
    QString outputFrequencyText;
    QString outputPowerText;
    QString outputLoadText;
    QString outputSourceText;
    QString batteryVoltageText;
    QString batteryTemperatureText;
    QString batteryRemainTimeText;
    QString batteryCapacityText;
    QString batteryStatusText;

    // One flag per animated line segment.
    bool inputFlow = false;
    bool chargeFlow = false;
    bool dischargeFlow = false;
    bool rectifierFlow = false;
    bool outputFlow = false;
    bool bypassFlow = false;

    QTimer *flowTimer = nullptr;

    // Panel visibility, toggled by clicks on the blocks.
    bool showInputInfo = true;
    bool showBypassInfo = true;
    bool showDeviceInfo = true;
    bool showLoadInfo = true;
    bool showBatteryInfo = true;
    bool showRectifierInfo = true;

    float flowOffset = 0.0f;

    int lowCapacityLimit = 20;
    int highCapacityLimit = 60;

    // Paint resources that do not change between passes.
    QPixmap pictures[EnergylineGeometry::PictureCount];
    QPen basePen;
    QPen flowPen;
    QPen titlePen;
    QPen batteryOutlinePen;
    QFont titleFont;
    QBrush lowLevelBrush;
    QBrush middleLevelBrush;
    QBrush highLevelBrush;
    PanelTextCache panelTexts;
    // Base lines, blocks, pictures and titles; they change with the size.
    LayerCache baseLayer;
    // The base plus battery and panels: everything but the moving flow
    // lines; rebuilt after new data or a panel toggle.
    LayerCache staticLayer;
};

#endif // ENERGYLINE_H
