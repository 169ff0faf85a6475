#include "download/flash_blocks.h"

QVector<BlockDownload::Block> flashBlocks(int position, const QByteArray &content)
{
    constexpr int blockBytes = 256 * 1024;
    QVector<BlockDownload::Block> blocks;
    auto number = static_cast<quint8>(position);
    int offset = 0;
    do {
        blocks.append({number++, content.mid(offset, blockBytes)});
        offset += blockBytes;
    } while (offset < content.size());
    return blocks;
}
