#ifndef RTDATAFORM_H
#define RTDATAFORM_H

#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>
#include <QVector>
#include <QWidget>

namespace Ui {
class RTDataForm;
}

// Real-time measurement table of one UPS: battery, input, output and bypass
// sections in a three-column table (section, item, value). The input, output
// and bypass sections switch on every refresh between one number per cell
// (single-phase) and "R/S/T" triples (three-phase), driven by the phase-count
// data points 8, 26 and 43.
//
// Usage: construct, call InitRTData() once, then RefreshRTDataInfo() from the
// GUI thread with every new data point map.
class RTDataForm : public QWidget
{
    Q_OBJECT

public:
    explicit RTDataForm(QWidget *parent = nullptr);
    ~RTDataForm() override;

    void setCurrentName(QString name);
    void InitRTData();
    void RefreshRTDataInfo(QMap<int, QVariant> map);
    void Show_RTData_View(QMap<int, QVariant> map);
    void InitRTDataFormInfo();

private:
    void setupContentsInfo();
    void setValueText(int row, const QString &text);
    void setItemLabel(int row, const QString &label);
    QString rowTitle(int id, bool threePhase) const;
    void updatePhaseLayout(const QMap<int, QVariant> &values);
    void setPhaseColumnsVisible(bool visible);

    Ui::RTDataForm *ui;
    bool inputSinglePhase;
    QString currentName;
};

#endif // RTDATAFORM_H
