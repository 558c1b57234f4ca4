#ifndef SETINFOFORM_H
#define SETINFOFORM_H

#include <QMap>
#include <QString>
#include <QVariant>
#include <QWidget>

namespace Ui {
class SetInfoForm;
}

// "Control" page of the device view: device tests (self-test, discharge test,
// cancel) and shutdown settings (shutdown, standby for some minutes, wake up,
// restart). Each choice is confirmed in a dialog and then leaves as a control
// request through postDEvent, with the control id as event type.
class SetInfoForm : public QWidget
{
    Q_OBJECT

public:
    explicit SetInfoForm(QWidget *parent = nullptr);
    ~SetInfoForm() override;

    void setCurrentName(QString name);
    // Shows only the choices the configured protocol supports.
    void InitSettingFormInfo();
    void RefreshSettingInfo();

    // Path of the host's device file below the application directory.
    static QString configFilePath();

    QString currentName;

signals:
    void postDEvent(int type, QMap<QString, QVariant> map);

public slots:
    int control(int id, QString value);

private slots:
    void on_DevTest_OK_clicked();
    void on_Offset_OK_clicked();

private:
    void applyFonts();
    void setupGroups();
    void setupMinutesField();
    bool confirm(const QString &question);

    Ui::SetInfoForm *ui;
};

#endif // SETINFOFORM_H
