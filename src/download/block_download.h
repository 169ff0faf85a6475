#pragma once

#include "engine/step.h"

#include <QVector>

/// Blocks that go over ED2 one after the other: a handshake that names the block, the module's
/// acknowledgement, then the block's bytes in one write without framing.
///
/// In the window the acknowledgement is really awaited for the first block only: the reply flag is
/// cleared when the download starts and when it completes. That is wanted.
///
/// Strict, the end of a block waits until its last byte has left the machine, however slow the line
/// is, and the module has its rest behind that.
class BlockDownload final : public Step
{
public:
    struct Block
    {
        quint8 number; ///< of the flash block or picture on the module
        QByteArray data;
    };

    /// What differs between the kinds of download.
    struct Kind
    {
        int commandType;
        QByteArray handshake; ///< all but its last byte, the number of the block
        int checkTick;        ///< tick at which the acknowledgement must have come
    };

    static constexpr int fontEndTick = 800;

    BlockDownload(const Line &line, const Kind &kind);

    static Kind fonts();
    static Kind pictures();

    /// Starts with the first of `blocks`; there must be one. The next block begins at tick
    /// `endTick` of a block, behind the one that tests the acknowledgement.
    void start(const QVector<Block> &blocks, int endTick);
    void step() override;

protected:
    void rewind() override { m_index = 0; }

private:
    void judge();
    void nextBlock();
    /// The tick at which the last byte of the block is out on a line of the usual rate.
    int sentTick() const;

    const Kind m_kind;
    QVector<Block> m_blocks;
    int m_endTick = 0;
    int m_index = 0;
};
