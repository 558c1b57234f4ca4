#ifndef AGENTMODBUSSERVER_H
#define AGENTMODBUSSERVER_H

#include <QModbusTcpServer>

// Modbus/TCP server of the simulated agent. It reports every accepted
// write-single-register request, also when the value equals the one already
// stored (QModbusServer::dataWritten only fires on changes, but a repeated
// command such as a second self-test is a new command).
class AgentModbusServer : public QModbusTcpServer
{
    Q_OBJECT
public:
    explicit AgentModbusServer(QObject *parent = nullptr);

signals:
    void holdingRegisterWritten(int reg, quint16 value);

protected:
    QModbusResponse processRequest(const QModbusPdu &request) override;
};

#endif // AGENTMODBUSSERVER_H
