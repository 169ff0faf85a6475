// Choosing a picture (decoding, scaling, packing) against decoding it alone.

#include "bench/measure.h"
#include "common/picture.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>

namespace {

/// Something between a drawing and a photo.
QImage sample(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, size.width(), size.height());
    gradient.setColorAt(0, Qt::darkBlue);
    gradient.setColorAt(0.5, Qt::yellow);
    gradient.setColorAt(1, Qt::darkGreen);
    painter.fillRect(image.rect(), gradient);
    for (int i = 0; i < 400; ++i)
        painter.fillRect(i * 37 % size.width(), i * 91 % size.height(), 40, 30,
                         QColor(i * 7 % 256, i * 13 % 256, i * 29 % 256));
    return image;
}

void measureFormat(const char *name, const QSize &size, const char *format, double goal)
{
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    sample(size).save(&buffer, format);

    const double decoding = measure::seconds([&] { picture::decode(content); }, 15);
    const double choosing = measure::seconds(
        [&] {
            picture::toRgb565(picture::decode(content).scaled(size, Qt::IgnoreAspectRatio,
                                                              Qt::FastTransformation));
        },
        15);
    measure::report(name, choosing / decoding, goal);
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    measureFormat("PERF_PICTURE_JPEG_1920X1080", QSize(1920, 1080), "JPEG", 1.15);
    measureFormat("PERF_PICTURE_PNG_1920X1080", QSize(1920, 1080), "PNG", 1.15);
    measureFormat("PERF_PICTURE_JPEG_1024X600", QSize(1024, 600), "JPEG", 1.25);
    measureFormat("PERF_PICTURE_PNG_1024X600", QSize(1024, 600), "PNG", 1.25);
    return 0;
}
