#include "download/os_download.h"

#include "common/big_endian.h"
#include "engine/line_ticks.h"

OsDownload::OsDownload(const Line &line) : Step(commandType::osDownload, line) {}

const Text *OsDownload::refusal(qint64 bytes)
{
    if (bytes < bootBytes)
        return &texts::osFileTooSmall;
    return bytes > maxBytes ? &texts::osFileTooLarge : nullptr;
}

void OsDownload::load(const QByteArray &file)
{
    constexpr int frameWords = 125;
    const int words = (file.size() - bootBytes + 1) / 2;
    // The byte missing from an odd last word counts as 0.
    for (int i = 0; i < words; ++i)
        m_line.builder.setVp(static_cast<quint16>(firstAddress + i),
                             bigEndian::wordAt(file, bootBytes + 2 * i));
    m_frames.clear();
    for (int i = 0; i < words; i += frameWords)
        m_frames +=
            m_line.builder.buildWriteVpFrame(static_cast<quint16>(firstAddress + i),
                                             static_cast<quint8>(qMin(frameWords, words - i)));
}

void OsDownload::start()
{
    m_sent = m_frames;
    session().takeOver(commandType());
}

void OsDownload::step()
{
    switch (m_stage) {
    case Stage::Announce:
        announce();
        break;
    case Stage::Send:
        if (session().tick > ticksFor(1664) + 1)
            send();
        break;
    case Stage::Verdict:
        // 13 bits a byte leave room for pauses; 468 bytes are the module's time to take them in.
        if (session().tick > ticksFor((m_sent.size() + 468) * 13) + 1)
            judge();
        break;
    }
}

void OsDownload::announce()
{
    constexpr quint8 announceArgument = 0xA0;
    if (!ensureOpen())
        return;
    m_line.builder.setCmd8FArgument(announceArgument);
    m_line.link.write(m_line.builder.buildCmd8FFrame());
    session().replyReceived = false;
    enter(Stage::Send);
}

void OsDownload::send()
{
    // These words stay in the mirror and are never sent. That is wanted.
    m_line.builder.setVp(0x0006, 0x5A10);
    m_line.builder.setVp(0x0007, firstAddress);
    m_line.link.write(m_sent);
    enter(Stage::Verdict);
}

void OsDownload::judge()
{
    const bool isAcknowledged = session().replyReceived;
    const Text &verdict = isAcknowledged ? texts::downloadComplete : texts::downloadFailed;
    if (m_line.policy.settlesFirst) {
        settle(isAcknowledged);
        m_line.notices.warn(verdict);
        return;
    }
    if (m_openBoxes == maxBoxes)
        return;
    ++m_openBoxes;
    m_line.notices.warn(verdict);
    --m_openBoxes;
    settle(isAcknowledged);
}

void OsDownload::settle(bool isAcknowledged)
{
    end(isAcknowledged ? Outcome::Done : Outcome::Failed);
    if (!isAcknowledged)
        return;
    session().replyReceived = false;
    session().start(commandType::systemReset);
}

int OsDownload::ticksFor(int bits) const
{
    return lineTicks(bits, waitRate(m_line.settings.baudRate));
}

void OsDownload::enter(Stage stage)
{
    m_stage = stage;
    session().tick = 0;
}
