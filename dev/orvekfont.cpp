#include "orvekfont.h"

#include <QMutex>
#include <QMutexLocker>

#include "upsalarms.h"
#include "upscatalogue.h"
#include "upsformat.h"
#include "upspoints.h"

QAtomicPointer<OrvekFont> OrvekFont::m_instance = nullptr;

namespace {

using namespace UpsPoint;

// Data titles in the dictionary's order: the single-phase titles, then the
// R/S/T titles (which no column uses: one title heads both layouts).
constexpr int kDataTitleIds[] = {
    BatteryStatus, SecondsOnBattery, RemainingMinutes, BatteryCapacity, BatteryVoltage, BatteryCurrent,
    BatteryTemperature, MainsFailures, InputVoltage, InputCurrent, InputFrequency, InputPower,
    OutputSource, OutputFrequency, OutputVoltage, OutputCurrent, OutputPower, OutputLoad,
    BypassFrequency, BypassVoltage, BypassCurrent, BypassPower,
};
constexpr int kThreePhaseTitleIds[] = {
    InputVoltage, InputCurrent, InputFrequency, InputPower, OutputVoltage, OutputCurrent,
    OutputPower, OutputLoad, BypassVoltage, BypassCurrent, BypassPower,
};
constexpr int kRatedTitleIds[] = {
    RatedInputVoltage, RatedInputFrequency, RatedOutputVoltage, RatedOutputFrequency, RatedActivePower,
    RatedApparentPower, RatedBatteryMinutes, BuzzerState, UndervoltagePoint, OvervoltagePoint,
    Manufacturer, Model, UpsSoftware, AttachedDevices, AgentSoftware, SystemName, AgentLocation,
};

// Where a data-log column departs from the data point table.
enum class LogRule {
    Plain,
    FirstPhaseForAll, // phase R's value stands for all three
    CommaBeforeT,     // "220/221,222"
    Unscaled,         // the stored number, in tenths
    AsStored,         // a signed quantity not reinterpreted
};

struct LogColumn
{
    int id;
    LogRule rule;
};

constexpr LogColumn kLogColumns[] = {
    {InputVoltage, LogRule::Plain},
    {InputFrequency, LogRule::FirstPhaseForAll},
    {BypassVoltage, LogRule::Plain},
    {BypassFrequency, LogRule::Plain},
    {OutputVoltage, LogRule::CommaBeforeT},
    {OutputCurrent, LogRule::Unscaled},
    {OutputPower, LogRule::Plain},
    {OutputLoad, LogRule::Plain},
    {OutputFrequency, LogRule::Plain},
    {OutputSource, LogRule::Plain},
    {BatteryCapacity, LogRule::Plain},
    {BatteryVoltage, LogRule::Plain},
    {BatteryCurrent, LogRule::AsStored},
    {BatteryTemperature, LogRule::Plain},
    {BatteryStatus, LogRule::Plain},
};

UpsFormat::Options logOptions(LogRule rule, bool threePhases)
{
    UpsFormat::Options options;
    options.phases = threePhases ? UpsFormat::Phases::Three : UpsFormat::Phases::Single;
    options.firstPhaseForAll = rule == LogRule::FirstPhaseForAll;
    if (rule == LogRule::CommaBeforeT)
        options.separators = "/,";
    options.scaled = rule != LogRule::Unscaled;
    options.reinterpretSign = rule != LogRule::AsStored;
    return options;
}

} // namespace

OrvekFont *OrvekFont::instance()
{
    OrvekFont *font = m_instance.loadAcquire();
    if (font)
        return font;
    static QMutex creation;
    QMutexLocker locker(&creation);
    font = m_instance.loadAcquire();
    if (!font) {
        font = new OrvekFont(nullptr); // lives until the process ends
        m_instance.storeRelease(font);
    }
    return font;
}

OrvekFont::OrvekFont(QObject *parent)
    : QObject(parent)
{
    for (int id : kDataTitleIds)
        dataLogTexts << title(UpsCatalogue::List::Titles, id);
    for (int id : kThreePhaseTitleIds)
        dataLogTexts << title(UpsCatalogue::List::ThreePhaseTitles, id);
    for (int id : kRatedTitleIds)
        ratedTexts << title(UpsCatalogue::List::Titles, id);
    batteryStatusTexts = codeTexts(UpsPoints::CodeList::BatteryStatus);
    outputSourceTexts = codeTexts(UpsPoints::CodeList::OutputSource);
    eventLogTexts = UpsAlarms::eventTexts(staticMetaObject.className());
}

QVector<QString> OrvekFont::codeTexts(UpsPoints::CodeList list)
{
    QVector<QString> translated;
    const UpsCatalogue::List texts = UpsPoints::codeList(list);
    for (int i = 0; i < UpsCatalogue::codeCount(texts); ++i)
        translated << UpsCatalogue::text(texts, staticMetaObject.className(), i);
    return translated;
}

QString OrvekFont::title(UpsCatalogue::List list, int id)
{
    return UpsCatalogue::text(list, staticMetaObject.className(), id);
}

QStringList OrvekFont::getDataLogDesc()
{
    QStringList titles;
    for (const LogColumn &column : kLogColumns)
        titles << title(UpsCatalogue::List::Titles, column.id);
    return titles;
}

QStringList OrvekFont::getEventLogDesc()
{
    return eventLogTexts;
}

QStringList OrvekFont::changeLogData(QMap<int, QVariant> data)
{
    // The input phase count lays out every multi-phase column, the output
    // and bypass ones too, although the device counts those phases itself.
    const bool three = UpsFormat::isThreePhase(data, UpsPoints::PhaseGroup::Input);
    QStringList row;
    for (const LogColumn &column : kLogColumns)
        row << UpsFormat::text(data, column.id, logOptions(column.rule, three));
    return row;
}
