#include "common/file_number.h"

#include <QFileInfo>

#include <algorithm>

namespace {

/// All digits that `name` starts with.
QString digitsOf(const QString &name)
{
    const auto end = std::find_if(name.begin(), name.end(), [](QChar c) {
        return c < QLatin1Char('0') || c > QLatin1Char('9');
    });
    return name.left(static_cast<int>(end - name.begin()));
}

} // namespace

QString leadingDigits(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const QString digits = digitsOf(name);
    return digits == name ? QString() : digits;
}

int leadingNumber(const QString &path)
{
    return digitsOf(QFileInfo(path).fileName()).toInt();
}
