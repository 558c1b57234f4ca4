#include "rateinfoform.h"
#include "ui_rateinfoform.h"

#include "datapointvalue.h"

#include <QFont>
#include <QGridLayout>
#include <QLabel>
#include <QLoggingCategory>
#include <QVBoxLayout>

#include "upscatalogue.h"
#include "upsformat.h"
#include "upspoints.h"

namespace {

Q_LOGGING_CATEGORY(lcRateInfo, "orvek.view.rateinfo")

constexpr float kUnitScale = 1.0f;
constexpr float kTenthScale = 0.1f;
constexpr int kRatedPowerMax = 9999999;
constexpr int kRatedPowerMin = 1;
// Longest byte text a kind-9 record may assemble; guards against a bad length.
constexpr int kMaxByteTextLength = 256;

constexpr int kLayoutMargin = 20;
constexpr int kLayoutSpacing = 20;
constexpr int kTitleIndent = 20;
constexpr int kTitleWeight = 75;
const char kTitleStyle[] = "background-color:#DDDFF5;";
const char kTitleFamily[] = "Microsoft YaHei";

QString decimalText(float v)
{
    return QString::asprintf("%.1f", double(v));
}

} // namespace

RateInfoForm::RateInfoForm(QWidget *parent)
    : QWidget(parent)
    , ui(new Ui::RateInfoForm)
{
    ui->setupUi(this);
    InitRateData();
}

RateInfoForm::~RateInfoForm()
{
    for (const PanelRef &panel : panels())
        qDeleteAll(*panel.params);
    delete ui;
}

ParameterInformation *RateInfoForm::addDataDesc(QList<ParameterInformation *> &list, QString name,
                                                QString value, QString unit, float scale)
{
    auto *p = new ParameterInformation;
    p->name = name;
    p->value = value;
    p->unit = unit;
    p->scale = scale;
    p->kind = ParameterInformation::KindInt;
    p->length = 0;
    p->phases = 1;
    list.append(p);
    return p;
}

ParameterInformation *RateInfoForm::addParam(QList<ParameterInformation *> &list, const QString &name,
                                             const QString &unit, float scale, int kind, int dataId)
{
    ParameterInformation *p = addDataDesc(list, name, tr("-"), unit, scale);
    p->kind = kind;
    p->dataId = dataId;
    return p;
}

namespace {

enum class Panel { Device, Battery, Input, Output, Bypass, Rated };

// One record of a panel: its unit (translated in RateInfoForm's context;
// null: no unit), scale, formatting kind and data point. The label is the
// point's title in this page's context (UpsCatalogue).
struct ParamRow
{
    Panel panel;
    const char *unit;
    float scale;
    int kind;
    int id;
};

using P = ParameterInformation;

// In panel order; the order within a panel is the order of its lines.
const ParamRow kParamRows[] = {
    {Panel::Device, nullptr, kUnitScale, P::KindText, UpsPoint::Model},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::Manufacturer},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::SystemName},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::AttachedDevices},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::UpsSoftware},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::AgentSoftware},
    {Panel::Device, nullptr, kUnitScale, P::KindText,
     UpsPoint::AgentLocation},
    {Panel::Battery, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kTenthScale, P::KindDecimal, UpsPoint::BatteryVoltage},
    {Panel::Battery, QT_TRANSLATE_NOOP("RateInfoForm", "A"),
     kTenthScale, P::KindDecimal, UpsPoint::BatteryCurrent},
    {Panel::Battery, QT_TRANSLATE_NOOP("RateInfoForm", "Min"), kUnitScale, P::KindInt, UpsPoint::RemainingMinutes},
    {Panel::Battery, QT_TRANSLATE_NOOP("RateInfoForm", "%"),
     kUnitScale, P::KindInt, UpsPoint::BatteryCapacity},
    {Panel::Battery, nullptr, kUnitScale, P::KindCode,
     UpsPoint::BatteryStatus},
    {Panel::Input, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kUnitScale, P::KindPhaseDecimal, UpsPoint::InputVoltage},
    {Panel::Input, QT_TRANSLATE_NOOP("RateInfoForm", "A"),
     kTenthScale, P::KindPhaseDecimal, UpsPoint::InputCurrent},
    {Panel::Input, QT_TRANSLATE_NOOP("RateInfoForm", "Hz"),
     kTenthScale, P::KindPhaseDecimal, UpsPoint::InputFrequency},
    {Panel::Output, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kUnitScale, P::KindPhaseDecimal, UpsPoint::OutputVoltage},
    {Panel::Output, QT_TRANSLATE_NOOP("RateInfoForm", "A"),
     kTenthScale, P::KindPhaseDecimal, UpsPoint::OutputCurrent},
    {Panel::Output, QT_TRANSLATE_NOOP("RateInfoForm", "Hz"),
     kTenthScale, P::KindDecimal, UpsPoint::OutputFrequency},
    {Panel::Output, QT_TRANSLATE_NOOP("RateInfoForm", "(k)W"),
     kUnitScale, P::KindInt, UpsPoint::OutputPower},
    {Panel::Output, QT_TRANSLATE_NOOP("RateInfoForm", "%"), kUnitScale, P::KindInt, UpsPoint::OutputLoad},
    {Panel::Output, nullptr, kUnitScale, P::KindCode,
     UpsPoint::OutputSource},
    {Panel::Bypass, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kUnitScale, P::KindPhaseDecimal, UpsPoint::BypassVoltage},
    {Panel::Bypass, QT_TRANSLATE_NOOP("RateInfoForm", "A"),
     kTenthScale, P::KindPhaseDecimal, UpsPoint::BypassCurrent},
    {Panel::Bypass, QT_TRANSLATE_NOOP("RateInfoForm", "Hz"),
     kTenthScale, P::KindDecimal, UpsPoint::BypassFrequency},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kUnitScale, P::KindDecimal, UpsPoint::RatedInputVoltage},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "Hz"),
     kTenthScale, P::KindDecimal, UpsPoint::RatedInputFrequency},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "V"),
     kUnitScale, P::KindDecimal, UpsPoint::RatedOutputVoltage},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "Hz"), kTenthScale, P::KindDecimal, UpsPoint::RatedOutputFrequency},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "W"),
     kUnitScale, P::KindLimitedInt, UpsPoint::RatedActivePower},
    {Panel::Rated, QT_TRANSLATE_NOOP("RateInfoForm", "VA"),
     kUnitScale, P::KindInt, UpsPoint::RatedApparentPower},
};

} // namespace

QList<ParameterInformation *> &RateInfoForm::paramList(int panel)
{
    QList<ParameterInformation *> *lists[] = {&deviceList, &batteryList, &inputList,
                                              &outputList, &bypassList,  &ratedList};
    return *lists[panel];
}

void RateInfoForm::buildParams()
{
    for (const ParamRow &row : kParamRows) {
        const QString name = UpsCatalogue::text(UpsCatalogue::List::Titles, staticMetaObject.className(), row.id);
        ParameterInformation *p = addParam(paramList(int(row.panel)), name,
                                           row.unit ? tr(row.unit) : QString(), row.scale, row.kind, row.id);
        if (row.id == UpsPoint::BatteryStatus) {
            p->addCombo(batteryStateTexts());
        } else if (row.id == UpsPoint::OutputSource) {
            p->addCombo({tr("None"), tr("Other Supply"), tr("None Supply"), tr("Utility Supply"),
                         tr("Bypass Supply"), tr("Battery Supply"), tr("Booster Supply"), tr("Reducer Supply")});
        } else if (row.kind == ParameterInformation::KindLimitedInt) {
            p->maxValue = kRatedPowerMax;
            p->minValue = kRatedPowerMin;
        }
    }
}

// Code 0 reads as "Normal" too. "Normal" appears three times: only its last
// code (9) survives in the combo map.
QStringList RateInfoForm::batteryStateTexts()
{
    int count = 0;
    UpsPoints::codeTexts(UpsPoints::CodeList::BatteryState, &count);
    QStringList states;
    for (int code = 0; code <= count; ++code)
        states << UpsFormat::codeText(UpsPoints::CodeList::BatteryState, code, UpsCode::BatteryStateNormalIndex,
                                      staticMetaObject.className());
    return states;
}

void RateInfoForm::InitRateData()
{
    buildParams();

    setObjectName(QStringLiteral("realDataTable"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(kLayoutMargin, kLayoutMargin, kLayoutMargin, 0);
    grid->setSpacing(kLayoutSpacing);

    for (const PanelRef &ref : panels()) {
        auto *panel = new QWidget(this);
        ShowPanalView(panel, tr(ref.title), *ref.params, *ref.labels);
        grid->addWidget(panel, ref.row, ref.column);
    }
    // Both columns share the width; the value texts decide the rest.
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
}

void RateInfoForm::ShowPanalView(QWidget *panel, QString title, QList<ParameterInformation *> params,
                                 QList<QLabel *> &valueLabels)
{
    auto *titleLabel = new QLabel(panel);
    titleLabel->setObjectName(QStringLiteral("PanelTitle"));
    titleLabel->setStyleSheet(QLatin1String(kTitleStyle));
    QFont titleFont;
    titleFont.setFamily(QLatin1String(kTitleFamily));
    titleFont.setWeight(kTitleWeight);
    titleLabel->setFont(titleFont);
    titleLabel->setText(title);
    titleLabel->setIndent(kTitleIndent);
    // The title keeps its height; panels sharing a grid row grow in their bodies.
    titleLabel->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);

    auto *body = new QWidget(panel);
    body->setObjectName(QStringLiteral("PanelBody"));

    auto *vbox = new QVBoxLayout(panel);
    vbox->setSpacing(0);
    vbox->setContentsMargins(0, 0, 0, 0);
    vbox->addWidget(titleLabel);
    vbox->addWidget(body);

    auto *grid = new QGridLayout(body);
    grid->setAlignment(Qt::AlignTop);
    for (int i = 0; i < params.size(); ++i) {
        const ParameterInformation *p = params.at(i);
        auto *key = new QLabel(body);
        key->setObjectName(QStringLiteral("PanalBodyKeyName"));
        key->setText(p->name);
        grid->addWidget(key, i, 0);

        auto *value = new QLabel(body);
        value->setObjectName(QStringLiteral("PanalBodyKeyValue"));
        value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        if (p->kind == ParameterInformation::KindText) {
            value->setWordWrap(true);
            value->setMinimumWidth(value->fontMetrics().averageCharWidth() * 16);
        }
        value->setText(p->unit.isEmpty() ? p->value : tr("%1 %2").arg(p->value, p->unit));
        grid->addWidget(value, i, 1);
        valueLabels.append(value);
    }
    grid->setColumnStretch(1, 1);
}

int RateInfoForm::rawInt(int id) const
{
    return DataPointValue::truncated(dataMap.value(id));
}

int RateInfoForm::scaledInt(const ParameterInformation *p, int id) const
{
    return DataPointValue::truncatedFloat(float(rawInt(id)) * p->scale);
}

float RateInfoForm::scaledDecimal(const ParameterInformation *p, int id) const
{
    return dataMap.value(id).toFloat() * p->scale;
}

QString RateInfoForm::byteText(const ParameterInformation *p) const
{
    const int length = qBound(0, p->length, kMaxByteTextLength);
    QByteArray bytes;
    for (int i = 0; i < length; ++i) {
        const char c = char(rawInt(p->dataId + i) & 0xFF);
        if (c == '\0')
            break;
        bytes.append(c);
    }
    return QString::fromLatin1(bytes);
}

QString RateInfoForm::codeText(const ParameterInformation *p) const
{
    const int code = rawInt(p->dataId);
    for (auto it = p->combo.constBegin(); it != p->combo.constEnd(); ++it) {
        if (it.value() == code)
            return it.key();
    }
    return QString();
}

QString RateInfoForm::getPvalue(ParameterInformation *p)
{
    if (!p)
        return QString();
    const int id = p->dataId;
    const bool three = p->phases == ParameterInformation::ThreePhases;
    QString text;
    switch (p->kind) {
    case ParameterInformation::KindInt:
        text = QString::number(scaledInt(p, id));
        break;
    case ParameterInformation::KindPhaseInt:
        text = three ? UpsFormat::joinPhases({QString::number(scaledInt(p, id)), QString::number(scaledInt(p, id + 1)),
                                              QString::number(scaledInt(p, id + 2))})
                     : QString::number(scaledInt(p, id));
        break;
    case ParameterInformation::KindPhasePairInt:
        text = three ? UpsFormat::joinPhases({QString::number(scaledInt(p, id)), QString::number(scaledInt(p, id + 2)),
                                              QString::number(scaledInt(p, id + 4))})
                     : QString::number(scaledInt(p, id));
        break;
    case ParameterInformation::KindLimitedInt: {
        const int n = scaledInt(p, id);
        text = (n > p->maxValue || n < p->minValue) ? UpsFormat::noReading() : QString::number(n);
        break;
    }
    case ParameterInformation::KindDecimal:
        text = decimalText(scaledDecimal(p, id));
        break;
    case ParameterInformation::KindPhaseDecimal:
        text = three ? UpsFormat::joinPhases({decimalText(scaledDecimal(p, id)), decimalText(scaledDecimal(p, id + 1)),
                                              decimalText(scaledDecimal(p, id + 2))})
                     : decimalText(scaledDecimal(p, id));
        break;
    case ParameterInformation::KindByteText:
        text = byteText(p);
        break;
    case ParameterInformation::KindText:
        text = dataMap.value(id).toString();
        break;
    case ParameterInformation::KindCode:
        text = codeText(p);
        break;
    default: // kinds 6..8 and unknown kinds show nothing
        break;
    }
    if (!p->unit.isEmpty())
        text += QLatin1Char(' ') + p->unit;
    return text;
}

// The six panels in the order they are built, with their grid cells.
QList<RateInfoForm::PanelRef> RateInfoForm::panels()
{
    return {
        {QT_TR_NOOP("DEVICE"), &deviceList, &deviceLabels, -1, 0, 0},
        {QT_TR_NOOP("INPUT"), &inputList, &inputLabels, UpsPoint::InputPhases, 1, 0},
        {QT_TR_NOOP("BATTERY"), &batteryList, &batteryLabels, -1, 2, 0},
        {QT_TR_NOOP("OUTPUT"), &outputList, &outputLabels, UpsPoint::OutputPhases, 0, 1},
        {QT_TR_NOOP("BYPASS"), &bypassList, &bypassLabels, UpsPoint::BypassPhases, 1, 1},
        {QT_TR_NOOP("RATE"), &ratedList, &ratedLabels, -1, 2, 1},
    };
}

void RateInfoForm::RefreshRateInfo(QMap<int, QVariant> map)
{
    if (map != dataMap)
        dataMap = map;
    for (const PanelRef &panel : panels()) {
        if (panel.phaseId >= 0) {
            const int phases = rawInt(panel.phaseId);
            for (ParameterInformation *p : qAsConst(*panel.params))
                p->phases = phases;
        }
        const int count = qMin(panel.params->size(), panel.labels->size());
        if (count != panel.params->size())
            qCWarning(lcRateInfo) << "value labels and records out of step" << panel.params->size()
                                  << panel.labels->size();
        for (int i = 0; i < count; ++i)
            panel.labels->at(i)->setText(getPvalue(panel.params->at(i)));
    }
}

void RateInfoForm::setCurrentName(QString name)
{
    currentName = name;
}

QLabel *RateInfoForm::valueLabelFor(const ParameterInformation *p) const
{
    // panels() hands out the lists for building; here they are only read.
    for (const PanelRef &panel : const_cast<RateInfoForm *>(this)->panels()) {
        const int i = panel.params->indexOf(const_cast<ParameterInformation *>(p));
        if (i >= 0 && i < panel.labels->size())
            return panel.labels->at(i);
    }
    return nullptr;
}
