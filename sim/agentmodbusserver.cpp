#include "agentmodbusserver.h"

AgentModbusServer::AgentModbusServer(QObject *parent)
    : QModbusTcpServer(parent)
{
}

QModbusResponse AgentModbusServer::processRequest(const QModbusPdu &request)
{
    const QModbusResponse response = QModbusTcpServer::processRequest(request);
    if (request.functionCode() == QModbusPdu::WriteSingleRegister && !response.isException()) {
        quint16 address = 0;
        quint16 value = 0;
        request.decodeData(&address, &value);
        emit holdingRegisterWritten(address, value);
    }
    return response;
}
