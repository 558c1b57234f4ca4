#include "chartscreenshots.h"

#include <QApplication>
#include <QDir>
#include <QFont>
#include <QPixmap>
#include <QWidget>
#include <QtTest>

#include "upssimulator.h"

namespace ChartScreenshots {

namespace {

// The offscreen platform defaults to a 12 pt font; desktops use about 9 pt.
constexpr int kDesktopFontPointSize = 9;

UpsSimulator::Profile profileFor(bool threePhase)
{
    return threePhase ? UpsSimulator::Profile::Three : UpsSimulator::Profile::Single;
}

} // namespace

bool enabled()
{
    return qEnvironmentVariableIntValue("ORVEK_WRITE_SCREENSHOTS") == 1;
}

void useDesktopFont()
{
    QFont desktopFont = QApplication::font();
    desktopFont.setPointSize(kDesktopFontPointSize);
    QApplication::setFont(desktopFont);
}

bool showOffscreen(QWidget *widget, const QSize &size)
{
    widget->resize(size);
    widget->show();
    if (!QTest::qWaitForWindowExposed(widget))
        return false;
    // A hidden widget would get a fresh resize event with every grab().
    widget->grab();
    QApplication::processEvents();
    return true;
}

QString save(QWidget *widget, const QString &fileName)
{
    const QString sourceDir = qEnvironmentVariable("ORVEK_SOURCE_DIR");
    if (sourceDir.isEmpty())
        return QString();
    const QDir dir(sourceDir + QStringLiteral("/docs/screenshots"));
    if (!dir.exists() && !QDir().mkpath(dir.path()))
        return QString();
    QApplication::processEvents();
    const QString path = dir.filePath(fileName);
    return widget->grab().save(path) ? path : QString();
}

QMap<int, QVariant> agentImage(bool threePhase)
{
    return UpsSimulator::profileImage(profileFor(threePhase));
}

QList<QMap<int, QVariant>> agentStory(bool threePhase, int seconds, const QString &scenario)
{
    UpsSimulator simulator(profileFor(threePhase));
    simulator.setScenario(scenario);
    QList<QMap<int, QVariant>> story;
    for (int second = 0; second < seconds; ++second) {
        simulator.advance(1.0);
        story << simulator.dataPointImage();
    }
    return story;
}

} // namespace ChartScreenshots
