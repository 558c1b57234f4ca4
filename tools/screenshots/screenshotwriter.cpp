#include "screenshotwriter.h"

#include <QApplication>
#include <QEventLoop>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

ScreenshotWriter::ScreenshotWriter(const QString &folder)
    : m_folder(folder)
{
}

bool ScreenshotWriter::prepare() const
{
    return m_folder.exists() || QDir().mkpath(m_folder.path());
}

void ScreenshotWriter::showOffscreen(QWidget *widget, const QSize &size)
{
    widget->resize(size);
    widget->show();
    // A hidden widget would get a fresh resize event with every grab().
    widget->grab();
    QApplication::processEvents();
}

void ScreenshotWriter::settle(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

void ScreenshotWriter::save(QWidget *widget, const QString &fileName)
{
    QApplication::processEvents();
    QString name = fileName;
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    name.insert(dot < 0 ? name.size() : dot, m_suffix);
    const QString path = m_folder.filePath(name);
    if (widget->grab().save(path))
        m_written << path;
    else
        m_failed << path;
}
