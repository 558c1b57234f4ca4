#ifndef ORVEKCLIENT_H
#define ORVEKCLIENT_H
#include "collectthread.h"
class OrvekClient : public CollectThread
{
    Q_OBJECT
public:
    explicit OrvekClient(CollectThread *parent = nullptr) { Q_UNUSED(parent) }
};
#endif
