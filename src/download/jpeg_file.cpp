#include "download/jpeg_file.h"

#include "common/picture.h"

#include <QBuffer>

namespace {

QByteArray compressed(const QImage &image, int quality)
{
    // In memory, which cannot be full without a word, as a disk can.
    QBuffer jpeg;
    jpeg.open(QIODevice::WriteOnly);
    return image.save(&jpeg, "JPG", quality) ? jpeg.data() : QByteArray();
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
