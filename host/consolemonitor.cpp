#include "consolemonitor.h"

#include <QFileDevice>
#include <QIODevice>
#include <QSocketNotifier>

#include <cerrno>
#include <unistd.h>

#include "consolecommand.h"
#include "devicehost.h"
#include "devicesession.h"
#include "logwriter.h"
#include "upsformat.h"

namespace {

constexpr int kReadChunk = 4096;
constexpr int kMaxLineBytes = 4096;
const char kNoValue[] = "-";

// A measurement as the status line shows it: with its unit, R/S/T when its
// phase count says three phases, "-" for what the device did not report.
QString measurement(const QMap<int, QVariant> &data, int id)
{
    UpsFormat::Options options;
    options.withUnit = true;
    options.missing = QString::fromLatin1(kNoValue);
    return UpsFormat::text(data, id, options);
}

QString stateText(const DeviceStatus &status)
{
    switch (status.state) {
    case DeviceStatus::State::Communicating:
        return status.stale ? ConsoleMonitor::tr("data stale") : ConsoleMonitor::tr("communicating");
    case DeviceStatus::State::Lost:
        return ConsoleMonitor::tr("lost");
    case DeviceStatus::State::Unknown:
        break;
    }
    return ConsoleMonitor::tr("connecting");
}

} // namespace

ConsoleMonitor::ConsoleMonitor(DeviceHost *host, QIODevice *out, QObject *parent)
    : QObject(parent)
    , m_host(host)
    , m_out(out)
{
    connect(&m_statusTimer, &QTimer::timeout, this, &ConsoleMonitor::printStatus);
    connect(m_host, &DeviceHost::eventLogged, this, &ConsoleMonitor::onEventLogged);
    connect(m_host, &DeviceHost::noticeRaised, this, &ConsoleMonitor::onNotice);
}

void ConsoleMonitor::startStatus(int periodMs)
{
    m_statusTimer.start(periodMs);
}

void ConsoleMonitor::readCommands(int fd)
{
    m_fd = fd;
    m_notifier = new QSocketNotifier(fd, QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &ConsoleMonitor::onReadable);
}

void ConsoleMonitor::onReadable()
{
    char buffer[kReadChunk];
    const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
    if (got < 0) {
        if (errno != EAGAIN && errno != EINTR)
            m_notifier->setEnabled(false);
        return;
    }
    if (got == 0) {
        m_notifier->setEnabled(false);
        if (::isatty(m_fd))
            emit quitRequested(); // Ctrl-D at the terminal
        return;
    }
    m_pending.append(buffer, int(got));
    int end;
    while ((end = m_pending.indexOf('\n')) >= 0) {
        const QByteArray line = m_pending.left(end);
        m_pending.remove(0, end + 1);
        executeLine(QString::fromUtf8(line));
    }
    if (m_pending.size() > kMaxLineBytes)
        m_pending.clear(); // no command is that long
}

void ConsoleMonitor::executeLine(const QString &line)
{
    const ConsoleCommand command = ConsoleCommand::parse(line, m_host->deviceNames());
    switch (command.kind) {
    case ConsoleCommand::Kind::Empty:
        break;
    case ConsoleCommand::Kind::Status:
        print(statusBlock());
        break;
    case ConsoleCommand::Kind::Help:
        print(ConsoleCommand::helpText());
        break;
    case ConsoleCommand::Kind::Quit:
        emit quitRequested();
        break;
    case ConsoleCommand::Kind::Invalid:
        print(tr("error: %1").arg(command.error));
        break;
    case ConsoleCommand::Kind::Control:
        if (DeviceSession *session = m_host->session(command.device)) {
            session->requestControl(command.controlId, command.value);
            print(tr("%1: request %2 \"%3\" sent").arg(command.device).arg(command.controlId).arg(command.value));
        }
        break;
    }
}

QString ConsoleMonitor::statusBlock() const
{
    const QList<DeviceSession *> sessions = m_host->sessions();
    int communicating = 0;
    QStringList lines;
    for (const DeviceSession *session : sessions) {
        if (session->status().state == DeviceStatus::State::Communicating)
            ++communicating;
        lines << QStringLiteral("  ") + deviceLine(session);
    }
    if (m_host->logs().isFailing())
        lines << tr("  ! %1").arg(m_host->logs().failure()); // until writing works again
    const QString head = tr("== %1  %n device(s), %2 communicating ==", "", sessions.size())
                             .arg(LogWriter::timeText(QDateTime::currentDateTime()))
                             .arg(communicating);
    return (QStringList{head} + lines).join(QLatin1Char('\n'));
}

QString ConsoleMonitor::deviceLine(const DeviceSession *session, const QDateTime &now)
{
    const DeviceStatus status = session->status();
    const QMap<int, QVariant> data = session->latestData();
    QStringList fields;
    fields << status.name << stateText(status);
    fields << (status.model.isEmpty() ? QString::fromLatin1(kNoValue) : status.model);
    if (data.isEmpty()) {
        fields << tr("no data yet");
        return fields.join(QStringLiteral("  "));
    }
    fields << tr("data %1").arg(DeviceSession::dataAgeText(session->lastDataTime(), now));
    const QStringList alarms = session->activeAlarms();
    fields << measurementFields(data)
           << tr("alarms: %1").arg(alarms.isEmpty() ? tr("none") : alarms.join(QStringLiteral("; ")));
    return fields.join(QStringLiteral("  "));
}

QStringList ConsoleMonitor::measurementFields(const QMap<int, QVariant> &data)
{
    return {UpsFormat::text(data, UpsPoint::OutputSource),
            tr("in %1").arg(measurement(data, UpsPoint::InputVoltage)),
            tr("out %1").arg(measurement(data, UpsPoint::OutputVoltage)),
            tr("load %1").arg(measurement(data, UpsPoint::OutputLoad)),
            tr("battery %1").arg(measurement(data, UpsPoint::BatteryCapacity))};
}

void ConsoleMonitor::printStatus()
{
    print(statusBlock());
}

void ConsoleMonitor::onEventLogged(QDateTime time, QString device, int type, QString text)
{
    Q_UNUSED(type)
    print(QStringLiteral("%1  %2  %3").arg(LogWriter::timeText(time), device, text));
}

void ConsoleMonitor::onNotice(const HostNotice &notice)
{
    print(tr("%1  %2  warning: %3")
              .arg(LogWriter::timeText(notice.time), notice.device.isEmpty() ? tr("host") : notice.device,
                   notice.text));
}

void ConsoleMonitor::print(const QString &text)
{
    if (!m_out)
        return;
    m_out->write(text.toUtf8());
    m_out->write("\n");
    if (auto *file = qobject_cast<QFileDevice *>(m_out))
        file->flush();
}
