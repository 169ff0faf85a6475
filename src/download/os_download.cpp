#include "download/os_download.h"

#include "common/big_endian.h"
#include "download/line_ticks.h"

OsDownload::OsDownload(DownloadSession &session, SerialLink &link, Notices &notices,
                       FrameBuilder &builder, std::function<int()> rate)
    : Step(session, link, notices), m_builder(builder), m_rate(std::move(rate))
{
}

void OsDownload::load(const QByteArray &file)
{
    constexpr int frameWords = 125;
    const int words = (file.size() - bootBytes + 1) / 2;
    // The byte missing from an odd last word counts as 0.
    for (int i = 0; i < words; ++i)
        m_builder.setVp(static_cast<quint16>(firstAddress + i),
                        bigEndian::wordAt(file, bootBytes + 2 * i));
    m_frames.clear();
    for (int i = 0; i < words; i += frameWords)
        m_frames += m_builder.buildWriteVpFrame(static_cast<quint16>(firstAddress + i),
                                                static_cast<quint8>(qMin(frameWords, words - i)));
}

void OsDownload::start()
{
    m_sent = m_frames;
    m_session.takeOver(commandType::osDownload);
}

void OsDownload::step()
{
    switch (m_stage) {
    case Stage::Announce:
        announce();
        break;
    case Stage::Send:
        if (m_session.tick > lineTicks(1664, m_rate()) + 1)
            send();
        break;
    case Stage::Verdict:
        // 13 bits a byte leave room for pauses; 468 bytes are the module's time to take them in.
        if (m_session.tick > lineTicks((m_sent.size() + 468) * 13, m_rate()) + 1)
            judge();
        break;
    }
}

void OsDownload::announce()
{
    constexpr quint8 announceArgument = 0xA0;
    if (!ensureOpen())
        return;
    m_builder.setCmd8FArgument(announceArgument);
    m_link.write(m_builder.buildCmd8FFrame());
    m_session.replyReceived = false;
    enter(Stage::Send);
}

void OsDownload::send()
{
    // These words stay in the mirror and are never sent. That is wanted.
    m_builder.setVp(0x0006, 0x5A10);
    m_builder.setVp(0x0007, firstAddress);
    m_link.write(m_sent);
    enter(Stage::Verdict);
}

void OsDownload::judge()
{
    if (m_openBoxes == maxBoxes)
        return;
    const bool isAcknowledged = m_session.replyReceived;
    ++m_openBoxes;
    m_notices.warn(isAcknowledged ? texts::downloadComplete : texts::downloadFailed);
    --m_openBoxes;
    finish();
    if (isAcknowledged) {
        m_session.replyReceived = false;
        m_session.start(commandType::systemReset);
    }
}

void OsDownload::enter(Stage stage)
{
    m_stage = stage;
    m_session.tick = 0;
}
