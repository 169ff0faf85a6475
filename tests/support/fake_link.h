#pragma once

#include "serial/serial_link.h"

#include <QVector>

#include <functional>

/// A link without a device, which remembers what is done with it.
class FakeLink final : public SerialLink
{
public:
    bool canOpen = true;
    QStringList programs; ///< that hold the port
    QString name;
    int rate = 0;
    qint64 waiting = 0; ///< bytes that have not left the computer
    int opens = 0;
    int closes = 0;
    QVector<QByteArray> written;
    std::function<void(const QByteArray &)> whenWritten = [](const QByteArray &) {};

    void setPortName(const QString &portName) override { name = portName; }
    void setBaudRate(int baudRate) override { rate = baudRate; }
    bool open() override
    {
        if (!canOpen || m_isOpen)
            return false;
        m_isOpen = true;
        ++opens;
        return true;
    }
    bool isOpen() const override { return m_isOpen; }
    OpenFailure openFailure() const override { return OpenFailure::InUse; }
    QStringList holders() const override { return programs; }
    void close() override
    {
        m_isOpen = false;
        ++closes;
    }
    void write(const QByteArray &bytes) override
    {
        if (!m_isOpen)
            return;
        written.append(bytes);
        whenWritten(bytes);
    }
    qint64 bytesToSend() const override { return waiting; }
    QByteArray readAll() override { return {}; }
    void poll() override {}

private:
    bool m_isOpen = false;
};
