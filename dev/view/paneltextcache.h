#ifndef PANELTEXTCACHE_H
#define PANELTEXTCACHE_H

#include <QFont>
#include <QGlyphRun>
#include <QHash>
#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <Qt>

class QPainter;

// The texts of the energy-flow diagram's information panels, shaped once and
// kept: labels never change and most values repeat from one refresh to the
// next. Glyph runs are positioned in diagram coordinates, so they draw
// correctly under any scale.
class PanelTextCache
{
public:
    // How a text is shown in the room it has.
    struct Fitted {
        QString text;     // elided when shrinking alone was not enough
        qreal pointSize;
        QSizeF size;
    };

    explicit PanelTextCache(const QFont &font);

    QFont font() const { return panelFont; }
    // Drops every shaped text (after a language change).
    void clear();

    // A text wider than maxWidth (when not negative) is drawn smaller, down
    // to a readable size, and elided beyond that.
    Fitted fit(const QString &text, qreal maxWidth = -1.0);
    // Draws text aligned in rect as fit() shows it; returns its width.
    qreal draw(QPainter *painter, const QRectF &rect, Qt::Alignment alignment, const QString &text,
               qreal maxWidth = -1.0);

    // Largest font (down to a readable floor) whose rendering of text fits
    // width; for the block titles, which are not cached.
    static QFont fittedFont(const QFont &font, const QString &text, qreal width);

private:
    struct Shaped {
        QList<QGlyphRun> runs;
        QSizeF size;
    };
    struct Resolved {
        const Shaped *shaped;
        QString text;
        qreal pointSize;
    };
    const Shaped &shaped(const QString &text, qreal pointSize);
    Resolved resolve(const QString &text, qreal maxWidth);

    QFont panelFont;
    // By point size and text.
    QHash<QString, Shaped> texts;
};

#endif // PANELTEXTCACHE_H
