#ifndef SCRIPTEDCLIENT_H
#define SCRIPTEDCLIENT_H

#include <QPair>

#include "collectthread.h"
#include "collectview.h"

// A device view that records what the host hands to it.
class ScriptedView : public CollectView
{
    Q_OBJECT
public:
    QStringList calls;

    void flushData(QMap<int, QVariant> d) override
    {
        CollectView::flushData(d);
        calls << QStringLiteral("flushData");
    }
    void refreshData() override { calls << QStringLiteral("refreshData"); }
};

// A device client that does nothing on its own: the test makes it emit. As a
// factory it journals the host's calls and hands its settings on.
class ScriptedClient : public CollectThread
{
    Q_OBJECT
public:
    static QStringList &journal() // factory and client calls, in order
    {
        static QStringList calls;
        return calls;
    }
    bool makesClients = true;
    int retriesOnLoad = 5;
    QStringList eventTexts;
    ScriptedView *view = nullptr;
    QList<QPair<int, QString>> controls;

    ~ScriptedClient() override { delete view; }

    CollectThread *create(void *) override
    {
        journal() << QStringLiteral("create");
        if (!makesClients)
            return nullptr;
        auto *client = new ScriptedClient;
        client->retriesOnLoad = retriesOnLoad;
        client->eventTexts = eventTexts;
        return client;
    }
    void loadConfig() override
    {
        journal() << QStringLiteral("loadConfig:") + name;
        retries = retriesOnLoad;
    }
    CollectView *getView() override
    {
        journal() << QStringLiteral("getView");
        if (!view) {
            view = new ScriptedView;
            connect(view, &CollectView::postDEvent, this, &CollectThread::postDEvent);
        }
        return view;
    }
    int control(int id, QString value) override
    {
        controls << qMakePair(id, value);
        return 1;
    }
    QStringList getEventLogDesc() override { return eventTexts; }
    QStringList getDataLogDesc() override { return {QStringLiteral("Input"), QStringLiteral("Mode")}; }
    QStringList changeLogData(QMap<int, QVariant> data) override { return {data.value(9).toString(), "a,b"}; }

    // The host takes events queued, as from a client thread, from any thread.
    void sendData(const QMap<int, QVariant> &data) { emit postDEvent(2007, {{"data", QVariant::fromValue(data)}}); }
};

#endif // SCRIPTEDCLIENT_H
