#pragma once

#include "download/frame_train.h"
#include "download/staged_download.h"

#include <functional>

/// A picture, as RGB565 bytes, that goes over UART2. The module moves each staged chunk on to its
/// destination: chunks of 240 bytes one after the other into picture memory, or, on K7UID2, chunks
/// of 8192 bytes into a picture page.
class BmpDownload final : public StagedDownload
{
public:
    /// What differs between the two.
    struct Kind
    {
        int commandType;
        int chunkBytes;
        int frameBytes; ///< of data in one of the frames that stage a chunk
        bool isFilled;  ///< whether a short last chunk is filled up with zeros
        int sendBits;   ///< what the line carries until the acknowledgement must be there
        int chunkBits;  ///< what it carries until the chunk has been moved
        /// The words that move chunk `index`, to `page` if there are pages.
        QVector<int> (*moveCommand)(int index, int page);
    };

    static Kind linear();
    static Kind paged();

    BmpDownload(const Line &line, const Kind &kind);

    /// Starts sending `pixels`; there must be some. They go to the page that `page` names when a
    /// chunk is moved; picture memory has none.
    void start(const QByteArray &pixels, std::function<int()> page);
    void step() override;

private:
    static constexpr quint16 moveAddress = 0x00A2;

    void send();
    /// Whether all of the chunk is acknowledged; then the command that moves it is on its way.
    bool isChunkDone();
    QVector<QByteArray> framesOf(QByteArray chunk);

    const Kind m_kind;
    std::function<int()> m_page;
    FrameTrain m_frames; ///< of the current chunk, once it began
};
