#include "download/jpg_download.h"

JpgDownload::JpgDownload(const Line &line)
    : StagedDownload(commandType::jpgDownload, line, chunkBytes)
{
}

void JpgDownload::start(const QByteArray &jpeg, std::function<Display()> display)
{
    m_display = std::move(display);
    begin(jpeg, chunksOf(jpeg));
}

void JpgDownload::step()
{
    const int lineTime = ticksFor(3198);
    const int checkTick = tickBehind(1, lineTime + 1);
    const int nextTick = tickBehind(checkTick, lineTime + 2);
    const int endTick = tickBehind(nextTick, ticksFor(3380) + 2);
    if (session().tick == 1) {
        if (!ensureOpen() || sendsCommandAgain(nextTick))
            return;
        const int address = stagingAddress + m_index * chunkBytes / 2;
        writeAwaited(vpFrame(static_cast<quint16>(address), currentChunk()));
    } else if (session().tick == checkTick) {
        if (verdict() == Verdict::Missing && !again())
            fail();
    } else if (session().tick == nextTick) {
        ++m_index;
        if (nextChunk())
            return;
        // The count goes on from here instead of beginning anew.
        session().tick = nextTick;
        show();
    } else if (session().tick == endTick && isCommandDone()) {
        complete();
    }
}

void JpgDownload::show()
{
    const Display display = m_display();
    writeCommand(displayAddress,
                 {0x5A01 + display.mode, stagingAddress, display.first, display.second});
}
