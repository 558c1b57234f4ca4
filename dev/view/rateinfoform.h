#ifndef RATEINFOFORM_H
#define RATEINFOFORM_H

#include <QList>
#include <QMap>
#include <QPalette>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QWidget>

#include "parameterinformation.h"

class QLabel;

namespace Ui {
class RateInfoForm;
}

// Detail page of the device view: six titled panels (identity, input,
// battery, output, bypass, rated values) listing each parameter with its
// current value and unit. Every refresh rewrites the value texts from the
// whole data point map.
class RateInfoForm : public QWidget
{
    Q_OBJECT

public:
    explicit RateInfoForm(QWidget *parent = nullptr);
    ~RateInfoForm() override;

    void InitRateData();
    ParameterInformation *addDataDesc(QList<ParameterInformation *> &list, QString name, QString value,
                                      QString unit, float scale);
    void ShowPanalView(QWidget *panel, QString title, QList<ParameterInformation *> params,
                       QList<QLabel *> &valueLabels);
    QString getPvalue(ParameterInformation *p);
    void RefreshRateInfo(QMap<int, QVariant> map);
    void setCurrentName(QString name);

    QString currentName;

    // Read access for the view's owner and for tests.
    const QList<ParameterInformation *> &deviceParams() const { return deviceList; }
    const QList<ParameterInformation *> &batteryParams() const { return batteryList; }
    const QList<ParameterInformation *> &inputParams() const { return inputList; }
    const QList<ParameterInformation *> &outputParams() const { return outputList; }
    const QList<ParameterInformation *> &bypassParams() const { return bypassList; }
    const QList<ParameterInformation *> &ratedParams() const { return ratedList; }
    // The value label showing the record, or null.
    QLabel *valueLabelFor(const ParameterInformation *p) const;
    QMap<int, QVariant> lastData() const { return dataMap; }

private:
    struct PanelRef {
        const char *title; // translated in this class's context
        QList<ParameterInformation *> *params;
        QList<QLabel *> *labels;
        int phaseId; // data point holding the panel's phase count, or -1
        int row;
        int column;
    };

    void buildParams();
    QList<ParameterInformation *> &paramList(int panel);
    static QStringList batteryStateTexts();
    ParameterInformation *addParam(QList<ParameterInformation *> &list, const QString &name,
                                   const QString &unit, float scale, int kind, int dataId);
    QList<PanelRef> panels();
    int rawInt(int id) const;
    int scaledInt(const ParameterInformation *p, int id) const;
    float scaledDecimal(const ParameterInformation *p, int id) const;
    QString byteText(const ParameterInformation *p) const;
    QString codeText(const ParameterInformation *p) const;

    Ui::RateInfoForm *ui;

    QList<ParameterInformation *> deviceList;
    QList<ParameterInformation *> batteryList;
    QList<ParameterInformation *> inputList;
    QList<ParameterInformation *> outputList;
    QList<ParameterInformation *> bypassList;
    QList<ParameterInformation *> ratedList;

    QList<QLabel *> deviceLabels;
    QList<QLabel *> batteryLabels;
    QList<QLabel *> inputLabels;
    QList<QLabel *> outputLabels;
    QList<QLabel *> bypassLabels;
    QList<QLabel *> ratedLabels;

    QMap<int, QVariant> dataMap;
    QPalette palette;
};

#endif // RATEINFOFORM_H
