#pragma once

#include <QString>

#include <limits>
#include <optional>

/// `text` as a number from `least` to `most`: decimal, whatever zeros it begins with, or
/// hexadecimal behind "0x"; a sign and blanks around it may be there. Nothing when it is none of
/// them.
std::optional<int> wholeNumber(const QString &text, int least = std::numeric_limits<int>::min(),
                               int most = std::numeric_limits<int>::max());
