#include "logwriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <sys/resource.h>
#include <sys/stat.h>

#include "hostlogging.h"

namespace {

const char kTimeFormat[] = "yyyy-MM-dd hh:mm:ss";
const char kDateFormat[] = "yyyy-MM-dd";
const char kTimeColumn[] = "time";
const QChar kCsvSeparator = QLatin1Char(',');
const QChar kCsvQuote = QLatin1Char('"');
const QChar kEventSeparator = QLatin1Char('\t');
// Bounds of the open-file budget: a few files even under a tight limit, and
// no more than a host of this size needs (the least recently written file is
// looked up by a scan).
constexpr int kMinOpenFiles = 16;
constexpr int kMaxOpenFiles = 4096;
constexpr int kIdleCheckMs = 60 * 1000;

// Event log fields are tab separated: tabs and line breaks inside become blanks.
QString flatField(QString text)
{
    for (QChar &c : text) {
        if (c == QLatin1Char('\t') || c == QLatin1Char('\n') || c == QLatin1Char('\r'))
            c = QLatin1Char(' ');
    }
    return text;
}

} // namespace

LogWriter::LogWriter(const QString &folder, QObject *parent)
    : QObject(parent)
    , m_folder(folder)
{
    m_clock.start();
}

LogWriter::~LogWriter() = default;

int LogWriter::maxOpenFiles() const
{
    if (m_maxOpenFiles > 0)
        return m_maxOpenFiles;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY)
        return kMaxOpenFiles;
    // Read on each open: the host may raise its limit after this writer exists.
    return int(std::clamp<rlim_t>(limit.rlim_cur / 4, kMinOpenFiles, kMaxOpenFiles));
}

QString LogWriter::timeText(const QDateTime &time)
{
    return time.toString(QLatin1String(kTimeFormat));
}

QString LogWriter::eventFilePath(const QDate &date) const
{
    return QDir(m_folder).filePath(QStringLiteral("events-%1.log").arg(date.toString(QLatin1String(kDateFormat))));
}

QString LogWriter::dataFilePath(const QString &device, const QDate &date) const
{
    const QString name = m_dataNames.value(device, fileSafeName(device));
    return QDir(m_folder).filePath(
        QStringLiteral("data-%1-%2.csv").arg(name, date.toString(QLatin1String(kDateFormat))));
}

QString LogWriter::reserveDataName(const QString &device)
{
    if (m_dataNames.contains(device))
        return QString();
    const QString plain = fileSafeName(device);
    const QString holder = m_dataNames.key(plain);
    QString name = plain;
    for (int n = 2; !m_dataNames.key(name).isEmpty(); ++n)
        name = QStringLiteral("%1-%2").arg(plain).arg(n);
    m_dataNames.insert(device, name);
    return holder;
}

bool LogWriter::writeEvent(const QDateTime &time, const QString &device, int type, const QString &text)
{
    const QStringList fields = {timeText(time), flatField(device), QString::number(type), flatField(text)};
    return appendLine(eventFilePath(time.date()), time.date(), fields.join(kEventSeparator), nullptr);
}

bool LogWriter::writeDataRow(const QDateTime &time, const QString &device, const QStringList &header,
                             const QStringList &row)
{
    const QString rowLine = csvLine(QStringList{timeText(time)} + row);
    return appendLine(dataFilePath(device, time.date()), time.date(), rowLine, &header);
}

bool LogWriter::appendLine(const QString &path, const QDate &date, const QString &line,
                           const QStringList *headerIfNew)
{
    closeIdleFiles();
    forgetFailuresBefore(date);
    const auto failed = m_failed.constFind(path);
    if (failed != m_failed.constEnd() && failed->lastTry.elapsed() < m_retryIntervalMs) {
        ++m_droppedLines; // not yet time to try this file again
        return false;
    }
    QString error;
    if (!writeLine(path, date, line, headerIfNew, &error)) {
        noteFailure(path, date, error);
        return false;
    }
    m_failed.remove(path);
    if (m_failed.isEmpty() && isFailing()) {
        m_failure.clear();
        const QString message = tr("The logs in %1 are written again; %n line(s) could not be written.", "",
                                   m_droppedLines)
                                    .arg(QDir::toNativeSeparators(m_folder));
        m_droppedLines = 0;
        emit failureChanged(false, message);
    }
    return true;
}

bool LogWriter::writeLine(const QString &path, const QDate &date, const QString &line,
                          const QStringList *headerIfNew, QString *error)
{
    bool empty = false;
    OpenFile *open = openFile(path, date, &empty, error);
    if (!open)
        return false;
    QByteArray bytes;
    if (headerIfNew && empty)
        bytes += csvLine(QStringList{QLatin1String(kTimeColumn)} + *headerIfNew).toUtf8() + '\n';
    bytes += line.toUtf8() + '\n';
    // Unbuffered: the write reaches the file at once and sees ENOSPC itself.
    if (open->file->write(bytes) != bytes.size()) {
        *error = open->file->errorString();
        m_open.erase(path); // reopened when the file is tried again
        return false;
    }
    open->lastWriteMs = m_clock.elapsed();
    return true;
}

LogWriter::OpenFile *LogWriter::openFile(const QString &path, const QDate &date, bool *empty, QString *error)
{
    struct stat info{};
    const auto cached = m_open.find(path);
    if (cached != m_open.end()) {
        // Still the file that was opened? Deleted or rotated away, it is made anew.
        OpenFile &open = cached->second;
        if (::stat(open.nativePath.constData(), &info) == 0 && quint64(info.st_dev) == open.device
            && quint64(info.st_ino) == open.inode) {
            *empty = info.st_size == 0;
            return &open;
        }
        qCDebug(lcHost) << "log file replaced or gone, opening it again:" << path;
        m_open.erase(cached);
    }
    if (!QDir().mkpath(m_folder)) {
        *error = tr("the folder cannot be created");
        return nullptr;
    }
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        *error = file->errorString();
        return nullptr;
    }
    if (::fstat(file->handle(), &info) != 0) {
        *error = QString::fromLocal8Bit(strerror(errno));
        return nullptr;
    }
    makeRoom(date);
    OpenFile &open = m_open[path];
    open.file = std::move(file);
    open.nativePath = QFile::encodeName(path);
    open.date = date;
    open.device = quint64(info.st_dev);
    open.inode = quint64(info.st_ino);
    open.lastWriteMs = m_clock.elapsed();
    *empty = info.st_size == 0;
    return &open;
}

void LogWriter::makeRoom(const QDate &date)
{
    // Files of earlier days get no more lines: the first line of a day closes them.
    for (auto it = m_open.begin(); it != m_open.end();) {
        if (it->second.date < date)
            it = m_open.erase(it);
        else
            ++it;
    }
    const size_t bound = size_t(maxOpenFiles());
    while (!m_open.empty() && m_open.size() >= bound) {
        const auto oldest = std::min_element(m_open.begin(), m_open.end(), [](const auto &a, const auto &b) {
            return a.second.lastWriteMs < b.second.lastWriteMs;
        });
        m_open.erase(oldest);
    }
}

void LogWriter::closeIdleFiles()
{
    // Checked on writes, not by a timer: a writer without lines has nothing to close early.
    const qint64 now = m_clock.elapsed();
    if (now - m_lastIdleCheckMs < kIdleCheckMs)
        return;
    m_lastIdleCheckMs = now;
    for (auto it = m_open.begin(); it != m_open.end();) {
        if (now - it->second.lastWriteMs >= IdleCloseMs)
            it = m_open.erase(it);
        else
            ++it;
    }
}

void LogWriter::noteFailure(const QString &path, const QDate &date, const QString &error)
{
    ++m_droppedLines;
    FailedFile &failed = m_failed[path];
    failed.date = date;
    failed.lastTry.start();
    qCDebug(lcHost) << "cannot write" << path << error;
    if (isFailing())
        return; // told once, until writing works again
    m_failure = tr("Cannot write the log %1 (%2). Log lines are dropped until writing works again; "
                   "retrying every %3 s.")
                    .arg(QDir::toNativeSeparators(path), error)
                    .arg(m_retryIntervalMs / 1000);
    emit failureChanged(true, m_failure);
}

void LogWriter::forgetFailuresBefore(const QDate &date)
{
    // Files of earlier days get no more lines: they no longer count as failing.
    for (auto it = m_failed.begin(); it != m_failed.end();) {
        if (it->date < date)
            it = m_failed.erase(it);
        else
            ++it;
    }
}

QString LogWriter::csvField(const QString &field)
{
    const bool needsQuotes = field.contains(kCsvSeparator) || field.contains(kCsvQuote)
                             || field.contains(QLatin1Char('\n')) || field.contains(QLatin1Char('\r'))
                             || (!field.isEmpty() && (field.front().isSpace() || field.back().isSpace()));
    if (!needsQuotes)
        return field;
    QString quoted = field;
    quoted.replace(kCsvQuote, QStringLiteral("\"\""));
    return kCsvQuote + quoted + kCsvQuote;
}

QString LogWriter::csvLine(const QStringList &fields)
{
    QStringList quoted;
    quoted.reserve(fields.size());
    for (const QString &field : fields)
        quoted << csvField(field);
    return quoted.join(kCsvSeparator);
}

QString LogWriter::fileSafeName(const QString &device)
{
    QString safe;
    for (const QChar c : device) {
        const bool keep = c.isLetterOrNumber() || c == QLatin1Char('-') || c == QLatin1Char('_')
                          || c == QLatin1Char('.');
        safe += keep ? c : QLatin1Char('_');
    }
    if (safe.isEmpty())
        return QStringLiteral("device");
    if (safe.startsWith(QLatin1Char('.')))
        safe[0] = QLatin1Char('_'); // no hidden files, no ".."
    return safe;
}
