#include "collectthread.h"
#include "collectview.h"

void CollectThread::registerContractTypes()
{
    // Queued postDEvent / flushData calls need the map types by the names
    // that appear in the normalised signatures, and by the typedef names.
    qRegisterMetaType<QMap<QString, QVariant>>("QMap<QString,QVariant>");
    qRegisterMetaType<QMap<QString, QVariant>>("EventMap");
    qRegisterMetaType<QMap<int, QVariant>>("QMap<int,QVariant>");
    qRegisterMetaType<QMap<int, QVariant>>("DataPointMap");
    qRegisterMetaType<CollectThread *>("CollectThread*");
    qRegisterMetaType<CollectView *>("CollectView*");
}
