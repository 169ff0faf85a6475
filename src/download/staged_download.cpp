#include "download/staged_download.h"

#include "common/big_endian.h"

StagedDownload::StagedDownload(int commandType, const Line &line, int chunkBytes)
    : Step(commandType, line), m_chunkBytes(chunkBytes)
{
}

void StagedDownload::begin(const QByteArray &data, int chunks)
{
    m_data = data;
    m_chunks = chunks;
    m_index = 0;
    m_command.clear();
    m_isCommandMissed = false;
    session().replyReceived = false;
    showProgress(m_index, m_chunks);
    session().start(commandType());
}

int StagedDownload::chunksOf(const QByteArray &data) const
{
    return data.size() / m_chunkBytes + (data.size() % m_chunkBytes == 0 ? 0 : 1);
}

QByteArray StagedDownload::currentChunk() const
{
    const qint64 offset = qint64{m_index} * m_chunkBytes;
    if (offset >= m_data.size())
        return QByteArray(m_chunkBytes, 0);
    return m_data.mid(static_cast<int>(offset), m_chunkBytes);
}

QByteArray StagedDownload::vpFrame(quint16 address, const QByteArray &bytes)
{
    const int words = bytes.size() / 2;
    for (int i = 0; i < words; ++i)
        m_line.builder.setVp(static_cast<quint16>(address + i), bigEndian::wordAt(bytes, 2 * i));
    return m_line.builder.buildWriteVpFrame(address, static_cast<quint8>(words));
}

void StagedDownload::writeCommand(quint16 address, const QVector<int> &words)
{
    QByteArray bytes;
    for (const int word : words)
        bigEndian::appendWord(bytes, static_cast<quint16>(word));
    m_command = vpFrame(address, bytes);
    writeAwaited(m_command);
}

bool StagedDownload::isCommandDone()
{
    switch (m_command.isEmpty() ? Verdict::Came : strictVerdict()) {
    case Verdict::Came:
        m_command.clear();
        return true;
    case Verdict::Missing:
        m_isCommandMissed = again();
        if (!m_isCommandMissed)
            fail();
        return false;
    case Verdict::Awaited:
        break;
    }
    return false;
}

bool StagedDownload::sendsCommandAgain(int commandTick)
{
    if (!m_isCommandMissed)
        return false;
    m_isCommandMissed = false;
    writeAwaited(m_command);
    session().tick = commandTick;
    return true;
}

bool StagedDownload::nextChunk()
{
    if (m_index < m_chunks)
        beginPiece();
    showProgress(m_index, m_chunks);
    return m_index < m_chunks;
}

void StagedDownload::rewind()
{
    m_command.clear();
    m_isCommandMissed = false;
}
