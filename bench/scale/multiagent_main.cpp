// orvek-multiagent: N Modbus/TCP ports in one light process, for the scale
// benchmark. It is driven through stdin, one command a line, and answers on
// stdout:
//   reset        clear the counters, restart the first-data clock
//   first        "first <ports with data> <ms until all had data, -1>"
//   mark         start a measuring window
//   stats E      "stats <answers since mark> <ports with at least E answers>"
//   quit
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

#include "filelimit.h"
#include "multiagent.h"
#include "quitonsignal.h"

namespace {

void reply(const QString &line)
{
    std::printf("%s\n", line.toLocal8Bit().constData());
    std::fflush(stdout);
}

void runCommand(MultiAgent *agent, const QByteArray &line)
{
    const QList<QByteArray> words = line.simplified().split(' ');
    const QByteArray &command = words.first();
    if (command == "reset") {
        agent->reset();
        reply(QStringLiteral("ok"));
    } else if (command == "mark") {
        agent->mark();
        reply(QStringLiteral("ok"));
    } else if (command == "first") {
        reply(QStringLiteral("first %1 %2").arg(agent->portsWithData()).arg(agent->firstDataMs()));
    } else if (command == "stats") {
        const quint32 expected = words.value(1).toUInt();
        reply(QStringLiteral("stats %1 %2").arg(agent->answeredSinceMark()).arg(agent->portsAtLeast(expected)));
    } else if (command == "quit") {
        QCoreApplication::quit();
    } else if (!command.isEmpty()) {
        reply(QStringLiteral("error unknown command %1").arg(QString::fromLatin1(command)));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("orvek-multiagent"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate("orvek-multiagent",
                                                                 "Serves N simulated UPS agents on consecutive ports."));
    parser.addHelpOption();
    const QCommandLineOption address(QStringLiteral("address"), QCoreApplication::translate("orvek-multiagent", "Address to listen on."),
                                     QStringLiteral("A"), QStringLiteral("127.0.0.1"));
    const QCommandLineOption basePort(QStringLiteral("base-port"), QCoreApplication::translate("orvek-multiagent", "First port."),
                                      QStringLiteral("P"), QStringLiteral("23000"));
    const QCommandLineOption ports(QStringLiteral("ports"), QCoreApplication::translate("orvek-multiagent", "Number of ports."),
                                   QStringLiteral("N"), QStringLiteral("1"));
    parser.addOptions({address, basePort, ports});
    parser.process(app);

    const quint64 limit = raiseOpenFileLimit();
    const int count = parser.value(ports).toInt();
    MultiAgent agent;
    if (count < 1 || !agent.listen(parser.value(address), quint16(parser.value(basePort).toUInt()), count)) {
        std::fprintf(stderr, "orvek-multiagent: cannot serve %d port(s) (open-file limit %llu)\n", count,
                     static_cast<unsigned long long>(limit));
        return 1;
    }

    // Commands come line by line; end of input ends the agent as well.
    QByteArray pending;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char buffer[512];
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got <= 0) {
            input.setEnabled(false);
            QCoreApplication::quit();
            return;
        }
        pending.append(buffer, int(got));
        for (int end = pending.indexOf('\n'); end >= 0; end = pending.indexOf('\n')) {
            runCommand(&agent, pending.left(end));
            pending.remove(0, end + 1);
        }
    });
    QuitOnSignal quitOnSignal;
    QObject::connect(&quitOnSignal, &QuitOnSignal::signalled, &app, &QCoreApplication::quit);
    reply(QStringLiteral("ready %1 %2").arg(parser.value(basePort)).arg(count));
    return app.exec();
}
