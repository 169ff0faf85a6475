#pragma once

#include "download/block_download.h"

/// `content` in blocks of 256 KiB, as the flash takes it from block `position` on; an empty file is
/// one empty block. Block numbers go on the wire as their low 8 bits.
QVector<BlockDownload::Block> flashBlocks(int position, const QByteArray &content);
