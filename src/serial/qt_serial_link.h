#pragma once

#include "serial/serial_link.h"

#include <QSerialPort>

/// A SerialLink over a port of this computer.
class QtSerialLink final : public SerialLink
{
    Q_OBJECT

public:
    explicit QtSerialLink(QObject *parent = nullptr);
    ~QtSerialLink() override;

    /// The tool's other link, which may be what keeps this one from its port.
    void setPeer(const QtSerialLink &peer) { m_peer = &peer; }

    void setPortName(const QString &name) override { m_name = name; }
    void setBaudRate(int rate) override;
    bool open() override;
    bool isOpen() const override { return m_port.isOpen(); }
    OpenFailure openFailure() const override { return m_openFailure; }
    QStringList holders() const override;
    void close() override;
    void abandon() override;
    void write(const QByteArray &bytes) override;
    qint64 bytesToSend() const override;
    QByteArray readAll() override { return m_port.readAll(); }
    void poll() override;

private:
    void closePort();
    void onError(QSerialPort::SerialPortError error);
    OpenFailure causeOf(QSerialPort::SerialPortError error) const;
    bool isHeldByPeer() const;

    QSerialPort m_port{this};
    QString m_name;
    const QtSerialLink *m_peer = nullptr;
    bool m_isLatencyLowered = false;
    OpenFailure m_openFailure = OpenFailure::NoSuchPort;
};
