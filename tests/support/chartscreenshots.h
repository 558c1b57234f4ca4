#ifndef CHARTSCREENSHOTS_H
#define CHARTSCREENSHOTS_H

#include <QList>
#include <QMap>
#include <QSize>
#include <QString>
#include <QVariant>

class QWidget;

// Screenshots of the pages, saved to docs/screenshots of the source tree.
// Writing is opt-in (ORVEK_WRITE_SCREENSHOTS=1) so that ordinary test runs
// leave the source tree alone.
namespace ChartScreenshots {

bool enabled();

// Switches the application to a desktop-sized font (the offscreen platform
// defaults to 12 pt). Widgets keep the font they were created with, so call
// it before creating the widgets to shoot.
void useDesktopFont();

// Resizes and shows `widget` off screen and paints it once, so that charts
// know their plot box before data arrives.
bool showOffscreen(QWidget *widget, const QSize &size);

// Saves a grab of `widget` as docs/screenshots/<fileName>; returns the path
// written, or an empty string when the source tree is unknown or saving failed.
QString save(QWidget *widget, const QString &fileName);

// The simulated agent's data point map after one full polling rotation.
QMap<int, QVariant> agentImage(bool threePhase);

// One map per simulated second of one of the agent's scenarios; the demo
// story has a mains failure at 10 s, the battery running down and the mains
// returning at 45 s.
QList<QMap<int, QVariant>> agentStory(bool threePhase, int seconds, const QString &scenario = QStringLiteral("demo"));

} // namespace ChartScreenshots

#endif // CHARTSCREENSHOTS_H
