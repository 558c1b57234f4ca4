#include "orvekfont.h"

#include <QMutex>
#include <QMutexLocker>

QAtomicPointer<OrvekFont> OrvekFont::m_instance = nullptr;

namespace {

// Data-log columns, as indexes into the data titles.
constexpr int kLogColumns[] = {8, 10, 19, 18, 14, 15, 16, 17, 13, 12, 3, 4, 5, 6, 0};

// Data point ids read by the data-log row.
enum LogId {
    IdBatteryState = 0,
    IdCapacity = 3,
    IdBatteryVoltage = 4,
    IdBatteryCurrent = 5,
    IdBatteryTemperature = 6,
    IdInputPhases = 8,
    IdInputVoltage = 9,
    IdInputFrequency = 15,
    IdOutputSource = 24,
    IdOutputFrequency = 25,
    IdOutputVoltage = 27,
    IdOutputCurrent = 30,
    IdOutputPower = 33,
    IdOutputLoad = 39,
    IdBypassFrequency = 42,
    IdBypassVoltage = 44,
};
constexpr int kThreePhase = 3;

// Text at code - 1, or the first text when the code is outside the list.
QString codeText(const QVector<QString> &texts, int code)
{
    const int index = code - 1;
    return index >= 0 && index < texts.size() ? texts.at(index) : texts.value(0);
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
    fillDataLogTexts();
    fillRatedTexts();
    fillCodeTexts();
    fillEventLogTexts();
}

void OrvekFont::fillDataLogTexts()
{
    dataLogTexts = {
        tr("Battery state"),
        tr("Time on battery(s)"),
        tr("Remaining battery time(Min)"),
        tr("Remaining battery capacity(%)"),
        tr("Battery voltage(V)"),
        tr("Battery current(A)"),
        tr("Battery temperature(C)"),
        tr("Number of mains failure"),
        tr("Input voltage(V)"),
        tr("Input current(A)"),
        tr("Input frequency(Hz)"),
        tr("Input power(W)"),
        tr("Output mode"),
        tr("Output frequency(Hz)"),
        tr("Output voltage(V)"),
        tr("Output current(A)"),
        tr("Output power(W)"),
        tr("Output load(%)"),
        tr("Bypass frequency(Hz)"),
        tr("Bypass voltage(V)"),
        tr("Bypass current(A)"),
        tr("Bypass power(W)"),
        tr("Input voltage R/S/T(V)"),
        tr("Input current R/S/T(A)"),
        tr("Input frequency R/S/T(Hz)"),
        tr("Input power R/S/T(W)"),
        tr("Output voltage R/S/T(V)"),
        tr("Output current R/S/T(A)"),
        tr("Output power R/S/T(W)"),
        tr("Output load R/S/T(%)"),
        tr("Bypass voltage R/S/T(V)"),
        tr("Bypass current R/S/T(A)"),
        tr("Bypass power R/S/T(W)"),
    };
}

void OrvekFont::fillRatedTexts()
{
    ratedTexts = {
        tr("Rated input voltage(V)"),
        tr("Rated input frequency(Hz)"),
        tr("Rated output voltage(V)"),
        tr("Rated output frequency(Hz)"),
        tr("Rated active power(W)"),
        tr("Rated apparent power(VA)"),
        tr("Rated battery-powered time(min)"),
        tr("Buzzer state"),
        tr("Undervoltage point(V)"),
        tr("Overvoltage point(V)"),
        tr("Manufacturer name"),
        tr("UPS model"),
        tr("UPS software version"),
        tr("UPS ident attached devices"),
        tr("Agent software version"),
        tr("System name"),
        tr("Agent location"),
    };
}

void OrvekFont::fillCodeTexts()
{
    batteryStatusTexts = {tr("Unknown"), tr("Normal"), tr("Low"), tr("Depleted")};
    outputSourceTexts = {
        tr("Other supply"),   tr("None supply"),    tr("Utility supply"), tr("Bypass supply"),
        tr("Battery supply"), tr("Booster supply"), tr("Reducer supply"),
    };
}

void OrvekFont::fillEventLogTexts()
{
    // Ids 0..53 are raised alarms, 54..107 the matching cleared texts (id + 54).
    // Empty slots and the two "... end" texts stay untranslated.
    eventLogTexts = {
        tr("Communication between agent and UPS fault"),
        tr("Battery fault"),
        tr("Battery powered"),
        tr("Battery low"),
        tr("Battery EOD"),
        tr("Temperature overrun MAX-value"),
        tr("Input fault"),
        tr("Output fault"),
        tr("Load overrun MAX-value"),
        tr("Bypass powered"),
        tr("Bypass fault"),
        tr("The UPS output has shutdown as requested"),
        tr("The entire UPS has shutdown as commanded"),
        tr("Charger subsystem fault"),
        tr("The output of the UPS is in the off state"),
        tr("The UPS system is in the off state"),
        tr("Fan fault"),
        tr("Fuse fault"),
        tr("UPS fault"),
        tr("Last diagnostic test failed"),
        tr("Communications between the agent and the UPS fault"),
        tr("UPS shutdown after delay countdown is underway"),
        tr("The UPS will turn off power to the load"),
        tr("A test is in progress"),
        QString(),
        QString(),
        tr("Battery Discharge"),
        tr("Battery equalization"),
        tr("Battery switch open"),
        tr("Input switch open"),
        tr("Output switch open"),
        tr("Bypass switch open"),
        QString(),
        QString(),
    };
    // Each text is spelled out so that translators see it whole.
    eventLogTexts << tr("Temperature and humidity module 1 communication lost")
                  << tr("Temperature and humidity module 1 temperature is too high")
                  << tr("Temperature and humidity module 1 temperature is too low")
                  << tr("Temperature and humidity module 1 humidity is too high")
                  << tr("Temperature and humidity module 1 humidity is too low")
                  << tr("Temperature and humidity module 2 communication lost")
                  << tr("Temperature and humidity module 2 temperature is too high")
                  << tr("Temperature and humidity module 2 temperature is too low")
                  << tr("Temperature and humidity module 2 humidity is too high")
                  << tr("Temperature and humidity module 2 humidity is too low")
                  << tr("Temperature and humidity module 3 communication lost")
                  << tr("Temperature and humidity module 3 temperature is too high")
                  << tr("Temperature and humidity module 3 temperature is too low")
                  << tr("Temperature and humidity module 3 humidity is too high")
                  << tr("Temperature and humidity module 3 humidity is too low")
                  << tr("Temperature and humidity module 4 communication lost")
                  << tr("Temperature and humidity module 4 temperature is too high")
                  << tr("Temperature and humidity module 4 temperature is too low")
                  << tr("Temperature and humidity module 4 humidity is too high")
                  << tr("Temperature and humidity module 4 humidity is too low");

    eventLogTexts << tr("Communications between agent and UPS normal")
                  << tr("Battery normal")
                  << tr("Utility supply normal")
                  << tr("Battery voltage normal")
                  << tr("Battery resume")
                  << tr("Temperature normal")
                  << tr("Input normal")
                  << tr("Output normal")
                  << tr("The output load normal")
                  << tr("Inverter operation")
                  << tr("Bypass normal")
                  << tr("The UPS output not shutdown as requested")
                  << tr("The entire UPS not shutdown as commanded")
                  << tr("Charger subsystem normal")
                  << tr("UPS output on")
                  << tr("UPS on")
                  << tr("Fan normal")
                  << tr("Fuse normal")
                  << tr("UPS normal")
                  << tr("Last diagnostic test success")
                  << tr("UPS is not awaiting the return of input power")
                  << tr("UPS shutdown after delay ended")
                  << tr("The UPS will not turn off power to the load")
                  << tr("No a test is in progress")
                  << QString()
                  << QString()
                  << QStringLiteral("Battery Discharge end")
                  << QStringLiteral("Battery equalization end")
                  << tr("Battery switch close")
                  << tr("Input switch close")
                  << tr("Output switch close")
                  << tr("Bypass switch close")
                  << QString()
                  << QString();
    // Module 2 words its temperature text without "is"; the "normal" texts
    // answer both the too-high and the too-low alarm.
    eventLogTexts << tr("Temperature and humidity module 1 communication normal")
                  << tr("Temperature and humidity module 1 temperature is normal")
                  << tr("Temperature and humidity module 1 temperature is normal")
                  << tr("Temperature and humidity module 1 humidity is normal")
                  << tr("Temperature and humidity module 1 humidity is normal")
                  << tr("Temperature and humidity module 2 communication normal")
                  << tr("Temperature and humidity module 2 temperature normal")
                  << tr("Temperature and humidity module 2 temperature normal")
                  << tr("Temperature and humidity module 2 humidity is normal")
                  << tr("Temperature and humidity module 2 humidity is normal")
                  << tr("Temperature and humidity module 3 communication normal")
                  << tr("Temperature and humidity module 3 temperature is normal")
                  << tr("Temperature and humidity module 3 temperature is normal")
                  << tr("Temperature and humidity module 3 humidity is normal")
                  << tr("Temperature and humidity module 3 humidity is normal")
                  << tr("Temperature and humidity module 4 communication normal")
                  << tr("Temperature and humidity module 4 temperature is normal")
                  << tr("Temperature and humidity module 4 temperature is normal")
                  << tr("Temperature and humidity module 4 humidity is normal")
                  << tr("Temperature and humidity module 4 humidity is normal");
}

QStringList OrvekFont::getDataLogDesc()
{
    QStringList titles;
    for (int index : kLogColumns)
        titles << dataLogTexts.value(index);
    return titles;
}

QStringList OrvekFont::getEventLogDesc()
{
    return eventLogTexts;
}

QStringList OrvekFont::changeLogData(QMap<int, QVariant> data)
{
    auto i = [&data](int id) { return data.value(id).toInt(); };
    auto tenth = [&data](int id) { return data.value(id).toInt() / 10.0; };
    auto f = [&data](int id) { return double(data.value(id).toFloat()); };
    // The input phase count selects the layout of every multi-phase column.
    const bool three = i(IdInputPhases) == kThreePhase;

    QStringList row;
    if (three) {
        row << QStringLiteral("%1/%2/%3").arg(i(IdInputVoltage)).arg(i(IdInputVoltage + 1)).arg(i(IdInputVoltage + 2));
        const double inFreq = tenth(IdInputFrequency); // phase R's frequency stands for all three
        row << QString::asprintf("%.1f/%.1f/%.1f", inFreq, inFreq, inFreq);
        row << QString::asprintf("%d/%d/%d", i(IdBypassVoltage), i(IdBypassVoltage + 1), i(IdBypassVoltage + 2));
    } else {
        row << QString::asprintf("%d", i(IdInputVoltage));
        row << QString::asprintf("%.1f", tenth(IdInputFrequency));
        row << QString::asprintf("%d", i(IdBypassVoltage));
    }
    row << QString::asprintf("%.1f", tenth(IdBypassFrequency));
    if (three) {
        row << QString::asprintf("%d/%d,%d", i(IdOutputVoltage), i(IdOutputVoltage + 1), i(IdOutputVoltage + 2));
        // Output currents are logged unscaled.
        row << QString::asprintf("%.1f/%.1f/%.1f", f(IdOutputCurrent), f(IdOutputCurrent + 1), f(IdOutputCurrent + 2));
        row << QStringLiteral("%1/%2/%3").arg(i(IdOutputPower)).arg(i(IdOutputPower + 2)).arg(i(IdOutputPower + 4));
        row << QStringLiteral("%1/%2/%3").arg(i(IdOutputLoad)).arg(i(IdOutputLoad + 1)).arg(i(IdOutputLoad + 2));
    } else {
        row << QString::asprintf("%d", i(IdOutputVoltage));
        row << QString::asprintf("%.1f", f(IdOutputCurrent));
        row << QStringLiteral("%1").arg(i(IdOutputPower));
        row << QStringLiteral("%1").arg(i(IdOutputLoad));
    }
    row << QString::asprintf("%.1f", tenth(IdOutputFrequency));
    row << codeText(outputSourceTexts, i(IdOutputSource));
    row << QString::asprintf("%d", i(IdCapacity));
    row << QString::asprintf("%.1f", tenth(IdBatteryVoltage));
    // Logged as stored: the signed battery current is not reinterpreted.
    row << QString::asprintf("%.1f", tenth(IdBatteryCurrent));
    row << QString::asprintf("%d", i(IdBatteryTemperature));
    row << codeText(batteryStatusTexts, i(IdBatteryState));
    return row;
}
