// orvek-bare-client: the floor the scale benchmark compares the host with.
// N libmodbus contexts in one thread, one per port, each sending the same
// four-read rotation as the device client at the same rate (one request per
// device and second, the tick of the default interval). Prints
//   bare <requests> <answered> <cpu µs>
// where the CPU time (user + system) covers the polling window only.
#include <modbus.h>

#include <sys/resource.h>
#include <time.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "filelimit.h"
#include "upsframes.h"

namespace {

constexpr int kUnitId = UpsFrames::UnitId;
constexpr long kNsPerSecond = 1000000000L;

struct Options
{
    std::string address = "127.0.0.1";
    int basePort = 23000;
    int devices = 1;
    int seconds = 10;
};

bool parse(int argc, char *argv[], Options *options)
{
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        const char *value = argv[i + 1];
        if (name == "--address")
            options->address = value;
        else if (name == "--base-port")
            options->basePort = std::atoi(value);
        else if (name == "--devices")
            options->devices = std::atoi(value);
        else if (name == "--seconds")
            options->seconds = std::atoi(value);
        else
            return false;
    }
    return argc % 2 == 1 && options->devices > 0 && options->seconds > 0;
}

long cpuMicroseconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000000L + usage.ru_utime.tv_usec
           + usage.ru_stime.tv_usec;
}

// One request of the rotation; true when it was answered.
bool request(modbus_t *context, int index)
{
    static uint16_t registers[MODBUS_MAX_READ_REGISTERS];
    static uint8_t bits[MODBUS_MAX_READ_BITS];
    const UpsFrames::ReadRequest &read = UpsFrames::Requests[index];
    if (read.function == UpsFrames::ReadDiscreteInputs)
        return modbus_read_input_bits(context, read.start, read.quantity, bits) == read.quantity;
    return modbus_read_input_registers(context, read.start, read.quantity, registers) == read.quantity;
}

void sleepUntil(const timespec &deadline)
{
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &deadline, nullptr) == EINTR) {
    }
}

} // namespace

int main(int argc, char *argv[])
{
    Options options;
    if (!parse(argc, argv, &options)) {
        std::fprintf(stderr, "usage: %s [--address A] [--base-port P] [--devices N] [--seconds S]\n", argv[0]);
        return 2;
    }
    raiseOpenFileLimit();

    std::vector<modbus_t *> contexts;
    for (int i = 0; i < options.devices; ++i) {
        modbus_t *context = modbus_new_tcp(options.address.c_str(), options.basePort + i);
        if (!context || modbus_set_slave(context, kUnitId) != 0 || modbus_connect(context) != 0) {
            std::fprintf(stderr, "orvek-bare-client: port %d: %s\n", options.basePort + i, modbus_strerror(errno));
            return 1;
        }
        // The device client waits one tick for an answer.
        modbus_set_response_timeout(context, 1, 0);
        contexts.push_back(context);
    }

    long requests = 0;
    long answered = 0;
    const long cpuStart = cpuMicroseconds();
    timespec tick{};
    clock_gettime(CLOCK_MONOTONIC, &tick);
    for (int second = 0; second < options.seconds; ++second) {
        for (modbus_t *context : contexts) {
            ++requests;
            answered += request(context, second % UpsFrames::RequestCount) ? 1 : 0;
        }
        tick.tv_sec += 1;
        sleepUntil(tick);
    }
    const long cpu = cpuMicroseconds() - cpuStart;

    for (modbus_t *context : contexts) {
        modbus_close(context);
        modbus_free(context);
    }
    std::printf("bare %ld %ld %ld\n", requests, answered, cpu);
    return 0;
}
