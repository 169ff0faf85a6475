#include "serial/device_values.h"

#include "common/big_endian.h"
#include "serial/frame_builder.h"

namespace deviceValues {
namespace {

QByteArray bytesOf(const FrameBuilder &mirrors, const Block &block)
{
    QByteArray bytes;
    for (int i = 0; i < block.words; ++i)
        bigEndian::appendWord(bytes, mirrors.vpAt(block.address + i));
    return bytes;
}

} // namespace

QString deviceIdText(const FrameBuilder &mirrors)
{
    return QString::fromLatin1(bytesOf(mirrors, deviceId).toHex());
}

QString versionText(const FrameBuilder &mirrors)
{
    const QString digits = QString::fromLatin1(bytesOf(mirrors, version).toHex());
    return QString("GUI:V%1.%2 OS:V%3.%4")
        .arg(digits.at(0), digits.at(1), digits.at(2), digits.at(3));
}

int millivolts(const FrameBuilder &mirrors)
{
    // The divisor is 65532 as in the module's own formula, not 65535.
    return mirrors.vpAt(voltage.address) * 4800 / 65532;
}

QString sdNameText(const FrameBuilder &mirrors)
{
    const QByteArray bytes = bytesOf(mirrors, sdName);
    return QString::fromLocal8Bit(bytes.left(static_cast<int>(qstrnlen(bytes, 8))));
}

quint16 configWord(int sdStatus, int touchVoice, int touchLight, int displayDirection)
{
    // Page numbering and file 22, which a read reports in bits 6 and 5, are never written.
    int bits = 0;
    if (sdStatus == 1)
        bits = 0x10;
    if (touchVoice == 1)
        bits |= 0x08;
    if (touchLight == 1)
        bits |= 0x04;
    return static_cast<quint16>(bits | displayDirection);
}

} // namespace deviceValues
