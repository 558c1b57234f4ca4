#include "energylinegeometry.h"

#include <QtGlobal>

#include <algorithm>
#include <iterator>

namespace {

constexpr double kBlockSize = 75.0;
constexpr double kTitleHeight = 25.0;
constexpr double kPanelInset = 10.0;
constexpr double kPanelRowHeight = 25.0;
constexpr double kPanelRowWidth = 230.0;

// Half of the area the diagram needs around the centre (panels included),
// with a small margin; smaller widgets show the diagram scaled down.
constexpr double kDesignHalfWidth = 445.0;
constexpr double kDesignHalfHeight = 325.0;
constexpr double kMinimumScale = 0.05;

struct BlockLayout {
    QPointF topLeft;
    const char *title;
    Qt::Alignment titleAlignment;
    EnergylineGeometry::Picture picture;
    QRectF pictureRect;
};

// In the order of EnergylineGeometry::Part. The load title is left-aligned
// while the others are centred, as the diagram has always drawn it.
const BlockLayout kBlocks[] = {
    {{-300.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "INPUT"), Qt::AlignCenter,
     EnergylineGeometry::InputPicture, {-278.5, -5.0, 30.0, 10.0}},
    {{-300.0, -187.5}, QT_TRANSLATE_NOOP("Energyline", "BYPASS"), Qt::AlignCenter,
     EnergylineGeometry::InputPicture, {-278.5, -155.0, 30.0, 10.0}},
    {{225.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "LOAD"), Qt::AlignLeft | Qt::AlignVCenter,
     EnergylineGeometry::LoadPicture, {227.5, -27.5, 70.0, 55.0}},
    {{-130.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "REC"), Qt::AlignCenter,
     EnergylineGeometry::RectifierPicture, {-128.5, -27.5, 70.0, 55.0}},
    {{55.0, -37.5}, QT_TRANSLATE_NOOP("Energyline", "INV"), Qt::AlignCenter,
     EnergylineGeometry::InverterPicture, {57.5, -27.5, 70.0, 55.0}},
};
static_assert(std::size(kBlocks) == EnergylineGeometry::BlockCount, "one layout per block");

const char *const kPictureFiles[] = {
    "://image/INPUT.png", "://image/LOAD.png", "://image/REC.png", "://image/INV.png",
};

const QRectF kBatteryOutline(-25.0, 80.0, 50.0, 75.0);
const QRectF kBatteryTitleRect(-45.0, 160.0, 70.0, 50.0);
const QRectF kCapacityTextRect(25.0, 160.0, 50.0, 50.0);

const QPointF kBaseLine[] = {
    {-225, 0}, {0, 0}, {0, 70}, {0, 0}, {225, 0}, {175, 0}, {175, -150}, {-225, -150},
};

struct FlowLayout {
    QPointF points[4];
    int count;
};
// In the order of EnergylineGeometry::Flow; dashes run from the first point on.
const FlowLayout kFlows[] = {
    {{{-225, 0}, {-130, 0}}, 2},
    {{{-55, 0}, {0, 0}, {0, 75}}, 3},
    {{{0, 75}, {0, 0}, {55, 0}}, 3},
    {{{-55, 0}, {55, 0}}, 2},
    {{{130, 0}, {225, 0}}, 2},
    {{{-225, -150}, {175, -150}, {175, 0}, {225, 0}}, 4},
};
static_assert(std::size(kFlows) == EnergylineGeometry::FlowCount, "one line per flow");

struct PanelLayout {
    const char *title;
    QPointF origin; // left end of the title and row texts
    QSizeF size;
    double titleWidth;
};
// In the order of EnergylineGeometry::Panel.
const PanelLayout kPanels[] = {
    {QT_TRANSLATE_NOOP("Energyline", "BYPASS"), {-430, -320}, {315, 79}, 295},
    {QT_TRANSLATE_NOOP("Energyline", "INPUT"), {-430, 45}, {315, 104}, 295},
    {QT_TRANSLATE_NOOP("Energyline", "UPS"), {-165, -320}, {315, 104}, 295},
    {QT_TRANSLATE_NOOP("Energyline", "LOAD"), {110, 45}, {320, 179}, 300},
    {QT_TRANSLATE_NOOP("Energyline", "BATTERY"), {-430, 163}, {315, 154}, 295},
};
static_assert(std::size(kPanels) == EnergylineGeometry::PanelCount, "one layout per panel");

QPolygonF placed(const QPointF &centre, const QPointF *points, int count)
{
    QPolygonF polygon;
    polygon.reserve(count);
    for (int i = 0; i < count; ++i)
        polygon << centre + points[i];
    return polygon;
}

} // namespace

EnergylineGeometry::EnergylineGeometry(const QSize &widgetSize)
    : centre(widgetSize.width() / 2, widgetSize.height() / 2)
{
    const double fit = std::min(centre.x() / kDesignHalfWidth, centre.y() / kDesignHalfHeight);
    diagramScale = std::max(kMinimumScale, std::min(1.0, fit));
    if (diagramScale != 1.0) {
        toWidget.translate(centre.x(), centre.y());
        toWidget.scale(diagramScale, diagramScale);
        toWidget.translate(-centre.x(), -centre.y());
    }
}

EnergylineGeometry::Part EnergylineGeometry::partAt(const QPointF &pos) const
{
    const QPointF mapped = toWidget.inverted().map(pos);
    const QPointF pixel(qRound(mapped.x()), qRound(mapped.y()));
    for (int part = InputBlock; part < NoPart; ++part) {
        if (partArea(Part(part)).contains(pixel))
            return Part(part);
    }
    return NoPart;
}

QRectF EnergylineGeometry::partArea(Part part) const
{
    if (part == Battery)
        return batteryOutline();
    return QRectF(centre + kBlocks[part].topLeft, QSizeF(kBlockSize, kBlockSize));
}

QPolygonF EnergylineGeometry::baseLine() const
{
    return placed(centre, kBaseLine, int(std::size(kBaseLine)));
}

QPolygonF EnergylineGeometry::flowLine(Flow flow) const
{
    return placed(centre, kFlows[flow].points, kFlows[flow].count);
}

QRect EnergylineGeometry::blockRect(Part block) const
{
    const QPointF &offset = kBlocks[block].topLeft;
    const int size = int(kBlockSize);
    return QRect(int(centre.x() + offset.x()), int(centre.y() + offset.y()), size, size);
}

QRect EnergylineGeometry::titleRect(Part block) const
{
    const QRect rect = blockRect(block);
    return QRect(rect.x(), rect.y() - int(kTitleHeight), rect.width(), int(kTitleHeight));
}

QRect EnergylineGeometry::pictureRect(Part block) const
{
    const QRectF &offset = kBlocks[block].pictureRect;
    return QRect(int(centre.x() + offset.x()), int(centre.y() + offset.y()), int(offset.width()),
                 int(offset.height()));
}

const char *EnergylineGeometry::blockTitle(Part block)
{
    return kBlocks[block].title;
}

Qt::Alignment EnergylineGeometry::titleAlignment(Part block)
{
    return kBlocks[block].titleAlignment;
}

EnergylineGeometry::Picture EnergylineGeometry::blockPicture(Part block)
{
    return kBlocks[block].picture;
}

const char *EnergylineGeometry::pictureFile(Picture picture)
{
    return kPictureFiles[picture];
}

QRectF EnergylineGeometry::batteryOutline() const
{
    return kBatteryOutline.translated(centre);
}

QRectF EnergylineGeometry::batteryTitleRect() const
{
    return kBatteryTitleRect.translated(centre);
}

QRectF EnergylineGeometry::capacityTextRect() const
{
    return kCapacityTextRect.translated(centre);
}

const char *EnergylineGeometry::panelTitle(Panel panel)
{
    return kPanels[panel].title;
}

QRectF EnergylineGeometry::panelRect(Panel panel) const
{
    const QPointF origin = centre + kPanels[panel].origin;
    return QRectF(QPointF(origin.x() - kPanelInset, origin.y()), kPanels[panel].size);
}

QRectF EnergylineGeometry::panelTitleRect(Panel panel) const
{
    return QRectF(centre + kPanels[panel].origin, QSizeF(kPanels[panel].titleWidth, kPanelRowHeight));
}

QRectF EnergylineGeometry::panelRowRect(Panel panel, int row) const
{
    const QPointF origin = centre + kPanels[panel].origin;
    return QRectF(origin.x(), origin.y() + kPanelRowHeight * (row + 1), kPanelRowWidth, kPanelRowHeight);
}
