#ifndef REGISTERIMAGE_H
#define REGISTERIMAGE_H

#include <QByteArray>
#include <QVector>

// The fixed Modbus image every port of the multi-port agent serves: the input
// registers and discrete inputs of a healthy single-phase UPS, taken from the
// simulator's profile. answer() turns one request frame into its answer.
class RegisterImage
{
public:
    RegisterImage();

    // The answer to one complete Modbus/TCP frame: reads from the image,
    // write-single-register echoed, anything else an exception answer.
    QByteArray answer(const QByteArray &frame) const;

private:
    QByteArray readRegisters(const QByteArray &head, quint16 start, quint16 quantity) const;
    QByteArray readBits(const QByteArray &head, quint16 start, quint16 quantity) const;

    QVector<quint16> m_registers; // indexed by register address
    QVector<bool> m_bits;         // indexed by input address
};

#endif // REGISTERIMAGE_H
