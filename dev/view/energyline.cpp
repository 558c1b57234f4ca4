#include "energyline.h"

#include <QEvent>
#include <QLinearGradient>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

#include <algorithm>

#include "upsformat.h"
#include "upspoints.h"

Q_LOGGING_CATEGORY(lcEnergyline, "orvek.view.energyline", QtInfoMsg)

// The pictures live in this library's resources; registering them is cheap and
// idempotent, and has to happen outside any namespace.
static void initEnergylineResources()
{
    Q_INIT_RESOURCE(image);
}

namespace {

// Animation: the dash pattern moves 0.4 pattern units per 100 ms tick.
constexpr int kFlowIntervalMs = 100;
constexpr double kFlowStep = 0.4;
constexpr double kFlowWrapLimit = -1000.0;

constexpr double kTenths = 10.0;
constexpr float kMaxTemperature = 100.0f;
constexpr float kMinTemperature = 0.0f;

// Output source code 0 reads as "None supply"; codes outside the list show
// entry 0, "Other supply".
constexpr int kOtherSupplyIndex = 0;

constexpr int kTitlePointSize = 13;
constexpr int kTitleWeight = 75;
constexpr int kPanelPointSize = 11;
constexpr int kPanelWeight = 50;
constexpr int kPanelRows = 6;
constexpr double kBlockRoundness = 25.0;
constexpr double kPanelRoundness = 5.0;
constexpr double kLabelValueGap = 6.0;
constexpr double kBaseLineWidth = 10.0;
constexpr double kFlowLineWidth = 5.0;
constexpr double kBatteryOutlineWidth = 5.0;
constexpr double kTerminalHeight = 10.0;
constexpr int kBatteryRadius = 8;
constexpr int kLevelRadius = 5;
constexpr int kTerminalRadius = 2;
constexpr int kLevelDivisor = 20;
constexpr double kPercentScale = 100.0;

const QColor kBaseLineColor(240, 240, 245);
const QColor kFlowColor(157, 172, 255);
const QColor kBlockTopColor(157, 172, 255);
const QColor kBlockBottomColor(41, 71, 198);
const QColor kBlockTitleColor(153, 153, 153);
const QColor kPanelFill(245, 246, 250);
const QColor kPanelBorder(Qt::white);
const QColor kLabelColor(102, 102, 102);
const QColor kValueColor(19, 75, 255);
const char kFontFamily[] = "Microsoft YaHei";

constexpr QPainter::RenderHints kRenderHints =
    QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform;

int readInt(const QMap<int, QVariant> &map, int id)
{
    return map.value(id).toInt(); // missing ids and non-numbers read 0
}

// Top-to-bottom gradient over rect, in logical coordinates. (Object-mode
// gradients would avoid the per-rectangle brush, but under a scaled painter
// they leave the raster engine misplacing the glyphs drawn after them.)
QBrush verticalGradient(const QRectF &rect, const QColor &top, const QColor &bottom)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    gradient.setColorAt(0.0, top);
    gradient.setColorAt(1.0, bottom);
    return QBrush(gradient);
}

QBrush levelBrush(const QColor &dark, const QColor &light, double outlineWidth)
{
    // The gradient runs over the first outline-width pixels of the widget, so
    // the level itself is drawn in the light colour.
    QLinearGradient gradient(QPointF(0.0, 0.0), QPointF(0.0, outlineWidth));
    gradient.setColorAt(0.0, dark);
    gradient.setColorAt(1.0, light);
    return QBrush(gradient);
}

} // namespace

Energyline::Energyline(QWidget *parent)
    : QWidget(parent),
      panelTexts(QFont(QString::fromLatin1(kFontFamily), kPanelPointSize, kPanelWeight))
{
    initEnergylineResources();

    set_all_off_Flow();
    rectifierFlow = false; // set_all_off_Flow leaves this one alone

    flowTimer = new QTimer(this);
    connect(flowTimer, &QTimer::timeout, this, &Energyline::advanceFlow);
    flowTimer->start(kFlowIntervalMs);

    loadPictures();

    basePen = QPen(QBrush(kBaseLineColor), kBaseLineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    flowPen = QPen(QBrush(kFlowColor), kFlowLineWidth, Qt::CustomDashLine, Qt::RoundCap, Qt::RoundJoin);
    flowPen.setDashPattern({2.0, 1.5, 2.0, 1.5});
    titlePen = QPen(kBlockTitleColor);
    batteryOutlinePen = QPen(QBrush(Qt::darkGray, Qt::SolidPattern), kBatteryOutlineWidth,
                             Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
    titleFont = QFont(QString::fromLatin1(kFontFamily), kTitlePointSize, kTitleWeight);

    const double outlineWidth = geometry().batteryOutline().width();
    lowLevelBrush = levelBrush(Qt::darkRed, Qt::red, outlineWidth);
    middleLevelBrush = levelBrush(Qt::darkYellow, Qt::yellow, outlineWidth);
    highLevelBrush = levelBrush(Qt::darkGreen, Qt::green, outlineWidth);
}

Energyline::~Energyline() = default;

void Energyline::loadPictures()
{
    for (int i = 0; i < EnergylineGeometry::PictureCount; ++i) {
        const QString file = QString::fromLatin1(EnergylineGeometry::pictureFile(EnergylineGeometry::Picture(i)));
        if (!pictures[i].load(file))
            qCWarning(lcEnergyline) << "missing picture" << file;
    }
}

void Energyline::advanceFlow()
{
    flowOffset = float(double(flowOffset) - kFlowStep);
    update();
    if (flowOffset < kFlowWrapLimit)
        flowOffset = 0.0f;
}

void Energyline::set_all_off_Flow()
{
    // rectifierFlow is deliberately not cleared here.
    inputFlow = false;
    chargeFlow = false;
    dischargeFlow = false;
    outputFlow = false;
    bypassFlow = false;
}

void Energyline::toggle_view_Flag(bool &flag)
{
    flag = !flag;
    invalidateStaticLayer();
}

void Energyline::flushData(QMap<int, QVariant> map)
{
    showInputAndBypass(map);
    // The identity blocks arrive as fixed-size byte blocks padded with NULs;
    // the conversion to text stops at the first. Only the type is simplified.
    deviceTypeText = map.value(UpsPoint::Model).toString().simplified();
    manufacturerText = map.value(UpsPoint::Manufacturer).toString();
    deviceNameText = map.value(UpsPoint::SystemName).toString();
    showOutput(map);
    const bool charging = showBattery(map);
    showOutputSource(readInt(map, UpsPoint::OutputSource), charging);
    invalidateStaticLayer();
}

// Voltages and currents with their unit, R/S/T unless the phase count reads 1.
static UpsFormat::Options phasedOptions(const char *unit = nullptr)
{
    UpsFormat::Options options;
    options.phases = UpsFormat::Phases::ByCountNotOne;
    options.withUnit = true;
    options.unit = unit;
    return options;
}

void Energyline::showInputAndBypass(const QMap<int, QVariant> &map)
{
    const UpsFormat::Options phased = phasedOptions();
    UpsFormat::Options plain;
    plain.phases = UpsFormat::Phases::Single;
    inputVoltageText = UpsFormat::text(map, UpsPoint::InputVoltage, phased);
    inputCurrentText = UpsFormat::text(map, UpsPoint::InputCurrent, phased);
    inputFrequencyText = UpsFormat::text(map, UpsPoint::InputFrequency, plain);
    bypassVoltageText = UpsFormat::text(map, UpsPoint::BypassVoltage, phased);
    bypassFrequencyText = UpsFormat::text(map, UpsPoint::BypassFrequency, plain);
}

void Energyline::showOutput(const QMap<int, QVariant> &map)
{
    const UpsFormat::Options phased = phasedOptions();
    outputVoltageText = UpsFormat::text(map, UpsPoint::OutputVoltage, phased);
    outputCurrentText = UpsFormat::text(map, UpsPoint::OutputCurrent, phased);
    // The diagram labels output power in kW; the number is the register's.
    outputPowerText = UpsFormat::text(map, UpsPoint::OutputPower, phasedOptions("kW"));
    outputLoadText = UpsFormat::text(map, UpsPoint::OutputLoad, phased);
    UpsFormat::Options withUnit;
    withUnit.withUnit = true;
    outputFrequencyText = UpsFormat::text(map, UpsPoint::OutputFrequency, withUnit);
}

// Returns whether the battery is being charged.
bool Energyline::showBattery(const QMap<int, QVariant> &map)
{
    const UpsFormat::Options plain;
    batteryVoltageText = UpsFormat::text(map, UpsPoint::BatteryVoltage, plain);
    // The diagram reads the temperature register in tenths.
    const float temperature = float(readInt(map, UpsPoint::BatteryTemperature) / kTenths);
    if (temperature > kMaxTemperature || temperature < kMinTemperature)
        batteryTemperatureText = UpsFormat::noReading();
    else
        batteryTemperatureText = QString::asprintf("%.1f", double(temperature));
    batteryRemainTimeText = UpsFormat::text(map, UpsPoint::RemainingMinutes, plain);
    batteryCapacityText = UpsFormat::text(map, UpsPoint::BatteryCapacity, plain);

    const int status = readInt(map, UpsPoint::BatteryStatus);
    int count = 0;
    UpsPoints::codeTexts(UpsPoints::CodeList::BatteryState, &count);
    if (status < 0 || status > count)
        qCDebug(lcEnergyline) << "battery status code outside its list:" << status;
    batteryStatusText = UpsFormat::codeText(UpsPoints::CodeList::BatteryState, status, UpsCode::BatteryStateNormalIndex,
                                            staticMetaObject.className());
    return status == UpsCode::BatteryBoostCharging || status == UpsCode::BatteryFloatCharging;
}

void Energyline::showOutputSource(int source, bool charging)
{
    const int code = source != 0 ? source : int(UpsCode::SourceNone);
    int count = 0;
    UpsPoints::codeTexts(UpsPoints::CodeList::OutputSource, &count);
    if (code < 1 || code > count)
        qCDebug(lcEnergyline) << "output source code outside its list:" << source;
    outputSourceText = UpsFormat::codeText(UpsPoints::CodeList::OutputSource, code, kOtherSupplyIndex,
                                           staticMetaObject.className());

    // Utility mode also animates the discharge segment, and bypass mode runs
    // the input and charge segments only while the battery charges.
    const bool utility = code == UpsCode::SourceUtility;
    const bool bypass = code == UpsCode::SourceBypass;
    const bool battery = code == UpsCode::SourceBattery;
    inputFlow = utility || (bypass && charging);
    chargeFlow = (utility || bypass) && charging;
    dischargeFlow = utility || battery;
    rectifierFlow = utility;
    outputFlow = utility || battery;
    bypassFlow = bypass;
}

EnergylineGeometry Energyline::geometry() const
{
    return EnergylineGeometry(size());
}

double Energyline::diagramScale() const
{
    return geometry().scale();
}

void Energyline::invalidateStaticLayer()
{
    staticLayer.invalidate();
}

void Energyline::changeEvent(QEvent *event)
{
    // Titles and labels are translated while drawing the layers.
    if (event->type() == QEvent::LanguageChange) {
        panelTexts.clear();
        baseLayer.invalidate();
        staticLayer.invalidate();
    }
    QWidget::changeEvent(event);
}

void Energyline::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(kRenderHints);

    // Only the flow lines move between ticks. Everything else is kept in
    // layers: the base (lines, blocks, pictures, titles) changes with the
    // size, battery and panels with data and clicks. Flow lines and panels
    // never overlap, so drawing the flow last looks the same as drawing it
    // before the panels; a tick then costs one blit and a few dashed lines.
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QPixmap &base = baseLayer.pixmap(size(), ratio, [this](QPainter *p) { paintBaseLayer(p); });
    painter.drawPixmap(0, 0, staticLayer.pixmap(size(), ratio, [this](QPainter *p) { paintStaticLayer(p); }, &base));

    painter.setWorldTransform(geometry().transform(), true);
    drawflow(&painter);
}

void Energyline::paintBaseLayer(QPainter *painter)
{
    painter->setRenderHints(kRenderHints);
    painter->setWorldTransform(geometry().transform(), true);
    drawBase(painter);
}

void Energyline::paintStaticLayer(QPainter *painter)
{
    painter->setRenderHints(kRenderHints);
    painter->setWorldTransform(geometry().transform(), true);
    drawBattery(painter);
    drawdate(painter);
}

void Energyline::drawBase(QPainter *painter)
{
    const EnergylineGeometry geometry = this->geometry();
    painter->setPen(basePen);
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(geometry.baseLine());

    for (int block = 0; block < EnergylineGeometry::BlockCount; ++block)
        drawBlock(painter, geometry, EnergylineGeometry::Part(block));

    painter->setPen(titlePen);
    // The capacity text starts right after this rectangle: keep a gap to it.
    const QString batteryTitle = tr("BATTERY");
    const QRectF titleRect = geometry.batteryTitleRect();
    painter->setFont(PanelTextCache::fittedFont(titleFont, batteryTitle, titleRect.width() - kLabelValueGap));
    painter->drawText(titleRect, Qt::AlignJustify, batteryTitle);
}

void Energyline::drawBlock(QPainter *painter, const EnergylineGeometry &geometry, EnergylineGeometry::Part block)
{
    const QRect blockRect = geometry.blockRect(block);
    painter->setPen(Qt::NoPen);
    painter->setBrush(verticalGradient(blockRect, kBlockTopColor, kBlockBottomColor));
    painter->drawRoundedRect(blockRect, kBlockRoundness, kBlockRoundness, Qt::RelativeSize);

    const QString title = tr(EnergylineGeometry::blockTitle(block));
    const QRect titleRect = geometry.titleRect(block);
    painter->setPen(titlePen);
    painter->setFont(PanelTextCache::fittedFont(titleFont, title, titleRect.width()));
    painter->drawText(titleRect, int(EnergylineGeometry::titleAlignment(block)), title);

    painter->drawPixmap(geometry.pictureRect(block), pictures[EnergylineGeometry::blockPicture(block)]);
}

void Energyline::drawBattery(QPainter *painter)
{
    const QRectF batteryRect = geometry().batteryOutline();
    painter->setPen(batteryOutlinePen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(batteryRect, kBatteryRadius, kBatteryRadius);

    const int capacity = batteryCapacityText.toInt();
    const QBrush &fill = capacity <= lowCapacityLimit ? lowLevelBrush
        : capacity <= highCapacityLimit              ? middleLevelBrush
                                                     : highLevelBrush;
    const double w = batteryRect.width();
    const double h = batteryRect.height();
    const int d = int(std::min(w, h) / kLevelDivisor);
    const double top = batteryRect.bottom() - (h - 2 * d) / kPercentScale * capacity - d;
    // Capacities above 100 are not clamped and reach above the outline; a
    // negative one (corrupt data) leaves the battery empty.
    const QRectF level(QPointF(batteryRect.left() + d, top),
                       QPointF(batteryRect.right() - d, batteryRect.bottom() - d));
    painter->setPen(Qt::NoPen);
    if (level.height() > 0.0) {
        painter->setBrush(fill);
        painter->drawRoundedRect(level, kLevelRadius, kLevelRadius);
    }

    const QRectF terminal(QPointF(batteryRect.left() + w / 3, batteryRect.top() - kTerminalHeight),
                          QPointF(batteryRect.right() - w / 3, batteryRect.top()));
    painter->setBrush(verticalGradient(terminal, Qt::darkGray, Qt::gray));
    painter->drawRoundedRect(terminal, kTerminalRadius, kTerminalRadius);
}

void Energyline::drawflow(QPainter *painter)
{
    const bool on[EnergylineGeometry::FlowCount] = {inputFlow,     chargeFlow, dischargeFlow,
                                                    rectifierFlow, outputFlow, bypassFlow};
    const EnergylineGeometry geometry = this->geometry();
    flowPen.setDashOffset(flowOffset);
    painter->setPen(flowPen);
    painter->setBrush(Qt::NoBrush);
    for (int flow = 0; flow < EnergylineGeometry::FlowCount; ++flow) {
        if (on[flow])
            painter->drawPolyline(geometry.flowLine(EnergylineGeometry::Flow(flow)));
    }
}

void Energyline::drawdate(QPainter *painter)
{
    const EnergylineGeometry geometry = this->geometry();
    painter->setBrush(Qt::NoBrush);
    painter->setFont(panelTexts.font());
    painter->setPen(kValueColor);
    panelTexts.draw(painter, geometry.capacityTextRect(), Qt::AlignLeft | Qt::AlignTop,
                    QStringLiteral("%1 %").arg(batteryCapacityText));

    for (int panel = 0; panel < EnergylineGeometry::PanelCount; ++panel)
        drawPanel(painter, geometry, EnergylineGeometry::Panel(panel));
}

void Energyline::drawPanel(QPainter *painter, const EnergylineGeometry &geometry, EnergylineGeometry::Panel panel)
{
    struct Row {
        const char *label;
        const char *pattern;
        QString Energyline::*value;
    };
    struct PanelContent {
        bool Energyline::*shown;
        Row rows[kPanelRows];
    };
    // In the order of EnergylineGeometry::Panel.
    static const PanelContent contents[EnergylineGeometry::PanelCount] = {
        {&Energyline::showBypassInfo,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::bypassVoltageText},
          {QT_TR_NOOP("Frequency:"), "%1 Hz", &Energyline::bypassFrequencyText}}},
        {&Energyline::showInputInfo,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::inputVoltageText},
          {QT_TR_NOOP("Current:"), "%1", &Energyline::inputCurrentText},
          {QT_TR_NOOP("Frequency:"), "%1 Hz", &Energyline::inputFrequencyText}}},
        {&Energyline::showDeviceInfo,
         {{QT_TR_NOOP("Type:"), "%1", &Energyline::deviceTypeText},
          {QT_TR_NOOP("Name:"), "%1", &Energyline::deviceNameText},
          {QT_TR_NOOP("Manufacturer:"), "%1", &Energyline::manufacturerText}}},
        {&Energyline::showLoadInfo,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::outputVoltageText},
          {QT_TR_NOOP("Current:"), "%1", &Energyline::outputCurrentText},
          {QT_TR_NOOP("Frequency:"), "%1", &Energyline::outputFrequencyText},
          {QT_TR_NOOP("Active power:"), "%1", &Energyline::outputPowerText},
          {QT_TR_NOOP("Load percent:"), "%1", &Energyline::outputLoadText},
          {QT_TR_NOOP("Status:"), "%1", &Energyline::outputSourceText}}},
        {&Energyline::showBatteryInfo,
         {{QT_TR_NOOP("Voltage:"), "%1 V", &Energyline::batteryVoltageText},
          {QT_TR_NOOP("Capacity:"), "%1 %", &Energyline::batteryCapacityText},
          {QT_TR_NOOP("Status:"), "%1", &Energyline::batteryStatusText}}},
    };

    const PanelContent &content = contents[panel];
    if (!(this->*content.shown))
        return;

    painter->setPen(kPanelBorder);
    painter->setBrush(kPanelFill);
    painter->drawRoundedRect(geometry.panelRect(panel), kPanelRoundness, kPanelRoundness, Qt::RelativeSize);

    const QRectF titleRect = geometry.panelTitleRect(panel);
    painter->setPen(kLabelColor);
    panelTexts.draw(painter, titleRect, Qt::AlignCenter, tr(EnergylineGeometry::panelTitle(panel)));

    for (int k = 0; k < kPanelRows && content.rows[k].label; ++k) {
        const Row &row = content.rows[k];
        const QRectF rowRect = geometry.panelRowRect(panel, k);
        painter->setPen(kLabelColor);
        const double labelWidth = panelTexts.draw(painter, rowRect, Qt::AlignLeft | Qt::AlignVCenter, tr(row.label));

        // A value too wide for its row (three-phase powers in W, long model
        // names) may use the panel's free width up to the title's right edge.
        const QString value = QString::fromLatin1(row.pattern).arg(this->*row.value);
        QRectF valueRect = rowRect;
        if (panelTexts.fit(value).size.width() > rowRect.width() - labelWidth - kLabelValueGap)
            valueRect.setWidth(titleRect.width());
        const double room = std::max(0.0, valueRect.width() - labelWidth - kLabelValueGap);
        painter->setPen(kValueColor);
        panelTexts.draw(painter, valueRect, Qt::AlignRight | Qt::AlignVCenter, value, room);
    }
}

void Energyline::mousePressEvent(QMouseEvent *event)
{
    switch (geometry().partAt(event->localPos())) {
    case EnergylineGeometry::InputBlock:
        toggle_view_Flag(showInputInfo);
        break;
    case EnergylineGeometry::BypassBlock:
        toggle_view_Flag(showBypassInfo);
        break;
    case EnergylineGeometry::LoadBlock:
        toggle_view_Flag(showLoadInfo);
        break;
    case EnergylineGeometry::Battery:
        toggle_view_Flag(showBatteryInfo);
        toggle_view_Flag(showDeviceInfo);
        break;
    default: // the rectifier and inverter blocks do not react
        break;
    }
    // No repaint here: the next animation tick shows the change.
}
