#include "logwriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include "hostlogging.h"

namespace {

const char kTimeFormat[] = "yyyy-MM-dd hh:mm:ss";
const char kDateFormat[] = "yyyy-MM-dd";
const char kTimeColumn[] = "time";
const QChar kCsvSeparator = QLatin1Char(',');
const QChar kCsvQuote = QLatin1Char('"');
const QChar kEventSeparator = QLatin1Char('\t');

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

LogWriter::LogWriter(const QString &folder)
    : m_folder(folder)
{
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
    return QDir(m_folder).filePath(
        QStringLiteral("data-%1-%2.csv").arg(fileSafeName(device), date.toString(QLatin1String(kDateFormat))));
}

bool LogWriter::writeEvent(const QDateTime &time, const QString &device, int type, const QString &text)
{
    const QStringList fields = {timeText(time), flatField(device), QString::number(type), flatField(text)};
    return appendLine(eventFilePath(time.date()), fields.join(kEventSeparator), QString());
}

bool LogWriter::writeDataRow(const QDateTime &time, const QString &device, const QStringList &header,
                             const QStringList &row)
{
    const QString headerLine = csvLine(QStringList{QLatin1String(kTimeColumn)} + header);
    const QString rowLine = csvLine(QStringList{timeText(time)} + row);
    return appendLine(dataFilePath(device, time.date()), rowLine, headerLine);
}

bool LogWriter::appendLine(const QString &path, const QString &line, const QString &headerIfNew)
{
    if (!QDir().mkpath(m_folder)) {
        qCWarning(lcHost) << "cannot create the log folder" << m_folder;
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        qCWarning(lcHost) << "cannot write" << path << file.errorString();
        return false;
    }
    QTextStream out(&file);
    out.setCodec("UTF-8");
    if (!headerIfNew.isEmpty() && file.size() == 0)
        out << headerIfNew << '\n';
    out << line << '\n';
    out.flush();
    return file.error() == QFileDevice::NoError;
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
