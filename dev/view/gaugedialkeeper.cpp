#include "gaugedialkeeper.h"

#include "datachart.h"

#include <QEvent>
#include <QString>
#include <QWidget>

namespace {

// Pixels above half the width for the scale labels over the arc.
constexpr int kDialLabelHeadroom = 8;
constexpr int kDialMinHeight = 60;
constexpr int kDialMaxHeight = 200;

} // namespace

GaugeDialKeeper::GaugeDialKeeper(QObject *parent)
    : QObject(parent)
{
}

void GaugeDialKeeper::setUp(DataChart *gauge, const Dial &dial)
{
    gauge->setMinValue(dial.minimum);
    gauge->setMaxValue(dial.maximum);
    gauge->setUnitText(QString::fromLatin1(dial.unit));
    gauge->setRadioValue(dial.colors, dial.thresholds);
    gauge->installEventFilter(this);
}

int GaugeDialKeeper::dialHeight(int width)
{
    return qBound(kDialMinHeight, width / 2 + kDialLabelHeadroom, kDialMaxHeight);
}

bool GaugeDialKeeper::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        if (auto *gauge = qobject_cast<DataChart *>(watched))
            keepProportions(gauge);
    }
    return QObject::eventFilter(watched, event);
}

void GaugeDialKeeper::keepProportions(QWidget *gauge)
{
    // Only the width drives the height, so the layout settles after one pass.
    const int height = dialHeight(gauge->width());
    if (gauge->minimumHeight() != height || gauge->maximumHeight() != height)
        gauge->setFixedHeight(height);
}
