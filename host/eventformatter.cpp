#include "eventformatter.h"

#include "eventtypes.h"

namespace {
const char kKeyAlarmId[] = "alarmId";
const char kKeyAlarmState[] = "alarmState";
const char kKeyDesc[] = "desc";
} // namespace

QString EventFormatter::text(int type, const QMap<QString, QVariant> &map, const QStringList &eventTexts)
{
    if (EventType::isAlarmEvent(type))
        return alarmText(map, eventTexts);
    switch (type) {
    case EventType::Restored:
        return tr("Communication restored");
    case EventType::Lost:
        return tr("Communication lost");
    case EventType::State:   // repeats 1040/1041 or follows a raised alarm
    case EventType::Decoded: // data, no text
        return QString();
    default:
        break;
    }
    if (EventType::isControlRequest(type))
        return QString(); // its result (1042) is what gets logged
    return map.value(QLatin1String(kKeyDesc)).toString();
}

QString EventFormatter::alarmText(const QMap<QString, QVariant> &map, const QStringList &eventTexts)
{
    bool ok = false;
    const int id = map.value(QLatin1String(kKeyAlarmId)).toInt(&ok);
    if (!ok)
        return tr("Alarm changed");
    const QString text = eventTexts.value(id).trimmed();
    if (!text.isEmpty())
        return text;
    // The list has cleared texts in its second half: map the id back.
    const int half = eventTexts.size() / 2;
    const int number = (half > 0 && id >= half) ? id - half : id;
    const bool raised = map.value(QLatin1String(kKeyAlarmState)).toInt() == 1;
    return raised ? tr("Alarm %1 raised").arg(number) : tr("Alarm %1 cleared").arg(number);
}
