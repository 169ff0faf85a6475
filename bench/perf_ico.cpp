// 2000 pictures to an icon library, against reading and decoding them alone; and a library of all
// 32768 positions opened and shown, against making all of its pictures.

#include "app/dialog.h"
#include "bench/measure.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "ico/ico_library.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QTabWidget>
#include <QTemporaryDir>

#include <functional>

namespace {

QImage sample(int number)
{
    QImage image(64, 64, QImage::Format_ARGB32);
    image.fill(QColor(number % 256, number / 8 % 256, 40));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor(200, number * 7 % 256, number * 3 % 256));
    painter.drawEllipse(4, 4, 56, 40 + number % 16);
    return image;
}

double seconds(const std::function<void()> &work)
{
    QVector<double> times;
    for (int i = 0; i < 7; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.append(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
    }
    return measure::median(times);
}

void measureCreating(const QString &folder)
{
    QStringList paths;
    for (int i = 0; i < 2000; ++i) {
        paths.append(QString("%1/%2_icon.png").arg(folder).arg(i));
        sample(i).save(paths.last());
    }
    const double decoding = seconds([&paths] {
        for (const QString &path : paths)
            picture::decode(readFile(path).value());
    });
    const double creating = seconds([&paths, &folder] {
        IcoManager manager;
        manager.load(paths);
        manager.create(folder + "/icons.ICO");
    });
    measure::report("PERF_ICO", creating / decoding, 1.20);
}

void measurePreview(const QString &folder)
{
    QVector<IconRecord> records;
    for (int i = 0; i <= IconRecord::maxPosition; ++i)
        records.append(icon::fromImage(i, sample(i % 64)));
    const QString path = folder + "/full.ICO";
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(*icoLibrary::write(records));
    file.close();

    const double making = seconds([&records] {
        for (const IconRecord &record : records)
            QPixmap::fromImage(icon::toImage(record, false));
    });
    IcoManager manager;
    const double reading = seconds([&manager, &path] { manager.open(path); });
    std::printf("# a full library is read in %.0f ms, all its pictures are made in %.0f ms\n",
                reading * 1e3, making * 1e3);
    measure::report("PERF_ICO_READ", reading / making, 0.50);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QTemporaryDir folder;
    measureCreating(folder.path());
    measurePreview(folder.path());
    return 0;
}
