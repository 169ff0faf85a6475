#pragma once

#include "simulator/frame_finder.h"
#include "simulator/module_state.h"

#include <QByteArrayList>

#include <functional>

/// A K7 display module made of software, for trying the tool without one.
namespace k7 {

/// A display module as seen from its two links: bytes in, replies out. It knows neither clocks nor
/// devices: whoever feeds it tells the time, in milliseconds of any clock that does not run back.
///
/// It is strict where it is known what the tool must send, and refuses, which means that it does
/// nothing and does not answer:
/// - a restart that no system command A0 has announced;
/// - a download handshake without its start marker, of the wrong length, or for a picture number
///   whose high byte is not 0;
/// - a move of what was not staged, unless it is the last one again, to a place that does not
/// exist, or of another layout.
///
/// What a real module does beyond that is unknown, and this one is lenient: it acknowledges a
/// command before it programs its flash, answers reads of anything, and takes whatever is written
/// to words that mean nothing to it.
class Module
{
public:
    using Trace = std::function<void(const QString &line)>;

    /// The last so many samples of each curve channel are kept.
    static constexpr int maxCurveSamples = 0x10000;

    /// A frame is dropped when it stays unfinished for that many milliseconds of silence.
    static constexpr int frameSilence = 50;
    /// A block is over when a handshake comes after that silence behind a byte of it; the tool
    /// leaves 200 at least. Other bytes still belong to it: the tool may have been held up.
    static constexpr int blockSilence = 150;
    /// The same for a block of which nothing came. The tool sends the first byte 300 after the
    /// handshake, the next handshake 500 after it at the earliest.
    static constexpr int blockPatience = 450;
    /// Programming a flash block takes that many milliseconds from its last byte on. The tool waits
    /// 280 after a full one.
    static constexpr int blockProgramming = 200;
    /// Programming up to 32 KiB that were staged in VP memory. The tool waits 80.
    static constexpr int unitProgramming = 60;

    explicit Module(const ModuleSettings &settings = ModuleSettings());

    /// Takes the next bytes from the tool, which arrived at `now`, and returns the replies to the
    /// frames that they complete, one element each. Bytes of an unfinished frame wait for the rest;
    /// garbage, unknown commands and frames that are too short for their command are skipped.
    ///
    /// A read reply holds as many words or bytes as exist and fit into one frame, and its count
    /// byte tells how many. What a write puts beyond the end of its memory is dropped.
    ///
    /// On ED2 a handshake announces raw bytes: those of a flash block, which is erased first, or of
    /// a picture. A flash block ends when it is full, and what follows is a frame again. Nobody
    /// tells how long a picture is, or a block that is not full: a handshake behind a silence ends
    /// them.
    QByteArrayList receive(Link link, const QByteArray &bytes, qint64 now = 0);

    /// Drops what has arrived of unfinished frames and blocks, as when the links are unplugged.
    void dropUnfinishedFrames();
    /// As if the module were told `settings` when it starts; what it remembers stays.
    void configure(const ModuleSettings &settings);
    /// Whether bytes that arrive while the flash is programmed are lost; at first they are not.
    void setProgrammingTakesTime(bool takesTime) { m_programmingTakesTime = takesTime; }

    /// Whether the flash stays as it is, whatever is sent.
    void setFlashProtected(bool isProtected) { m_state.flash.setProtected(isProtected); }

    /// `trace` gets one line, without a line break, for each frame that was understood, and for
    /// what was lost.
    void setTrace(Trace trace) { m_trace = std::move(trace); }
    /// `changed` is called when what the screen shows may have changed.
    void setScreenChanged(std::function<void()> changed) { m_screenChanged = std::move(changed); }

    const ModuleSettings &settings() const { return m_settings; }
    /// 0 where there is no such register.
    quint8 registerAt(int page, int address) const;
    quint16 vp(quint16 address) const { return m_state.vp.at(address); }
    /// Prepares a word; unlike a write by the tool it starts nothing.
    void setVp(quint16 address, quint16 value) { m_state.vp[address] = value; }
    /// The same for registers, as far as there are any from `address` of `page` on.
    void storeRegisters(int page, int address, const QByteArray &data);
    /// From now on a CRC is there only after it was read in vain that many times.
    void setBusyReads(int reads) { m_state.busyReads = reads; }
    /// What the flash is to hold, without a download.
    void setFlash(int byteOffset, const QByteArray &data) { m_state.flash.write(byteOffset, data); }
    /// The same for a picture, as RGB565 bytes.
    void setPicture(int number, const QByteArray &pixels);
    const Flash &flash() const { return m_state.flash; }
    const QMap<int, QByteArray> &pictures() const { return m_state.pictures; }
    const QByteArray &pictureMemory() const { return m_state.pictureMemory; }
    const ShownJpeg &jpeg() const { return m_state.jpeg; }
    const ModuleState &state() const { return m_state; }
    /// Samples of channel 0 to 7, oldest first; empty for any other.
    QVector<quint16> curve(int channel) const;
    Music music() const { return m_state.music; }
    int picturePage() const { return m_state.vp.at(picturePageVp); }
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

    /// What has arrived on one link.
    struct Arrival
    {
        FrameFinder frames;
        qint64 last; ///< when the last byte came
    };

    /// What the raw bytes of the ED2 link belong to at the moment.
    struct Download
    {
        enum class Target { None, Flash, Picture } target = Target::None;
        int number = 0;
        int received = 0;
    };

    /// The reply to one frame, empty when there is none.
    QByteArray answer(Link link, const QByteArray &frame);
    QByteArray replyFrame(Link link, quint8 command, const QByteArray &body) const;
    /// Limit of the data of a read reply.
    int maxReadBytes() const;
    void trace(Link link, const QString &text);

    Outcome writeRegisters(const QByteArray &body);
    Outcome writeControl(const QByteArray &body);
    Outcome readRegisters(const QByteArray &body);
    Outcome writeVp(const QByteArray &body);
    Outcome readVp(const QByteArray &body);
    Outcome appendCurves(const QByteArray &body);
    Outcome systemCommand(const QByteArray &body);

    void endAfterSilence(Link link, const QByteArray &next, qint64 now);
    bool losesBytes(Link link, qint64 now);
    void beginProgramming(qint64 begin, int time);
    bool isDownloading(Link link) const;
    void beginDownload(const QByteArray &handshake);
    void endDownload(qint64 lastByte);
    /// Takes the bytes that belong to the block; what is left of them does not.
    QByteArray storeDownload(const QByteArray &bytes, qint64 now);
    void reportScreen();

    Arrival &arrival(Link link) { return link == Link::Uart2 ? m_uart : m_ed2; }

    ModuleSettings m_settings;
    Arrival m_uart;
    Arrival m_ed2;
    ModuleState m_state;
    Download m_download;
    bool m_programmingTakesTime = false;
    bool m_hasTracedLoss = false;
    qint64 m_busyUntil = 0;
    qint64 m_now = 0;
    Trace m_trace;
    std::function<void()> m_screenChanged;
};

} // namespace k7
