#include "layercache.h"

#include <QPainter>

void LayerCache::invalidate()
{
    valid = false;
}

const QPixmap &LayerCache::pixmap(const QSize &size, qreal ratio, const PaintFunction &paint,
                                  const QPixmap *base)
{
    // A repainted base pixmap gets a new cache key, so comparing keys tells
    // whether this layer still sits on the current base.
    const qint64 wantedBaseKey = base ? base->cacheKey() : 0;
    if (valid && layerSize == size && layerRatio == ratio && baseKey == wantedBaseKey)
        return layer;

    if (base) {
        // A plain copy (the painter detaches it) is cheaper than clearing
        // and blending the base in.
        layer = *base;
    } else {
        layer = QPixmap(size * ratio);
        layer.setDevicePixelRatio(ratio);
        layer.fill(Qt::transparent);
    }
    {
        QPainter painter(&layer);
        paint(&painter);
    }
    layerSize = size;
    layerRatio = ratio;
    baseKey = wantedBaseKey;
    valid = true;
    return layer;
}
