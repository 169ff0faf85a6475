#pragma once

#include "download/step.h"

#include <QVector>

#include <functional>

/// Blocks that go over ED2 one after the other: a handshake that names the block, the module's
/// acknowledgement, then the block's bytes in one write without framing.
///
/// The acknowledgement is really awaited for the first block only: the reply flag is cleared when
/// the download starts and when it completes. That is wanted.
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

    /// `showProgress` gets percents.
    BlockDownload(DownloadSession &session, SerialLink &link, Notices &notices, const Kind &kind,
                  std::function<void(int)> showProgress);

    static Kind fonts();
    static Kind pictures();

    /// Starts with the first of `blocks`; there must be one. The next block begins at tick
    /// `endTick` of a block, behind the one that tests the acknowledgement.
    void start(const QVector<Block> &blocks, int endTick);
    void step() override;
    /// The next start begins with the first block anyway; this forgets where the running one is.
    void rewind() override { m_index = 0; }

private:
    void nextBlock();

    const Kind m_kind;
    const std::function<void(int)> m_showProgress;
    QVector<Block> m_blocks;
    int m_endTick = 0;
    int m_index = 0;
};
