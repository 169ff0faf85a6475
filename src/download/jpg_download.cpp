#include "download/jpg_download.h"

JpgDownload::JpgDownload(DownloadSession &session, SerialLink &link, Notices &notices,
                         FrameBuilder &builder, const Window &window,
                         std::function<Display()> display)
    : StagedDownload(session, link, notices, builder, window, chunkBytes)
    , m_display(std::move(display))
{
}

void JpgDownload::start(const QByteArray &jpeg)
{
    begin(commandType::jpgDownload, jpeg, chunksOf(jpeg));
}

void JpgDownload::step()
{
    const int lineTime = ticksFor(3198);
    const int endTick = ticksFor(3380) + 2;
    if (m_session.tick == 1) {
        if (!ensureOpen())
            return;
        const int address = stagingAddress + m_index * chunkBytes / 2;
        m_link.write(vpFrame(static_cast<quint16>(address), currentChunk()));
    } else if (m_session.tick == lineTime + 1) {
        if (!m_session.replyReceived)
            fail();
    } else if (m_session.tick == lineTime + 2) {
        ++m_index;
        if (nextChunk())
            return;
        // The count goes on from here instead of beginning anew.
        m_session.tick = lineTime + 2;
        show();
    } else if (m_session.tick == endTick) {
        complete();
    }
}

void JpgDownload::show()
{
    const Display display = m_display();
    writeWords(displayAddress,
               {0x5A01 + display.mode, stagingAddress, display.first, display.second});
}
