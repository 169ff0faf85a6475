#include "common/hex_text.h"

#include <cctype>

namespace hexText {

std::optional<QByteArray> digitsOf(const QString &text)
{
    QByteArray digits;
    for (const QChar c : text) {
        const char digit = c.toLatin1();
        if (digit == ' ')
            continue;
        if (std::isxdigit(static_cast<unsigned char>(digit)) == 0)
            return std::nullopt;
        digits.append(digit);
    }
    return digits;
}

} // namespace hexText
