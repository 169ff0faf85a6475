#include "download/ico_download.h"

IcoDownload::IcoDownload(DownloadSession &session, SerialLink &link, Notices &notices,
                         FrameBuilder &builder, const Window &window,
                         std::function<bool()> isK7Uid1)
    : StagedDownload(session, link, notices, builder, window, chunkBytes)
    , m_isK7Uid1(std::move(isK7Uid1))
{
}

void IcoDownload::start(const QByteArray &content, int number)
{
    // The block goes on the wire as its low 16 bits.
    m_number = number & 0xFFFF;
    const int units = (chunksOf(content) + chunksPerUnit - 1) / chunksPerUnit;
    begin(commandType::icoDownload, content, units * chunksPerUnit);
}

void IcoDownload::step()
{
    if (m_endTick == 0)
        m_endTick = ticksFor(2080) + 1;
    if (m_session.tick == 1) {
        if (!ensureOpen())
            return;
        const int address = stagingAddress + m_index % chunksPerUnit * (chunkBytes / 2);
        m_link.write(vpFrame(static_cast<quint16>(address), currentChunk()));
    } else if (m_session.tick == ticksFor(1742) + 1) {
        if (m_session.replyReceived)
            chunkArrived();
        else
            fail();
    } else if (m_session.tick == m_endTick) {
        if (!nextChunk())
            complete();
    }
}

void IcoDownload::chunkArrived()
{
    constexpr int flashTicks = 80; // what the module takes to program a unit
    ++m_index;
    m_endTick = ticksFor(2080) + 1;
    if (m_index % chunksPerUnit != 0)
        return;
    moveUnit();
    m_endTick += flashTicks;
}

void IcoDownload::moveUnit()
{
    constexpr int unitsPerBlock = 8;
    constexpr int unitWords = 0x4000;
    const int unit = m_index / chunksPerUnit - 1; // of the file
    if (m_isK7Uid1()) {
        const int flashUnit = unitsPerBlock * m_number + unit;
        writeWords(moveAddress, {0x5A02, flashUnit, stagingAddress, 1, 0, 0});
        return;
    }
    const int block = m_number + unit / unitsPerBlock;
    const int word = unit % unitsPerBlock * unitWords; // in that block
    writeWords(moveAddress,
               {0x5A02, (block << 8) + (word >> 16), word, stagingAddress, unitWords, 0});
}
