#ifndef RTTHREEGRAPHFORM_H
#define RTTHREEGRAPHFORM_H

#include <QMap>
#include <QVariant>
#include <QWidget>

namespace Ui {
class RTThreeGraphForm;
}

// Graphic page of a three-phase UPS: five gauges, a per-phase readout of the
// input and bypass, and a six-curve trend chart of the output voltages and
// loads of phases R, S and T with a legend of their current values.
class RTThreeGraphForm : public QWidget
{
    Q_OBJECT

public:
    explicit RTThreeGraphForm(QWidget *parent = nullptr);
    ~RTThreeGraphForm() override;

    // false re-initialises gauges, readouts, legend and curves; true leaves them alone.
    void InitRTChartFormInfo(bool flag);
    void InitRtThreeChart();
    void RefreshRtChartInfo(QMap<int, QVariant> map);

public slots:
    void Show_RtChart_View(QMap<int, QVariant> map);

private:
    void setupGauges();
    void showGauges(const QMap<int, QVariant> &map);
    void showReadouts(const QMap<int, QVariant> &map);
    void showCurves(const QMap<int, QVariant> &map);

    Ui::RTThreeGraphForm *ui;
};

#endif // RTTHREEGRAPHFORM_H
