#include "imaging/picture_conversion.h"

#include "common/picture.h"
#include "common/read_file.h"
#include "common/replace_file.h"

#include <QBuffer>
#include <QFileInfo>
#include <QHash>
#include <QSet>

namespace pictureConversion {

namespace {

/// One name for each file, however its path is written. Windows and memory cards ignore case.
QString fileKey(const QString &path)
{
    const QString folder = QFileInfo(QFileInfo(path).absolutePath()).canonicalFilePath();
    return (folder + '/' + QFileInfo(path).fileName()).toCaseFolded();
}

QByteArray bmpOf(const QImage &image)
{
    QByteArray bmp;
    bmp.reserve(static_cast<int>(image.sizeInBytes()) + 1024);
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "BMP");
    return bmp;
}

} // namespace

QString outputPath(const ListedPicture &picture, const QString &folder, bool isRenamed)
{
    const QString prefix = isRenamed ? picture.number + '_' : QString();
    return folder + '/' + prefix + picture.name.section('.', 0, 0) + ".bmp";
}

QVector<Batch> batches(const QVector<ListedPicture> &pictures, const QString &folder,
                       bool isRenamed)
{
    Batch all;
    QSet<QString> sources;
    for (const ListedPicture &picture : pictures) {
        all.append({picture.path, outputPath(picture, folder, isRenamed)});
        sources.insert(fileKey(picture.path));
    }
    QVector<Batch> byOutput;
    QHash<QString, int> batchOf;
    for (const Job &job : qAsConst(all)) {
        const QString key = fileKey(job.output);
        // A picture is written over one that is converted too: the order decides what is read.
        if (sources.contains(key))
            return {all};
        const auto found = batchOf.constFind(key);
        if (found != batchOf.constEnd()) {
            byOutput[*found].append(job);
            continue;
        }
        batchOf.insert(key, byOutput.size());
        byOutput.append({job});
    }
    return byOutput;
}

Outcome convert(const Job &job, const QSize &size)
{
    if (size.isEmpty() || qint64{size.width()} * size.height() > picture::maxPixels)
        return Outcome::NoPicture;
    const QImage image = picture::decode(readFile(job.source).value_or(QByteArray()));
    if (image.isNull())
        return Outcome::NoPicture;
    const QImage scaled = image.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    if (scaled.isNull())
        return Outcome::NoPicture;
    return replaceFile(job.output, bmpOf(scaled)) ? Outcome::Written : Outcome::Unwritable;
}

void run(const Batch &batch, const QSize &size)
{
    for (const Job &job : batch)
        convert(job, size);
}

} // namespace pictureConversion
