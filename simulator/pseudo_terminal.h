#pragma once

#include "simulator/wire.h"

class QSocketNotifier;

namespace k7 {

/// One end of a pair of pseudo-terminals; the other end looks like a serial port to the tool.
class PseudoTerminal final : public Wire
{
    Q_OBJECT

public:
    using Wire::Wire;
    ~PseudoTerminal() override;

    /// Makes a new pair whose tool side passes every byte unchanged. False when the system has none
    /// left, or when it is open already.
    bool open() override;
    bool isOpen() const override { return m_master >= 0; }
    /// The device file.
    QString path() const override { return m_path; }
    void write(const QByteArray &bytes) override;
    void hangUp() override;

private:
    bool openPair();
    void readAvailable();
    void writeQueued();

    int m_master = -1;
    int m_slave = -1; // kept open, so that the pair survives while the tool has its port closed
    QString m_path;
    QByteArray m_queue;
    QSocketNotifier *m_readable = nullptr;
    QSocketNotifier *m_writable = nullptr;
};

} // namespace k7
