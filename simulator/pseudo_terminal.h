#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

class QSocketNotifier;

namespace k7 {

/// One end of a pair of pseudo-terminals; the other end looks like a serial port to the tool.
class PseudoTerminal : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~PseudoTerminal() override;

    /// Makes a new pair whose tool side passes every byte unchanged. False when the system has none
    /// left, or when it is open already.
    bool open();
    bool isOpen() const { return m_master >= 0; }
    /// The device file that the tool opens; empty while closed.
    QString path() const { return m_path; }

    /// Sends all of `bytes` in the background, in order; nothing while closed.
    void write(const QByteArray &bytes);
    /// Closes the pair. To the tool this looks like an adapter that is pulled out. Bytes that have
    /// not been sent are lost.
    void hangUp();

signals:
    void received(const QByteArray &bytes);

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
