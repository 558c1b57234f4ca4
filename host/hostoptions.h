#ifndef HOSTOPTIONS_H
#define HOSTOPTIONS_H

#include <QCoreApplication>
#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

// The host's command line.
class HostOptions
{
    Q_DECLARE_TR_FUNCTIONS(HostOptions)

public:
    static constexpr int OperatorLevel = 1;

    // Parses the arguments (program name first). Works before the
    // application object exists, so that the platform can still be chosen.
    static HostOptions parse(const QStringList &arguments);

    // True when no display is reachable: no DISPLAY or WAYLAND_DISPLAY and
    // no platform chosen through QT_QPA_PLATFORM.
    static bool displayMissing();
    // Needs the application object (the usage line names the program).
    static QString helpText();

    bool ok = true;
    QString error;
    bool helpRequested = false;

    bool headless = false;
    int durationSeconds = -1;   // < 0: run until stopped
    QString screenshotFile;
    QList<QPair<QString, QString>> additions; // device name, "host:port"
    int interval = -1;
    int retries = -1;
    QString pluginFolder;
    int userLevel = OperatorLevel;
    QString nutAddress; // empty: no NUT server
    int nutPort = 0;
    QString metricsAddress; // empty: no /metrics
    int metricsPort = 0;
    QString eventCommand; // empty: no command per event
    QString language; // empty: the system's locale
};

#endif // HOSTOPTIONS_H
