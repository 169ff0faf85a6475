#include "imaging/picture_conversion.h"
#include "imaging/picture_list.h"
#include "imaging/picture_preview.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using pictureConversion::Batch;

namespace {

QStringList numbersOf(const PictureList &list)
{
    QStringList numbers;
    for (const ListedPicture &picture : list.pictures())
        numbers.append(picture.number);
    return numbers;
}

QStringList namesOf(const PictureList &list)
{
    QStringList names;
    for (const ListedPicture &picture : list.pictures())
        names.append(picture.name);
    return names;
}

PictureList listOf(const QStringList &paths)
{
    PictureList list;
    list.load(paths);
    return list;
}

/// A picture in which every pixel has a colour of its own.
QImage chart(int width, int height, QImage::Format format = QImage::Format_RGB32)
{
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgba(x * 7 % 256, y * 11 % 256, (x + y) * 3 % 256, 255 - x % 3));
    return image.convertToFormat(format);
}

} // namespace

class TestPictures : public QObject
{
    Q_OBJECT

private slots:
    void numbersFollowTheNames_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("numbers");
        const auto row = [](const char *title, const QStringList &names,
                            const QStringList &numbers) {
            QTest::newRow(title) << names << numbers;
        };
        row("counted on", {"5_a.png", "b.png", "c.png"}, {"5", "6", "7"});
        row("leading zeros", {"007x.bmp", "y.bmp"}, {"007", "8"});
        row("from one", {"a", "b"}, {"1", "2"});
        row("back again", {"10.png", "a.png", "3b.png", "c"}, {"10", "11", "3", "4"});
        row("nothing but digits", {"12", "13"}, {"1", "2"});
        row("as large as it gets", {"18446744073709551615.png", "a"},
            {"18446744073709551615", "0"});
        row("too large", {"99999999999999999999.png", "a"}, {"99999999999999999999", "1"});
    }

    void numbersFollowTheNames()
    {
        QFETCH(const QStringList, names);
        QStringList paths;
        for (const QString &name : names)
            paths.append("/3/" + name);
        const PictureList list = listOf(paths);
        QTEST(numbersOf(list), "numbers");
        QCOMPARE(namesOf(list), names);
        QCOMPARE(list.pictures().at(0).path, paths.at(0));
    }

    void picturesMoveAndNumbersStay()
    {
        PictureList list = listOf({"/1a", "/2b", "/3c"});
        QVERIFY(list.exchange(2, 1));
        QCOMPARE(numbersOf(list), QStringList({"1", "2", "3"}));
        QCOMPARE(namesOf(list), QStringList({"1a", "3c", "2b"}));
        QCOMPARE(list.pictures().at(1).path, QString("/3c"));
        for (const auto &[row, other] : {std::pair(0, -1), {2, 3}, {-1, 0}, {3, 2}})
            QVERIFY(!list.exchange(row, other));
        list.remove(0);
        list.remove(7);
        list.remove(-1);
        QCOMPARE(namesOf(list), QStringList({"3c", "2b"}));
        QCOMPARE(numbersOf(list), QStringList({"2", "3"}));
    }

    void sortingKeepsTheOrderOfEquals()
    {
        PictureList list = listOf({"/10x", "/9b", "/a", "/009a", "/é"});
        list.sortByNumber();
        QCOMPARE(numbersOf(list), QStringList({"9", "009", "10", "10", "10"}));
        QCOMPARE(namesOf(list), QStringList({"9b", "009a", "10x", "a", "é"}));
        PictureList names = listOf({"/b1", "/ab", "/aa", "/Z"});
        names.sortByFirstByte();
        QCOMPARE(namesOf(names), QStringList({"Z", "ab", "aa", "b1"}));
        QCOMPARE(numbersOf(names), QStringList({"4", "2", "3", "1"}));
        // Bytes are signed: names that begin beyond ASCII come first, where the encoding has them.
        PictureList foreign = listOf({"/a", "/图"});
        foreign.sortByFirstByte();
        const bool isKnown = QString("图").toLocal8Bit() != "?";
        QCOMPARE(namesOf(foreign).first(), QString(isKnown || '?' < 'a' ? "图" : "a"));
    }

    void previewsAreAsTheyAreDefined_data()
    {
        QTest::addColumn<QImage>("picture");
        QTest::addColumn<QSize>("screen");
        QTest::addColumn<int>("percent");
        QTest::addColumn<QPoint>("offset");
        const QSize screen(48, 27);
        QTest::newRow("smaller than the canvas") << chart(30, 20) << screen << 50 << QPoint();
        QTest::newRow("wider") << chart(30, 20) << QSize(90, 20) << 100 << QPoint(13, 0);
        QTest::newRow("larger") << chart(100, 70) << screen << 400 << QPoint(50, 40);
        QTest::newRow("to the edge") << chart(100, 70) << screen << 400 << QPoint(132, 68);
        QTest::newRow("alpha") << chart(50, 50, QImage::Format_ARGB32) << screen << 125 << QPoint();
        QTest::newRow("palette") << chart(50, 50, QImage::Format_Indexed8) << screen << 150
                                 << QPoint(3, 0);
        QTest::newRow("24 bits") << chart(50, 50, QImage::Format_RGB888) << screen << 99
                                 << QPoint();
    }

    void previewsAreAsTheyAreDefined()
    {
        QFETCH(const QImage, picture);
        QFETCH(const QSize, screen);
        QFETCH(const int, percent);
        QFETCH(const QPoint, offset);
        const QSize canvas(60, 40);
        const int w = screen.width() * percent / 100;
        const int h = screen.height() * percent / 100;
        const QImage scaled = picture.scaled(w, h, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        const PicturePreview preview = drawPreview(picture, screen, percent, offset, canvas);
        QCOMPARE(preview.maxX, w > 60 ? w - 60 : 0);
        QCOMPARE(preview.maxY, h > 40 ? h - 40 : 0);
        QCOMPARE(preview.canvas.size(), canvas);
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 60; ++x) {
                const bool isInside = x + offset.x() < w && y + offset.y() < h;
                const QRgb expected =
                    isInside ? scaled.pixel(x + offset.x(), y + offset.y()) : qRgb(128, 128, 128);
                QCOMPARE(preview.canvas.pixel(x, y) & 0xFFFFFF, expected & 0xFFFFFF);
            }
    }

    void hugePreviewsAreLookedUp()
    {
        QImage halves(2, 1, QImage::Format_RGB32);
        halves.setPixel(0, 0, qRgb(255, 0, 0));
        halves.setPixel(1, 0, qRgb(0, 0, 255));
        const QSize screen(2000000000, 2000000000);
        const PicturePreview left = drawPreview(halves, screen, 400, QPoint(), QSize(30, 30));
        QCOMPARE(left.maxX, std::numeric_limits<int>::max() - 30);
        QCOMPARE(left.canvas.pixel(29, 29), qRgb(255, 0, 0));
        const PicturePreview right =
            drawPreview(halves, screen, 400, QPoint(left.maxX, left.maxY), QSize(30, 30));
        QCOMPARE(right.canvas.pixel(0, 0), qRgb(0, 0, 255));
    }

    void previewsWithoutPixelsAreGrey()
    {
        for (const auto &[screen, percent] : {std::pair(QSize(-480, 272), 100),
                                              {QSize(0, 0), 100},
                                              {QSize(480, 272), 0},
                                              {QSize(5, 5), 10}}) {
            const PicturePreview preview =
                drawPreview(chart(5, 5), screen, percent, QPoint(9, 9), QSize(3, 3));
            QCOMPARE(preview.maxX, 0);
            QCOMPARE(preview.canvas.pixel(0, 0), qRgb(128, 128, 128));
        }
    }

    void outputsAreNamedAfterTheirPictures_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("isRenamed");
        QTest::addColumn<QString>("output");
        QTest::newRow("first dot") << "logo.final.png" << false << "/out/logo.bmp";
        QTest::newRow("renamed") << "logo.final.png" << true << "/out/012_logo.bmp";
        QTest::newRow("no dot") << "logo" << false << "/out/logo.bmp";
        QTest::newRow("hidden") << ".logo.png" << true << "/out/012_.bmp";
    }

    void outputsAreNamedAfterTheirPictures()
    {
        QFETCH(const QString, name);
        QFETCH(const bool, isRenamed);
        QTEST(pictureConversion::outputPath({"012", name, "/in/" + name}, "/out", isRenamed),
              "output");
    }

    void batchesDoNotTouchEachOther()
    {
        const QTemporaryDir in;
        const QTemporaryDir out;
        const auto path = [&in](const char *name) { return in.filePath(name); };
        const PictureList list =
            listOf({path("a.png"), path("b.png"), path("a.jpg"), path("c.bmp")});
        const QVector<Batch> apart = pictureConversion::batches(list.pictures(), out.path(), false);
        QCOMPARE(apart.size(), 3);
        QCOMPARE(apart.at(0).size(), 2);
        QCOMPARE(apart.at(0).at(1).source, path("a.jpg"));
        // In the folder of the pictures c.bmp is written over itself, however the folder is
        // written.
        for (const QString &folder : {in.path(), in.path() + "/."}) {
            const QVector<Batch> together =
                pictureConversion::batches(list.pictures(), folder, false);
            QCOMPARE(together.size(), 1);
            QCOMPARE(together.at(0).size(), 4);
        }
        QCOMPARE(pictureConversion::batches(list.pictures(), in.path(), true).size(), 4);
    }

    void picturesAreConvertedWhateverTheirSuffix()
    {
        const QTemporaryDir folder;
        const QImage picture = chart(100, 50);
        for (const auto &[name, format] : {std::pair("1.png", "PNG"),
                                           {"2.bmp", "BMP"},
                                           {"3.jpg", "PNG"},
                                           {"4.png", "JPG"},
                                           {"5", "PNG"}})
            QVERIFY(picture.save(folder.filePath(name), format));
        QFile broken(folder.filePath("6.png"));
        QVERIFY(broken.open(QIODevice::WriteOnly));
        broken.write("no picture");
        broken.close();
        QVERIFY(QDir(folder.path()).mkdir("out"));
        for (const char *name : {"1.png", "6.png", "2.bmp", "7_missing.png", "3.jpg", "4.png", "5"})
            pictureConversion::run(
                {{folder.filePath(name), folder.filePath("out/" + QString(name).left(1) + ".bmp")}},
                QSize(48, 27));
        QCOMPARE(QDir(folder.filePath("out")).entryList(QDir::Files),
                 QStringList({"1.bmp", "2.bmp", "3.bmp", "4.bmp", "5.bmp"}));
        const QImage expected =
            picture.scaled(48, 27, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        for (const char *name : {"1", "2", "3", "5"}) {
            const QImage converted(folder.filePath("out/" + QString(name) + ".bmp"), "BMP");
            QCOMPARE(converted.convertToFormat(QImage::Format_RGB32), expected);
        }
    }

    void lastPictureOfAnOutputWins()
    {
        const QTemporaryDir folder;
        for (const auto &[name, color] : {std::pair("a.png", Qt::red), {"b.png", Qt::blue}}) {
            QImage image(4, 4, QImage::Format_RGB32);
            image.fill(color);
            QVERIFY(image.save(folder.filePath(name)));
        }
        const QString output = folder.filePath("out.bmp");
        pictureConversion::run({{folder.filePath("a.png"), output},
                                {folder.filePath("b.png"), output},
                                {folder.filePath("none.png"), output}},
                               QSize(2, 2));
        QCOMPARE(QImage(output).pixel(0, 0), qRgb(0, 0, 255));
    }

    void sizesWithoutPixelsConvertNothing()
    {
        const QTemporaryDir folder;
        QVERIFY(chart(4, 4).save(folder.filePath("a.png")));
        for (const QSize &size : {QSize(0, 5), QSize(-480, -272), QSize(60000, 60000)})
            pictureConversion::run({{folder.filePath("a.png"), folder.filePath("a.bmp")}}, size);
        QVERIFY(!QFile::exists(folder.filePath("a.bmp")));
    }
};

QTEST_GUILESS_MAIN(TestPictures)
#include "tst_pictures.moc"
