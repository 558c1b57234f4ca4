// libFuzzer target: decoding of received Modbus/TCP answers. Every input is
// what one socket read returned, handed to a single client that lives across
// inputs, so alarm states, lostState and the data points evolve as in a long
// session; an input of several frames is then also handed over frame by frame.
// After every decode the client's promises are checked; a broken one aborts.
#include <QByteArray>
#include <QList>
#include <QPair>
#include <cstdint>

#include "fuzzapp.h"
#include "orvekclient.h"

namespace {

constexpr int kMinAnswerSize = 14;
constexpr int kDataOffset = 9;
constexpr int kMbapPrefix = 6; // transaction, protocol, length; the length counts what follows
constexpr int kMaxFramesPerInput = 64;
constexpr int kMeasurementCount = 73;
constexpr int kAlarmIdBase = 2000;
constexpr int kAgentAddressId = 4014;

using Emission = QPair<int, EventMap>;

void require(bool ok, const char *promise, int detail = 0)
{
    if (!ok)
        qFatal("fuzz_decode: broken promise: %s (%d)", promise, detail);
}

quint8 byteAt(const QByteArray &b, int i)
{
    return i >= 0 && i < b.size() ? quint8(b.at(i)) : 0;
}

// Bytes of identity block id (4000..4006), -1 for other ids.
int identityLength(int id)
{
    if (id == 4001 || id == 4006)
        return 32;
    return id >= 4000 && id <= 4005 ? 64 : -1;
}

// What the client holds before a decode, to compare against afterwards.
struct Snapshot
{
    DataPointMap dataPoints;
    QMap<int, int> eventStates;
    int failCount;
    int lostState;
};

class Session
{
public:
    Session()
    {
        client.name = QStringLiteral("ups-fuzz");
        client.setTarget(QStringLiteral("127.0.0.1"), 1502);
        const int n = client.getEventLogDesc().size();
        evaluated = n / 4;
        clearedOffset = n / 2;
        QObject::connect(&client, &CollectThread::postDEvent, &client,
                         [this](int type, const EventMap &map) { emissions.append({type, map}); },
                         Qt::DirectConnection);
    }

    void feed(const QByteArray &buffer)
    {
        const Snapshot before{client.dataPoints, client.eventStates, client.failCount, client.lostState};
        emissions.clear();
        client.decodeAnswer(buffer);
        if (buffer.size() < kMinAnswerSize) {
            require(emissions.isEmpty(), "a short buffer emits nothing");
            require(client.dataPoints == before.dataPoints && client.eventStates == before.eventStates,
                    "a short buffer leaves the data points and alarm states");
            require(client.failCount == before.failCount && client.lostState == before.lostState,
                    "a short buffer keeps failCount and lostState");
        } else {
            checkDecoded(buffer, before);
        }
        // Stand-in for failed connection attempts between reads, so that the
        // reset on contact is observable.
        client.failCount = 3;
    }

private:
    void checkDecoded(const QByteArray &buffer, const Snapshot &before) const
    {
        require(client.failCount == 0, "contact resets failCount");
        require(client.lostState == 0, "contact ends the lost state");
        checkEmissionOrder(before);
        checkDataPoints(before);
        const quint8 count = byteAt(buffer, 8);
        if (count == 0x09)
            checkAlarms(before);
        else
            require(client.eventStates == before.eventStates, "only alarm answers touch alarm states", count);
        if (count == 0x92)
            checkMeasurements(buffer);
    }

    void checkEmissionOrder(const Snapshot &before) const
    {
        require(!emissions.isEmpty() && emissions.last().first == 2007, "every answer ends with 2007");
        int decoded = 0;
        int restored = 0;
        for (int i = 0; i < emissions.size(); ++i) {
            const int type = emissions.at(i).first;
            decoded += type == 2007;
            restored += type == 1040;
            if (type == 1040)
                require(emissions.value(i + 1).first == 2001, "1040 is followed by 2001");
            else if (type == 2009 || type == 2010)
                checkFollowsAlarm(i, type == 2010 ? 3 : 6);
            else
                require(type == 2001 || type == 2006 || type == 2007, "unexpected event type", type);
        }
        require(decoded == 1, "one 2007 per answer", decoded);
        require(restored == int(before.lostState != 0), "1040 exactly when contact was lost or unknown",
                before.lostState);
    }

    // 2010 (battery low) and 2009 (input fault) come right after the 2006 of
    // alarm 3 or 6, raised or cleared.
    void checkFollowsAlarm(int index, int alarm) const
    {
        require(index > 0 && emissions.at(index - 1).first == 2006, "2009/2010 follow a 2006", alarm);
        const int id = emissions.at(index).second.value(QStringLiteral("alarmId")).toInt();
        require(id == alarm || id == alarm + clearedOffset, "2009/2010 name their own alarm", id);
    }

    void checkDataPoints(const Snapshot &before) const
    {
        for (auto it = before.dataPoints.constBegin(); it != before.dataPoints.constEnd(); ++it)
            require(client.dataPoints.contains(it.key()), "data points are never removed", it.key());
        require(client.dataPoints.value(kAgentAddressId).toString() == client.targetAddress,
                "4014 carries the agent address");
        for (auto it = client.dataPoints.constBegin(); it != client.dataPoints.constEnd(); ++it) {
            const int id = it.key();
            if (id >= 0 && id < kMeasurementCount) {
                const int v = it.value().toInt();
                require(v >= 0 && v <= 0xFFFF, "registers are unsigned 16-bit", v);
            } else if (id >= kAlarmIdBase && id < kAlarmIdBase + evaluated) {
                require(it.value().toInt() == client.eventStates.value(id - kAlarmIdBase, -1),
                        "alarm data point matches its state", id);
            } else if (identityLength(id) > 0) {
                require(it.value().toByteArray().size() <= identityLength(id), "identity slice length", id);
            } else {
                require(id == kAgentAddressId, "unknown data point id", id);
            }
        }
    }

    void checkAlarms(const Snapshot &before) const
    {
        int changed = 0;
        for (int i = 0; i < evaluated; ++i) {
            const int cur = client.eventStates.value(i, -1);
            require(cur == 0 || cur == 1, "alarm states are 0 or 1", i);
            changed += cur != before.eventStates.value(i, 0);
        }
        require(client.eventStates.size() == evaluated, "only the first quarter of alarms is evaluated",
                client.eventStates.size());
        int reported = 0;
        bool raised = false;
        for (const Emission &e : emissions) {
            if (e.first != 2006)
                continue;
            ++reported;
            const int id = e.second.value(QStringLiteral("alarmId")).toInt();
            const int state = e.second.value(QStringLiteral("alarmState")).toInt();
            const bool ok = state == 1 ? id >= 0 && id < evaluated
                                       : state == 0 && id >= clearedOffset && id < clearedOffset + evaluated;
            require(ok, "2006 names a raised or cleared alarm", id);
            raised = raised || state == 1;
        }
        require(reported == changed, "one 2006 per changed alarm", reported - changed);
        const int flag = emissions.last().second.value(QStringLiteral("dis_alarm"), -1).toInt();
        require(flag == int(raised), "dis_alarm tells whether an alarm was raised", flag);
    }

    void checkMeasurements(const QByteArray &buffer) const
    {
        const EventMap &ev = emissions.last().second;
        const QByteArray raw = ev.value(QStringLiteral("raw_data")).toByteArray();
        require(raw == buffer.mid(kDataOffset, 2 * kMeasurementCount), "raw_data is the register block");
        require(ev.value(QStringLiteral("data")).value<DataPointMap>() == client.dataPoints,
                "data carries the whole map");
        for (int n = 0; n < kMeasurementCount; ++n) {
            // Bytes past the end of a short buffer read as zero.
            const int expected = (byteAt(raw, 2 * n) << 8) | byteAt(raw, 2 * n + 1);
            require(client.dataPoints.value(n).toInt() == expected, "register n is big-endian data word n", n);
        }
    }

    OrvekClient client;
    QList<Emission> emissions;
    int evaluated = 0;
    int clearedOffset = 0;
};

Session *session = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    Q_UNUSED(argc)
    startFuzzApplication((*argv)[0]);
    session = new Session;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), int(size));
    session->feed(input); // everything arrived in one read
    // Then frame by frame, by their MBAP length; a length running past the end takes the rest.
    QList<QByteArray> frames;
    for (int pos = 0; pos < input.size() && frames.size() < kMaxFramesPerInput; pos += frames.last().size()) {
        const int length = (byteAt(input, pos + 4) << 8) | byteAt(input, pos + 5);
        frames << input.mid(pos, qMin(kMbapPrefix + length, input.size() - pos));
    }
    for (int i = 0; frames.size() > 1 && i < frames.size(); ++i)
        session->feed(frames.at(i));
    return 0;
}
