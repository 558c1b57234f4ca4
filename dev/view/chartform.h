#ifndef CHARTFORM_H
#define CHARTFORM_H

#include <QMap>
#include <QString>
#include <QVariant>
#include <QWidget>

namespace Ui {
class ChartForm;
}

// Stack of the two graphic pages: index 0 the single-phase page, index 1 the
// three-phase page (current after construction). Initialisation and data
// refreshes reach only the current page; the hidden one keeps its last state.
class ChartForm : public QWidget
{
    Q_OBJECT

public:
    explicit ChartForm(QWidget *parent = nullptr);
    ~ChartForm() override;

    void initFormInfo(bool flag);
    void refreshFormInfo(QMap<int, QVariant> map);
    void setCurrentIndex(int index);
    int getCurrentIndex();
    void setCurrentName(QString name);

private:
    Ui::ChartForm *ui;
    QString currentName;
};

#endif // CHARTFORM_H
