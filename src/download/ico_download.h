#pragma once

#include "download/staged_download.h"

/// An icon library, sound or font file that goes over UART2 into the module's flash. After every
/// 256 chunks the staged 32 KiB are moved there; the file is filled up with zeros to whole such
/// units.
///
/// At rates where the acknowledgement would have to come on the tick that sends, the exchange does
/// not get past its first chunk, and stays open until another command ends it. That is wanted.
class IcoDownload final : public StagedDownload
{
public:
    IcoDownload(DownloadSession &session, SerialLink &link, Notices &notices, FrameBuilder &builder,
                const Window &window, std::function<bool()> isK7Uid1);

    /// Starts sending `content`, which is not empty, to the 256 KiB flash block `number`.
    void start(const QByteArray &content, int number);
    void step() override;

private:
    static constexpr int chunkBytes = 128;
    static constexpr int chunksPerUnit = 256;
    static constexpr quint16 moveAddress = 0x00AA;

    void chunkArrived();
    void moveUnit();

    const std::function<bool()> m_isK7Uid1;
    int m_number = 0;
    /// Ends the current chunk. Lives on between downloads; that is wanted. 0 before the first step.
    int m_endTick = 0;
};
