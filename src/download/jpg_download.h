#pragma once

#include "download/staged_download.h"

/// A JPEG file that goes over UART2. All chunks are staged one behind the other, then one command
/// has the module show the picture.
///
/// At rates where the tick that sends the command is also the last one, the exchange stays open
/// until another command ends it. That is wanted.
class JpgDownload final : public StagedDownload
{
public:
    static constexpr int maxBytes = 0xFFFF; ///< what fits behind the staging address

    /// Where the module shows the picture, as the window says when the last chunk has been sent.
    struct Display
    {
        int mode;   ///< 0: now, at a position on the screen; 1: under a picture ID
        int first;  ///< x, or the picture ID
        int second; ///< y, or 0
    };

    JpgDownload(DownloadSession &session, SerialLink &link, Notices &notices, FrameBuilder &builder,
                const Window &window, std::function<Display()> display);

    /// Starts sending `jpeg`, 1 to `maxBytes` bytes.
    void start(const QByteArray &jpeg);
    void step() override;

private:
    static constexpr int chunkBytes = 240;
    static constexpr quint16 displayAddress = 0x00A6;

    void show();

    const std::function<Display()> m_display;
};
