#include "common/replace_file.h"
#include "imaging/picture_conversion.h"
#include "imaging/picture_list.h"
#include "imaging/picture_preview.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

using pictureConversion::Batch;

namespace {

/// Number and name of each.
QStringList rowsOf(const PictureList &list)
{
    QStringList rows;
    for (const ListedPicture &picture : list.pictures())
        rows.append(picture.number + ' ' + picture.name);
    return rows;
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
    void numbersFollowTheNames()
    {
        const QStringList cases[] = {
            {"5 5_a.png", "6 b.png", "7 c.png"},
            {"007 007x.bmp", "8 y.bmp"},
            {"1 a", "2 b"},
            {"10 10.png", "11 a.png", "3 3b.png", "4 c"},
            {"1 12", "2 13"}, // nothing but digits
            {"18446744073709551615 18446744073709551615.png", "0 a"},
            {"99999999999999999999 99999999999999999999.png", "1 a"}, // too large
        };
        for (const QStringList &rows : cases) {
            QStringList paths;
            for (const QString &row : rows)
                paths.append("/3/" + row.section(' ', 1));
            const PictureList list = listOf(paths);
            QCOMPARE(rowsOf(list), rows);
            QCOMPARE(list.pictures().at(0).path, paths.at(0));
        }
    }

    void picturesMoveAndNumbersStay()
    {
        PictureList list = listOf({"/1a", "/2b", "/3c"});
        QVERIFY(list.exchange(2, 1));
        QCOMPARE(rowsOf(list), QStringList({"1 1a", "2 3c", "3 2b"}));
        QCOMPARE(list.pictures().at(1).path, QString("/3c"));
        for (const auto &[row, other] : {std::pair(0, -1), {2, 3}, {-1, 0}, {3, 2}})
            QVERIFY(!list.exchange(row, other));
        for (const int row : {0, 7, -1})
            list.remove(row);
        QCOMPARE(rowsOf(list), QStringList({"2 3c", "3 2b"}));
    }

    void sortingKeepsTheOrderOfEquals()
    {
        PictureList list = listOf({"/10x", "/9b", "/a", "/009a", "/é"});
        list.sortByNumber();
        QCOMPARE(rowsOf(list), QStringList({"9 9b", "009 009a", "10 10x", "10 a", "10 é"}));
        list = listOf({"/b1", "/ab", "/aa", "/Z"});
        list.sortByFirstByte();
        QCOMPARE(rowsOf(list), QStringList({"4 Z", "2 ab", "3 aa", "1 b1"}));
        // Bytes are signed: names that begin beyond ASCII come first, where the encoding has them.
        list = listOf({"/a", "/图"});
        list.sortByFirstByte();
        const bool isKnown = QString("图").toLocal8Bit() != "?";
        QCOMPARE(rowsOf(list).first(), QString(isKnown || '?' < 'a' ? "2 图" : "1 a"));
    }

    void previewsAreAsTheyAreDefined()
    {
        const QSize small(48, 27);
        const struct
        {
            QImage picture;
            QSize screen;
            int percent;
            QPoint offset;
        } cases[] = {
            {chart(30, 20), small, 50, {}}, // smaller than the canvas
            {chart(30, 20), {90, 20}, 100, {13, 0}},
            {chart(100, 70), small, 400, {50, 40}},
            {chart(100, 70), small, 400, {132, 68}}, // to the edge
            {chart(100, 70), small, 400, {999, 999}},
            {chart(50, 50, QImage::Format_ARGB32), small, 125, {}},
            {chart(50, 50, QImage::Format_Indexed8), small, 150, {3, 0}},
            {chart(50, 50, QImage::Format_RGB888), small, 99, {}},
        };
        const QSize canvas(60, 40);
        for (const auto &[picture, screen, percent, offset] : cases) {
            const int w = screen.width() * percent / 100;
            const int h = screen.height() * percent / 100;
            const QImage scaled =
                picture.scaled(w, h, Qt::IgnoreAspectRatio, Qt::FastTransformation);
            QImage expected(canvas, QImage::Format_RGB32);
            expected.fill(qRgb(128, 128, 128));
            const QPoint first(qMin(offset.x(), qMax(0, w - 60)),
                               qMin(offset.y(), qMax(0, h - 40)));
            for (int y = 0; y < qMin(40, h); ++y)
                for (int x = 0; x < qMin(60, w); ++x)
                    expected.setPixel(x, y, scaled.pixel(first + QPoint(x, y)));
            const PicturePreview preview = drawPreview(picture, screen, percent, offset, canvas);
            QCOMPARE(preview.maxX, w > 60 ? w - 60 : 0);
            QCOMPARE(preview.maxY, h > 40 ? h - 40 : 0);
            QCOMPARE(preview.canvas.convertToFormat(QImage::Format_RGB32), expected);
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

    void outputsAreNamedAfterTheirPictures()
    {
        using pictureConversion::outputPath;
        const ListedPicture logo{"012", "logo.final.png", "/in/logo.final.png"};
        QCOMPARE(outputPath(logo, "/out", false), QString("/out/logo.bmp"));
        QCOMPARE(outputPath(logo, "/out", true), QString("/out/012_logo.bmp"));
        QCOMPARE(outputPath({"1", "logo", "/logo"}, "/out", false), QString("/out/logo.bmp"));
        QCOMPARE(outputPath({"1", ".a.png", "/.a.png"}, "/out", true), QString("/out/1_.bmp"));
    }

    void batchesDoNotTouchEachOther()
    {
        const QTemporaryDir in;
        const QTemporaryDir out;
        const auto path = [&in](const char *name) { return in.filePath(name); };
        const PictureList list =
            listOf({path("a.png"), path("b.png"), path("A.jpg"), path("c.BMP")});
        const QVector<Batch> apart = pictureConversion::batches(list.pictures(), out.path(), false);
        QCOMPARE(apart.size(), 3);
        QCOMPARE(apart.at(0).size(), 2);
        QCOMPARE(apart.at(0).at(1).source, path("A.jpg")); // one file on a memory card
        // In the folder of the pictures c.BMP is written over itself, however the folder is
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
        const QTemporaryDir in;
        const QTemporaryDir out;
        Batch batch;
        for (const auto &[name, format] : {std::pair("1.png", "PNG"),
                                           {"2.bmp", "BMP"},
                                           {"3.jpg", "PNG"},
                                           {"4.png", "JPG"},
                                           {"5", "PNG"}}) {
            QVERIFY(chart(100, 50).save(in.filePath(name), format));
            batch.append({in.filePath(name), out.filePath(QString(name).left(1) + ".bmp")});
        }
        QVERIFY(replaceFile(in.filePath("6.png"), "no picture"));
        QVERIFY(chart(48, 27).save(in.filePath("7.png")));
        batch.append({in.filePath("6.png"), out.filePath("6.bmp")});
        for (const char *name : {"1.png", "7.png", "missing.png"}) // the last one of an output wins
            batch.append({in.filePath(name), out.filePath("7.bmp")});
        for (const QSize &size : {QSize(0, 5), QSize(-480, -272), QSize(10000, 10001)})
            pictureConversion::run(batch, size);
        QVERIFY(QDir(out.path()).isEmpty());
        pictureConversion::run(batch, QSize(48, 27));
        QCOMPARE(QDir(out.path()).entryList(QDir::Files),
                 QStringList({"1.bmp", "2.bmp", "3.bmp", "4.bmp", "5.bmp", "7.bmp"}));
        const auto converted = [&out](const char *name) {
            return QImage(out.filePath(name), "BMP").convertToFormat(QImage::Format_RGB32);
        };
        for (const char *name : {"1.bmp", "2.bmp", "3.bmp", "5.bmp"})
            QCOMPARE(converted(name), chart(100, 50).scaled(48, 27));
        QCOMPARE(converted("7.bmp"), chart(48, 27));
    }
};

QTEST_GUILESS_MAIN(TestPictures)
#include "tst_pictures.moc"
