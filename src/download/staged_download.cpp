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

void StagedDownload::writeWords(quint16 address, const QVector<int> &words)
{
    QByteArray bytes;
    for (const int word : words)
        bigEndian::appendWord(bytes, static_cast<quint16>(word));
    m_line.link.write(vpFrame(address, bytes));
}

bool StagedDownload::nextChunk()
{
    session().tick = 0;
    showProgress(m_index, m_chunks);
    return m_index < m_chunks;
}
