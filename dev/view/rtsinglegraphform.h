#ifndef RTSINGLEGRAPHFORM_H
#define RTSINGLEGRAPHFORM_H

#include <QMap>
#include <QVariant>
#include <QWidget>

namespace Ui {
class RTSingleGraphForm;
}

// Graphic page of a single-phase UPS: six gauges (battery capacity, output
// load, temperature and the input, output and bypass frequencies) above a
// trend chart of the input, output, battery and bypass voltages with a
// legend row that repeats each curve's current value.
class RTSingleGraphForm : public QWidget
{
    Q_OBJECT

public:
    explicit RTSingleGraphForm(QWidget *parent = nullptr);
    ~RTSingleGraphForm() override;

    // false re-initialises gauges, legend and curves; true leaves them alone.
    void InitRTChartFormInfo(bool flag);
    void InitRtSingleChart();
    void RefreshRtSingleChartInfo(QMap<int, QVariant> map);

public slots:
    void Show_RtChart_View(QMap<int, QVariant> map);

private:
    void setupGauges();
    void setupCaptions();

    Ui::RTSingleGraphForm *ui;
};

#endif // RTSINGLEGRAPHFORM_H
