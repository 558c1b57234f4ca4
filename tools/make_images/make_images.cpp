// Paints the four block pictures of the energy-flow diagram at the size the
// diagram draws them: light strokes on a transparent background, so they read
// on the blue block gradient.
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <cmath>

namespace {

const QColor kStroke(255, 255, 255, 240);
constexpr double kPi = 3.14159265358979323846;

QImage blankImage(int width, int height)
{
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void setupPainter(QPainter &painter, double strokeWidth)
{
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(QPen(kStroke, strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
}

// A sine wave through the rectangle: one and a half periods.
QPainterPath sinePath(const QRectF &rect, double periods)
{
    QPainterPath path;
    constexpr int kSteps = 48;
    for (int i = 0; i <= kSteps; ++i) {
        const double t = double(i) / kSteps;
        const QPointF p(rect.left() + t * rect.width(),
                        rect.center().y() - std::sin(t * periods * 2 * kPi) * rect.height() / 2);
        if (i == 0)
            path.moveTo(p);
        else
            path.lineTo(p);
    }
    return path;
}

// Mains supply: a sine wave (30 x 10).
QImage inputPicture()
{
    QImage image = blankImage(30, 10);
    QPainter painter(&image);
    setupPainter(painter, 1.6);
    painter.drawPath(sinePath(QRectF(2, 2, 26, 6), 1.5));
    return image;
}

// Load: a server rack with three units, each with a status light (70 x 55).
QImage loadPicture()
{
    QImage image = blankImage(70, 55);
    QPainter painter(&image);
    setupPainter(painter, 2.0);
    const QRectF rack(20, 4, 30, 47);
    painter.drawRoundedRect(rack, 3, 3);
    const double unitHeight = 11.0;
    for (int i = 0; i < 3; ++i) {
        const QRectF unit(rack.left() + 4, rack.top() + 5 + i * (unitHeight + 3), rack.width() - 8,
                          unitHeight);
        painter.setPen(QPen(kStroke, 1.4));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(unit);
        painter.setPen(Qt::NoPen);
        painter.setBrush(kStroke);
        painter.drawEllipse(QPointF(unit.right() - 4, unit.center().y()), 1.6, 1.6);
        painter.setPen(QPen(kStroke, 1.2));
        painter.drawLine(QPointF(unit.left() + 3, unit.center().y()),
                         QPointF(unit.right() - 9, unit.center().y()));
    }
    painter.setPen(QPen(kStroke, 2.0, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(QPointF(rack.left() + 4, rack.bottom()), QPointF(rack.left() + 4, rack.bottom() + 2));
    painter.drawLine(QPointF(rack.right() - 4, rack.bottom()), QPointF(rack.right() - 4, rack.bottom() + 2));
    return image;
}

// Converter box: a square split by its diagonal, the input kind in the upper
// left, the output kind in the lower right, and the caption below (70 x 55).
QImage converterPicture(bool acInput, const QString &caption)
{
    QImage image = blankImage(70, 55);
    QPainter painter(&image);
    setupPainter(painter, 2.0);

    const QRectF box(18, 3, 34, 34);
    painter.drawRoundedRect(box, 2, 2);
    painter.setPen(QPen(kStroke, 1.4));
    painter.drawLine(box.bottomLeft(), box.topRight());

    const QRectF upperLeft(box.left() + 3, box.top() + 5, 12, 7);
    const QRectF lowerRight(box.right() - 15, box.bottom() - 12, 12, 7);
    const auto drawAc = [&](const QRectF &r) { painter.drawPath(sinePath(r, 1.0)); };
    const auto drawDc = [&](const QRectF &r) {
        painter.drawLine(QPointF(r.left(), r.top() + 1.5), QPointF(r.right(), r.top() + 1.5));
        painter.drawLine(QPointF(r.left(), r.bottom() - 1.5), QPointF(r.right(), r.bottom() - 1.5));
    };
    painter.setPen(QPen(kStroke, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    if (acInput) {
        drawAc(upperLeft);
        drawDc(lowerRight);
    } else {
        drawDc(upperLeft);
        drawAc(lowerRight);
    }

    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(11);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(kStroke);
    painter.drawText(QRectF(0, 40, 70, 14), Qt::AlignCenter, caption);
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    const QString dir = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("image");
    QDir().mkpath(dir);

    const struct {
        const char *file;
        QImage image;
    } pictures[] = {
        {"INPUT.png", inputPicture()},
        {"LOAD.png", loadPicture()},
        {"REC.png", converterPicture(true, QStringLiteral("AC/DC"))},
        {"INV.png", converterPicture(false, QStringLiteral("DC/AC"))},
    };
    QTextStream out(stdout);
    int failures = 0;
    for (const auto &picture : pictures) {
        const QString path = QDir(dir).filePath(QString::fromLatin1(picture.file));
        if (picture.image.save(path, "PNG")) {
            out << "wrote " << path << '\n';
        } else {
            out << "cannot write " << path << '\n';
            ++failures;
        }
    }
    return failures == 0 ? 0 : 1;
}
