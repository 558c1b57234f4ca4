#ifndef LAYERCACHE_H
#define LAYERCACHE_H

#include <QPixmap>
#include <QSize>

#include <functional>

class QPainter;

// One cached layer of a self-drawn widget: a transparent pixmap at the
// widget's size and device pixel ratio that is painted once and then blitted
// on every paint event. The owner calls invalidate() whenever something the
// layer shows changes; a new size or pixel ratio repaints it by itself.
class LayerCache
{
public:
    using PaintFunction = std::function<void(QPainter *)>;

    void invalidate();
    bool isValid() const { return valid; }

    // The layer for `size` logical pixels at `ratio`, first painted through
    // `paint` when it is stale. With a `base` layer the pixmap starts as a
    // copy of it instead of a transparent one, and is repainted whenever the
    // base has been.
    const QPixmap &pixmap(const QSize &size, qreal ratio, const PaintFunction &paint,
                          const QPixmap *base = nullptr);

private:
    QPixmap layer;
    QSize layerSize;
    qreal layerRatio = 0.0;
    qint64 baseKey = 0;
    bool valid = false;
};

#endif // LAYERCACHE_H
