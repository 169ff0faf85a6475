#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>

namespace k7 {

/// The module's flash memory: 256 blocks of 256 KiB, erased bytes reading as 0xFF. Blocks take
/// memory only once they are written.
class Flash
{
public:
    static constexpr int blockBytes = 256 * 1024;
    static constexpr int blocks = 256;
    static constexpr int bytes = blocks * blockBytes;

    /// `count` bytes from `byteOffset` on; fewer where the flash ends, none outside it.
    QByteArray read(int byteOffset, int count) const;
    /// Overwrites without erasing first; what lies beyond the end of the flash is dropped, and so
    /// is everything when `byteOffset` lies outside it.
    void write(int byteOffset, const QByteArray &data);

    /// A protected flash stays as it is, whatever is written.
    void setProtected(bool isProtected) { m_isProtected = isProtected; }

    /// Numbers of the blocks that were written, ascending.
    QList<int> writtenBlocks() const { return m_blocks.keys(); }

private:
    QMap<int, QByteArray> m_blocks;
    bool m_isProtected = false;
};

} // namespace k7
