// A folder of 100 pictures converted to the screen size, on one thread and on all, against reading
// and decoding them alone.

#include "bench/measure.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "imaging/picture_conversion.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtConcurrent>

#include <functional>

namespace {

/// Something between a drawing and a photo, as a camera or a drawing program saves it.
QImage sample(int number)
{
    QImage image(1920, 1080, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, 1920, 1080);
    gradient.setColorAt(0, Qt::darkBlue);
    gradient.setColorAt(0.5, QColor(200, number * 2, 90));
    gradient.setColorAt(1, Qt::darkGreen);
    painter.fillRect(image.rect(), gradient);
    for (int i = 0; i < 400; ++i)
        painter.fillRect(i * 37 % 1920, (i * 91 + number) % 1080, 40, 30,
                         QColor(i * 7 % 256, i * 13 % 256, i * 29 % 256));
    return image;
}

double seconds(const std::function<void()> &work)
{
    QVector<double> times;
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.append(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
    }
    return measure::median(times);
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
    const QTemporaryDir out;
    const auto batches = pictureConversion::batches(list.pictures(), out.path(), true);
    const auto convert = [&batches] {
        QtConcurrent::blockingMap(batches, [](const pictureConversion::Batch &batch) {
            pictureConversion::run(batch, QSize(800, 480));
        });
    };
    const double decoding = seconds([&paths] {
        for (const QString &path : paths)
            picture::decode(readFile(path).value());
    });
    const double onAll = seconds(convert);
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    const double onOne = seconds(convert);
    measure::report("PERF_BATCH_ONE_THREAD", onOne / decoding, 1.10);
    measure::report("PERF_BATCH", onAll / decoding, 0.62);
    return 0;
}
