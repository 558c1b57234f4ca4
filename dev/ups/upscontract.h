#ifndef UPSCONTRACT_H
#define UPSCONTRACT_H

#include <QCoreApplication>
#include <QLatin1String>
#include <QString>

// What the plug-in, its host and the simulated agent agree on beyond the
// register map: the event types carried by postDEvent, the control ids a
// view asks for, the keys of event maps and of upsInfo, and the device file.

namespace UpsContractDetail {
template <int N>
constexpr QLatin1String latin(const char (&text)[N])
{
    return QLatin1String(text, N - 1);
}
} // namespace UpsContractDetail

// The type argument of postDEvent for everything a client reports.
namespace UpsEvent {

constexpr int Restored = 1040;      // first answer after "lost", or the very first
constexpr int Lost = 1041;
constexpr int CommandResult = 1042;
constexpr int State = 2001;         // follows 1040/1041 and a raised alarm
constexpr int Alarm = 2006;
constexpr int Decoded = 2007;       // end of every accepted answer
constexpr int InputFault = 2009;    // repeats the 2006 of alarm 6
constexpr int BatteryLow = 2010;    // repeats the 2006 of alarm 3

inline bool isAlarm(int type)
{
    return type == Alarm || type == InputFault || type == BatteryLow;
}

} // namespace UpsEvent

// Control ids: the event type of a view's request and the id given to
// control(). The host routes the whole range to the client.
namespace UpsControl {

enum Id : int {
    SelfTest = 1003,
    Discharge = 1004,       // timed discharge test, minutes as the value
    DischargeToLow = 1005,
    CancelTest = 1006,
    Shutdown = 1007,
    Standby = 1008,
    TimeSet = 1011,
    CancelShutdown = 1013,
    Buzzer = 1014,
};
constexpr int First = SelfTest;
constexpr int Last = Buzzer;

inline bool isRequest(int type)
{
    return type >= First && type <= Last;
}

} // namespace UpsControl

// Keys of the EventMap carried by postDEvent.
namespace UpsKey {

using UpsContractDetail::latin;
// Every client event: the device and how it is reached.
constexpr QLatin1String Name = latin("name");
constexpr QLatin1String Protocol = latin("protocol");
constexpr QLatin1String IpAddr = latin("ipAddr");
constexpr QLatin1String Port = latin("port");
constexpr QLatin1String TimeStr = latin("timeStr");
// Communication: 1041 sets "lost" to 1; 1040, 1041 and 2001 carry the state.
constexpr QLatin1String Lost = latin("lost");
constexpr QLatin1String State = latin("state");
constexpr QLatin1String Desc = latin("desc");
// Decoded answers (2007) and alarm changes (2006, 2009, 2010).
constexpr QLatin1String Data = latin("data");
constexpr QLatin1String RawData = latin("raw_data");
constexpr QLatin1String AlarmId = latin("alarmId");
constexpr QLatin1String AlarmState = latin("alarmState");
constexpr QLatin1String DisAlarm = latin("dis_alarm");
// A view's control request, and the command result (1042).
constexpr QLatin1String ControlId = latin("controlId");
constexpr QLatin1String ControlValue = latin("controlValue");
constexpr QLatin1String Result = latin("result");
constexpr QLatin1String CmdId = latin("cmdId");

// Format of "timeStr" and of the clock text a time-set request carries.
constexpr char TimeFormat[] = "yyyy-MM-dd hh:mm:ss";

} // namespace UpsKey

// Keys the client publishes into upsInfo besides one per data point id.
namespace UpsInfo {

using UpsContractDetail::latin;
// The identity blocks 4001 and 4000, as received.
constexpr QLatin1String Manufacturer = latin("IdentManufacturer");
constexpr QLatin1String Model = latin("upsIdentModel");
// How the device is reached: "tcp:address:port", Modbus unit id as text.
constexpr QLatin1String Name = latin("name");
constexpr QLatin1String PortInfo = latin("portInfo");
constexpr QLatin1String Address = latin("upsAddr");
// The communication state and the output load (data point 39).
constexpr QLatin1String State = latin("state");
constexpr QLatin1String Load = latin("upsLoad");

// Values of "state" (and of the client's lostState once decided).
constexpr int Communicating = 0;
constexpr int CommunicationLost = 1;

} // namespace UpsInfo

// The host's device file: one INI group per device, named by the device.
namespace UpsConfig {

using UpsContractDetail::latin;
// Below the application's folder; the host writes it, the plug-in reads it.
constexpr char RelativePath[] = "KSVO/Quoranet/db/dev.ini";

constexpr QLatin1String IpAddr = latin("ipAddr");
constexpr QLatin1String Port = latin("port");
constexpr QLatin1String Retries = latin("retries");
constexpr QLatin1String Protocol = latin("protocol");
constexpr QLatin1String Interval = latin("interval");
// Followed by "/%1", the event number counted from 1.
constexpr QLatin1String EventChooseList = latin("eventChooseList");

constexpr int DefaultPort = 502;
constexpr int DefaultRetries = 5;
constexpr int DefaultInterval = 5; // seconds

inline QString filePath(QString applicationDir = QCoreApplication::applicationDirPath())
{
    applicationDir.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return applicationDir + QLatin1Char('/') + QLatin1String(RelativePath);
}

// "group/key", as the plug-in and the host address a device's setting.
inline QString key(const QString &group, QLatin1String name)
{
    return group + QLatin1Char('/') + name;
}

} // namespace UpsConfig

#endif // UPSCONTRACT_H
