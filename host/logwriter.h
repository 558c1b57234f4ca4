#ifndef LOGWRITER_H
#define LOGWRITER_H

#include <QDate>
#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <unordered_map>

class QFile;

// Writes the host's logs into one folder, one file per day:
//   events-YYYY-MM-DD.log          time, device, event type, text (tab separated)
//   data-<device>-YYYY-MM-DD.csv   "time" + the plug-in's data-log columns
// The file is picked by the date of the line written, so logs roll over at
// midnight. Files stay open between lines, each line is one unbuffered write
// so a reader following the file sees it at once. The first line of a day
// closes the files of earlier days; a file not written for IdleCloseMs is
// closed, and at most maxOpenFiles() are open at once (the least recently
// written one is closed first). A file deleted or moved away while open is
// noticed on the next line and made anew, header included.
//
// A file that cannot be written (folder missing or not writable, disk full)
// does not stop anything: its lines are dropped and the file is tried again
// at most every retryInterval, a new day's file at once. failureChanged tells
// once when writing stops working and once when it works again.
class LogWriter : public QObject
{
    Q_OBJECT
public:
    static constexpr int DefaultRetryIntervalMs = 30000;
    static constexpr int IdleCloseMs = 10 * 60 * 1000;

    explicit LogWriter(const QString &folder, QObject *parent = nullptr);
    ~LogWriter() override;

    QString folder() const { return m_folder; }

    bool writeEvent(const QDateTime &time, const QString &device, int type, const QString &text);
    // Writes the header first when the day's file is new or empty.
    bool writeDataRow(const QDateTime &time, const QString &device, const QStringList &header,
                      const QStringList &row);

    QString eventFilePath(const QDate &date) const;
    QString dataFilePath(const QString &device, const QDate &date) const;

    // Gives the device a data-log file name of its own: names that differ but
    // come out alike in fileSafeName ("ups 1", "ups_1") would mix their rows
    // in one file, so a later one gets a number appended. Returns the device
    // that already holds the plain name, or an empty string.
    QString reserveDataName(const QString &device);

    // True while some log file cannot be written; failure() says which and why.
    bool isFailing() const { return !m_failure.isEmpty(); }
    QString failure() const { return m_failure; }
    void setRetryInterval(int ms) { m_retryIntervalMs = ms; }

    // Every device holds a socket and a data log open: the logs get a quarter
    // of the process's open-file limit, so they never take the descriptors the
    // connections need. 0 (the default) derives the bound from that limit.
    void setMaxOpenFiles(int count) { m_maxOpenFiles = count; }
    int maxOpenFiles() const;
    int openFileCount() const { return int(m_open.size()); }

    static QString timeText(const QDateTime &time);
    // One CSV field, quoted when it holds a separator, a quote, a line break
    // or blanks at either end.
    static QString csvField(const QString &field);
    static QString csvLine(const QStringList &fields);
    // The device name made safe for a file name.
    static QString fileSafeName(const QString &device);

signals:
    // failing: the message names the file and the reason; otherwise it says
    // that the logs are written again and how many lines were lost.
    void failureChanged(bool failing, QString message);

private:
    struct FailedFile
    {
        QDate date;
        QElapsedTimer lastTry;
    };
    struct OpenFile
    {
        std::unique_ptr<QFile> file;
        QByteArray nativePath;
        QDate date;
        quint64 device = 0; // identity of the file opened, to notice it being replaced
        quint64 inode = 0;
        qint64 lastWriteMs = 0;
    };
    using OpenFiles = std::unordered_map<QString, OpenFile>;

    // The header columns (after the time) of a file that gets one; built
    // into a line only for a new or emptied file.
    bool appendLine(const QString &path, const QDate &date, const QString &line, const QStringList *headerIfNew);
    bool writeLine(const QString &path, const QDate &date, const QString &line, const QStringList *headerIfNew,
                   QString *error);
    OpenFile *openFile(const QString &path, const QDate &date, bool *empty, QString *error);
    void makeRoom(const QDate &date);
    void closeIdleFiles();
    void noteFailure(const QString &path, const QDate &date, const QString &error);
    void forgetFailuresBefore(const QDate &date);

    QString m_folder;
    QHash<QString, QString> m_dataNames; // device -> file name part
    QHash<QString, FailedFile> m_failed; // path -> last attempt
    QString m_failure;
    int m_droppedLines = 0;
    int m_retryIntervalMs = DefaultRetryIntervalMs;
    OpenFiles m_open; // path -> open file
    int m_maxOpenFiles = 0;
    QElapsedTimer m_clock; // times the writes, for closing idle files
    qint64 m_lastIdleCheckMs = 0;
};

#endif // LOGWRITER_H
