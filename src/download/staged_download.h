#pragma once

#include "engine/line_ticks.h"
#include "engine/step.h"

#include <QVector>

/// A file that goes over UART2 in chunks. Each chunk is written into the module's VP memory from
/// 0x8000 on; commands in VP words tell the module what to do with what is staged there.
///
/// In the window the acknowledgement is really awaited for the first chunk only: the reply flag is
/// cleared when a download starts and when it completes. That is wanted. Strict, that of each chunk
/// and each command is.
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

    /// `tick`, which is to come behind the tick `earlier`. At high rates it may not, and then in
    /// the window it never comes, or both are one; that is wanted.
    int tickBehind(int earlier, int tick) const
    {
        return isStrict() ? qMax(tick, earlier + 1) : tick;
    }
    /// The ticks that the line takes for `bits` at the rate of this moment, rounded down.
    int ticksFor(int bits) const { return lineTicks(bits, waitRate(m_line.settings.baudRate)); }

    /// The frame that writes `bytes` as VP words from `address` on. An odd last byte is not in it;
    /// that is wanted.
    QByteArray vpFrame(quint16 address, const QByteArray &bytes);
    /// Writes the command that the low 16 bits of `words` from `address` on are.
    void writeCommand(quint16 address, const QVector<int> &words);
    /// Whether the command is acknowledged, or was none; at the tick behind which something else
    /// begins. Has it sent again when it is not.
    bool isCommandDone();
    /// At tick 1: sends the command again, as at tick `commandTick`, if that is what was not
    /// acknowledged.
    bool sendsCommandAgain(int commandTick);

    /// Has the next tick begin chunk `m_index`. False when there is no such chunk.
    bool nextChunk();
    void rewind() override;

    int m_chunks = 0;
    int m_index = 0; ///< of the chunk that is being sent

private:
    const int m_chunkBytes;
    QByteArray m_data;
    QByteArray m_command; ///< that was sent last, until it is acknowledged
    bool m_isCommandMissed = false;
};
