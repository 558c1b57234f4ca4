#include "paneltextcache.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

PanelTextCache::PanelTextCache(const QFont &font)
    : panelFont(font)
{
}

void PanelTextCache::clear()
{
    texts.clear();
}

const PanelTextCache::Shaped &PanelTextCache::shaped(const QString &text, qreal pointSize)
{
    constexpr int kMaxCachedTexts = 256;
    constexpr qreal kUnboundedLineWidth = 1.0e6;
    if (texts.size() > kMaxCachedTexts)
        texts.clear();
    const QString key = QString::number(pointSize) + QLatin1Char('|') + text;
    auto found = texts.find(key);
    if (found == texts.end()) {
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
        Shaped result;
        result.runs = layout.glyphRuns();
        result.size = line.isValid() ? QSizeF(line.naturalTextWidth(), line.height())
                                     : QSizeF(0.0, QFontMetricsF(font).height());
        found = texts.insert(key, result);
    }
    return found.value();
}

PanelTextCache::Resolved PanelTextCache::resolve(const QString &text, qreal maxWidth)
{
    // Values wider than the room their label leaves (three-phase powers in
    // W, long model names) are drawn smaller, then elided, so that they
    // never run into their label.
    constexpr qreal kMinimumShrink = 0.85;
    constexpr qreal kShrinkStep = 0.05;
    const qreal fullSize = panelFont.pointSizeF();
    Resolved resolved{&shaped(text, fullSize), text, fullSize};
    if (maxWidth < 0.0 || resolved.shaped->size.width() <= maxWidth)
        return resolved;

    const qreal wanted = maxWidth / resolved.shaped->size.width();
    // Whole steps keep the number of cached sizes small.
    const qreal shrink = std::max(kMinimumShrink, std::floor(wanted / kShrinkStep) * kShrinkStep);
    resolved.pointSize = fullSize * shrink;
    resolved.shaped = &shaped(text, resolved.pointSize);
    if (resolved.shaped->size.width() > maxWidth) {
        QFont font = panelFont;
        font.setPointSizeF(resolved.pointSize);
        resolved.text = QFontMetricsF(font).elidedText(text, Qt::ElideRight, maxWidth);
        resolved.shaped = &shaped(resolved.text, resolved.pointSize);
    }
    return resolved;
}

PanelTextCache::Fitted PanelTextCache::fit(const QString &text, qreal maxWidth)
{
    const Resolved resolved = resolve(text, maxWidth);
    return {resolved.text, resolved.pointSize, resolved.shaped->size};
}

qreal PanelTextCache::draw(QPainter *painter, const QRectF &rect, Qt::Alignment alignment,
                           const QString &text, qreal maxWidth)
{
    const Shaped &shown = *resolve(text, maxWidth).shaped;
    QPointF topLeft = rect.topLeft();
    if (alignment & Qt::AlignRight)
        topLeft.rx() = rect.right() - shown.size.width();
    else if (alignment & Qt::AlignHCenter)
        topLeft.rx() = rect.left() + (rect.width() - shown.size.width()) / 2;
    if (alignment & Qt::AlignVCenter)
        topLeft.ry() = rect.top() + (rect.height() - shown.size.height()) / 2;
    for (const QGlyphRun &run : shown.runs)
        painter->drawGlyphRun(topLeft, run);
    return shown.size.width();
}

QFont PanelTextCache::fittedFont(const QFont &font, const QString &text, qreal width)
{
    constexpr qreal kMinimumPointSize = 6.0;
    constexpr qreal kShrinkStep = 0.5;
    QFont fitted = font;
    while (fitted.pointSizeF() > kMinimumPointSize
           && QFontMetricsF(fitted).horizontalAdvance(text) > width)
        fitted.setPointSizeF(fitted.pointSizeF() - kShrinkStep);
    return fitted;
}
