#include "download/block_download.h"

#include "common/big_endian.h"
#include "engine/line_ticks.h"

BlockDownload::BlockDownload(const Line &line, const Kind &kind)
    : Step(kind.commandType, line), m_kind(kind)
{
}

// The handshakes have fixed header bytes and no CRC, whatever the serial settings say: ED2 knows no
// others. They write the download registers 0xF3 and 0xF5; 0x5A starts the download.
BlockDownload::Kind BlockDownload::fonts()
{
    return {commandType::fontDownload, QByteArray::fromHex("5AA5 04 80 F3 5A"), 100};
}

BlockDownload::Kind BlockDownload::pictures()
{
    // The high byte of the picture number is always 0.
    return {commandType::pictureDownload, QByteArray::fromHex("5AA5 06 80 F5 5A 01 00"), 300};
}

void BlockDownload::start(const QVector<Block> &blocks, int endTick)
{
    m_blocks = blocks;
    m_endTick = endTick;
    m_index = 0;
    session().replyReceived = false;
    showProgress(0, m_blocks.size());
    session().start(commandType());
}

void BlockDownload::step()
{
    if (m_index >= m_blocks.size())
        return;
    if (session().tick == 1) {
        if (!ensureOpen())
            return;
        QByteArray handshake = m_kind.handshake;
        bigEndian::appendByte(handshake, m_blocks.at(m_index).number);
        writeAwaited(handshake);
    } else if (session().tick == m_kind.checkTick) {
        judge();
    } else if (session().tick == sentTick() && holdsUntilSent()) {
        return;
    } else if (session().tick == m_endTick) {
        nextBlock();
    }
}

void BlockDownload::judge()
{
    // A module whose acknowledgement was lost waits for the block so long.
    constexpr int blockSilence = 600;
    switch (verdict()) {
    case Verdict::Came:
        write(m_blocks.at(m_index).data);
        break;
    case Verdict::Missing:
        if (!again(blockSilence))
            fail();
        break;
    case Verdict::Awaited:
        break;
    }
}

int BlockDownload::sentTick() const
{
    constexpr int usualRate = 6250000;
    return m_kind.checkTick + 1 +
           lineTicks(qint64{10} * m_blocks.at(m_index).data.size(), usualRate);
}

void BlockDownload::nextBlock()
{
    beginPiece();
    ++m_index;
    showProgress(m_index, m_blocks.size());
    if (m_index == m_blocks.size())
        complete();
}
