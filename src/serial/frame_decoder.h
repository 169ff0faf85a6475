#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// Who sent what is decoded: the same bytes are a question in one direction and garbage in the
/// other.
enum class FrameSender { Tool, Module };

/// How the frames on a link look.
struct FrameFormat
{
    quint8 header1 = 0x5A;
    quint8 header2 = 0xA5;
    bool hasCrc = false;
};

/// A frame, or what stood between frames.
struct DecodedFrame
{
    QByteArray bytes;
    /// In English, such as "read VP 0x000F, 1 word (version)" or "garbage, 3 bytes".
    QString meaning;
};

/// Says what the bytes of one direction of one link mean, however they are cut. It only looks: what
/// the tool does with replies is the ReplyReceiver's business.
class FrameDecoder
{
public:
    /// Of bytes that are no frame at most this many are kept waiting for one.
    static constexpr int maxGarbage = 64;

    explicit FrameDecoder(FrameSender sender, const FrameFormat &format = {});

    /// Holds for all that was not decoded yet.
    void setFormat(const FrameFormat &format) { m_format = format; }

    /// What is complete now that `bytes` came: frames, and the garbage before them. The rest waits.
    QVector<DecodedFrame> take(const QByteArray &bytes);
    /// What waits, as far as it is no beginning of a frame.
    QVector<DecodedFrame> takeGarbage();
    /// All that waits: nothing more is expected. A frame that was begun is an unfinished one.
    QVector<DecodedFrame> takeRest();
    /// How many bytes wait.
    int waiting() const { return m_buffer.size(); }

private:
    /// The index of the first header pair, or of a first header byte at the very end; the size of
    /// the buffer when there is neither.
    int frameStart() const;
    DecodedFrame cut(int bytes, const QString &meaning);
    QString garbage(int bytes) const;

    const FrameSender m_sender;
    FrameFormat m_format;
    QByteArray m_buffer;
};

/// What `frame`, which is complete, means.
QString frameMeaning(const QByteArray &frame, FrameSender sender, bool hasCrc);
