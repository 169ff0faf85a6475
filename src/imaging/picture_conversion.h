#pragma once

#include "imaging/picture_list.h"

#include <QSize>

/// The conversion of listed pictures to BMP files of the screen size.
namespace pictureConversion {

struct Job
{
    QString source;
    QString output;
};

/// Jobs that must be done one after the other.
using Batch = QVector<Job>;

/// The file that `picture` becomes in `folder`: its name up to the first dot, with its number and
/// an underscore in front when it `isRenamed`.
QString outputPath(const ListedPicture &picture, const QString &folder, bool isRenamed);

/// The jobs of `pictures`, in batches that do not touch each other's files: done at the same time
/// they give what they give one after the other. Of several pictures with one output the last wins.
/// Names that differ in case only are taken for one.
QVector<Batch> batches(const QVector<ListedPicture> &pictures, const QString &folder,
                       bool isRenamed);

enum class Outcome { Written, NoPicture, Unwritable };

/// Stretches the picture to `size` and saves it. A size that is empty or has more than
/// `picture::maxPixels` is that of no picture.
Outcome convert(const Job &job, const QSize &size);

/// Converts each picture. One that cannot be read, decoded or saved is skipped.
void run(const Batch &batch, const QSize &size);

} // namespace pictureConversion
