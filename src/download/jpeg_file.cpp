#include "download/jpeg_file.h"

#include "common/picture.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

QByteArray compressed(const QImage &image, int quality)
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("SystemTest.jpg"));
    if (!image.save(file.fileName(), "JPG", quality) || !file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

} // namespace

Jpeg jpegWithin(const QByteArray &content, int maxBytes)
{
    if (content.size() <= maxBytes)
        return {content};
    const QImage image = picture::decode(content);
    if (image.isNull())
        return {{}, &picture::refusal(content)};
    // The lowest quality first: without hope nobody waits for all the others.
    constexpr int lowestQuality = 1;
    const QByteArray smallest = compressed(image, lowestQuality);
    if (smallest.isEmpty() || smallest.size() > maxBytes)
        return {{}, &texts::jpegTooLarge};
    for (double quality = 90; quality > lowestQuality; quality *= 0.9) {
        const QByteArray jpeg = compressed(image, static_cast<int>(quality));
        if (!jpeg.isEmpty() && jpeg.size() <= maxBytes)
            return {jpeg};
    }
    return {smallest};
}
