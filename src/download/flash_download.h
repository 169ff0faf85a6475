#pragma once

#include "download/staged_download.h"

#include <functional>

/// An icon library, sound or font file that goes over UART2 into the module's flash. After every
/// 256 chunks the staged 32 KiB are moved there; the file is filled up with zeros to whole such
/// units.
///
/// In the window, the tick that ends a chunk is set when the chunk before it is acknowledged, and
/// lives on between downloads. At a rate other than the last one's it may come before the tick that
/// tests the acknowledgement; at very high rates that tick never comes. The exchange then does not
/// get past its first chunk, and stays open until another command ends it. That is wanted.
class FlashDownload final : public StagedDownload
{
public:
    explicit FlashDownload(const Line &line);

    /// Starts sending `content`, which is not empty, to the 256 KiB flash block `number`.
    /// `isK7Uid1` tells the module's layout when a unit is moved.
    void start(const QByteArray &content, int number, std::function<bool()> isK7Uid1);
    void step() override;

private:
    static constexpr int chunkBytes = 128;
    static constexpr int chunksPerUnit = 256;
    static constexpr quint16 moveAddress = 0x00AA;

    void chunkArrived(int checkTick);
    void moveUnit();

    std::function<bool()> m_isK7Uid1;
    int m_number = 0;
    int m_endTick = 0; ///< of the current chunk; 0 before the first step
};
