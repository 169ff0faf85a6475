#pragma once

#include "common/file_number.h"

#include <QStringList>

/// The files of a download page, with the position of each on the module as the user sees it.
struct DownloadList
{
    QStringList paths;
    QStringList positions;

    /// Duplicates are allowed.
    void append(const QString &path) { append(path, leadingDigits(path)); }
    void append(const QString &path, const QString &position)
    {
        paths.append(path);
        positions.append(position);
    }
    void removeAt(int row)
    {
        if (row < 0 || row >= paths.size())
            return;
        paths.removeAt(row);
        positions.removeAt(row);
    }
    void clear() { *this = {}; }
};
