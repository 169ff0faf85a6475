#include "config/cfg_rows.h"

#include "common/big_endian.h"
#include "common/hex_text.h"
#include "common/whole_number.h"
#include "config/cfg_fields.h"
#include "config/encryption_texts.h"

#include <QStringList>

#include <algorithm>
#include <utility>

using bigEndian::byteAt;
using bigEndian::wordAt;
using namespace cfgFields;

namespace cfgRows {

namespace {

constexpr int minRate = 120; // a slower one has no divisor of 16 bits

struct Word
{
    QString text;
    QByteArray bits;
};

QByteArray masked(QByteArray bytes, const QByteArray &mask)
{
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(bytes.at(i) & mask.at(i));
    return bytes;
}

/// One of several words, for the bits of `mask`.
Row wordRow(const QString &name, int offset, const QByteArray &mask, const QVector<Word> &words)
{
    QStringList texts;
    for (const Word &word : words)
        texts.append(word.text);
    const auto read = [=](const QByteArray &bytes) {
        for (const Word &word : words)
            if (masked(bytes, mask) == word.bits)
                return word.text;
        return QString();
    };
    const auto put = [=](QByteArray bytes, const QString &value) {
        for (const Word &word : words) {
            if (word.text.compare(value, Qt::CaseInsensitive) != 0)
                continue;
            for (int i = 0; i < bytes.size(); ++i)
                bytes[i] = static_cast<char>((bytes.at(i) & ~mask.at(i)) | word.bits.at(i));
            return std::optional(bytes);
        }
        return std::optional<QByteArray>();
    };
    return {name, offset, mask.size(), "one of " + texts.join(", "), read, put};
}

Row flagRow(const Flag &flag)
{
    const QByteArray bit(1, static_cast<char>(1 << flag.bit));
    return wordRow(flag.name, flag.offset, bit,
                   {{flag.words[0], QByteArray(1, '\0')}, {flag.words[1], bit}});
}

Row optionRow(const Option &option)
{
    const QByteArray marks = QByteArray::fromHex("5AA5").left(option.marks);
    return wordRow(option.name, option.offset, QByteArray(option.marks, '\xFF'),
                   {{"off", QByteArray(option.marks, '\0')}, {"on", marks}});
}

QByteArray bytesOf(int number, int bytes)
{
    QByteArray result;
    if (bytes == 2)
        bigEndian::appendWord(result, static_cast<quint16>(number));
    else
        bigEndian::appendByte(result, static_cast<quint8>(number));
    return result;
}

Row numberRow(const QString &name, int offset, int bytes)
{
    const int maximum = bytes == 2 ? 0xFFFF : 0xFF;
    const auto read = [=](const QByteArray &read) {
        return QString::number(bytes == 2 ? wordAt(read, 0) : byteAt(read, 0));
    };
    const auto put = [=](const QByteArray &, const QString &value) {
        const auto number = wholeNumber(value, 0, maximum);
        return number ? std::optional(bytesOf(*number, bytes)) : std::nullopt;
    };
    return {name, offset, bytes, QString("0 to %1").arg(maximum), read, put};
}

/// The rate stands in the file as a divisor; only some divisors are those of a rate.
Row rateRow()
{
    const auto divisorOf = [](int rate) { return baudClock / rate; };
    const auto read = [=](const QByteArray &bytes) {
        const int divisor = wordAt(bytes, 0);
        return divisor != 0 && divisorOf(baudClock / divisor) == divisor
                   ? QString::number(baudClock / divisor)
                   : QString();
    };
    const auto put = [=](const QByteArray &, const QString &value) {
        const auto rate = wholeNumber(value, minRate, baudClock);
        return rate ? std::optional(bytesOf(divisorOf(*rate), 2)) : std::nullopt;
    };
    return {"Module/baudRate",
            divisorOffset,
            2,
            QString("%1 to %2").arg(minRate).arg(baudClock),
            read,
            put};
}

/// The same bytes, where they are those of no rate.
Row divisorRow()
{
    Row row = numberRow("Module/divisor", divisorOffset, 2);
    row.read = [asRate = rateRow().read, asNumber = row.read](const QByteArray &bytes) {
        return asRate(bytes).isNull() ? asNumber(bytes) : QString();
    };
    return row;
}

/// Zeros are not worth a line.
Row hexRow(const QString &name, int offset, int count)
{
    const auto read = [=](const QByteArray &bytes) {
        return bytes == QByteArray(count, '\0') ? QString() : QString::fromLatin1(bytes.toHex(' '));
    };
    const auto put = [=](const QByteArray &, const QString &value) {
        const auto bytes = bytesFromHex(value);
        return bytes && bytes->size() == count ? bytes : std::nullopt;
    };
    return {name, offset, count, QString("%1 bytes in hexadecimal").arg(count), read, put};
}

/// A length and a name, which is not filled up. Only names that are the same bytes everywhere are
/// told.
Row folderRow()
{
    const auto isGood = [](const QString &name) {
        return encryptionTexts::checkFolderName(name).isGood;
    };
    const auto read = [=](const QByteArray &bytes) {
        const QByteArray name = bytes.mid(1, byteAt(bytes, 0));
        const bool isWhole = byteAt(bytes, 0) < bytes.size();
        return isWhole && !name.isEmpty() && isGood(QString::fromLatin1(name))
                   ? QString::fromLatin1(name)
                   : QString();
    };
    const auto put = [=](QByteArray bytes, const QString &value) {
        if (!isGood(value))
            return std::optional<QByteArray>();
        const QByteArray name = value.toLatin1();
        return std::optional(bytes.replace(0, 1 + name.size(), bytesOf(name.size(), 1) + name));
    };
    return {"Encryption/folder",
            nameLengthOffset,
            1 + encryptionTexts::maxFolderNameBytes,
            "up to 8 of 0-9, a-z, A-Z, - and _",
            read,
            put};
}

/// All keys in the order in which they are written.
QVector<Row> makeRows()
{
    const QByteArray zero(1, '\0');
    QVector<Row> rows{
        wordRow("Module/layout", layoutOffset, "\xFF",
                {{"K7UID1", "1"}, {"K7UID2", "2"}, {"K7UID3", "3"}}),
        rateRow(),
        divisorRow(),
        wordRow("Module/direction", directionOffset, "\x03",
                {{"0", zero}, {"90", "\1"}, {"180", "\2"}, {"270", "\3"}}),
        wordRow("Calibration/by", calibrationOffset, "\xFF", {{"uart", "\xA5"}, {"rtc", zero}}),
        wordRow("Display/edge", pclkOffset, "\xFF", {{"falling", zero}, {"rising", "\1"}}),
        hexRow("Display/timing", timingOffset, timingBytes),
        wordRow("Encryption/mode", encryptionOffset, "\xFF\xFF",
                {{"none", QByteArray(2, '\0')}, {"locked", "\x5A\xA5"}, {"unlocked", "\x5A\xAA"}}),
        folderRow(),
        hexRow("Encryption/key", keyOffset, encryptionTexts::keyBytes),
    };
    for (const Flag &flag : flags)
        rows.append(flagRow(flag));
    for (const Flag &flag : touchFlags)
        rows.append(flagRow(flag));
    for (const Option &option : options) {
        rows.append(optionRow(option));
        for (const Number &number : option.numbers)
            rows.append(numberRow(number.name, number.offset, number.bytes));
    }
    const QStringList groups{"Module",  "Flash",     "Calibration", "Backlight",
                             "Display", "StartPage", "StartMusic",  "Touch",
                             "Tcon",    "FileCheck", "Encryption"};
    std::stable_sort(rows.begin(), rows.end(), [&groups](const Row &a, const Row &b) {
        return std::pair(groups.indexOf(a.group()), a.offset) <
               std::pair(groups.indexOf(b.group()), b.offset);
    });
    return rows;
}

} // namespace

const QVector<Row> &all()
{
    static const QVector<Row> rows = makeRows();
    return rows;
}

std::optional<QByteArray> bytesFromHex(const QString &text)
{
    const auto digits = hexText::digitsOf(text);
    return digits && !digits->isEmpty() && digits->size() % 2 == 0
               ? std::optional(QByteArray::fromHex(*digits))
               : std::nullopt;
}

} // namespace cfgRows
