#pragma once

#include "serial/serial_link.h"

#include <memory>

/// A link that knows what went over it: for errors, logs and the monitor. Once opened it is held:
/// close() leaves it open, so that nobody else gets the port between two exchanges.
class WatchedLink final : public SerialLink
{
    Q_OBJECT

public:
    explicit WatchedLink(std::unique_ptr<SerialLink> link);
    ~WatchedLink() override { m_link->close(); }

    const QString &name() const { return m_name; }
    const QByteArray &lastSent() const { return m_lastSent; }
    /// Bytes since `lastSent`, and the first of them.
    qint64 receivedSince() const { return m_receivedSince; }
    const QByteArray &answer() const { return m_answer; }
    /// From now on another exchange runs; bytes since then.
    void beginExchange() { m_receivedInExchange = 0; }
    qint64 receivedInExchange() const { return m_receivedInExchange; }
    qint64 sentBytes() const { return m_sentBytes; }
    /// The device went away while the link was open.
    bool wasLost() const { return m_wasLost; }

    void setPortName(const QString &name) override;
    void setBaudRate(int rate) override { m_link->setBaudRate(rate); }
    bool open() override;
    bool isOpen() const override { return m_link->isOpen(); }
    OpenFailure openFailure() const override { return m_link->openFailure(); }
    QStringList holders() const override { return m_link->holders(); }
    void close() override {}
    void abandon() override { m_link->abandon(); }
    void write(const QByteArray &bytes) override;
    qint64 bytesToSend() const override { return m_link->bytesToSend(); }
    QByteArray readAll() override;
    void poll() override { m_link->poll(); }

signals:
    void sent(const QByteArray &bytes);
    void received(const QByteArray &bytes);

private:
    const std::unique_ptr<SerialLink> m_link;
    QString m_name;
    QByteArray m_lastSent;
    qint64 m_receivedSince = 0;
    qint64 m_receivedInExchange = 0;
    QByteArray m_answer;
    qint64 m_sentBytes = 0;
    bool m_wasLost = false;
};
