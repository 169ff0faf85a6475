#pragma once

#include "simulator/frame_finder.h"
#include "simulator/module_state.h"

#include <QByteArrayList>

#include <functional>

/// A K7 display module made of software, for trying the tool without one.
namespace k7 {

/// UART2 takes every command; the fast ED2 link only takes download handshakes.
enum class Link { Uart2, Ed2 };

/// A display module as seen from its two links: bytes in, replies out. It knows neither time nor
/// devices.
class Module
{
public:
    using Trace = std::function<void(const QString &line)>;

    /// The last so many samples of each curve channel are kept.
    static constexpr int maxCurveSamples = 0x10000;

    /// `format` holds for both directions of UART2. On ED2 frames from the tool always start with
    /// 5A A5, replies with the header bytes of `format`, and neither carries a CRC.
    explicit Module(const FrameFormat &format = FrameFormat());

    /// Takes the next bytes from the tool and returns the replies to the frames that they complete,
    /// one element each. Bytes of an unfinished frame wait for the rest; garbage, unknown commands
    /// and frames that are too short for their command are skipped.
    ///
    /// A read reply holds as many words or bytes as exist and fit into one frame, and its count
    /// byte tells how many. What a write puts beyond the end of its memory is dropped.
    ///
    /// On ED2 a handshake announces raw bytes: those of a flash block, which is erased first, or of
    /// a picture. They end when the block is full, or with the next handshake; the tool sends that
    /// in one piece and long after the bytes, so a piece that is a handshake is none of them.
    QByteArrayList receive(Link link, const QByteArray &bytes);

    /// Drops what has arrived of unfinished frames and blocks, as when the links are unplugged.
    void dropUnfinishedFrames();

    /// `trace` gets one line, without a line break, for each frame that was understood.
    void setTrace(Trace trace) { m_trace = std::move(trace); }

    const FrameFormat &format() const { return m_format; }
    /// 0 where there is no such register.
    quint8 registerAt(int page, int address) const;
    quint16 vp(quint16 address) const { return m_state.vp.at(address); }
    /// Prepares a word; unlike a write by the tool it starts nothing.
    void setVp(quint16 address, quint16 value) { m_state.vp[address] = value; }
    /// From now on a CRC is there only after it was read in vain that many times.
    void setBusyReads(int reads) { m_state.busyReads = reads; }
    /// What the flash is to hold, without a download.
    void setFlash(int byteOffset, const QByteArray &data) { m_state.flash.write(byteOffset, data); }
    const Flash &flash() const { return m_state.flash; }
    const QMap<int, QByteArray> &pictures() const { return m_state.pictures; }
    const QByteArray &pictureMemory() const { return m_state.pictureMemory; }
    const ShownJpeg &jpeg() const { return m_state.jpeg; }
    /// Samples of channel 0 to 7, oldest first; empty for any other.
    QVector<quint16> curve(int channel) const;
    Music music() const { return m_state.music; }
    int picturePage() const;
    /// Argument of the last system command; 0xA0 announces a restart.
    quint8 systemArgument() const { return m_state.systemArgument; }
    /// How often the tool has reset the K7, and restarted the system.
    int resets() const { return m_state.resets; }
    int restarts() const { return m_state.restarts; }

private:
    /// What a command did, and the body of its reply: empty when it is not answered.
    struct Outcome
    {
        QString text;
        QByteArray reply;
    };

    /// The reply to one frame, empty when there is none.
    QByteArray answer(Link link, const QByteArray &frame);
    QByteArray replyFrame(Link link, quint8 command, const QByteArray &body) const;
    /// Limit of the data of a read reply.
    int maxReadBytes() const;

    Outcome writeRegisters(const QByteArray &body);
    Outcome writeControl(const QByteArray &body);
    Outcome readRegisters(const QByteArray &body);
    Outcome writeVp(const QByteArray &body);
    Outcome readVp(const QByteArray &body);
    Outcome appendCurves(const QByteArray &body);
    Outcome systemCommand(const QByteArray &body);

    /// What the raw bytes of the ED2 link belong to at the moment.
    struct Download
    {
        enum class Target { None, Flash, Picture } target = Target::None;
        int number = 0;
        int received = 0;
    };

    void beginDownload(const QByteArray &handshake);
    void storeDownload(const QByteArray &bytes);
    void storeRegisters(int page, int address, const QByteArray &data);

    const FrameFormat m_format;
    FrameFinder m_uartFrames;
    FrameFinder m_ed2Frames;
    ModuleState m_state;
    Download m_download;
    Trace m_trace;
};

} // namespace k7
