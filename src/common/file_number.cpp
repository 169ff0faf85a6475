#include "common/file_number.h"

#include <QFileInfo>

#include <algorithm>

QString leadingDigits(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const auto end = std::find_if(name.begin(), name.end(), [](QChar c) {
        return c < QLatin1Char('0') || c > QLatin1Char('9');
    });
    return end == name.end() ? QString() : name.left(static_cast<int>(end - name.begin()));
}
