#pragma once

#include "simulator/module_settings.h"

#include <QByteArray>

#include <optional>

namespace k7 {

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
    /// Whether bytes of a frame wait for the rest of it; meant for after next() has found nothing.
    bool isWaiting() const { return m_start < m_buffer.size(); }
    /// The bytes behind the last frame, which leave the finder.
    QByteArray takeRest();

private:
    /// Whether a frame may start at m_start, going by the header bytes that have arrived.
    bool mayStartFrame() const;

    FrameFormat m_format;
    QByteArray m_buffer;
    int m_start = 0; // what comes before it has been dealt with
};

} // namespace k7
