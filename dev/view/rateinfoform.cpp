#include "rateinfoform.h"
#include "ui_rateinfoform.h"

#include "datapointvalue.h"

#include <QFont>
#include <QGridLayout>
#include <QLabel>
#include <QLoggingCategory>
#include <QVBoxLayout>

namespace {

Q_LOGGING_CATEGORY(lcRateInfo, "orvek.view.rateinfo")

// Data point ids read by this page (input registers 0x0101 + id, identity blocks 4000..4006).
enum DataPointId {
    IdBatteryState = 0,
    IdRemainTime = 2,
    IdCapacity = 3,
    IdBatteryVoltage = 4,
    IdBatteryCurrent = 5,
    IdInputPhases = 8,
    IdInputVoltage = 9,
    IdInputCurrent = 12,
    IdInputFrequency = 15,
    IdOutputSource = 24,
    IdOutputFrequency = 25,
    IdOutputPhases = 26,
    IdOutputVoltage = 27,
    IdOutputCurrent = 30,
    IdOutputPower = 33,
    IdOutputLoad = 39,
    IdBypassFrequency = 42,
    IdBypassPhases = 43,
    IdBypassVoltage = 44,
    IdBypassCurrent = 47,
    IdRatedInputVoltage = 56,
    IdRatedInputFrequency = 57,
    IdRatedOutputVoltage = 58,
    IdRatedOutputFrequency = 59,
    IdRatedApparentPower = 60,
    IdRatedActivePower = 62,
    IdModel = 4000,
    IdManufacturer = 4001,
    IdSystemName = 4002,
    IdAttachedDevices = 4003,
    IdUpsSoftware = 4004,
    IdAgentSoftware = 4005,
    IdAgentLocation = 4006
};

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

void RateInfoForm::buildDeviceParams()
{
    const int text = ParameterInformation::KindText;
    addParam(deviceList, tr("UPS model"), QString(), kUnitScale, text, IdModel);
    addParam(deviceList, tr("Manufacturer name"), QString(), kUnitScale, text, IdManufacturer);
    addParam(deviceList, tr("System name"), QString(), kUnitScale, text, IdSystemName);
    addParam(deviceList, tr("UPS ident attached devices"), QString(), kUnitScale, text, IdAttachedDevices);
    addParam(deviceList, tr("UPS software version"), QString(), kUnitScale, text, IdUpsSoftware);
    addParam(deviceList, tr("Agent software version"), QString(), kUnitScale, text, IdAgentSoftware);
    addParam(deviceList, tr("Agent location"), QString(), kUnitScale, text, IdAgentLocation);
}

void RateInfoForm::buildBatteryParams()
{
    addParam(batteryList, tr("battery voltage:"), tr("V"), kTenthScale, ParameterInformation::KindDecimal,
             IdBatteryVoltage);
    addParam(batteryList, tr("battery current:"), tr("A"), kTenthScale, ParameterInformation::KindDecimal,
             IdBatteryCurrent);
    addParam(batteryList, tr("remain discharge time:"), tr("Min"), kUnitScale, ParameterInformation::KindInt,
             IdRemainTime);
    addParam(batteryList, tr("battery capacity:"), tr("%"), kUnitScale, ParameterInformation::KindInt,
             IdCapacity);
    ParameterInformation *state = addParam(batteryList, tr("battery state:"), QString(), kUnitScale,
                                           ParameterInformation::KindCode, IdBatteryState);
    // "Normal" appears three times: only its last code (9) survives in the map.
    state->addCombo({tr("Normal"), tr("Unknown"), tr("Normal"), tr("Low"), tr("Depleted"), tr("Selftest"),
                     tr("Boost"), tr("Floating"), tr("Discharge"), tr("Normal")});
}

void RateInfoForm::buildInputParams()
{
    const int phased = ParameterInformation::KindPhaseDecimal;
    addParam(inputList, tr("input voltage:"), tr("V"), kUnitScale, phased, IdInputVoltage);
    addParam(inputList, tr("input current:"), tr("A"), kTenthScale, phased, IdInputCurrent);
    addParam(inputList, tr("input frequency:"), tr("Hz"), kTenthScale, phased, IdInputFrequency);
}

void RateInfoForm::buildOutputParams()
{
    const int phased = ParameterInformation::KindPhaseDecimal;
    addParam(outputList, tr("output voltage:"), tr("V"), kUnitScale, phased, IdOutputVoltage);
    addParam(outputList, tr("output current:"), tr("A"), kTenthScale, phased, IdOutputCurrent);
    addParam(outputList, tr("output frequency:"), tr("Hz"), kTenthScale, ParameterInformation::KindDecimal,
             IdOutputFrequency);
    addParam(outputList, tr("output power:"), tr("(k)W"), kUnitScale, ParameterInformation::KindInt,
             IdOutputPower);
    addParam(outputList, tr("output load percentage:"), tr("%"), kUnitScale, ParameterInformation::KindInt,
             IdOutputLoad);
    ParameterInformation *mode = addParam(outputList, tr("Output Mode:"), QString(), kUnitScale,
                                          ParameterInformation::KindCode, IdOutputSource);
    mode->addCombo({tr("None"), tr("Other Supply"), tr("None Supply"), tr("Utility Supply"), tr("Bypass Supply"),
                    tr("Battery Supply"), tr("Booster Supply"), tr("Reducer Supply")});
}

void RateInfoForm::buildBypassParams()
{
    addParam(bypassList, tr("bypass voltage:"), tr("V"), kUnitScale, ParameterInformation::KindPhaseDecimal,
             IdBypassVoltage);
    addParam(bypassList, tr("bypass current:"), tr("A"), kTenthScale, ParameterInformation::KindPhaseDecimal,
             IdBypassCurrent);
    addParam(bypassList, tr("bypass frequency:"), tr("Hz"), kTenthScale, ParameterInformation::KindDecimal,
             IdBypassFrequency);
}

void RateInfoForm::buildRatedParams()
{
    const int dec = ParameterInformation::KindDecimal;
    addParam(ratedList, tr("Rated input voltage"), tr("V"), kUnitScale, dec, IdRatedInputVoltage);
    addParam(ratedList, tr("Rated input frequency"), tr("Hz"), kTenthScale, dec, IdRatedInputFrequency);
    addParam(ratedList, tr("Rated output voltage"), tr("V"), kUnitScale, dec, IdRatedOutputVoltage);
    addParam(ratedList, tr("Rated output frequency"), tr("Hz"), kTenthScale, dec, IdRatedOutputFrequency);
    ParameterInformation *active = addParam(ratedList, tr("Rated active power"), tr("W"), kUnitScale,
                                            ParameterInformation::KindLimitedInt, IdRatedActivePower);
    active->maxValue = kRatedPowerMax;
    active->minValue = kRatedPowerMin;
    addParam(ratedList, tr("Rated apparent power"), tr("VA"), kUnitScale, ParameterInformation::KindInt,
             IdRatedApparentPower);
}

void RateInfoForm::InitRateData()
{
    buildDeviceParams();
    buildBatteryParams();
    buildInputParams();
    buildOutputParams();
    buildBypassParams();
    buildRatedParams();

    setObjectName(QStringLiteral("realDataTable"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(kLayoutMargin, kLayoutMargin, kLayoutMargin, 0);
    grid->setSpacing(kLayoutSpacing);

    struct Placement {
        QString title;
        QList<ParameterInformation *> *params;
        QList<QLabel *> *labels;
        int row;
        int column;
    };
    const Placement placements[] = {
        {tr("DEVICE"), &deviceList, &deviceLabels, 0, 0},
        {tr("INPUT"), &inputList, &inputLabels, 1, 0},
        {tr("BATTERY"), &batteryList, &batteryLabels, 2, 0},
        {tr("OUTPUT"), &outputList, &outputLabels, 0, 1},
        {tr("BYPASS"), &bypassList, &bypassLabels, 1, 1},
        {tr("RATE"), &ratedList, &ratedLabels, 2, 1},
    };
    for (const Placement &pl : placements) {
        auto *panel = new QWidget(this);
        ShowPanalView(panel, pl.title, *pl.params, *pl.labels);
        grid->addWidget(panel, pl.row, pl.column);
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
        text = three ? QStringLiteral("%1/%2/%3")
                           .arg(scaledInt(p, id))
                           .arg(scaledInt(p, id + 1))
                           .arg(scaledInt(p, id + 2))
                     : QString::number(scaledInt(p, id));
        break;
    case ParameterInformation::KindPhasePairInt:
        text = three ? QStringLiteral("%1/%2/%3")
                           .arg(scaledInt(p, id))
                           .arg(scaledInt(p, id + 2))
                           .arg(scaledInt(p, id + 4))
                     : QString::number(scaledInt(p, id));
        break;
    case ParameterInformation::KindLimitedInt: {
        const int n = scaledInt(p, id);
        text = (n > p->maxValue || n < p->minValue) ? QStringLiteral("--") : QString::number(n);
        break;
    }
    case ParameterInformation::KindDecimal:
        text = decimalText(scaledDecimal(p, id));
        break;
    case ParameterInformation::KindPhaseDecimal:
        text = three ? QStringLiteral("%1/%2/%3")
                           .arg(decimalText(scaledDecimal(p, id)),
                                decimalText(scaledDecimal(p, id + 1)),
                                decimalText(scaledDecimal(p, id + 2)))
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

QList<RateInfoForm::PanelRef> RateInfoForm::panels()
{
    return {
        {&deviceList, &deviceLabels, -1},
        {&batteryList, &batteryLabels, -1},
        {&inputList, &inputLabels, IdInputPhases},
        {&outputList, &outputLabels, IdOutputPhases},
        {&bypassList, &bypassLabels, IdBypassPhases},
        {&ratedList, &ratedLabels, -1},
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
    const QList<QPair<const QList<ParameterInformation *> *, const QList<QLabel *> *>> all = {
        {&deviceList, &deviceLabels}, {&batteryList, &batteryLabels}, {&inputList, &inputLabels},
        {&outputList, &outputLabels}, {&bypassList, &bypassLabels},   {&ratedList, &ratedLabels},
    };
    for (const auto &pair : all) {
        const int i = pair.first->indexOf(const_cast<ParameterInformation *>(p));
        if (i >= 0 && i < pair.second->size())
            return pair.second->at(i);
    }
    return nullptr;
}
