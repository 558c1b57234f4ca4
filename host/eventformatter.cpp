#include "eventformatter.h"

#include "upscontract.h"

QString EventFormatter::text(int type, const QMap<QString, QVariant> &map, const QStringList &eventTexts)
{
    if (UpsEvent::isAlarm(type))
        return alarmText(map, eventTexts);
    switch (type) {
    case UpsEvent::Restored:
        return tr("Communication restored");
    case UpsEvent::Lost:
        return tr("Communication lost");
    case UpsEvent::State:   // repeats 1040/1041 or follows a raised alarm
    case UpsEvent::Decoded: // data, no text
        return QString();
    default:
        break;
    }
    if (UpsControl::isRequest(type))
        return QString(); // its result (1042) is what gets logged
    return map.value(UpsKey::Desc).toString();
}

QString EventFormatter::alarmText(const QMap<QString, QVariant> &map, const QStringList &eventTexts)
{
    bool ok = false;
    const int id = map.value(UpsKey::AlarmId).toInt(&ok);
    if (!ok)
        return tr("Alarm changed");
    const QString text = eventTexts.value(id).trimmed();
    if (!text.isEmpty())
        return text;
    // The list has cleared texts in its second half: map the id back.
    const int half = eventTexts.size() / 2;
    const int number = (half > 0 && id >= half) ? id - half : id;
    const bool raised = map.value(UpsKey::AlarmState).toInt() == 1;
    return raised ? tr("Alarm %1 raised").arg(number) : tr("Alarm %1 cleared").arg(number);
}
