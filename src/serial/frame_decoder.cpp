#include "serial/frame_decoder.h"

#include "common/big_endian.h"
#include "serial/frame_builder.h"
#include "serial/modbus_crc16.h"

#include <QStringList>

using bigEndian::byteAt;
using bigEndian::wordAt;

namespace {

constexpr int lengthOffset = 2;
constexpr int commandOffset = 3;
constexpr int envelopeBytes = 3; // what the length does not count
constexpr int crcBytes = 2;

struct VpBlock
{
    quint16 address;
    const char *name;
};

/// VP words that begin something with a meaning of its own.
constexpr VpBlock vpBlocks[] = {
    {0x0000, "device ID"},
    {0x0004, "reset"},
    {0x0008, "NOR flash"},
    {0x000F, "version"},
    {0x0014, "page"},
    {0x0030, "supply voltage"},
    {0x007C, "SD folder"},
    {0x0080, "configuration"},
    {0x0082, "backlight"},
    {0x0084, "show a page"},
    {0x00A0, "music"},
    {0x00A2, "move a picture"},
    {0x00A6, "show or store a JPEG"},
    {0x00AA, "program the flash"},
    {0x00E0, "CRC of a unit"},
};

// Pages that no module has: they announce a download over ED2.
constexpr quint8 flashHandshake = 0xF3;
constexpr quint8 pictureHandshake = 0xF5;
constexpr quint8 handshakeMark = 0x5A;

QString hex(int number, int digits)
{
    return "0x" + QString::number(number, 16).toUpper().rightJustified(digits, '0');
}

QString counted(int count, const QString &thing)
{
    return QString::number(count) + ' ' + thing + (count == 1 ? "" : "s");
}

/// What is left of `command` and its body, without envelope and CRC.
struct Content
{
    QByteArray bytes;
    FrameSender sender;

    int at(int index) const { return byteAt(bytes, index); }
    int word(int index) const { return wordAt(bytes, index); }
    bool isFromTool() const { return sender == FrameSender::Tool; }
    bool isOk() const { return bytes.mid(1, 2) == "OK"; }
    bool has(int count) const { return bytes.size() >= count; }
};

QString registerRange(const Content &content, int count)
{
    return QString("register %1 of page %2, %3")
        .arg(hex(content.at(2), 2))
        .arg(content.at(1))
        .arg(counted(count, "byte"));
}

QString vpRange(const Content &content, int count)
{
    const int address = content.word(1);
    QString text = QString("VP %1, %2").arg(hex(address, 4), counted(count, "word"));
    for (const VpBlock &block : vpBlocks)
        if (block.address == address)
            text += QString(" (%1)").arg(block.name);
    return text;
}

/// `text` of an answer that brought `brought` bytes of the `promised` ones.
QString answer(const QString &text, int promised, int brought)
{
    if (brought < promised)
        return text + ", of which " + counted(promised - brought, "byte") + " did not come";
    return brought > promised ? text + ", and " + counted(brought - promised, "byte") + " more"
                              : text;
}

QString acknowledgement(const Content &content, const char *what)
{
    return content.isOk() ? QString("acknowledgement of a %1").arg(what)
                          : QString("answer to a %1, but no OK").arg(what);
}

QString writeRegister(const Content &content)
{
    if (!content.isFromTool())
        return acknowledgement(content, "write");
    if (content.at(1) == flashHandshake && content.at(2) == handshakeMark)
        return QString("announces flash block %1").arg(content.at(3));
    if (content.at(1) == pictureHandshake && content.at(2) == handshakeMark)
        return QString("announces picture %1").arg(content.word(4));
    return "write " + registerRange(content, content.bytes.size() - 3);
}

QString readRegister(const Content &content)
{
    const QString range = registerRange(content, content.at(3));
    return content.isFromTool() ? "read " + range
                                : answer("holds " + range, content.at(3), content.bytes.size() - 4);
}

QString writeVp(const Content &content)
{
    return content.isFromTool() ? "write " + vpRange(content, (content.bytes.size() - 3) / 2)
                                : acknowledgement(content, "write");
}

QString readVp(const Content &content)
{
    const QString range = vpRange(content, content.at(3));
    return content.isFromTool()
               ? "read " + range
               : answer("holds " + range, 2 * content.at(3), content.bytes.size() - 4);
}

QString curve(const Content &content)
{
    if (!content.isFromTool())
        return acknowledgement(content, "curve");
    QStringList channels;
    for (int c = 0; c < FrameBuilder::channels; ++c)
        if ((content.at(1) >> c & 1) != 0)
            channels.append(QString::number(c));
    if (channels.isEmpty())
        return "curve of no channel";
    const int samples = (content.bytes.size() - 2) / 2 / channels.size();
    return QString("curve of %1 (%2), %3 each")
        .arg(counted(channels.size(), "channel"), channels.join(", "), counted(samples, "sample"));
}

QString system(const Content &content)
{
    return content.isFromTool() ? "system command " + hex(content.at(3), 2)
                                : acknowledgement(content, "system command");
}

struct Command
{
    quint8 code;
    int toolBytes;   ///< that the tool's frame has at least, with the command itself
    int moduleBytes; ///< likewise for the module's
    QString (*meaning)(const Content &);
};

constexpr Command commands[] = {
    {command::writeRegister, 3, 1, writeRegister},
    {command::readRegister, 4, 4, readRegister},
    {command::writeVp, 3, 1, writeVp},
    {command::readVp, 4, 4, readVp},
    {command::curve, 2, 1, curve},
    {command::system, 4, 1, system},
};

QString meaningOf(const Content &content)
{
    if (content.bytes.isEmpty())
        return "empty frame";
    for (const Command &command : commands)
        if (command.code == content.at(0))
            return content.has(content.isFromTool() ? command.toolBytes : command.moduleBytes)
                       ? command.meaning(content)
                       : "cut-off frame of command " + hex(command.code, 2);
    return "unknown command " + hex(content.at(0), 2);
}

} // namespace

QString frameMeaning(const QByteArray &frame, FrameSender sender, bool hasCrc)
{
    Content content{frame.mid(commandOffset), sender};
    if (!hasCrc)
        return meaningOf(content);
    const QByteArray covered = content.bytes.left(qMax(0, content.bytes.size() - crcBytes));
    if (ModbusCrc16::appendedTo(covered, 0) == content.bytes) {
        content.bytes = covered;
        return meaningOf(content);
    }
    // A module may answer without a CRC; what the tool sends has one.
    if (sender == FrameSender::Module)
        return meaningOf(content) + ", no right CRC";
    content.bytes = covered;
    return meaningOf(content) + ", wrong CRC";
}

FrameDecoder::FrameDecoder(FrameSender sender, const FrameFormat &format)
    : m_sender(sender), m_format(format)
{
}

QVector<DecodedFrame> FrameDecoder::take(const QByteArray &bytes)
{
    m_buffer += bytes;
    QVector<DecodedFrame> found;
    while (true) {
        const int start = frameStart();
        const bool isFrame = start + 1 < m_buffer.size();
        if (start > 0 && (isFrame || start >= maxGarbage))
            found.append(cut(start, garbage(start)));
        else if (!isFrame || m_buffer.size() <= lengthOffset ||
                 m_buffer.size() < envelopeBytes + byteAt(m_buffer, lengthOffset))
            return found;
        else {
            const int size = envelopeBytes + byteAt(m_buffer, lengthOffset);
            found.append(cut(size, frameMeaning(m_buffer.left(size), m_sender, m_format.hasCrc)));
        }
    }
}

QVector<DecodedFrame> FrameDecoder::takeGarbage()
{
    const int start = frameStart();
    return start > 0 ? QVector<DecodedFrame>{cut(start, garbage(start))} : QVector<DecodedFrame>();
}

QVector<DecodedFrame> FrameDecoder::takeRest()
{
    QVector<DecodedFrame> rest = takeGarbage();
    if (m_buffer.size() > 1)
        rest.append(cut(m_buffer.size(), "unfinished frame, " + counted(m_buffer.size(), "byte")));
    else if (!m_buffer.isEmpty())
        rest.append(cut(1, garbage(1)));
    return rest;
}

int FrameDecoder::frameStart() const
{
    for (int i = 0; i < m_buffer.size(); ++i)
        if (byteAt(m_buffer, i) == m_format.header1 &&
            (i + 1 == m_buffer.size() || byteAt(m_buffer, i + 1) == m_format.header2))
            return i;
    return m_buffer.size();
}

DecodedFrame FrameDecoder::cut(int bytes, const QString &meaning)
{
    const DecodedFrame frame{m_buffer.left(bytes), meaning};
    m_buffer.remove(0, bytes);
    return frame;
}

QString FrameDecoder::garbage(int bytes) const
{
    if (m_sender == FrameSender::Tool)
        return "no frame, " + counted(bytes, "byte");
    const QByteArray text = m_buffer.left(bytes);
    if (text == "OK")
        return "acknowledgement without a frame";
    return "garbage, " + counted(bytes, "byte") +
           (text.contains("OK") ? ", an acknowledgement in it" : "");
}
