#pragma once

#include "engine/links.h"
#include "simulator/direct_wire.h"

#include <QPointer>

#include <utility>

namespace k7 {

class SharedTime;
class Simulator;

/// The tool's end of a link to a simulated module in the same process. Its ports are those of
/// `simulator`, SIM-UART2 and SIM-ED2, once that was started so.
class DirectLink final : public SerialLink
{
    Q_OBJECT

public:
    explicit DirectLink(const Simulator &simulator, QObject *parent = nullptr);
    ~DirectLink() override;

    void setPortName(const QString &name) override { m_name = name; }
    void setBaudRate(int rate) override { m_rate = rate; }
    bool open() override;
    bool isOpen() const override { return m_wire && m_wire->isOpen(); }
    OpenFailure openFailure() const override { return m_openFailure; }
    void close() override;
    void write(const QByteArray &bytes) override;
    QByteArray readAll() override { return std::exchange(m_input, {}); }
    void poll() override;

private:
    void onSent(const QByteArray &bytes);
    void onHungUp();

    const Simulator &m_simulator;
    QPointer<DirectWire> m_wire; ///< while the link is open
    QString m_name;
    int m_rate = 115200;
    QByteArray m_input;
    OpenFailure m_openFailure = OpenFailure::NoSuchPort;
};

/// Links to both ports of `simulator`.
Links directLinks(const Simulator &simulator);
/// What the tool beside a module with the time `time` has its own from.
TimeSource timeOf(const SharedTime &time);

} // namespace k7
