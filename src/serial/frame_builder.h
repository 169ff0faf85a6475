#pragma once

#include <QByteArray>
#include <QVector>

#include <array>

/// Commands of the module's frames: the byte after the length.
namespace command {
inline constexpr quint8 writeRegister = 0x80;
inline constexpr quint8 readRegister = 0x81;
inline constexpr quint8 writeVp = 0x82;
inline constexpr quint8 readVp = 0x83;
inline constexpr quint8 curve = 0x84;
inline constexpr quint8 system = 0x8F;
} // namespace command

/// Builds every frame that goes to the module:
/// [header1][header2][length][command][body][CRC low][CRC high], the length counting the bytes
/// after itself, the CRC (over command and body) only when it is switched on.
///
/// Holds mirrors of the module's registers and VP words. Write frames take their data from the
/// mirrors, so the caller fills these first; replies are stored into them.
class FrameBuilder
{
public:
    static constexpr int registerPages = 9;
    static constexpr int registersPerPage = 256;
    static constexpr int vpWords = 0x10000;
    static constexpr int channels = 8;
    static constexpr int maxCurveSamples = 255; ///< of each channel in one frame
    /// What the length byte can count of a write frame's data, beside command, address and CRC: the
    /// callers' limit, the builder itself cuts the length byte to 8 bits.
    int maxDataBytes() const { return m_crcEnabled ? 250 : 252; }

    /// Header bytes and CRC switch of every later frame.
    void setHeader(quint8 header1, quint8 header2, bool crcEnabled);

    /// Only the low 8 bits of `page` and `address` count; pages from 9 on are ignored.
    void setRegister(int page, int address, quint8 value);
    /// The mirror's byte, 0 where `page` or `address` lies outside it.
    quint8 registerAt(int page, int address) const;
    void setVp(quint16 address, quint16 value);
    /// The mirror's word, 0 from address 0x10000 on.
    quint16 vpAt(int address) const;

    /// Third body byte of the system command's frames.
    void setCmd8FArgument(quint8 argument) { m_cmd8FArgument = argument; }
    /// Replaces what is queued in channel `channel` (0 to 7).
    void setCurveSamples(int channel, const QVector<quint16> &samples);
    /// Bit c set: channel c takes part in the next curve frame.
    void setCurveChannelMask(quint8 mask) { m_curveChannelMask = mask; }

    /// Writes `count` registers; a run that passes address 255 goes on in the next page, and what
    /// lies beyond the last page is sent as 0.
    QByteArray buildWriteRegisterFrame(quint8 page, quint8 address, quint8 count) const;
    QByteArray buildReadRegisterFrame(quint8 page, quint8 address, quint8 count) const;
    /// Writes `count` words; the address does not wrap, words beyond 0xFFFF are sent as 0.
    QByteArray buildWriteVpFrame(quint16 address, quint8 count) const;
    QByteArray buildReadVpFrame(quint16 address, quint8 count) const;
    /// The channels of the mask take turns sample by sample, as long as each has one, 255 at most.
    /// The queues stay as they are.
    QByteArray buildCurveFrame() const;
    QByteArray buildCmd8FFrame() const;

private:
    QByteArray begin(quint8 command) const;
    QByteArray finish(QByteArray frame) const;
    /// The register `offset` bytes into the table, page after page.
    quint8 flatRegister(int offset) const;

    std::array<quint8, registerPages * registersPerPage> m_registerTable{};
    std::array<quint16, vpWords> m_vpTable{};
    quint8 m_cmd8FArgument = 0;
    std::array<QVector<quint16>, channels> m_curveChannels;
    quint8 m_curveChannelMask = 0;
    bool m_crcEnabled = false;
    quint8 m_header1 = 0;
    quint8 m_header2 = 0;
};
