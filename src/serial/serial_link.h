#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>

/// Why a link could not be opened.
enum class OpenFailure {
    NoSuchPort,
    InUse,
    OurOwn, ///< in use, by the tool's other link
    NoPermission,
    NotASerialPort
};

/// One serial port as the engine sees it: 8 data bits, no parity, 1 stop bit, no flow control.
class SerialLink : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Takes effect at the next open(); an open link stays with its device.
    virtual void setPortName(const QString &name) = 0;
    /// In bit/s; acts on an open link at once. A rate that the device refuses closes the link,
    /// which is lost() then, and keeps it from being opened.
    virtual void setBaudRate(int rate) = 0;

    /// Opens the port for reading and writing. False when it cannot be opened, and also when it is
    /// open already; isOpen() tells these apart.
    virtual bool open() = 0;
    virtual bool isOpen() const = 0;
    /// Why the last open() that left the link closed failed.
    virtual OpenFailure openFailure() const = 0;
    /// The other programs that hold the port, such as "picocom (4711)", as far as the system tells.
    virtual QStringList holders() const { return {}; }
    /// Whatever was written goes out all the same.
    virtual void close() = 0;
    /// Closes the port without waiting: what the device does not take at once is lost.
    virtual void abandon() { close(); }

    /// Sends all of `bytes` in the background; on a closed link nothing happens.
    virtual void write(const QByteArray &bytes) = 0;
    /// How many bytes of write() have not left the computer yet, as far as the system tells.
    virtual qint64 bytesToSend() const { return 0; }
    virtual QByteArray readAll() = 0;
    /// Looks for bytes that wait in the device now, without waiting for the event loop; emits
    /// readyRead() when there are some.
    virtual void poll() = 0;

signals:
    void readyRead();
    /// The device behind the open link went away, or refused a rate. The link is closed already.
    void lost();
};
