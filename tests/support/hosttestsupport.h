#ifndef HOSTTESTSUPPORT_H
#define HOSTTESTSUPPORT_H

// Helpers of the host tests; header-only, as the core-only builds lack the host.

#include <QFile>
#include <QPair>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTextStream>

#include <memory>

#include "collectthread.h"
#include "collectview.h"
#include "deviceconfig.h"
#include "devicehost.h"
#include "devicesession.h"
#include "orvekclient.h"
#include "testconfig.h"

namespace HostTest {

// A device group aimed at 127.0.0.1:port in the dev.ini the plug-in reads
// (one tick a second); the entry to start it by, the rest read from dev.ini.
inline DeviceEntry writeDevice(const QString &name, quint16 port, int retries)
{
    writeDeviceConfig(name, {{"ipAddr", "127.0.0.1"}, {"port", port}, {"retries", retries}, {"interval", 1}});
    return DeviceEntry{name, QString(), 0, -1, -1, -1, QString()};
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

inline QStringList fileLines(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Text)
               ? QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts) : QStringList();
}

// Splits one CSV line (RFC 4180 quoting, no line breaks inside fields).
inline QStringList csvFields(const QString &line)
{
    static const QRegularExpression field(QStringLiteral("(?:^|,)(\"(?:[^\"]|\"\")*\"|[^,]*)"));
    QStringList fields;
    for (auto it = field.globalMatch(line); it.hasNext();) {
        const QString f = it.next().captured(1);
        fields << (f.startsWith(QLatin1Char('"')) ? f.mid(1, f.size() - 2).replace(QStringLiteral("\"\""), "\"") : f);
    }
    return fields;
}

// "device:text" of the host's notices, those that mention part.
inline QStringList noticeTexts(const DeviceHost &host, const QString &part)
{
    QStringList texts;
    for (const HostNotice &notice : host.notices())
        texts << notice.device + QLatin1Char(':') + notice.text;
    return texts.filter(part);
}

} // namespace HostTest

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
    static inline QStringList journal; // factory and client calls, in order
    bool makesClients = true;
    std::unique_ptr<ScriptedView> view;
    QList<QPair<int, QString>> controls;

    CollectThread *create(void *) override
    {
        journal << QStringLiteral("create");
        return makesClients ? new ScriptedClient : nullptr;
    }
    void loadConfig() override
    {
        journal << QStringLiteral("loadConfig:") + name;
        retries = 2; // the least the host does not warn about
    }
    CollectView *getView() override
    {
        journal << QStringLiteral("getView");
        if (!view) {
            view.reset(new ScriptedView);
            connect(view.get(), &CollectView::postDEvent, this, &CollectThread::postDEvent);
        }
        return view.get();
    }
    int control(int id, QString value) override
    {
        controls << qMakePair(id, value);
        return 1;
    }
    QStringList getEventLogDesc() override { return OrvekClient().getEventLogDesc(); } // names the alarms
    QStringList getDataLogDesc() override { return {QStringLiteral("Input"), QStringLiteral("Mode")}; }
    QStringList changeLogData(QMap<int, QVariant> data) override { return {data.value(9).toString(), "a,b"}; }

    // The host takes events queued, as from a client thread, from any thread.
    void sendData(const QMap<int, QVariant> &data) { emit postDEvent(2007, {{"data", QVariant::fromValue(data)}}); }
};

// A host without plug-ins whose devices are scripted clients; logs in a folder below a temporary one.
struct ScriptedHost
{
    explicit ScriptedHost(const QString &logFolder = QStringLiteral("logs")) : host(dir.filePath(logFolder)) {}
    ScriptedClient *start(const QString &name) // null when the host refuses
    {
        DeviceSession *session = host.addDevice(&factory, name);
        return session ? static_cast<ScriptedClient *>(session->client()) : nullptr;
    }
    QTemporaryDir dir;
    DeviceHost host;
    ScriptedClient factory;
};

#endif // HOSTTESTSUPPORT_H
