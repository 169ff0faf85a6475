#pragma once

#include "simulator/wire.h"

namespace k7 {

/// A wire within the process, without any device: for systems without pseudo-terminals. DirectLink
/// is the tool's end of it.
class DirectWire final : public Wire
{
    Q_OBJECT

public:
    explicit DirectWire(const QString &name, QObject *parent = nullptr) : Wire(parent), m_name(name)
    {
    }

    bool open() override;
    bool isOpen() const override { return m_isOpen; }
    QString path() const override { return m_isOpen ? m_name : QString(); }
    void write(const QByteArray &bytes) override;
    void hangUp() override;

    /// One link at a time may use the wire; false when there is one.
    bool seize();
    void release() { m_isSeized = false; }
    /// Bytes from the tool, which arrive with an event of their own.
    void writeToModule(const QByteArray &bytes, int rate);

signals:
    void sent(const QByteArray &bytes);
    void hungUp();

private:
    const QString m_name;
    bool m_isOpen = false;
    bool m_isSeized = false;
};

} // namespace k7
