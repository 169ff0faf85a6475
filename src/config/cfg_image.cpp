#include "config/cfg_image.h"

#include "common/big_endian.h"
#include "config/cfg_fields.h"
#include "config/encryption_texts.h"

using bigEndian::byteAt;
using namespace cfgFields;

namespace cfgImage {

namespace {

void put(QByteArray &image, int offset, const QByteArray &content)
{
    if (image.size() < offset + content.size())
        image.append(QByteArray(offset + content.size() - image.size(), '\0'));
    image.replace(offset, content.size(), content);
}

void putByte(QByteArray &image, int offset, int value)
{
    put(image, offset, QByteArray(1, static_cast<char>(value)));
}

void setBits(QByteArray &image, int offset, int bits)
{
    putByte(image, offset, byteAt(image, offset) | bits);
}

void putNumber(QByteArray &image, int offset, int bytes, int value)
{
    if (bytes == 2)
        putByte(image, offset, value >> 8);
    putByte(image, offset + bytes - 1, value);
}

void putOption(QByteArray &image, const Option &option, const CfgSettings &settings)
{
    putByte(image, option.offset, enableMark);
    if (option.marks == 2)
        putByte(image, option.offset + 1, secondMark);
    for (const Number &number : option.numbers)
        putNumber(image, number.offset, number.bytes, settings.*number.value);
}

Fault putLock(QByteArray &image, const CfgSettings &settings)
{
    const QByteArray name = settings.folderName.toLocal8Bit();
    if (name.size() > encryptionTexts::maxFolderNameBytes)
        return Fault::FolderNameTooLong;
    const auto key = encryptionTexts::keyFrom(settings.key);
    if (!key || key->size() != encryptionTexts::keyBytes)
        return Fault::BadKey;
    put(image, encryptionOffset, QByteArray::fromHex("5AA5"));
    putByte(image, nameLengthOffset, name.size());
    put(image, nameOffset, name);
    put(image, keyOffset, *key);
    return Fault::None;
}

int signedByteAt(const QByteArray &image, int offset)
{
    return static_cast<qint8>(byteAt(image, offset));
}

int numberAt(const QByteArray &image, int offset, int bytes)
{
    const int first = signedByteAt(image, offset);
    return bytes == 2 ? first * 256 + signedByteAt(image, offset + 1) : first;
}

int bitAt(const QByteArray &image, int offset, int bit)
{
    return byteAt(image, offset) >> bit & 1;
}

bool isMarked(const QByteArray &image, const Option &option)
{
    return byteAt(image, option.offset) == enableMark &&
           (option.marks == 1 || byteAt(image, option.offset + 1) == secondMark);
}

void readLock(const QByteArray &image, CfgSettings &settings)
{
    // A length from 0x80 on is negative, which is no name.
    const int length = qMax(0, signedByteAt(image, nameLengthOffset));
    const QByteArray name = image.mid(nameOffset, length).leftJustified(length, '\0');
    settings.folderName = QString::fromLocal8Bit(name.constData(), name.size());
    const QByteArray key = image.mid(keyOffset, encryptionTexts::keyBytes)
                               .leftJustified(encryptionTexts::keyBytes, '\0');
    settings.key = QString::fromLatin1(key.toHex(' ') + ' ');
}

void readEncryption(const QByteArray &image, CfgSettings &settings)
{
    const int kind = byteAt(image, encryptionOffset + 1);
    if (byteAt(image, encryptionOffset) != enableMark) {
        settings.encryption = 0;
    } else if (kind == secondMark) {
        settings.encryption = 1;
        readLock(image, settings);
    } else if (kind == unlockMark) {
        settings.encryption = 2;
    }
}

} // namespace

Filled fill(const QByteArray &image, const CfgSettings &settings)
{
    QByteArray filled = image;
    put(filled, 0, magic);
    putByte(filled, layoutOffset, '1' + settings.layout);
    for (const Flag &flag : flags)
        setBits(filled, flag.offset, (settings.*flag.value & 1) << flag.bit);
    setBits(filled, directionOffset, settings.displayDirection & 3);
    putNumber(filled, divisorOffset, 2, baudClock / qMax(1, settings.baudRate));
    for (const Option &option : options)
        if (settings.*option.isOn && !option.isReadOnly)
            putOption(filled, option, settings);
    Fault fault = Fault::None;
    if (settings.encryption == 1)
        fault = putLock(filled, settings);
    else if (settings.encryption == 2)
        put(filled, encryptionOffset, QByteArray::fromHex("5AAA"));
    return {fault == Fault::None ? filled : image, fault};
}

bool isCfg(const QByteArray &image)
{
    return image.startsWith(magic);
}

std::optional<int> layoutOf(const QByteArray &image)
{
    const int layout = byteAt(image, layoutOffset) - '1';
    return layout >= 0 && layout < layouts ? std::optional(layout) : std::nullopt;
}

CfgSettings read(const QByteArray &image, CfgSettings settings)
{
    settings.layout = layoutOf(image).value_or(settings.layout);
    for (const Flag &flag : flags)
        settings.*flag.value = bitAt(image, flag.offset, flag.bit);
    // Only the low bit counts: 90° reads back as 270°, and 180° as 0°. That is wanted.
    settings.displayDirection = bitAt(image, directionOffset, 0) == 1 ? 3 : 0;
    const int divisor = numberAt(image, divisorOffset, 2);
    if (divisor != 0)
        settings.baudRate = baudClock / divisor;
    for (const Option &option : options) {
        const bool isOn = isMarked(image, option);
        // A file without this check leaves its box as it was. That is wanted.
        if (isOn || option.isOn != &CfgSettings::checksSdFiles)
            settings.*option.isOn = isOn;
        if (isOn)
            for (const Number &number : option.numbers)
                settings.*number.value = numberAt(image, number.offset, number.bytes);
    }
    if (settings.setsCalibration)
        settings.calibration = byteAt(image, calibrationOffset) == secondMark ? 0 : 1;
    settings.timing.clear();
    if (settings.setsDisplay) {
        settings.pclkEdge = byteAt(image, pclkOffset) == 1 ? 1 : 0;
        settings.timing = image.mid(timingOffset, timingBytes).leftJustified(timingBytes, '\0');
    }
    if (settings.setsTouchScreen)
        for (const Flag &flag : touchFlags)
            settings.*flag.value = bitAt(image, flag.offset, flag.bit);
    readEncryption(image, settings);
    return settings;
}

} // namespace cfgImage
