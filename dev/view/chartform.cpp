#include "chartform.h"
#include "ui_chartform.h"

namespace {

constexpr int kSinglePhasePage = 0;

} // namespace

ChartForm::ChartForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::ChartForm)
{
    ui->setupUi(this);
}

ChartForm::~ChartForm()
{
    delete ui;
}

void ChartForm::initFormInfo(bool flag)
{
    if (ui->stackedWidget->currentIndex() == kSinglePhasePage)
        ui->page_single->InitRTChartFormInfo(flag);
    else
        ui->page_three->InitRTChartFormInfo(flag);
}

void ChartForm::refreshFormInfo(QMap<int, QVariant> map)
{
    if (ui->stackedWidget->currentIndex() == kSinglePhasePage)
        ui->page_single->RefreshRtSingleChartInfo(map);
    else
        ui->page_three->RefreshRtChartInfo(map);
}

void ChartForm::setCurrentIndex(int index)
{
    ui->stackedWidget->setCurrentIndex(index);
}

int ChartForm::getCurrentIndex()
{
    return ui->stackedWidget->currentIndex();
}

void ChartForm::setCurrentName(QString name)
{
    currentName = name;
}
