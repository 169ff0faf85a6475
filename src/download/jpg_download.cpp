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
    const int endTick = ticksFor(3380) + 2;
    if (session().tick == 1) {
        if (!ensureOpen())
            return;
        const int address = stagingAddress + m_index * chunkBytes / 2;
        writeAwaited(vpFrame(static_cast<quint16>(address), currentChunk()));
    } else if (session().tick == lineTime + 1) {
        if (!session().replyReceived)
            fail();
    } else if (session().tick == lineTime + 2) {
        ++m_index;
        if (nextChunk())
            return;
        // The count goes on from here instead of beginning anew.
        session().tick = lineTime + 2;
        show();
    } else if (session().tick == endTick) {
        complete();
    }
}

void JpgDownload::show()
{
    const Display display = m_display();
    writeWords(displayAddress,
               {0x5A01 + display.mode, stagingAddress, display.first, display.second});
}
