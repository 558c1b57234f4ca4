#ifndef SCREENSHOTWRITER_H
#define SCREENSHOTWRITER_H

#include <QDir>
#include <QSize>
#include <QString>
#include <QStringList>

class QWidget;

// Shows widgets off screen and saves grabs of them as PNG files into one
// folder; remembers what it wrote and what failed.
class ScreenshotWriter
{
public:
    explicit ScreenshotWriter(const QString &folder);

    // False when the folder cannot be made.
    bool prepare() const;

    // Resizes and shows `widget` and paints it once, so that charts know
    // their plot box before data arrives.
    void showOffscreen(QWidget *widget, const QSize &size);

    // Runs the event loop for `ms` (animation steps, queued signals).
    static void settle(int ms);

    // Runs the event loop until `done` holds or `timeoutMs` passed; returns `done()`.
    template<typename Condition>
    static bool waitFor(Condition done, int timeoutMs);

    // Saves a grab of `widget` as <folder>/<fileName>, with the suffix
    // before the extension (e.g. "-zh_CN" for the pictures in Chinese).
    void save(QWidget *widget, const QString &fileName);
    void setFileSuffix(const QString &suffix) { m_suffix = suffix; }

    QStringList written() const { return m_written; }
    QStringList failed() const { return m_failed; }
    void fail(const QString &what) { m_failed << what; }

private:
    QDir m_folder;
    QString m_suffix;
    QStringList m_written;
    QStringList m_failed;
};

template<typename Condition>
bool ScreenshotWriter::waitFor(Condition done, int timeoutMs)
{
    constexpr int kStepMs = 50;
    for (int waited = 0; waited < timeoutMs && !done(); waited += kStepMs)
        settle(kStepMs);
    return done();
}

#endif // SCREENSHOTWRITER_H
