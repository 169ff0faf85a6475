#pragma once

#include <QByteArray>
#include <QObject>

class FrameBuilder;

/// What differs between the receive paths of the two links. Each difference is wanted.
struct ReceiveRules
{
    /// Fewer buffered bytes than this are kept without a look.
    int minimumBytes;
    /// A header pair at the very end of the buffer waits for its length byte; otherwise it is
    /// skipped, and a frame that was cut there is lost.
    bool waitsForLengthByte;
};

inline constexpr ReceiveRules uartReceiveRules{6, true};
inline constexpr ReceiveRules ed2ReceiveRules{0, false};

/// Finds the module's replies in what one link delivers, whatever way the bytes are cut.
///
/// Read replies go into the mirrors and are announced by a signal; acknowledgements set the reply
/// flag. CRC bytes are never checked: they only count in the length. Bytes that a reply promises
/// and does not bring read as 0.
class ReplyReceiver : public QObject
{
    Q_OBJECT

public:
    /// Kept bytes that the receiver looks at again on every read never exceed this much; what came
    /// before an unfinished frame is forgotten first.
    static constexpr int maxKeptBytes = 0x10000;

    ReplyReceiver(const ReceiveRules &rules, FrameBuilder &mirrors, bool &replyReceived,
                  QObject *parent = nullptr);

    /// The header bytes by which frames are recognised.
    void setHeader(quint8 header1, quint8 header2);
    void receive(const QByteArray &bytes);

signals:
    void registersRead();
    /// A read-VP reply from `startAddress` on is in the mirror.
    void vpRead(quint16 startAddress);

private:
    /// The index of the first frame that is not complete yet, -1 when there is none.
    int scan();
    bool isHeaderAt(int index) const;
    bool isAcknowledgementAt(int index) const;
    void dispatch(int start);
    void storeRegisters(int body);
    void storeVp(int body);

    const ReceiveRules m_rules;
    FrameBuilder &m_mirrors;
    bool &m_replyReceived;
    quint8 m_header1 = 0;
    quint8 m_header2 = 0;
    QByteArray m_buffer;
};
