#pragma once

#include "simulator/wire.h"

#include <QSerialPort>

namespace k7 {

/// A wire over a port of this computer: one end of a null-modem cable, or of a pair of virtual
/// ports, with the tool at the other. The port cannot tell the rate of the tool, which garbles what
/// it receives if it is another one.
class SerialWire final : public Wire
{
    Q_OBJECT

public:
    /// Uses the port at `rate` bit/s.
    SerialWire(const QString &port, int rate, QObject *parent = nullptr);

    bool open() override { return m_port.open(QIODevice::ReadWrite); }
    bool isOpen() const override { return m_port.isOpen(); }
    QString path() const override { return isOpen() ? m_name : QString(); }
    void write(const QByteArray &bytes) override;
    /// Falls silent: the tool's port is still there.
    void hangUp() override { m_port.close(); }

private:
    const QString m_name;
    QSerialPort m_port;
};

} // namespace k7
