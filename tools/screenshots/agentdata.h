#ifndef AGENTDATA_H
#define AGENTDATA_H

#include <QList>
#include <QMap>
#include <QString>
#include <QVariant>

// Data point maps taken from the simulated agent's UPS model, as the client
// would decode them after a full polling rotation.
namespace AgentData {

// The agent's map after one full polling rotation.
QMap<int, QVariant> image(bool threePhase);

// One map per simulated second of one of the agent's scenarios; the demo
// story has a mains failure at 10 s, the battery running down and the mains
// returning at 45 s.
QList<QMap<int, QVariant>> story(bool threePhase, int seconds, const QString &scenario = QStringLiteral("demo"));

} // namespace AgentData

#endif // AGENTDATA_H
