#include "upsscenario.h"

namespace {

using Action = UpsScenario::Action;

constexpr double FirstEventSeconds = 5.0;

QVector<UpsScenario> buildScenarios()
{
    QVector<UpsScenario> list;

    UpsScenario normal;
    normal.name = QStringLiteral("normal");
    normal.description =
        QT_TRANSLATE_NOOP("UpsScenario", "online on utility power, nothing happens");
    list << normal;

    // With the battery fast-forwarded 20 times a 35 % load empties it in about
    // two minutes: low battery after ~100 s, exhausted after ~130 s.
    UpsScenario mainsFailure;
    mainsFailure.name = QStringLiteral("mains-failure");
    mainsFailure.description =
        QT_TRANSLATE_NOOP("UpsScenario", "mains fail after 5 s and stay away; the battery runs down");
    mainsFailure.steps = {{FirstEventSeconds, Action::MainsFail, 0}};
    mainsFailure.batteryFastForward = 20.0;
    list << mainsFailure;

    UpsScenario mainsReturn = mainsFailure;
    mainsReturn.name = QStringLiteral("mains-return");
    mainsReturn.description =
        QT_TRANSLATE_NOOP("UpsScenario", "mains fail after 5 s and return at 120 s, after low battery");
    mainsReturn.steps << UpsScenario::Step{120.0, Action::MainsReturn, 0};
    list << mainsReturn;

    // One minute: failure at 10 s, low battery near 40 s, mains back at 45 s;
    // afterwards the UPS stays online and recharges.
    UpsScenario demo;
    demo.name = QStringLiteral("demo");
    demo.description =
        QT_TRANSLATE_NOOP("UpsScenario", "one-minute story: mains failure at 10 s, low battery, mains return at 45 s");
    demo.steps = {{10.0, Action::MainsFail, 0}, {45.0, Action::MainsReturn, 0}};
    demo.batteryFastForward = 63.0;
    list << demo;

    UpsScenario bypass;
    bypass.name = QStringLiteral("bypass");
    bypass.description =
        QT_TRANSLATE_NOOP("UpsScenario", "load transferred to bypass after 5 s");
    bypass.steps = {{FirstEventSeconds, Action::BypassOn, 0}};
    list << bypass;

    UpsScenario flips;
    flips.name = QStringLiteral("alarm-flips");
    flips.description =
        QT_TRANSLATE_NOOP("UpsScenario", "alarms 5, 8 and 16 go on and off in turn, one change every 5 s");
    const int flipped[] = {5, 8, 16};
    double at = FirstEventSeconds;
    for (int round = 0; round < 2; ++round) {
        for (int alarm : flipped) {
            flips.steps << UpsScenario::Step{at, Action::ToggleAlarm, alarm};
            at += FirstEventSeconds;
        }
    }
    flips.period = at - FirstEventSeconds;
    list << flips;

    return list;
}

} // namespace

const QVector<UpsScenario> &UpsScenario::all()
{
    static const QVector<UpsScenario> scenarios = buildScenarios();
    return scenarios;
}

const UpsScenario *UpsScenario::find(const QString &name)
{
    for (const UpsScenario &scenario : all()) {
        if (scenario.name == name)
            return &scenario;
    }
    return nullptr;
}

QStringList UpsScenario::names()
{
    QStringList list;
    for (const UpsScenario &scenario : all())
        list << scenario.name;
    return list;
}
