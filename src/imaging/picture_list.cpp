#include "imaging/picture_list.h"

#include "common/file_number.h"

#include <QFileInfo>

#include <algorithm>

namespace {

signed char firstByte(const QString &name)
{
    const QByteArray bytes = name.toLocal8Bit();
    return static_cast<signed char>(bytes.isEmpty() ? 0 : bytes.front());
}

} // namespace

void PictureList::load(const QStringList &paths)
{
    m_pictures.clear();
    quint64 counter = 0; // a number that is too long counts as 0
    for (const QString &path : paths) {
        QString number = leadingDigits(path);
        counter = number.isEmpty() ? counter + 1 : number.toULongLong();
        if (number.isEmpty())
            number = QString::number(counter);
        m_pictures.append({number, QFileInfo(path).fileName(), path});
    }
}

void PictureList::remove(int row)
{
    if (has(row))
        m_pictures.remove(row);
}

bool PictureList::exchange(int row, int other)
{
    if (!has(row) || !has(other))
        return false;
    std::swap(m_pictures[row].name, m_pictures[other].name);
    std::swap(m_pictures[row].path, m_pictures[other].path);
    return true;
}

void PictureList::sortByNumber()
{
    std::stable_sort(m_pictures.begin(), m_pictures.end(),
                     [](const ListedPicture &a, const ListedPicture &b) {
                         return a.number.toULongLong() < b.number.toULongLong();
                     });
}

void PictureList::sortByFirstByte()
{
    std::stable_sort(m_pictures.begin(), m_pictures.end(),
                     [](const ListedPicture &a, const ListedPicture &b) {
                         return firstByte(a.name) < firstByte(b.name);
                     });
}
