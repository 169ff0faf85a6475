#include "download/bmp_download.h"

BmpDownload::BmpDownload(const Line &line, const Kind &kind)
    : StagedDownload(kind.commandType, line, kind.chunkBytes), m_kind(kind)
{
}

BmpDownload::Kind BmpDownload::linear()
{
    return {commandType::bmpDownload, 240, 240, false, 3198, 3380, [](int index, int) {
                // Picture memory starts at word 0x78000000 and is counted in words.
                const int word = index * 120;
                return QVector<int>{0x5A80, 0x0000, 0x7800 + (word >> 16), word};
            }};
}

BmpDownload::Kind BmpDownload::paged()
{
    return {
        commandType::pagedBmpDownload, 8192, 128, true, 109824, 110006, [](int index, int page) {
            return QVector<int>{0x5AA5, stagingAddress, page, index};
        }};
}

void BmpDownload::start(const QByteArray &pixels, std::function<int()> page)
{
    m_page = std::move(page);
    m_frames.clear();
    begin(pixels, chunksOf(pixels));
}

void BmpDownload::step()
{
    const int tick = session().tick;
    const int checkTick = ticksFor(m_frames.shareOf(m_kind.sendBits)) + 2;
    const int moveTicks = ticksFor(m_kind.chunkBits) - ticksFor(m_kind.sendBits);
    if (tick == 1) {
        if (!ensureOpen() || sendsCommandAgain(checkTick))
            return;
        send();
    }
    // Not alternatives: at high rates both come on the same tick, and the chunk still completes.
    if (tick == checkTick && !isChunkDone())
        return;
    if (tick == tickBehind(checkTick, checkTick + moveTicks) && isCommandDone()) {
        ++m_index;
        if (!nextChunk())
            complete();
    }
}

bool BmpDownload::isChunkDone()
{
    switch (verdict()) {
    case Verdict::Came:
        if (m_frames.isAtEnd()) {
            writeCommand(moveAddress, m_kind.moveCommand(m_index, m_page()));
            return true;
        }
        beginPiece();
        break;
    case Verdict::Missing:
        m_frames.putBack();
        if (!again())
            fail();
        break;
    case Verdict::Awaited:
        break;
    }
    return false;
}

void BmpDownload::send()
{
    if (m_frames.isAtEnd())
        m_frames.load(framesOf(currentChunk()), isStrict());
    const QByteArray bytes = m_frames.take();
    writeAwaited(bytes, m_frames.taken());
}

QVector<QByteArray> BmpDownload::framesOf(QByteArray chunk)
{
    if (m_kind.isFilled)
        chunk = chunk.leftJustified(m_kind.chunkBytes, '\0');
    QVector<QByteArray> frames;
    for (int offset = 0; offset < chunk.size(); offset += m_kind.frameBytes)
        frames += vpFrame(static_cast<quint16>(stagingAddress + offset / 2),
                          chunk.mid(offset, m_kind.frameBytes));
    return frames;
}
