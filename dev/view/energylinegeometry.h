#ifndef ENERGYLINEGEOMETRY_H
#define ENERGYLINEGEOMETRY_H

#include <QPointF>
#include <QPolygonF>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <QTransform>
#include <Qt>

// Where everything of the energy-flow diagram lies. The layout is one table
// of offsets from the widget centre; blocks, lines, panels and click areas
// are all taken from it. A widget too small for the diagram shows it scaled
// down about the centre through transform(), which painting applies and
// clicks are mapped back through.
class EnergylineGeometry
{
public:
    // Parts of the diagram; the blocks in the order they are drawn.
    enum Part { InputBlock, BypassBlock, LoadBlock, RectifierBlock, InverterBlock, Battery, NoPart };
    static constexpr int BlockCount = Battery;
    enum Picture { InputPicture, LoadPicture, RectifierPicture, InverterPicture, PictureCount };
    // Animated line segments.
    enum Flow { InputFlow, ChargeFlow, DischargeFlow, RectifierFlow, OutputFlow, BypassFlow, FlowCount };
    // Information panels, in the order they are drawn.
    enum Panel { BypassPanel, InputPanel, DevicePanel, LoadPanel, BatteryPanel, PanelCount };

    explicit EnergylineGeometry(const QSize &widgetSize);

    QPointF center() const { return centre; }
    // 1 when the widget is large enough; the diagram is never enlarged.
    double scale() const { return diagramScale; }
    // Diagram to widget coordinates: identity at full size, else scaling
    // about the centre.
    QTransform transform() const { return toWidget; }
    // The part under a press at widget position `pos`, with the press
    // rounded to whole diagram pixels; areas include their edges.
    Part partAt(const QPointF &pos) const;

    QPolygonF baseLine() const;
    QPolygonF flowLine(Flow flow) const;

    // Blocks are laid out on whole pixels (the offsets are truncated).
    QRect blockRect(Part block) const;
    QRect titleRect(Part block) const;
    QRect pictureRect(Part block) const;
    static const char *blockTitle(Part block);
    static Qt::Alignment titleAlignment(Part block);
    static Picture blockPicture(Part block);
    static const char *pictureFile(Picture picture);

    QRectF batteryOutline() const;
    QRectF batteryTitleRect() const;
    QRectF capacityTextRect() const;

    static const char *panelTitle(Panel panel);
    QRectF panelRect(Panel panel) const;
    QRectF panelTitleRect(Panel panel) const;
    // Row `row` (from 0) of the label and value lines below the title.
    QRectF panelRowRect(Panel panel, int row) const;

private:
    QRectF partArea(Part part) const;

    QPointF centre;
    double diagramScale = 1.0;
    QTransform toWidget;
};

#endif // ENERGYLINEGEOMETRY_H
