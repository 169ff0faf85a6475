#include "common/whole_number.h"

#include <QRegularExpression>

std::optional<int> wholeNumber(const QString &text, int least, int most)
{
    static const QRegularExpression pattern("\\A([-+]?)(?:0[xX]([0-9A-Fa-f]+)|([0-9]+))\\z");
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    const bool isHex = !match.captured(2).isEmpty();
    bool fits = false;
    const qint64 size = match.captured(isHex ? 2 : 3).toLongLong(&fits, isHex ? 16 : 10);
    const qint64 number = match.captured(1) == "-" ? -size : size;
    return fits && number >= least && number <= most ? std::optional(static_cast<int>(number))
                                                     : std::nullopt;
}
