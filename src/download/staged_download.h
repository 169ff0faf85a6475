#pragma once

#include "engine/line_ticks.h"
#include "engine/step.h"

#include <QVector>

/// A file that goes over UART2 in chunks. Each chunk is written into the module's VP memory from
/// 0x8000 on; commands in VP words tell the module what to do with what is staged there.
///
/// In the window the acknowledgement is really awaited for the first chunk only: the reply flag is
/// cleared when a download starts and when it completes. That is wanted.
class StagedDownload : public Step
{
public:
    static constexpr quint16 stagingAddress = 0x8000;

    StagedDownload(int commandType, const Line &line, int chunkBytes);

protected:
    /// Starts the exchange with the first of `chunks` chunks of `data`; there must be one. Chunks
    /// beyond the end of the data are filled with zeros.
    void begin(const QByteArray &data, int chunks);
    /// The chunks that `data` fills, the last one perhaps not wholly.
    int chunksOf(const QByteArray &data) const;
    QByteArray currentChunk() const;

    /// The ticks that the line takes for `bits` at the rate of this moment, rounded down.
    int ticksFor(int bits) const { return lineTicks(bits, waitRate(m_line.settings.baudRate)); }

    /// The frame that writes `bytes` as VP words from `address` on. An odd last byte is not in it;
    /// that is wanted.
    QByteArray vpFrame(quint16 address, const QByteArray &bytes);
    /// Writes the low 16 bits of `words` from `address` on.
    void writeWords(quint16 address, const QVector<int> &words);

    /// Has the next tick begin chunk `m_index`. False when there is no such chunk.
    bool nextChunk();

    int m_chunks = 0;
    int m_index = 0; ///< of the chunk that is being sent

private:
    const int m_chunkBytes;
    QByteArray m_data;
};
