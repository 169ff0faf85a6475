// A folder of 100 pictures converted to the screen size, on one thread and on all, against reading
// and decoding them alone.

#include "bench/measure.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "imaging/picture_conversion.h"

#include <QGuiApplication>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtConcurrent>

#include <memory>
#include <vector>

namespace {

/// A picture with the grain of a photo.
QImage sample(int number)
{
    QImage image(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 1920, 1080);
    gradient.setColorAt(0, Qt::darkBlue);
    gradient.setColorAt(0.5, QColor(200, number * 2, 90));
    gradient.setColorAt(1, Qt::darkGreen);
    painter.fillRect(image.rect(), gradient);
    painter.end();
    QRandomGenerator random(static_cast<quint32>(number));
    for (int y = 0; y < image.height(); ++y) {
        uchar *line = image.scanLine(y);
        for (int i = 0; i < 4 * image.width(); ++i)
            line[i] = static_cast<uchar>(qMin(255, line[i] + random.bounded(12)));
    }
    return image;
}

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QTemporaryDir folder;
    QStringList paths;
    for (int i = 0; i < 100; ++i) {
        paths.append(folder.filePath(QString("%1.%2").arg(i).arg(i % 2 == 0 ? "jpg" : "png")));
        sample(i).save(paths.last());
    }
    PictureList list;
    list.load(paths);
    // Each time into a new folder, which is not removed before the end.
    std::vector<std::unique_ptr<QTemporaryDir>> outs;
    const auto convert = [&list, &outs] {
        outs.push_back(std::make_unique<QTemporaryDir>());
        const auto batches = pictureConversion::batches(list.pictures(), outs.back()->path(), true);
        QtConcurrent::blockingMap(batches, [](const pictureConversion::Batch &batch) {
            pictureConversion::run(batch, QSize(480, 272));
        });
    };
    const double decoding = measure::seconds([&paths] {
        for (const QString &path : paths)
            picture::decode(readFile(path).value());
    });
    const double onAll = measure::seconds(convert);
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    const double onOne = measure::seconds(convert);
    measure::report("PERF_BATCH_ONE_THREAD", onOne / decoding, 1.10);
    measure::report("PERF_BATCH", onAll / decoding, 0.62);
    return 0;
}
