#include "download/flash_download.h"

FlashDownload::FlashDownload(const Line &line)
    : StagedDownload(commandType::icoDownload, line, chunkBytes)
{
}

void FlashDownload::start(const QByteArray &content, int number, std::function<bool()> isK7Uid1)
{
    m_isK7Uid1 = std::move(isK7Uid1);
    if (isStrict())
        m_endTick = 0;
    // The block goes on the wire as its low 16 bits.
    m_number = number & 0xFFFF;
    const int units = (chunksOf(content) + chunksPerUnit - 1) / chunksPerUnit;
    begin(content, units * chunksPerUnit);
}

void FlashDownload::step()
{
    const int checkTick = tickBehind(1, ticksFor(1742) + 1);
    if (m_endTick == 0)
        m_endTick = ticksFor(2080) + 1;
    if (session().tick == 1) {
        if (!ensureOpen() || sendsCommandAgain(checkTick))
            return;
        const int address = stagingAddress + m_index % chunksPerUnit * (chunkBytes / 2);
        writeAwaited(vpFrame(static_cast<quint16>(address), currentChunk()));
    } else if (session().tick == checkTick) {
        const Verdict found = verdict();
        if (found == Verdict::Came)
            chunkArrived(checkTick);
        else if (found == Verdict::Missing && !again())
            fail();
    } else if (session().tick == m_endTick && isCommandDone()) {
        if (!nextChunk())
            complete();
    }
}

void FlashDownload::chunkArrived(int checkTick)
{
    constexpr int flashTicks = 80; // what the module takes to program a unit
    ++m_index;
    m_endTick = tickBehind(checkTick, ticksFor(2080) + 1);
    if (m_index % chunksPerUnit != 0)
        return;
    moveUnit();
    m_endTick += flashTicks;
}

void FlashDownload::moveUnit()
{
    constexpr int unitsPerBlock = 8;
    constexpr int unitWords = 0x4000;
    const int unit = m_index / chunksPerUnit - 1; // of the file
    if (m_isK7Uid1()) {
        const int flashUnit = unitsPerBlock * m_number + unit;
        writeCommand(moveAddress, {0x5A02, flashUnit, stagingAddress, 1, 0, 0});
        return;
    }
    const int block = m_number + unit / unitsPerBlock;
    const int word = unit % unitsPerBlock * unitWords; // in that block
    writeCommand(moveAddress,
                 {0x5A02, (block << 8) + (word >> 16), word, stagingAddress, unitWords, 0});
}
