#ifndef LOGWRITER_H
#define LOGWRITER_H

#include <QCoreApplication>
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QStringList>

// Writes the host's logs into one folder, one file per day:
//   events-YYYY-MM-DD.log          time, device, event type, text (tab separated)
//   data-<device>-YYYY-MM-DD.csv   "time" + the plug-in's data-log columns
// The file is picked by the date of the line written, so logs roll over at
// midnight. Files are opened for each line: a few lines a second at most.
class LogWriter
{
    Q_DECLARE_TR_FUNCTIONS(LogWriter)

public:
    explicit LogWriter(const QString &folder);

    QString folder() const { return m_folder; }

    bool writeEvent(const QDateTime &time, const QString &device, int type, const QString &text);
    // Writes the header first when the day's file is new or empty.
    bool writeDataRow(const QDateTime &time, const QString &device, const QStringList &header,
                      const QStringList &row);

    QString eventFilePath(const QDate &date) const;
    QString dataFilePath(const QString &device, const QDate &date) const;

    static QString timeText(const QDateTime &time);
    // One CSV field, quoted when it holds a separator, a quote, a line break
    // or blanks at either end.
    static QString csvField(const QString &field);
    static QString csvLine(const QStringList &fields);
    // The device name made safe for a file name.
    static QString fileSafeName(const QString &device);

private:
    bool appendLine(const QString &path, const QString &line, const QString &headerIfNew);

    QString m_folder;
};

#endif // LOGWRITER_H
