#include "setinfoform.h"
#include "ui_setinfoform.h"

#include "msgbox.h"

#include <QButtonGroup>
#include <QFont>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <QSettings>

#include "inifilecheck.h"
#include "upscontract.h"

namespace {

Q_LOGGING_CATEGORY(lcSetInfo, "orvek.view.setinfo")

// Button group ids of the two choice groups.
enum TestChoice { TestSelf = 0, TestDischarge = 1, TestCancel = 2 };
enum OffChoice { OffShutdown = 0, OffStandby = 1, OffWakeUp = 2, OffRestart = 3 };

// Fixed arguments of the shutdown and restart requests.
const char kShutdownValue[] = "12";
const char kRestartValue[] = "60";
constexpr int kSecondsPerMinute = 60;

// Only this protocol offers standby for a number of minutes and restart.
constexpr int kStandbyProtocol = 2;

constexpr int kConfirmType = 1; // question with "Ok" and "Cancel"

const char kChoiceFamily[] = "Microsoft YaHei";
constexpr int kChoicePointSize = 11;
constexpr int kTitlePointSize = 18;
constexpr int kTitleWeight = 75;

const char kMinutesPattern[] = "^[0-9]{1,8}$";
const char kMinutesDefault[] = "60";

} // namespace

SetInfoForm::SetInfoForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::SetInfoForm)
{
    ui->setupUi(this);
    applyFonts();
    // Names a host style sheet can address; the slots are already connected.
    ui->label_device_test->setObjectName(QStringLiteral("DevBigTitle"));
    ui->label_onoff_setting->setObjectName(QStringLiteral("DevBigTitle"));
    ui->DevTest_OK->setObjectName(QStringLiteral("btnWhite"));
    ui->Offset_OK->setObjectName(QStringLiteral("btnWhite"));
    setupGroups();
    setupMinutesField();
    ui->DevTest_0->setChecked(true);
    ui->OffSet_0->setChecked(true);
}

SetInfoForm::~SetInfoForm()
{
    delete ui;
}

void SetInfoForm::applyFonts()
{
    QFont choiceFont;
    choiceFont.setFamily(QLatin1String(kChoiceFamily));
    choiceFont.setPointSize(kChoicePointSize);
    const QList<QWidget *> choices = {ui->DevTest_0, ui->DevTest_2, ui->DevTest_3, ui->OffSet_0,
                                      ui->OffSet_1,  ui->OffSet_2,  ui->OffSet_3};
    for (QWidget *w : choices)
        w->setFont(choiceFont);

    for (QWidget *title : {static_cast<QWidget *>(ui->label_device_test),
                           static_cast<QWidget *>(ui->label_onoff_setting)}) {
        QFont f = title->font();
        f.setWeight(kTitleWeight);
        f.setPointSize(kTitlePointSize);
        title->setFont(f);
    }
}

void SetInfoForm::setupGroups()
{
    ui->DevTest_Group->setId(ui->DevTest_0, TestSelf);
    ui->DevTest_Group->setId(ui->DevTest_2, TestDischarge);
    ui->DevTest_Group->setId(ui->DevTest_3, TestCancel);
    ui->OffSet_Group->setId(ui->OffSet_0, OffShutdown);
    ui->OffSet_Group->setId(ui->OffSet_1, OffStandby);
    ui->OffSet_Group->setId(ui->OffSet_2, OffWakeUp);
    ui->OffSet_Group->setId(ui->OffSet_3, OffRestart);
}

void SetInfoForm::setupMinutesField()
{
    ui->OffSet_1_Time->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QLatin1String(kMinutesPattern)), ui->OffSet_1_Time));
    ui->OffSet_1_Time->setText(QLatin1String(kMinutesDefault));
}

void SetInfoForm::setCurrentName(QString name)
{
    currentName = name;
}

QString SetInfoForm::configFilePath()
{
    return UpsConfig::filePath();
}

void SetInfoForm::InitSettingFormInfo()
{
    // A file QSettings cannot read safely counts as missing (protocol 0).
    int protocol = 0;
    if (!IniFileCheck::unsafeLine(configFilePath())) {
        QSettings settings(configFilePath(), QSettings::IniFormat);
        protocol = settings.value(UpsConfig::key(currentName, UpsConfig::Protocol)).toInt();
    }
    if (protocol == kStandbyProtocol)
        return; // nothing to change; rows hidden earlier stay hidden

    const QList<QWidget *> unsupported = {ui->OffSet_1, ui->OffSet_1_Time, ui->label_5, ui->OffSet_3};
    for (QWidget *w : unsupported)
        w->hide();
    // A hidden choice must not stay selected behind the user's back.
    if (ui->OffSet_1->isChecked() || ui->OffSet_3->isChecked())
        ui->OffSet_0->setChecked(true);
    qCDebug(lcSetInfo) << "protocol" << protocol << "of" << currentName << "offers no standby/restart";
}

void SetInfoForm::RefreshSettingInfo()
{
}

int SetInfoForm::control(int id, QString value)
{
    QMap<QString, QVariant> map;
    map.insert(UpsKey::Name, currentName);
    map.insert(UpsKey::ControlId, id);
    map.insert(UpsKey::ControlValue, value);
    emit postDEvent(id, map);
    return 0; // like CollectView::control, the result carries no meaning
}

bool SetInfoForm::confirm(const QString &question)
{
    auto *box = new MsgBox(kConfirmType, question);
    const int result = box->exec();
    delete box;
    return result == QDialog::Accepted;
}

void SetInfoForm::on_DevTest_OK_clicked()
{
    QAbstractButton *checked = ui->DevTest_Group->checkedButton();
    const QString question = (checked ? checked->text() : QString()) + QLatin1Char('?');
    if (!confirm(question))
        return;
    const int choice = ui->DevTest_Group->checkedId();
    qCDebug(lcSetInfo) << "on_DevTest_OK_clicked" << choice;
    switch (choice) {
    case TestDischarge:
        control(UpsControl::DischargeToLow, QString());
        break;
    case TestCancel:
        control(UpsControl::CancelTest, QString());
        break;
    default:
        control(UpsControl::SelfTest, QString());
        break;
    }
}

void SetInfoForm::on_Offset_OK_clicked()
{
    QAbstractButton *checked = ui->OffSet_Group->checkedButton();
    const QString question = (checked ? checked->text() : QString()) + QLatin1Char('?');
    if (!confirm(question))
        return;
    const int choice = ui->OffSet_Group->checkedId();
    qCDebug(lcSetInfo) << "on_Offset_OK_clicked-------------------------------------" << choice;
    const int minutes = ui->OffSet_1_Time->text().toInt(nullptr, 10); // invalid or empty: 0
    switch (choice) {
    case OffShutdown:
        control(UpsControl::Shutdown, QLatin1String(kShutdownValue));
        break;
    case OffStandby:
        control(UpsControl::Standby, QString::number(minutes * kSecondsPerMinute));
        break;
    case OffWakeUp:
        control(UpsControl::CancelShutdown, QString());
        break;
    case OffRestart:
        control(UpsControl::Standby, QLatin1String(kRestartValue));
        break;
    default:
        break;
    }
}
