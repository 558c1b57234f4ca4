#include "energyline.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QLinearGradient>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QPolygonF>
#include <QResizeEvent>
#include <QTextLayout>
#include <QTimer>
#include <QtGlobal>

#include <algorithm>
#include <cmath>

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

// Battery state codes 0 and those outside 1..9 read as "Normal".
constexpr int kBatteryNormalIndex = 1;

// Output source code 0 reads as "None supply"; codes outside the list show
// entry 0, "Other supply".
constexpr int kOtherSupplyIndex = 0;

// Geometry, relative to the widget centre.
constexpr double kBlockSize = 75.0;
constexpr double kBlockRoundness = 25.0;
constexpr double kTitleHeight = 25.0;
constexpr int kTitlePointSize = 13;
constexpr int kTitleWeight = 75;
constexpr int kPanelPointSize = 11;
constexpr int kPanelWeight = 50;
constexpr double kPanelRoundness = 5.0;
constexpr double kPanelRowHeight = 25.0;
constexpr double kPanelRowWidth = 230.0;
constexpr double kPanelInset = 10.0;
constexpr double kLabelValueGap = 6.0;
constexpr double kBaseLineWidth = 10.0;
constexpr double kFlowLineWidth = 5.0;
constexpr double kBatteryOutlineWidth = 5.0;
constexpr double kTerminalHeight = 10.0;
constexpr int kLevelDivisor = 20;
constexpr double kPercentScale = 100.0;
const QRectF kBatteryOutline(-25.0, 80.0, 50.0, 75.0);
const QRectF kBatteryTitleRect(-45.0, 160.0, 70.0, 50.0);
const QRectF kCapacityTextRect(25.0, 160.0, 50.0, 50.0);

// Half of the area the diagram needs around the centre (panels included),
// with a small margin; smaller widgets show the diagram scaled down.
constexpr double kDesignHalfWidth = 445.0;
constexpr double kDesignHalfHeight = 325.0;
constexpr double kMinimumScale = 0.05;

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

enum Picture { InputPicture, LoadPicture, RectifierPicture, InverterPicture };

struct BlockLayout {
    QPointF topLeft;
    const char *title;
    Qt::Alignment titleAlignment;
    Picture picture;
    QRectF pictureRect;
};

// The load title is left-aligned while the others are centred, as the
// diagram has always drawn it.
const BlockLayout kBlocks[] = {
    {{-300.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "INPUT"), Qt::AlignCenter,
     InputPicture, {-278.5, -5.0, 30.0, 10.0}},
    {{-300.0, -187.5}, QT_TRANSLATE_NOOP("Energyline", "BYPASS"), Qt::AlignCenter,
     InputPicture, {-278.5, -155.0, 30.0, 10.0}},
    {{225.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "LOAD"), Qt::AlignLeft | Qt::AlignVCenter,
     LoadPicture, {227.5, -27.5, 70.0, 55.0}},
    {{-130.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "REC"), Qt::AlignCenter,
     RectifierPicture, {-128.5, -27.5, 70.0, 55.0}},
    {{55.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "INV"), Qt::AlignCenter,
     InverterPicture, {57.5, -27.5, 70.0, 55.0}},
};
constexpr int kBlockCount = int(sizeof(kBlocks) / sizeof(kBlocks[0]));
constexpr int kPanelCount = 5;

const char *const kPictureFiles[] = {
    "://image/INPUT.png", "://image/LOAD.png", "://image/REC.png", "://image/INV.png",
};

const QPointF kBaseLine[] = {
    {-225, 0}, {0, 0}, {0, 70}, {0, 0}, {225, 0}, {175, 0}, {175, -150}, {-225, -150},
};
const QPointF kInputFlowLine[] = {{-225, 0}, {-130, 0}};
const QPointF kChargeFlowLine[] = {{-55, 0}, {0, 0}, {0, 75}};
const QPointF kDischargeFlowLine[] = {{0, 75}, {0, 0}, {55, 0}};
const QPointF kRectifierFlowLine[] = {{-55, 0}, {55, 0}};
const QPointF kOutputFlowLine[] = {{130, 0}, {225, 0}};
const QPointF kBypassFlowLine[] = {{-225, -150}, {175, -150}, {175, 0}, {225, 0}};

// Click areas (inclusive), tested in this order.
struct HitArea {
    double left, top, right, bottom;
};
const HitArea kInputHit = {-300.0, -37.5, -225.0, 37.5};
const HitArea kBypassHit = {-300.0, -187.5, -225.0, -112.5};
const HitArea kLoadHit = {225.0, -37.5, 300.0, 37.5};
const HitArea kBatteryHit = {-25.0, 80.0, 25.0, 155.0};

bool hits(const HitArea &area, int px, int py, double cx, double cy)
{
    return px >= cx + area.left && px <= cx + area.right
        && py >= cy + area.top && py <= cy + area.bottom;
}

int readInt(const QMap<int, QVariant> &map, int id)
{
    return map.value(id).toInt(); // missing ids and non-numbers read 0
}

// Largest font (down to a readable floor) whose rendering of text fits width.
QFont fittedFont(const QFont &font, const QString &text, double width)
{
    constexpr qreal kMinimumPointSize = 6.0;
    constexpr qreal kShrinkStep = 0.5;
    QFont fitted = font;
    while (fitted.pointSizeF() > kMinimumPointSize
           && QFontMetricsF(fitted).horizontalAdvance(text) > width)
        fitted.setPointSizeF(fitted.pointSizeF() - kShrinkStep);
    return fitted;
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
    : QWidget(parent)
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
    panelFont = QFont(QString::fromLatin1(kFontFamily), kPanelPointSize, kPanelWeight);

    lowLevelBrush = levelBrush(Qt::darkRed, Qt::red, kBatteryOutline.width());
    middleLevelBrush = levelBrush(Qt::darkYellow, Qt::yellow, kBatteryOutline.width());
    highLevelBrush = levelBrush(Qt::darkGreen, Qt::green, kBatteryOutline.width());
}

Energyline::~Energyline() = default;

void Energyline::loadPictures()
{
    QPixmap *targets[] = {&inputPicture, &loadPicture, &rectifierPicture, &inverterPicture};
    for (int i = 0; i < 4; ++i) {
        if (!targets[i]->load(QString::fromLatin1(kPictureFiles[i])))
            qCWarning(lcEnergyline) << "missing picture" << kPictureFiles[i];
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
    staticLayerValid = false;
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
    staticLayerValid = false;
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
        batteryTemperatureText = QStringLiteral("--");
    else
        batteryTemperatureText = QString::asprintf("%.1f", double(temperature));
    batteryRemainTimeText = UpsFormat::text(map, UpsPoint::RemainingMinutes, plain);
    batteryCapacityText = UpsFormat::text(map, UpsPoint::BatteryCapacity, plain);

    const int status = readInt(map, UpsPoint::BatteryStatus);
    int count = 0;
    UpsPoints::codeTexts(UpsPoints::CodeList::BatteryState, &count);
    if (status < 0 || status > count)
        qCDebug(lcEnergyline) << "battery status code outside its list:" << status;
    batteryStatusText = UpsFormat::codeText(UpsPoints::CodeList::BatteryState, status, kBatteryNormalIndex,
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

void Energyline::updateCenter()
{
    centerX = width() / 2;
    centerY = height() / 2;
}

double Energyline::diagramScale() const
{
    const double cx = width() / 2;
    const double cy = height() / 2;
    const double fit = std::min(cx / kDesignHalfWidth, cy / kDesignHalfHeight);
    return std::max(kMinimumScale, std::min(1.0, fit));
}

void Energyline::applyDiagramTransform(QPainter *painter) const
{
    const double scale = diagramScale();
    if (scale == 1.0)
        return;
    painter->translate(centerX, centerY);
    painter->scale(scale, scale);
    painter->translate(-centerX, -centerY);
}

void Energyline::resizeEvent(QResizeEvent *event)
{
    baseLayerValid = false;
    staticLayerValid = false;
    QWidget::resizeEvent(event);
}

void Energyline::changeEvent(QEvent *event)
{
    // Titles and labels are translated while drawing the layers.
    if (event->type() == QEvent::LanguageChange) {
        panelTexts.clear();
        baseLayerValid = false;
        staticLayerValid = false;
    }
    QWidget::changeEvent(event);
}

void Energyline::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing
                           | QPainter::SmoothPixmapTransform);
    updateCenter();

    // Only the flow lines move between ticks. Everything else is kept in
    // layers: the base (lines, blocks, pictures, titles) changes with the
    // size, battery and panels with data and clicks. Flow lines and panels
    // never overlap, so drawing the flow last looks the same as drawing it
    // before the panels; a tick then costs one blit and a few dashed lines.
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QSize pixels = size() * ratio;
    if (!baseLayerValid || baseLayer.size() != pixels || baseLayer.devicePixelRatioF() != ratio)
        buildBaseLayer(ratio);
    if (!staticLayerValid)
        buildStaticLayer();
    painter.drawPixmap(0, 0, staticLayer);

    applyDiagramTransform(&painter);
    drawflow(&painter);
}

void Energyline::buildBaseLayer(qreal ratio)
{
    baseLayer = QPixmap(size() * ratio);
    baseLayer.setDevicePixelRatio(ratio);
    baseLayer.fill(Qt::transparent);
    QPainter painter(&baseLayer);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing
                           | QPainter::SmoothPixmapTransform);
    applyDiagramTransform(&painter);
    drawBase(&painter);
    baseLayerValid = true;
    staticLayerValid = false;
}

void Energyline::buildStaticLayer()
{
    // Start from a plain copy of the base layer (the painter detaches it),
    // which is cheaper than clearing and blending it in.
    staticLayer = baseLayer;
    QPainter painter(&staticLayer);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing
                           | QPainter::SmoothPixmapTransform);
    applyDiagramTransform(&painter);
    drawBattery(&painter);
    drawdate(&painter);
    staticLayerValid = true;
}

void Energyline::drawBase(QPainter *painter)
{
    updateCenter();
    const QPointF center(centerX, centerY);

    QPolygonF line;
    for (const QPointF &point : kBaseLine)
        line << center + point;
    painter->setPen(basePen);
    painter->setBrush(Qt::NoBrush);
    painter->drawPolyline(line);

    for (int i = 0; i < kBlockCount; ++i)
        drawBlock(painter, i);

    painter->setPen(titlePen);
    // The capacity text starts right after this rectangle: keep a gap to it.
    const QString batteryTitle = tr("BATTERY");
    painter->setFont(fittedFont(titleFont, batteryTitle, kBatteryTitleRect.width() - kLabelValueGap));
    painter->drawText(kBatteryTitleRect.translated(center), Qt::AlignJustify, batteryTitle);
}

void Energyline::drawBlock(QPainter *painter, int blockIndex)
{
    const BlockLayout &block = kBlocks[blockIndex];
    const QPixmap *pictures[] = {&inputPicture, &loadPicture, &rectifierPicture, &inverterPicture};

    // Block coordinates are whole pixels (truncated, as the layout is defined).
    const int x = int(centerX + block.topLeft.x());
    const int y = int(centerY + block.topLeft.y());
    const int size = int(kBlockSize);
    const QRect blockRect(x, y, size, size);

    painter->setPen(Qt::NoPen);
    painter->setBrush(verticalGradient(blockRect, kBlockTopColor, kBlockBottomColor));
    painter->drawRoundedRect(blockRect, kBlockRoundness, kBlockRoundness, Qt::RelativeSize);

    const QString title = tr(block.title);
    const QRect titleRect(x, y - int(kTitleHeight), size, int(kTitleHeight));
    painter->setPen(titlePen);
    painter->setFont(fittedFont(titleFont, title, titleRect.width()));
    painter->drawText(titleRect, int(block.titleAlignment), title);

    const QRect target(int(centerX + block.pictureRect.x()), int(centerY + block.pictureRect.y()),
                       int(block.pictureRect.width()), int(block.pictureRect.height()));
    painter->drawPixmap(target, *pictures[block.picture]);
}

void Energyline::drawBattery(QPainter *painter)
{
    updateCenter();
    batteryRect = kBatteryOutline.translated(centerX, centerY);

    painter->setPen(batteryOutlinePen);
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(batteryRect, batteryRadius, batteryRadius);

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
        painter->drawRoundedRect(level, levelRadius, levelRadius);
    }

    const QRectF terminal(QPointF(batteryRect.left() + w / 3, batteryRect.top() - kTerminalHeight),
                          QPointF(batteryRect.right() - w / 3, batteryRect.top()));
    painter->setBrush(verticalGradient(terminal, Qt::darkGray, Qt::gray));
    painter->drawRoundedRect(terminal, terminalRadius, terminalRadius);
}

void Energyline::drawflow(QPainter *painter)
{
    updateCenter();
    const QPointF center(centerX, centerY);

    struct FlowLine {
        bool on;
        const QPointF *points;
        int count;
    };
    const FlowLine lines[] = {
        {inputFlow, kInputFlowLine, 2},
        {chargeFlow, kChargeFlowLine, 3},
        {dischargeFlow, kDischargeFlowLine, 3},
        {rectifierFlow, kRectifierFlowLine, 2},
        {outputFlow, kOutputFlowLine, 2},
        {bypassFlow, kBypassFlowLine, 4},
    };

    flowPen.setDashOffset(flowOffset);
    painter->setPen(flowPen);
    painter->setBrush(Qt::NoBrush);
    QPointF points[4];
    for (const FlowLine &line : lines) {
        if (!line.on)
            continue;
        for (int i = 0; i < line.count; ++i)
            points[i] = center + line.points[i];
        painter->drawPolyline(points, line.count);
    }
}

void Energyline::drawdate(QPainter *painter)
{
    updateCenter();
    painter->setBrush(Qt::NoBrush);
    painter->setFont(panelFont);
    painter->setPen(kValueColor);
    drawPanelText(painter, kCapacityTextRect.translated(centerX, centerY), Qt::AlignLeft | Qt::AlignTop,
                  QStringLiteral("%1 %").arg(batteryCapacityText));

    for (int i = 0; i < kPanelCount; ++i)
        drawPanel(painter, i);
}

void Energyline::drawPanel(QPainter *painter, int panelIndex)
{
    struct Row {
        const char *label;
        const char *pattern;
        QString Energyline::*value;
    };
    struct PanelLayout {
        bool Energyline::*shown;
        const char *title;
        QPointF origin;
        QSizeF size;
        double titleWidth;
        Row rows[6];
    };
    static const PanelLayout panels[kPanelCount] = {
        {&Energyline::showBypassInfo, QT_TR_NOOP("BYPASS"), {-430, -320}, {315, 79}, 295,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::bypassVoltageText},
          {QT_TR_NOOP("Frequency:"), "%1 Hz", &Energyline::bypassFrequencyText}}},
        {&Energyline::showInputInfo, QT_TR_NOOP("INPUT"), {-430, 45}, {315, 104}, 295,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::inputVoltageText},
          {QT_TR_NOOP("Current:"), "%1", &Energyline::inputCurrentText},
          {QT_TR_NOOP("Frequency:"), "%1 Hz", &Energyline::inputFrequencyText}}},
        {&Energyline::showDeviceInfo, QT_TR_NOOP("UPS"), {-165, -320}, {315, 104}, 295,
         {{QT_TR_NOOP("Type:"), "%1", &Energyline::deviceTypeText},
          {QT_TR_NOOP("Name:"), "%1", &Energyline::deviceNameText},
          {QT_TR_NOOP("Manufacturer:"), "%1", &Energyline::manufacturerText}}},
        {&Energyline::showLoadInfo, QT_TR_NOOP("LOAD"), {110, 45}, {320, 179}, 300,
         {{QT_TR_NOOP("Voltage:"), "%1", &Energyline::outputVoltageText},
          {QT_TR_NOOP("Current:"), "%1", &Energyline::outputCurrentText},
          {QT_TR_NOOP("Frequency:"), "%1", &Energyline::outputFrequencyText},
          {QT_TR_NOOP("Active power:"), "%1", &Energyline::outputPowerText},
          {QT_TR_NOOP("Load percent:"), "%1", &Energyline::outputLoadText},
          {QT_TR_NOOP("Status:"), "%1", &Energyline::outputSourceText}}},
        {&Energyline::showBatteryInfo, QT_TR_NOOP("BATTERY"), {-430, 163}, {315, 154}, 295,
         {{QT_TR_NOOP("Voltage:"), "%1 V", &Energyline::batteryVoltageText},
          {QT_TR_NOOP("Capacity:"), "%1 %", &Energyline::batteryCapacityText},
          {QT_TR_NOOP("Status:"), "%1", &Energyline::batteryStatusText}}},
    };

    const PanelLayout &panel = panels[panelIndex];
    if (!(this->*panel.shown))
        return;

    const QPointF origin = QPointF(centerX, centerY) + panel.origin;
    painter->setPen(kPanelBorder);
    painter->setBrush(kPanelFill);
    painter->drawRoundedRect(QRectF(QPointF(origin.x() - kPanelInset, origin.y()), panel.size),
                             kPanelRoundness, kPanelRoundness, Qt::RelativeSize);

    painter->setPen(kLabelColor);
    drawPanelText(painter, QRectF(origin, QSizeF(panel.titleWidth, kPanelRowHeight)), Qt::AlignCenter,
                  tr(panel.title));

    for (int k = 0; k < 6 && panel.rows[k].label; ++k) {
        const Row &row = panel.rows[k];
        const QRectF rowRect(origin.x(), origin.y() + kPanelRowHeight * (k + 1), kPanelRowWidth,
                             kPanelRowHeight);
        painter->setPen(kLabelColor);
        const double labelWidth = drawPanelText(painter, rowRect, Qt::AlignLeft | Qt::AlignVCenter,
                                                tr(row.label));

        // A value too wide for its row (three-phase powers in W, long model
        // names) may use the panel's free width up to the title's right edge.
        const QString value = QString::fromLatin1(row.pattern).arg(this->*row.value);
        QRectF valueRect = rowRect;
        if (shapedText(value, panelFont.pointSizeF()).size.width() > rowRect.width() - labelWidth - kLabelValueGap)
            valueRect.setWidth(panel.titleWidth);
        const double room = std::max(0.0, valueRect.width() - labelWidth - kLabelValueGap);
        painter->setPen(kValueColor);
        drawPanelText(painter, valueRect, Qt::AlignRight | Qt::AlignVCenter, value, room);
    }
}

const Energyline::ShapedText &Energyline::shapedText(const QString &text, qreal pointSize)
{
    // Panel texts are shaped once and kept: labels never change and most
    // values repeat from one refresh to the next. Glyph runs are positioned
    // in diagram coordinates, so they draw correctly under any scale.
    constexpr int kMaxCachedTexts = 256;
    constexpr qreal kUnboundedLineWidth = 1.0e6;
    if (panelTexts.size() > kMaxCachedTexts)
        panelTexts.clear();
    const QString key = QString::number(pointSize) + QLatin1Char('|') + text;
    auto found = panelTexts.find(key);
    if (found == panelTexts.end()) {
        QFont font = panelFont;
        font.setPointSizeF(pointSize);
        QTextLayout layout(text, font);
        layout.setCacheEnabled(true);
        layout.beginLayout();
        QTextLine line = layout.createLine();
        if (line.isValid()) {
            line.setPosition(QPointF(0.0, 0.0));
            line.setLineWidth(kUnboundedLineWidth); // one line, whatever its width
        }
        layout.endLayout();
        ShapedText shaped;
        shaped.runs = layout.glyphRuns();
        shaped.size = line.isValid() ? QSizeF(line.naturalTextWidth(), line.height())
                                     : QSizeF(0.0, QFontMetricsF(font).height());
        found = panelTexts.insert(key, shaped);
    }
    return found.value();
}

double Energyline::drawPanelText(QPainter *painter, const QRectF &rect, Qt::Alignment alignment,
                                 const QString &text, double maxWidth)
{
    // A value wider than the room its label leaves (three-phase powers in
    // W, long model names) is drawn smaller, down to a readable size, and
    // elided beyond that, so it never runs into its label.
    constexpr qreal kMinimumShrink = 0.85;
    constexpr qreal kShrinkStep = 0.05;
    const qreal fullSize = panelFont.pointSizeF();
    const ShapedText *shaped = &shapedText(text, fullSize);
    if (maxWidth >= 0.0 && shaped->size.width() > maxWidth) {
        const qreal wanted = maxWidth / shaped->size.width();
        // Whole steps keep the number of cached sizes small.
        const qreal shrink = std::max(kMinimumShrink, std::floor(wanted / kShrinkStep) * kShrinkStep);
        shaped = &shapedText(text, fullSize * shrink);
        if (shaped->size.width() > maxWidth) {
            QFont font = panelFont;
            font.setPointSizeF(fullSize * shrink);
            shaped = &shapedText(QFontMetricsF(font).elidedText(text, Qt::ElideRight, maxWidth),
                                 fullSize * shrink);
        }
    }

    QPointF topLeft = rect.topLeft();
    if (alignment & Qt::AlignRight)
        topLeft.rx() = rect.right() - shaped->size.width();
    else if (alignment & Qt::AlignHCenter)
        topLeft.rx() = rect.left() + (rect.width() - shaped->size.width()) / 2;
    if (alignment & Qt::AlignVCenter)
        topLeft.ry() = rect.top() + (rect.height() - shaped->size.height()) / 2;
    for (const QGlyphRun &run : shaped->runs)
        painter->drawGlyphRun(topLeft, run);
    return shaped->size.width();
}

void Energyline::mousePressEvent(QMouseEvent *event)
{
    updateCenter();
    // Undo the fit-to-size scaling, then work in whole diagram pixels.
    const double scale = diagramScale();
    const QPointF pos = event->localPos();
    const int px = qRound(centerX + (pos.x() - centerX) / scale);
    const int py = qRound(centerY + (pos.y() - centerY) / scale);

    if (hits(kInputHit, px, py, centerX, centerY)) {
        toggle_view_Flag(showInputInfo);
    } else if (hits(kBypassHit, px, py, centerX, centerY)) {
        toggle_view_Flag(showBypassInfo);
    } else if (hits(kLoadHit, px, py, centerX, centerY)) {
        toggle_view_Flag(showLoadInfo);
    } else if (hits(kBatteryHit, px, py, centerX, centerY)) {
        toggle_view_Flag(showBatteryInfo);
        toggle_view_Flag(showDeviceInfo);
    }
    // No repaint here: the next animation tick shows the change.
}
