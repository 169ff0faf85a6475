#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

struct ListedPicture
{
    QString number; ///< decimal; leading zeros stay
    QString name;   ///< of the file, without its folder
    QString path;
};

/// The pictures of a folder, in the order in which they are shown and converted. Rows outside the
/// list are ignored.
class PictureList
{
public:
    /// Lists `paths` in place of what was listed before. The digits at the start of a name are its
    /// number; a picture without them gets the number after that of the one before.
    void load(const QStringList &paths);
    void remove(int row);
    void clear() { m_pictures.clear(); }

    /// Exchanges the pictures of rows `row` and `other`; false when one of them does not exist. The
    /// numbers stay where they are: a moved picture takes that of its new place.
    bool exchange(int row, int other);

    // Rows with equal keys keep their order.
    void sortByNumber();
    /// By the first byte of the name alone, in the local 8-bit encoding, as a signed byte. That is
    /// wanted.
    void sortByFirstByte();

    const QVector<ListedPicture> &pictures() const { return m_pictures; }
    bool has(int row) const { return row >= 0 && row < m_pictures.size(); }

private:
    QVector<ListedPicture> m_pictures;
};
