#include "upscatalogue.h"

#include <QCoreApplication>
#include <QtGlobal>
#include <cstring>
#include <iterator>

#include "upsalarms.h"
#include "upspoints.h"

namespace UpsCatalogue {

namespace {

constexpr int kMaxContexts = 4;

struct Row
{
    int key;
    const char *text[kMaxContexts]; // one per context of the table, null: not shown there
};

// Columns of the row tables, in order.
const char *const kTitleContexts[] = {"OrvekFont", "RTDataForm", "RTSingleGraphForm", "RateInfoForm"};
const char *const kThreePhaseTitleContexts[] = {"OrvekFont", "RTDataForm"};
// The alarm page words the four switch alarms its own way and shows no
// "... end" text for the battery discharge and equalization alarms.
const char *const kEventContexts[] = {"OrvekFont", "RTEventForm"};

const Row kTitles[] = {
    {UpsPoint::BatteryStatus,
     {QT_TRANSLATE_NOOP("OrvekFont", "Battery state"),
      QT_TRANSLATE_NOOP("RTDataForm", "Battery state"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "battery state:")}},
    {UpsPoint::SecondsOnBattery,
     {QT_TRANSLATE_NOOP("OrvekFont", "Time on battery(s)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Time on battery(s)"),
      nullptr,
      nullptr}},
    {UpsPoint::RemainingMinutes,
     {QT_TRANSLATE_NOOP("OrvekFont", "Remaining battery time(Min)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Remaining battery time(Min)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Remaining battery time(Min)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "remain discharge time:")}},
    {UpsPoint::BatteryCapacity,
     {QT_TRANSLATE_NOOP("OrvekFont", "Remaining battery capacity(%)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Remaining battery capacity(%)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "battery capacity:")}},
    {UpsPoint::BatteryVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Battery voltage(V)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Battery voltage(V)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Battery voltage(V)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "battery voltage:")}},
    {UpsPoint::BatteryCurrent,
     {QT_TRANSLATE_NOOP("OrvekFont", "Battery current(A)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Battery current(A)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "battery current:")}},
    {UpsPoint::BatteryTemperature,
     {QT_TRANSLATE_NOOP("OrvekFont", "Battery temperature(C)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Battery temperature(C)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Battery temperature(C)"),
      nullptr}},
    {UpsPoint::MainsFailures,
     {QT_TRANSLATE_NOOP("OrvekFont", "Number of mains failure"),
      QT_TRANSLATE_NOOP("RTDataForm", "Number of mains failure"),
      nullptr,
      nullptr}},
    {UpsPoint::InputVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Input voltage(V)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Input voltage(V)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Input voltage(V)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "input voltage:")}},
    {UpsPoint::InputCurrent,
     {QT_TRANSLATE_NOOP("OrvekFont", "Input current(A)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Input current(A)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "input current:")}},
    {UpsPoint::InputFrequency,
     {QT_TRANSLATE_NOOP("OrvekFont", "Input frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Input frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Input frequency(Hz)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "input frequency:")}},
    {UpsPoint::InputPower,
     {QT_TRANSLATE_NOOP("OrvekFont", "Input power(W)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Input power(W)"),
      nullptr,
      nullptr}},
    {UpsPoint::OutputSource,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output mode"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output mode"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Output Mode:")}},
    {UpsPoint::OutputFrequency,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Output frequency(Hz)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "output frequency:")}},
    {UpsPoint::OutputVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output voltage(V)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output voltage(V)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Output voltage(V)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "output voltage:")}},
    {UpsPoint::OutputCurrent,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output current(A)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output current(A)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "output current:")}},
    {UpsPoint::OutputPower,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output power(W)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output power(W)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "output power:")}},
    {UpsPoint::OutputLoad,
     {QT_TRANSLATE_NOOP("OrvekFont", "Output load(%)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Output load(%)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Output load(%)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "output load percentage:")}},
    {UpsPoint::BypassFrequency,
     {QT_TRANSLATE_NOOP("OrvekFont", "Bypass frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Bypass frequency(Hz)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Bypass frequency(Hz)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "bypass frequency:")}},
    {UpsPoint::BypassVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Bypass voltage(V)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Bypass voltage(V)"),
      QT_TRANSLATE_NOOP("RTSingleGraphForm", "Bypass voltage(V)"),
      QT_TRANSLATE_NOOP("RateInfoForm", "bypass voltage:")}},
    {UpsPoint::BypassCurrent,
     {QT_TRANSLATE_NOOP("OrvekFont", "Bypass current(A)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Bypass current(A)"),
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "bypass current:")}},
    {UpsPoint::BypassPower,
     {QT_TRANSLATE_NOOP("OrvekFont", "Bypass power(W)"),
      QT_TRANSLATE_NOOP("RTDataForm", "Bypass power(W)"),
      nullptr,
      nullptr}},
    {UpsPoint::RatedInputVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated input voltage(V)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated input voltage")}},
    {UpsPoint::RatedInputFrequency,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated input frequency(Hz)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated input frequency")}},
    {UpsPoint::RatedOutputVoltage,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated output voltage(V)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated output voltage")}},
    {UpsPoint::RatedOutputFrequency,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated output frequency(Hz)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated output frequency")}},
    {UpsPoint::RatedApparentPower,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated apparent power(VA)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated apparent power")}},
    {UpsPoint::RatedActivePower,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated active power(W)"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Rated active power")}},
    {UpsPoint::RatedBatteryMinutes,
     {QT_TRANSLATE_NOOP("OrvekFont", "Rated battery-powered time(min)"),
      nullptr,
      nullptr,
      nullptr}},
    {UpsPoint::BuzzerState,
     {QT_TRANSLATE_NOOP("OrvekFont", "Buzzer state"),
      nullptr,
      nullptr,
      nullptr}},
    {UpsPoint::UndervoltagePoint,
     {QT_TRANSLATE_NOOP("OrvekFont", "Undervoltage point(V)"),
      nullptr,
      nullptr,
      nullptr}},
    {UpsPoint::OvervoltagePoint,
     {QT_TRANSLATE_NOOP("OrvekFont", "Overvoltage point(V)"),
      nullptr,
      nullptr,
      nullptr}},
    {UpsPoint::Model,
     {QT_TRANSLATE_NOOP("OrvekFont", "UPS model"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "UPS model")}},
    {UpsPoint::Manufacturer,
     {QT_TRANSLATE_NOOP("OrvekFont", "Manufacturer name"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Manufacturer name")}},
    {UpsPoint::SystemName,
     {QT_TRANSLATE_NOOP("OrvekFont", "System name"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "System name")}},
    {UpsPoint::AttachedDevices,
     {QT_TRANSLATE_NOOP("OrvekFont", "UPS ident attached devices"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "UPS ident attached devices")}},
    {UpsPoint::UpsSoftware,
     {QT_TRANSLATE_NOOP("OrvekFont", "UPS software version"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "UPS software version")}},
    {UpsPoint::AgentSoftware,
     {QT_TRANSLATE_NOOP("OrvekFont", "Agent software version"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Agent software version")}},
    {UpsPoint::AgentLocation,
     {QT_TRANSLATE_NOOP("OrvekFont", "Agent location"),
      nullptr,
      nullptr,
      QT_TRANSLATE_NOOP("RateInfoForm", "Agent location")}},
};

const Row kThreePhaseTitles[] = {
    {UpsPoint::InputVoltage, {QT_TRANSLATE_NOOP("OrvekFont", "Input voltage R/S/T(V)"),
                               QT_TRANSLATE_NOOP("RTDataForm", "Input voltage R/S/T(V)")}},
    {UpsPoint::InputCurrent, {QT_TRANSLATE_NOOP("OrvekFont", "Input current R/S/T(A)"),
                               QT_TRANSLATE_NOOP("RTDataForm", "Input current R/S/T(A)")}},
    {UpsPoint::InputFrequency, {QT_TRANSLATE_NOOP("OrvekFont", "Input frequency R/S/T(Hz)"),
                                 QT_TRANSLATE_NOOP("RTDataForm", "Input frequency R/S/T(Hz)")}},
    {UpsPoint::InputPower, {QT_TRANSLATE_NOOP("OrvekFont", "Input power R/S/T(W)"),
                             QT_TRANSLATE_NOOP("RTDataForm", "Input power R/S/T(W)")}},
    {UpsPoint::OutputVoltage, {QT_TRANSLATE_NOOP("OrvekFont", "Output voltage R/S/T(V)"),
                                QT_TRANSLATE_NOOP("RTDataForm", "Output voltage R/S/T(V)")}},
    {UpsPoint::OutputCurrent, {QT_TRANSLATE_NOOP("OrvekFont", "Output current R/S/T(A)"),
                                QT_TRANSLATE_NOOP("RTDataForm", "Output current R/S/T(A)")}},
    {UpsPoint::OutputPower, {QT_TRANSLATE_NOOP("OrvekFont", "Output power R/S/T(W)"),
                              QT_TRANSLATE_NOOP("RTDataForm", "Output power R/S/T(W)")}},
    {UpsPoint::OutputLoad, {QT_TRANSLATE_NOOP("OrvekFont", "Output load R/S/T(%)"),
                             QT_TRANSLATE_NOOP("RTDataForm", "Output load R/S/T(%)")}},
    {UpsPoint::BypassVoltage, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass voltage R/S/T(V)"),
                                QT_TRANSLATE_NOOP("RTDataForm", "Bypass voltage R/S/T(V)")}},
    {UpsPoint::BypassCurrent, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass current R/S/T(A)"),
                                QT_TRANSLATE_NOOP("RTDataForm", "Bypass current R/S/T(A)")}},
    {UpsPoint::BypassPower, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass power R/S/T(W)"),
                              QT_TRANSLATE_NOOP("RTDataForm", "Bypass power R/S/T(W)")}},
};

const Row kEvents[] = {
    {0, {QT_TRANSLATE_NOOP("OrvekFont", "Communication between agent and UPS fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Communication between agent and UPS fault")}},
    {1, {QT_TRANSLATE_NOOP("OrvekFont", "Battery fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery fault")}},
    {2, {QT_TRANSLATE_NOOP("OrvekFont", "Battery powered"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery powered")}},
    {3, {QT_TRANSLATE_NOOP("OrvekFont", "Battery low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery low")}},
    {4, {QT_TRANSLATE_NOOP("OrvekFont", "Battery EOD"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery EOD")}},
    {5, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature overrun MAX-value"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature overrun MAX-value")}},
    {6, {QT_TRANSLATE_NOOP("OrvekFont", "Input fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Input fault")}},
    {7, {QT_TRANSLATE_NOOP("OrvekFont", "Output fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Output fault")}},
    {8, {QT_TRANSLATE_NOOP("OrvekFont", "Load overrun MAX-value"),
          QT_TRANSLATE_NOOP("RTEventForm", "Load overrun MAX-value")}},
    {9, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass powered"),
          QT_TRANSLATE_NOOP("RTEventForm", "Bypass powered")}},
    {10, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Bypass fault")}},
    {11, {QT_TRANSLATE_NOOP("OrvekFont", "The UPS output has shutdown as requested"),
          QT_TRANSLATE_NOOP("RTEventForm", "The UPS output has shutdown as requested")}},
    {12, {QT_TRANSLATE_NOOP("OrvekFont", "The entire UPS has shutdown as commanded"),
          QT_TRANSLATE_NOOP("RTEventForm", "The entire UPS has shutdown as commanded")}},
    {13, {QT_TRANSLATE_NOOP("OrvekFont", "Charger subsystem fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Charger subsystem fault")}},
    {14, {QT_TRANSLATE_NOOP("OrvekFont", "The output of the UPS is in the off state"),
          QT_TRANSLATE_NOOP("RTEventForm", "The output of the UPS is in the off state")}},
    {15, {QT_TRANSLATE_NOOP("OrvekFont", "The UPS system is in the off state"),
          QT_TRANSLATE_NOOP("RTEventForm", "The UPS system is in the off state")}},
    {16, {QT_TRANSLATE_NOOP("OrvekFont", "Fan fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Fan fault")}},
    {17, {QT_TRANSLATE_NOOP("OrvekFont", "Fuse fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Fuse fault")}},
    {18, {QT_TRANSLATE_NOOP("OrvekFont", "UPS fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS fault")}},
    {19, {QT_TRANSLATE_NOOP("OrvekFont", "Last diagnostic test failed"),
          QT_TRANSLATE_NOOP("RTEventForm", "Last diagnostic test failed")}},
    {20, {QT_TRANSLATE_NOOP("OrvekFont", "Communications between the agent and the UPS fault"),
          QT_TRANSLATE_NOOP("RTEventForm", "Communications between the agent and the UPS fault")}},
    {21, {QT_TRANSLATE_NOOP("OrvekFont", "UPS shutdown after delay countdown is underway"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS shutdown after delay countdown is underway")}},
    {22, {QT_TRANSLATE_NOOP("OrvekFont", "The UPS will turn off power to the load"),
          QT_TRANSLATE_NOOP("RTEventForm", "The UPS will turn off power to the load")}},
    {23, {QT_TRANSLATE_NOOP("OrvekFont", "A test is in progress"),
          QT_TRANSLATE_NOOP("RTEventForm", "A test is in progress")}},
    {26, {QT_TRANSLATE_NOOP("OrvekFont", "Battery Discharge"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery Discharge")}},
    {27, {QT_TRANSLATE_NOOP("OrvekFont", "Battery equalization"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery equalization")}},
    {28, {QT_TRANSLATE_NOOP("OrvekFont", "Battery switch open"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery switch is off")}},
    {29, {QT_TRANSLATE_NOOP("OrvekFont", "Input switch open"),
          QT_TRANSLATE_NOOP("RTEventForm", "Input switch is off")}},
    {30, {QT_TRANSLATE_NOOP("OrvekFont", "Output switch open"),
          QT_TRANSLATE_NOOP("RTEventForm", "Output switch is off")}},
    {31, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass switch open"),
          QT_TRANSLATE_NOOP("RTEventForm", "Bypass switch is off")}},
    {34, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 communication lost"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 communication lost")}},
    {35, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 temperature is too high")}},
    {36, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 temperature is too low")}},
    {37, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 humidity is too high")}},
    {38, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 humidity is too low")}},
    {39, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 communication lost"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 communication lost")}},
    {40, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 temperature is too high")}},
    {41, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 temperature is too low")}},
    {42, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 humidity is too high")}},
    {43, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 humidity is too low")}},
    {44, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 communication lost"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 communication lost")}},
    {45, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 temperature is too high")}},
    {46, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 temperature is too low")}},
    {47, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 humidity is too high")}},
    {48, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 humidity is too low")}},
    {49, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 communication lost"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 communication lost")}},
    {50, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 temperature is too high")}},
    {51, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 temperature is too low")}},
    {52, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is too high"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 humidity is too high")}},
    {53, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is too low"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 humidity is too low")}},
    {54, {QT_TRANSLATE_NOOP("OrvekFont", "Communications between agent and UPS normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Communications between agent and UPS normal")}},
    {55, {QT_TRANSLATE_NOOP("OrvekFont", "Battery normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery normal")}},
    {56, {QT_TRANSLATE_NOOP("OrvekFont", "Utility supply normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Utility supply normal")}},
    {57, {QT_TRANSLATE_NOOP("OrvekFont", "Battery voltage normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery voltage normal")}},
    {58, {QT_TRANSLATE_NOOP("OrvekFont", "Battery resume"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery resume")}},
    {59, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature normal")}},
    {60, {QT_TRANSLATE_NOOP("OrvekFont", "Input normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Input normal")}},
    {61, {QT_TRANSLATE_NOOP("OrvekFont", "Output normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Output normal")}},
    {62, {QT_TRANSLATE_NOOP("OrvekFont", "The output load normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "The output load normal")}},
    {63, {QT_TRANSLATE_NOOP("OrvekFont", "Inverter operation"),
          QT_TRANSLATE_NOOP("RTEventForm", "Inverter operation")}},
    {64, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Bypass normal")}},
    {65, {QT_TRANSLATE_NOOP("OrvekFont", "The UPS output not shutdown as requested"),
          QT_TRANSLATE_NOOP("RTEventForm", "The UPS output not shutdown as requested")}},
    {66, {QT_TRANSLATE_NOOP("OrvekFont", "The entire UPS not shutdown as commanded"),
          QT_TRANSLATE_NOOP("RTEventForm", "The entire UPS not shutdown as commanded")}},
    {67, {QT_TRANSLATE_NOOP("OrvekFont", "Charger subsystem normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Charger subsystem normal")}},
    {68, {QT_TRANSLATE_NOOP("OrvekFont", "UPS output on"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS output on")}},
    {69, {QT_TRANSLATE_NOOP("OrvekFont", "UPS on"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS on")}},
    {70, {QT_TRANSLATE_NOOP("OrvekFont", "Fan normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Fan normal")}},
    {71, {QT_TRANSLATE_NOOP("OrvekFont", "Fuse normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Fuse normal")}},
    {72, {QT_TRANSLATE_NOOP("OrvekFont", "UPS normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS normal")}},
    {73, {QT_TRANSLATE_NOOP("OrvekFont", "Last diagnostic test success"),
          QT_TRANSLATE_NOOP("RTEventForm", "Last diagnostic test success")}},
    {74, {QT_TRANSLATE_NOOP("OrvekFont", "UPS is not awaiting the return of input power"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS is not awaiting the return of input power")}},
    {75, {QT_TRANSLATE_NOOP("OrvekFont", "UPS shutdown after delay ended"),
          QT_TRANSLATE_NOOP("RTEventForm", "UPS shutdown after delay ended")}},
    {76, {QT_TRANSLATE_NOOP("OrvekFont", "The UPS will not turn off power to the load"),
          QT_TRANSLATE_NOOP("RTEventForm", "The UPS will not turn off power to the load")}},
    {77, {QT_TRANSLATE_NOOP("OrvekFont", "No a test is in progress"),
          QT_TRANSLATE_NOOP("RTEventForm", "No a test is in progress")}},
    {80, {"Battery Discharge end",
          nullptr}},
    {81, {"Battery equalization end",
          nullptr}},
    {82, {QT_TRANSLATE_NOOP("OrvekFont", "Battery switch close"),
          QT_TRANSLATE_NOOP("RTEventForm", "Battery switch on")}},
    {83, {QT_TRANSLATE_NOOP("OrvekFont", "Input switch close"),
          QT_TRANSLATE_NOOP("RTEventForm", "Input switch on")}},
    {84, {QT_TRANSLATE_NOOP("OrvekFont", "Output switch close"),
          QT_TRANSLATE_NOOP("RTEventForm", "Output switch is on")}},
    {85, {QT_TRANSLATE_NOOP("OrvekFont", "Bypass switch close"),
          QT_TRANSLATE_NOOP("RTEventForm", "Bypass switch is on")}},
    {88, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 communication normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 communication normal")}},
    {89, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 temperature is normal")}},
    {90, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 temperature is normal")}},
    {91, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 humidity is normal")}},
    {92, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 1 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 1 humidity is normal")}},
    {93, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 communication normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 communication normal")}},
    {94, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 temperature normal")}},
    {95, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 temperature normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 temperature normal")}},
    {96, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 humidity is normal")}},
    {97, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 2 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 2 humidity is normal")}},
    {98, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 communication normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 communication normal")}},
    {99, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 temperature is normal")}},
    {100, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 temperature is normal")}},
    {101, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 humidity is normal")}},
    {102, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 3 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 3 humidity is normal")}},
    {103, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 communication normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 communication normal")}},
    {104, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 temperature is normal")}},
    {105, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 temperature is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 temperature is normal")}},
    {106, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 humidity is normal")}},
    {107, {QT_TRANSLATE_NOOP("OrvekFont", "Temperature and humidity module 4 humidity is normal"),
          QT_TRANSLATE_NOOP("RTEventForm", "Temperature and humidity module 4 humidity is normal")}},
};

// Code lists, one column per context; code n names entry n - 1.
const char *const kBatteryStatusContexts[] = {"OrvekFont", "RTDataForm"};
const char *const kBatteryStatus[][4] = {
    {QT_TRANSLATE_NOOP("OrvekFont", "Unknown"), QT_TRANSLATE_NOOP("OrvekFont", "Normal"),
     QT_TRANSLATE_NOOP("OrvekFont", "Low"), QT_TRANSLATE_NOOP("OrvekFont", "Depleted")},
    {QT_TRANSLATE_NOOP("RTDataForm", "Unknown"), QT_TRANSLATE_NOOP("RTDataForm", "Normal"),
     QT_TRANSLATE_NOOP("RTDataForm", "Low"), QT_TRANSLATE_NOOP("RTDataForm", "Depleted")},
};

const char *const kOutputSourceContexts[] = {"OrvekFont", "RTDataForm", "Energyline"};
const char *const kOutputSource[][7] = {
    {QT_TRANSLATE_NOOP("OrvekFont", "Other supply"), QT_TRANSLATE_NOOP("OrvekFont", "None supply"),
     QT_TRANSLATE_NOOP("OrvekFont", "Utility supply"), QT_TRANSLATE_NOOP("OrvekFont", "Bypass supply"),
     QT_TRANSLATE_NOOP("OrvekFont", "Battery supply"), QT_TRANSLATE_NOOP("OrvekFont", "Booster supply"),
     QT_TRANSLATE_NOOP("OrvekFont", "Reducer supply")},
    {QT_TRANSLATE_NOOP("RTDataForm", "Other supply"), QT_TRANSLATE_NOOP("RTDataForm", "None supply"),
     QT_TRANSLATE_NOOP("RTDataForm", "Utility supply"), QT_TRANSLATE_NOOP("RTDataForm", "Bypass supply"),
     QT_TRANSLATE_NOOP("RTDataForm", "Battery supply"), QT_TRANSLATE_NOOP("RTDataForm", "Booster supply"),
     QT_TRANSLATE_NOOP("RTDataForm", "Reducer supply")},
    {QT_TRANSLATE_NOOP("Energyline", "Other supply"), QT_TRANSLATE_NOOP("Energyline", "None supply"),
     QT_TRANSLATE_NOOP("Energyline", "Utility supply"), QT_TRANSLATE_NOOP("Energyline", "Bypass supply"),
     QT_TRANSLATE_NOOP("Energyline", "Battery supply"), QT_TRANSLATE_NOOP("Energyline", "Booster supply"),
     QT_TRANSLATE_NOOP("Energyline", "Reducer supply")},
};

// The battery status as the diagram and the detail page name it, with the
// further codes 5..9 some devices report; code 9 is a second "Normal".
const char *const kBatteryStateContexts[] = {"Energyline", "RateInfoForm"};
const char *const kBatteryState[][9] = {
    {QT_TRANSLATE_NOOP("Energyline", "Unknown"), QT_TRANSLATE_NOOP("Energyline", "Normal"),
     QT_TRANSLATE_NOOP("Energyline", "Low"), QT_TRANSLATE_NOOP("Energyline", "Depleted"),
     QT_TRANSLATE_NOOP("Energyline", "Selftest"), QT_TRANSLATE_NOOP("Energyline", "Boost"),
     QT_TRANSLATE_NOOP("Energyline", "Floating"), QT_TRANSLATE_NOOP("Energyline", "Discharge"),
     QT_TRANSLATE_NOOP("Energyline", "Normal")},
    {QT_TRANSLATE_NOOP("RateInfoForm", "Unknown"), QT_TRANSLATE_NOOP("RateInfoForm", "Normal"),
     QT_TRANSLATE_NOOP("RateInfoForm", "Low"), QT_TRANSLATE_NOOP("RateInfoForm", "Depleted"),
     QT_TRANSLATE_NOOP("RateInfoForm", "Selftest"), QT_TRANSLATE_NOOP("RateInfoForm", "Boost"),
     QT_TRANSLATE_NOOP("RateInfoForm", "Floating"), QT_TRANSLATE_NOOP("RateInfoForm", "Discharge"),
     QT_TRANSLATE_NOOP("RateInfoForm", "Normal")},
};

// The event log stores these two as they stand.
constexpr int kUntranslatedEvents[] = {UpsAlarms::clearedTextIndex(UpsAlarm::BatteryDischarge),
                                       UpsAlarms::clearedTextIndex(UpsAlarm::BatteryEqualization)};

struct Table
{
    const char *const *contexts;
    int contextCount;
    const Row *rows;          // row tables
    int rowCount;
    const char *const *codes; // code lists: contextCount columns of rowCount texts
};

template<typename Contexts, typename Rows>
constexpr Table rowTable(const Contexts &contexts, const Rows &rows)
{
    return {contexts, int(std::size(contexts)), rows, int(std::size(rows)), nullptr};
}

template<typename Contexts, typename Codes>
constexpr Table codeTable(const Contexts &contexts, const Codes &codes)
{
    return {contexts, int(std::size(contexts)), nullptr, int(std::size(codes[0])), codes[0]};
}

Table table(List list)
{
    switch (list) {
    case List::Titles:
        return rowTable(kTitleContexts, kTitles);
    case List::ThreePhaseTitles:
        return rowTable(kThreePhaseTitleContexts, kThreePhaseTitles);
    case List::BatteryStatus:
        return codeTable(kBatteryStatusContexts, kBatteryStatus);
    case List::OutputSource:
        return codeTable(kOutputSourceContexts, kOutputSource);
    case List::BatteryState:
        return codeTable(kBatteryStateContexts, kBatteryState);
    case List::Events:
        break;
    }
    return rowTable(kEventContexts, kEvents);
}

constexpr List kLists[] = {List::Titles,       List::ThreePhaseTitles, List::BatteryStatus,
                           List::OutputSource, List::BatteryState,     List::Events};

int column(const Table &table, const char *context)
{
    for (int i = 0; context && i < table.contextCount; ++i) {
        if (std::strcmp(table.contexts[i], context) == 0)
            return i;
    }
    return -1;
}

const char *entry(const Table &table, int column, int key)
{
    if (table.codes)
        return key >= 0 && key < table.rowCount ? table.codes[column * table.rowCount + key] : nullptr;
    for (int i = 0; i < table.rowCount; ++i) {
        if (table.rows[i].key == key)
            return table.rows[i].text[column];
    }
    return nullptr;
}

// Visits every marked text of a table until visit returns true.
template<typename Visit>
bool anyEntry(const Table &table, int onlyColumn, Visit visit)
{
    for (int c = 0; c < table.contextCount; ++c) {
        if (onlyColumn >= 0 && c != onlyColumn)
            continue;
        for (int i = 0; i < table.rowCount; ++i) {
            const char *text = table.codes ? table.codes[c * table.rowCount + i] : table.rows[i].text[c];
            if (text && visit(text))
                return true;
        }
    }
    return false;
}

bool sameText(const char *a, const char *b)
{
    return std::strcmp(a, b) == 0;
}

} // namespace

const char *source(List list, const char *context, int key)
{
    const Table t = table(list);
    const int c = column(t, context);
    return c < 0 ? nullptr : entry(t, c, key);
}

QString text(List list, const char *context, int key)
{
    const char *text = source(list, context, key);
    if (!text)
        return QString();
    if (list == List::Events && std::strcmp(context, kEventContexts[0]) == 0) {
        for (int index : kUntranslatedEvents) {
            if (index == key)
                return QString::fromLatin1(text);
        }
    }
    return QCoreApplication::translate(context, text);
}

int codeCount(List list)
{
    const Table t = table(list);
    return t.codes ? t.rowCount : 0;
}

const char *const *codeSources(List list)
{
    return table(list).codes;
}

bool isMarked(const char *context, const char *source)
{
    for (List list : kLists) {
        const Table t = table(list);
        const int c = column(t, context);
        if (c >= 0 && anyEntry(t, c, [&](const char *text) { return sameText(text, source); }))
            return true;
    }
    return false;
}

bool isModelText(const char *source)
{
    for (List list : kLists) {
        if (anyEntry(table(list), -1, [&](const char *text) { return sameText(text, source); }))
            return true;
    }
    return false;
}

} // namespace UpsCatalogue
