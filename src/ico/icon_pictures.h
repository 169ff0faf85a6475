#pragma once

#include "ico/icon_record.h"

#include <QCache>
#include <QIcon>
#include <QVector>

/// The pictures of many icons, made when they are first looked at. As many as fit into 256 MB
/// are kept, more than are seen at once: a damaged library may promise more than any memory holds.
class IconPictures
{
public:
    void show(const QVector<IconRecord> &records, bool hidesKeyColor);
    QIcon picture(int index) const;

private:
    static constexpr int maxKilobytes = 256 * 1024;

    QVector<IconRecord> m_records;
    bool m_hidesKeyColor = false;
    mutable QCache<int, QIcon> m_made{maxKilobytes};
};
