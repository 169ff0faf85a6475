#include "config/encryption_texts.h"

#include "common/hex_text.h"

#include <algorithm>

namespace encryptionTexts {

namespace {

bool isNameByte(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
           c == '_';
}

} // namespace

std::optional<QByteArray> keyFrom(const QString &text)
{
    const auto digits = hexText::digitsOf(text);
    if (!digits || digits->size() % 2 != 0)
        return std::nullopt;
    return QByteArray::fromHex(*digits);
}

Verdict checkFolderName(const QString &name)
{
    const QByteArray bytes = name.toLocal8Bit();
    if (bytes.size() > maxFolderNameBytes)
        return {"The folder name is longer than 8 !", false};
    if (!std::all_of(bytes.begin(), bytes.end(), isNameByte))
        return {"It can only be : 0-9 , a-z , A-Z , or '-',or '_' ", false};
    return {bytes.isEmpty() ? QString() : QString::fromLatin1(bytes.toHex(' ') + ' '), true};
}

Verdict checkKey(const QString &key)
{
    const auto bytes = keyFrom(key);
    if (!bytes)
        return {"It can only be in hexadecimal and even number !", false};
    return {"secret key number :" + QString::number(bytes->size()), bytes->size() == keyBytes};
}

} // namespace encryptionTexts
