#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace k7 {

/// The module's end of what carries the bytes of one link.
class Wire : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// False when it cannot be opened, or is open already.
    virtual bool open() = 0;
    virtual bool isOpen() const = 0;
    /// The name of the port that the tool opens; empty while closed.
    virtual QString path() const = 0;

    /// Sends all of `bytes` in the background, in order; nothing while closed.
    virtual void write(const QByteArray &bytes) = 0;
    /// Closes the wire. To the tool this looks like an adapter that is pulled out. Bytes that have
    /// not been sent are lost.
    virtual void hangUp() = 0;

signals:
    /// `bytes` came from the tool, which sent them at `rate` bit/s.
    void received(const QByteArray &bytes, int rate);
    /// The device behind the wire went away.
    void lost();
};

/// One end of a new pair of pseudo-terminals; null on systems without them.
Wire *makeTerminal(QObject *parent);

} // namespace k7
