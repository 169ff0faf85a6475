#pragma once

#include <QByteArray>

#include <optional>

namespace k7 {

/// What the frames of a link look like.
struct FrameFormat
{
    quint8 header1 = 0x5A;
    quint8 header2 = 0xA5;
    bool crcEnabled = false;
};

/// Finds frames in the bytes of one link, however they are cut. Bytes that belong to no frame are
/// skipped, and so is a frame whose length byte cannot be right or whose CRC is wrong.
class FrameFinder
{
public:
    explicit FrameFinder(const FrameFormat &format) : m_format(format) {}

    void append(const QByteArray &bytes);
    /// Command and body of the next complete frame, without its CRC: one byte at least. Nothing
    /// when more bytes are needed.
    std::optional<QByteArray> next();
    /// Drops the bytes of a frame that will not be finished.
    void clear();

private:
    /// Whether a frame may start at m_start, going by the header bytes that have arrived.
    bool mayStartFrame() const;

    const FrameFormat m_format;
    QByteArray m_buffer;
    int m_start = 0; // what comes before it has been dealt with
};

} // namespace k7
