#ifndef GAUGEDIALKEEPER_H
#define GAUGEDIALKEEPER_H

#include <QList>
#include <QObject>

#include <cstddef>

class DataChart;
class QEvent;
class QWidget;

// Sets up the gauges of a graphic page and keeps each dial's height in step
// with its width. A DataChart's radius is min(width / 2, height), so a fixed
// height a little above half the width lets the dial grow with the width the
// layout gives it and leaves room for the scale labels above the arc.
// Watches its gauges as an event filter; the page owns it.
class GaugeDialKeeper : public QObject
{
    Q_OBJECT
public:
    // Colour indexes of the gauge bands, as DataChart::setColor takes them.
    enum Band { Green = 0, Yellow = 1, Red = 2 };

    // Range, unit and colour bands of one gauge.
    struct Dial
    {
        double minimum;
        double maximum;
        const char *unit;
        QList<int> colors;
        QList<int> thresholds;
    };

    // One gauge of a page's generated interface class `Form` with its dial.
    template<typename Form>
    struct Gauge
    {
        DataChart *Form::*gauge;
        Dial dial;
    };

    explicit GaugeDialKeeper(QObject *parent = nullptr);

    // Applies `dial` to `gauge` and from now on keeps its proportions.
    void setUp(DataChart *gauge, const Dial &dial);

    // setUp() for every gauge of `table` on the interface object `ui`.
    template<typename Interface, typename Form, std::size_t N>
    void setUp(Interface *ui, const Gauge<Form> (&table)[N])
    {
        for (const Gauge<Form> &entry : table)
            setUp(ui->*entry.gauge, entry.dial);
    }

    // Height given to a dial of this width.
    static int dialHeight(int width);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static void keepProportions(QWidget *gauge);
};

#endif // GAUGEDIALKEEPER_H
