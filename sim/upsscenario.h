#ifndef UPSSCENARIO_H
#define UPSSCENARIO_H

#include <QString>
#include <QStringList>
#include <QVector>

// A named, timed story played on the simulated UPS: what happens at which
// simulated second after the scenario was selected.
struct UpsScenario
{
    enum class Action { MainsFail, MainsReturn, BypassOn, BypassOff, ToggleAlarm };

    struct Step
    {
        double at;      // simulated seconds from the start (of each round)
        Action action;
        int alarm;      // ToggleAlarm only
    };

    QString name;
    const char *description = "";  // translatable in the context "UpsScenario"
    QVector<Step> steps;
    double period = 0.0;             // > 0: the steps repeat with this period
    double batteryFastForward = 1.0; // see UpsModel::setBatteryFastForward

    static const QVector<UpsScenario> &all();
    static const UpsScenario *find(const QString &name);
    static QStringList names();
};

#endif // UPSSCENARIO_H
