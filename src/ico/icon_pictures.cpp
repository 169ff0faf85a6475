#include "ico/icon_pictures.h"

#include <QPixmap>

void IconPictures::show(const QVector<IconRecord> &records, bool hidesKeyColor)
{
    m_records = records;
    m_hidesKeyColor = hidesKeyColor;
    m_made.clear();
}

QIcon IconPictures::picture(int index) const
{
    if (const QIcon *made = m_made.object(index))
        return *made;
    const IconRecord &record = m_records.at(index);
    const QIcon picture(QPixmap::fromImage(icon::toImage(record, m_hidesKeyColor)));
    m_made.insert(index, new QIcon(picture), 1 + 2 * record.pixelBytes() / 1024);
    return picture;
}
