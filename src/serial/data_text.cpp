#include "serial/data_text.h"

#include "common/big_endian.h"
#include "common/hex_text.h"

namespace dataText {

std::optional<QByteArray> fromHex(const QString &text)
{
    auto digits = hexText::digitsOf(text);
    if (!digits)
        return std::nullopt;
    if (digits->size() % 2 != 0)
        digits->prepend('0');
    return QByteArray::fromHex(*digits);
}

std::optional<QByteArray> toBytes(const QString &text, bool isHex)
{
    return isHex ? fromHex(text) : text.toLocal8Bit();
}

std::optional<QVector<quint16>> toWords(const QString &text, bool isHex)
{
    const auto bytes = toBytes(text, isHex);
    if (!bytes || bytes->size() % 2 != 0)
        return std::nullopt;
    QVector<quint16> words;
    for (int i = 0; i < bytes->size(); i += 2)
        words.append(bigEndian::wordAt(*bytes, i));
    return words;
}

} // namespace dataText
