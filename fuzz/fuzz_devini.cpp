// libFuzzer target: reading the device file dev.ini. Every input is written
// where the plug-in looks for it, below the application folder, so this binary
// runs from a scratch folder of its own (tools/fuzz.sh runs a copy; it refuses
// to replace a dev.ini it did not write). The host's DeviceConfig reads the
// device groups, a fresh client runs loadConfig for each and for a fixed name,
// and every group the host can store is saved to a second file and read back;
// a broken promise of either reader aborts. "@Variant(...)" values, which
// QSettings would decode with QDataStream and crash on, must be kept from
// QSettings by both readers.
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <cstdint>
#include <cstdlib>

#include "deviceconfig.h"
#include "fuzzapp.h"
#include "orvekclient.h"

namespace {

constexpr int kMaxGroupsChecked = 16;
constexpr int kMaxRoundTrips = 8;
constexpr int kDefaultInterval = 5;
constexpr int kMaxPort = 65535;
const char kFixedName[] = "ups1";
const char kScratchMarker[] = ".fuzz-scratch";

void require(bool ok, const char *promise, const QString &group, int detail = 0)
{
    if (!ok)
        qFatal("fuzz_devini: broken promise: %s (group \"%s\", %d)", promise, qPrintable(group), detail);
}

class DevIniCheck
{
public:
    bool init()
    {
        path = OrvekClient::configFilePath();
        const QString dir = QFileInfo(path).absolutePath();
        const QString marker = dir + QLatin1Char('/') + QLatin1String(kScratchMarker);
        if (QFileInfo::exists(path) && !QFileInfo::exists(marker)) {
            qCritical("fuzz_devini: %s exists and was not written by this fuzzer; run a copy of the "
                      "binary from a scratch folder (tools/fuzz.sh does)", qPrintable(path));
            return false;
        }
        if (!QDir().mkpath(dir) || !QFile(marker).open(QIODevice::WriteOnly) || !scratch.isValid())
            return false;
        roundTripPath = scratch.filePath(QStringLiteral("dev.ini"));
        eventCount = OrvekClient().getEventLogDesc().size();
        return true;
    }

    void run(const QByteArray &content)
    {
        if (!write(content))
            abort(); // the scratch folder went away: nothing meaningful to test
        const QList<DeviceEntry> entries = DeviceConfig(path).devices();
        for (int i = 0; i < entries.size() && i < kMaxGroupsChecked; ++i)
            checkClientAgrees(entries.at(i));
        OrvekClient fixed; // a name that may or may not be in the file
        loadInto(fixed, QLatin1String(kFixedName));
        checkRoundTrip(entries);
    }

private:
    // A new modification time for every input: QSettings caches parsed files
    // and re-reads one only when its size or time changed.
    bool write(const QByteArray &content)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(content) != content.size())
            return false;
        ++generation;
        return file.setFileTime(QDateTime::fromSecsSinceEpoch(1600000000 + generation),
                                QFileDevice::FileModificationTime);
    }

    void loadInto(OrvekClient &client, const QString &name) const
    {
        client.name = name;
        client.loadConfig();
        require(client.targetPort >= 1 && client.targetPort <= kMaxPort, "port falls back into 1..65535",
                name, client.targetPort);
        require(client.interval >= 1, "interval is at least one second", name, client.interval);
        require(client.eventChooseList.size() == eventCount && client.eventChooseList.firstKey() == 0
                    && client.eventChooseList.lastKey() == eventCount - 1,
                "one event choice per event description", name, client.eventChooseList.size());
    }

    // Host and plug-in read the same keys of a device group alike.
    void checkClientAgrees(const DeviceEntry &entry) const
    {
        OrvekClient client;
        loadInto(client, entry.name);
        require(client.targetAddress == entry.ipAddr, "host and client read the same address", entry.name);
        if (entry.port >= 1 && entry.port <= kMaxPort)
            require(client.targetPort == entry.port, "a valid port is used as set", entry.name, entry.port);
        // -1 is "absent or not a number" for the host; the client then
        // takes 5, which divides down to the same one second as -1 does.
        const int configured = entry.interval == -1 ? kDefaultInterval : entry.interval;
        require(client.interval == qMax(1, configured / 4), "interval is a quarter of the setting", entry.name,
                client.interval);
        if (entry.retries != -1)
            require(client.retries == entry.retries, "retries is used as set", entry.name, client.retries);
        if (entry.protocol != -1)
            require(client.protocol == entry.protocol, "protocol is used as set", entry.name, client.protocol);
    }

    // Every group the host accepts for saving reads back as it was saved.
    void checkRoundTrip(const QList<DeviceEntry> &entries) const
    {
        QFile::remove(roundTripPath);
        QList<DeviceEntry> saved;
        for (const DeviceEntry &entry : entries) {
            if (saved.size() >= kMaxRoundTrips)
                break;
            if (DeviceConfig(roundTripPath).save(entry))
                saved << entry;
        }
        const DeviceConfig reread(roundTripPath);
        for (const DeviceEntry &entry : saved) {
            require(reread.contains(entry.name), "a saved device is found again", entry.name);
            const DeviceEntry back = reread.device(entry.name);
            require(back.ipAddr == entry.ipAddr.trimmed(), "address reads back", entry.name);
            require(back.port == entry.port, "port reads back", entry.name, back.port);
            require(back.retries == qMax(-1, entry.retries), "retries reads back", entry.name, back.retries);
            require(back.protocol == qMax(-1, entry.protocol), "protocol reads back", entry.name, back.protocol);
            require(back.interval == qMax(-1, entry.interval), "interval reads back", entry.name, back.interval);
            require(back.plugin == entry.plugin, "plug-in name reads back", entry.name);
        }
    }

    QString path;
    QTemporaryDir scratch;
    QString roundTripPath;
    int eventCount = 0;
    qint64 generation = 0;
};

DevIniCheck *check = nullptr; // static storage: its temporary folder goes at exit

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    Q_UNUSED(argc)
    startFuzzApplication((*argv)[0]);
    static DevIniCheck instance;
    check = &instance;
    if (!check->init())
        exit(2);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray content(reinterpret_cast<const char *>(data), int(size));
    check->run(content);
    return 0;
}
