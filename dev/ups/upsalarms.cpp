#include "upsalarms.h"

#include "upscatalogue.h"
#include "upscontract.h"

namespace UpsAlarms {

int followUpEvent(int number)
{
    switch (number) {
    case UpsAlarm::BatteryLow:
        return UpsEvent::BatteryLow;
    case UpsAlarm::InputBad:
        return UpsEvent::InputFault;
    default:
        return 0;
    }
}

QStringList eventTexts(const char *context)
{
    QStringList texts;
    texts.reserve(EventTextCount);
    for (int index = 0; index < EventTextCount; ++index)
        texts << UpsCatalogue::text(UpsCatalogue::List::Events, context, index);
    return texts;
}

} // namespace UpsAlarms
