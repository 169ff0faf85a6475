#include "simulator/flash.h"

namespace k7 {

namespace {

/// How many of `count` bytes from `byteOffset` on lie inside the flash.
int bytesInside(int byteOffset, int count)
{
    const bool startsInside = byteOffset >= 0 && byteOffset < Flash::bytes;
    return startsInside ? qBound(0, count, Flash::bytes - byteOffset) : 0;
}

} // namespace

QByteArray Flash::read(int byteOffset, int count) const
{
    QByteArray data(bytesInside(byteOffset, count), '\xFF');
    for (int done = 0; done < data.size();) {
        const int offset = (byteOffset + done) % blockBytes;
        const int run = qMin(blockBytes - offset, data.size() - done);
        const auto block = m_blocks.constFind((byteOffset + done) / blockBytes);
        if (block != m_blocks.constEnd())
            data.replace(done, run, block->constData() + offset, run);
        done += run;
    }
    return data;
}

void Flash::write(int byteOffset, const QByteArray &data)
{
    const int count = m_isProtected ? 0 : bytesInside(byteOffset, data.size());
    for (int done = 0; done < count;) {
        const int offset = (byteOffset + done) % blockBytes;
        const int run = qMin(blockBytes - offset, count - done);
        QByteArray &block = m_blocks[(byteOffset + done) / blockBytes];
        if (block.isEmpty())
            block.fill('\xFF', blockBytes);
        block.replace(offset, run, data.constData() + done, run);
        done += run;
    }
}

} // namespace k7
