#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace hexText {

/// The hexadecimal digits of `text`, as typed; blanks are skipped. Nothing when it holds any other
/// character.
std::optional<QByteArray> digitsOf(const QString &text);

} // namespace hexText
