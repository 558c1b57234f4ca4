#include "agentdata.h"

#include "upssimulator.h"

namespace AgentData {

namespace {

UpsSimulator::Profile profileFor(bool threePhase)
{
    return threePhase ? UpsSimulator::Profile::Three : UpsSimulator::Profile::Single;
}

} // namespace

QMap<int, QVariant> image(bool threePhase)
{
    return UpsSimulator::profileImage(profileFor(threePhase));
}

QList<QMap<int, QVariant>> story(bool threePhase, int seconds, const QString &scenario)
{
    UpsSimulator simulator(profileFor(threePhase));
    simulator.setScenario(scenario);
    QList<QMap<int, QVariant>> maps;
    for (int second = 0; second < seconds; ++second) {
        simulator.advance(1.0);
        maps << simulator.dataPointImage();
    }
    return maps;
}

} // namespace AgentData
