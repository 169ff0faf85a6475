#pragma once

#include "download/staged_download.h"

#include <functional>

/// A JPEG file that goes over UART2. All chunks are staged one behind the other, then one command
/// has the module show the picture.
///
/// At rates where the tick that sends the command is also the last one, the exchange stays open
/// until another command ends it. That is wanted.
class JpgDownload final : public StagedDownload
{
public:
    static constexpr int maxBytes = 0xFFFF; ///< what fits behind the staging address

    /// Where the module shows the picture.
    struct Display
    {
        int mode;   ///< 0: now, at a position on the screen; 1: under a picture ID
        int first;  ///< x, or the picture ID
        int second; ///< y, or 0
    };

    explicit JpgDownload(const Line &line);

    /// Starts sending `jpeg`, 1 to `maxBytes` bytes. `display` is asked for when the last chunk has
    /// been sent.
    void start(const QByteArray &jpeg, std::function<Display()> display);
    void step() override;

private:
    static constexpr int chunkBytes = 240;
    static constexpr quint16 displayAddress = 0x00A6;

    void show();

    std::function<Display()> m_display;
};
