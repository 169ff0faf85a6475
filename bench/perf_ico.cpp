// 2000 pictures to an icon library, on all threads and on one, against reading and decoding them
// alone on one; and a library of all 32768 positions opened and shown, against making all of its
// pictures.

#include "app/choose_in_dialog.h"
#include "app/dialog.h"
#include "bench/measure.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "ico/ico_library.h"

#include <QApplication>
#include <QCheckBox>
#include <QPainter>
#include <QPushButton>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QThreadPool>

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

void measureCreating(const QString &folder)
{
    QStringList paths;
    for (int i = 0; i < 2000; ++i) {
        paths.append(QString("%1/%2_icon.png").arg(folder).arg(i));
        sample(i).save(paths.last());
    }
    const double decoding = measure::seconds([&paths] {
        for (const QString &path : paths)
            picture::decode(readFile(path).value());
    });
    int library = 0;
    const auto create = [&] {
        IcoManager manager;
        manager.load(paths);
        manager.create(QString("%1/%2.ICO").arg(folder).arg(library++));
    };
    measure::report("PERF_ICO", measure::seconds(create) / decoding, 1.20);
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    std::printf("# on one thread: %.3f\n", measure::seconds(create) / decoding);
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

    const double making = measure::seconds([&records] {
        for (const IconRecord &record : records)
            QPixmap::fromImage(icon::toImage(record, false));
    });
    // Opened once, then drawn anew by its filter.
    Dialog dialog;
    dialog.findChild<QTabWidget *>("tabWidget")->setCurrentIndex(1);
    dialog.findChild<QTabWidget *>("tabWidgetICO")->setCurrentIndex(1);
    dialog.show();
    chooseInNextDialog({path});
    dialog.findChild<QPushButton *>("OpenIcoFile")->click();
    IcoManager manager;
    const double showing = measure::seconds([&] {
        manager.open(path);
        dialog.findChild<QCheckBox *>("filiterBackColor")->click();
        dialog.grab();
    });
    measure::report("PERF_ICO_PREVIEW", showing / making, 1.00);
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
