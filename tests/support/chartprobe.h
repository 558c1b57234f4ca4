#ifndef CHARTPROBE_H
#define CHARTPROBE_H

// Helpers for the trend chart tests: laying a chart out offscreen, sending
// resize events and reading pixels of its rendering.

#include <QColor>
#include <QCoreApplication>
#include <QImage>
#include <QRect>
#include <QRectF>
#include <QResizeEvent>
#include <QSize>
#include <QTest>
#include <QWidget>

namespace chartprobe {

// The plot box as the trend charts lay it out: margins of 1/13 of each side.
inline QRectF expectedPlotBox(const QSize &size)
{
    const double x = size.width() / 13.0;
    const double y = size.height() / 13.0;
    return QRectF(x, y, size.width() - 2 * x, size.height() - 2 * y);
}

inline int countColour(const QImage &image, const QColor &colour, const QRect &area)
{
    int count = 0;
    const QRect r = area.intersected(image.rect());
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            count += image.pixelColor(x, y) == colour;
    return count;
}

// Whether `colour` shows at (x, y) or one row above or below (aliased lines
// round fractional rows either way).
inline bool colourNear(const QImage &image, int x, double y, const QColor &colour)
{
    return countColour(image, colour, QRect(x, qRound(y) - 1, 1, 3)) > 0;
}

// Shows the widget (offscreen) and paints it once so that it is laid out.
// A hidden widget would get a fresh resize event with every grab().
inline bool showAt(QWidget &widget, const QSize &size)
{
    widget.resize(size);
    widget.show();
    if (!QTest::qWaitForWindowExposed(&widget))
        return false;
    widget.grab();
    return true;
}

inline void sendResize(QWidget &widget)
{
    QResizeEvent event(widget.size(), widget.size());
    QCoreApplication::sendEvent(&widget, &event);
}

} // namespace chartprobe

#endif // CHARTPROBE_H
