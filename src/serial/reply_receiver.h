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
    /// The frames carry a CRC where the settings say so.
    bool mayHaveCrc;
};

inline constexpr ReceiveRules uartReceiveRules{6, true, true};
inline constexpr ReceiveRules ed2ReceiveRules{0, false, false};

/// Finds the module's replies in what one link delivers, whatever way the bytes are cut.
///
/// Read replies go into the mirrors and are announced by a signal; acknowledgements set the reply
/// flag. CRC bytes are never checked: they only count in the length. Bytes that a reply promises
/// and does not bring read as 0.
///
/// From the first expect() on it is strict: what came before counts no more, and of what comes only
/// what answers the request. That is an acknowledgement of its command, or for a read the reply
/// with the same range and all of its data, and with CRC one whose CRC holds; without it also a
/// bare OK.
class ReplyReceiver : public QObject
{
    Q_OBJECT

public:
    /// Kept bytes that the receiver looks at again on every read never exceed this much; what came
    /// before an unfinished frame is forgotten first.
    static constexpr int maxKeptBytes = 0x10000;

    ReplyReceiver(const ReceiveRules &rules, FrameBuilder &mirrors, bool &replyReceived,
                  QObject *parent = nullptr);

    /// The header bytes by which frames are recognised, and whether they carry a CRC.
    void setHeader(quint8 header1, quint8 header2, bool crcEnabled = false);
    void receive(const QByteArray &bytes);

    /// Forgets all that was received, and looks for answers to `request`, the first of the frames
    /// that are about to be sent.
    void expect(const QByteArray &request);
    /// How many of them have come since.
    int answers() const { return m_answers; }
    /// The length of the reply to the read `request`; to any other that of an acknowledgement.
    static int replyBytes(const QByteArray &request);

signals:
    void registersRead();
    /// A read-VP reply from `startAddress` on is in the mirror.
    void vpRead(quint16 startAddress);

private:
    /// The index of the first frame that is not complete yet, -1 when there is none.
    int scan();
    bool isHeaderAt(int index) const;
    bool isAcknowledgementAt(int index) const;
    void takeAnswers();
    bool isCompleteAt(int start) const;
    /// Whether the complete frame at `start` answers the request.
    bool answersAt(int start) const;
    /// The index of an answer behind `start`, -1 when there is none: what looks like an unfinished
    /// frame may be garbage.
    int answerBehind(int start) const;
    void dispatch(int start);
    void storeRegisters(int body);
    void storeVp(int body);

    const ReceiveRules m_rules;
    FrameBuilder &m_mirrors;
    bool &m_replyReceived;
    quint8 m_header1 = 0;
    quint8 m_header2 = 0;
    bool m_hasCrc = false;
    QByteArray m_buffer;
    QByteArray m_request; ///< empty before the first one
    int m_answers = 0;
};
