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
    m_loaded.clear();
    for (int i = 0; i < words; i += frameWords)
        m_loaded +=
            m_line.builder.buildWriteVpFrame(static_cast<quint16>(firstAddress + i),
                                             static_cast<quint8>(qMin(frameWords, words - i)));
}

void OsDownload::start()
{
    m_frames.load(m_loaded, isStrict());
    m_allBytes = 0;
    for (const QByteArray &frame : qAsConst(m_loaded))
        m_allBytes += frame.size();
    // In the window a stage that an earlier exchange left stays, and so does the tick.
    if (isStrict())
        rewind();
    session().takeOver(commandType());
}

void OsDownload::step()
{
    constexpr int bitsPerByte = 13; // with room for pauses
    switch (m_stage) {
    case Stage::Announce:
        announce();
        break;
    case Stage::Send:
        if (session().tick > ticksFor(1664) + 1 && isAnnounced())
            send();
        break;
    case Stage::Verdict:
        if (session().tick > ticksFor(bytesAwaited() * bitsPerByte) + 1)
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
    writeAwaited(m_line.builder.buildCmd8FFrame());
    session().replyReceived = false;
    enter(Stage::Send);
}

bool OsDownload::isAnnounced()
{
    if (m_isAnnounced)
        return true;
    const Verdict found = strictVerdict();
    m_isAnnounced = found == Verdict::Came;
    if (found == Verdict::Missing)
        fail();
    return m_isAnnounced;
}

void OsDownload::send()
{
    // These words stay in the mirror and are never sent. That is wanted.
    m_line.builder.setVp(0x0006, 0x5A10);
    m_line.builder.setVp(0x0007, firstAddress);
    const QByteArray bytes = m_frames.take();
    m_bytes = bytes.size();
    writeAwaited(bytes, m_frames.taken());
    enter(Stage::Verdict);
}

void OsDownload::judge()
{
    if (!isStrict()) {
        tellAsTheWindow();
        return;
    }
    switch (verdict()) {
    case Verdict::Came:
        showProgress(m_frames.sent(), m_loaded.size());
        if (m_frames.isAtEnd()) {
            complete();
            break;
        }
        beginPiece();
        send();
        break;
    case Verdict::Missing:
        m_frames.putBack();
        m_stage = Stage::Send;
        if (!again())
            fail();
        break;
    case Verdict::Awaited:
        break;
    }
}

void OsDownload::tellAsTheWindow()
{
    const bool isAcknowledged = session().replyReceived;
    if (m_openBoxes == maxBoxes)
        return;
    ++m_openBoxes;
    m_line.notices.warn(isAcknowledged ? texts::downloadComplete : texts::downloadFailed);
    --m_openBoxes;
    end(isAcknowledged ? Outcome::Done : Outcome::Failed);
    if (!isAcknowledged)
        return;
    session().replyReceived = false;
    session().start(commandType::systemReset);
}

int OsDownload::bytesAwaited() const
{
    constexpr int settling = 468; // the module's time to take them in
    // In the window those that were loaded last count, also when others were sent. That is wanted.
    if (!isStrict())
        return m_allBytes + settling;
    return m_bytes + (m_frames.isAtEnd() ? settling : 0);
}

int OsDownload::ticksFor(int bits) const
{
    return lineTicks(bits, waitRate(m_line.settings.baudRate));
}

void OsDownload::rewind()
{
    m_stage = Stage::Announce;
    m_isAnnounced = false;
}

void OsDownload::enter(Stage stage)
{
    m_stage = stage;
    session().tick = 0;
}
