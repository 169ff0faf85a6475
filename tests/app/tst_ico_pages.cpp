#include "common/read_file.h"
#include "ico/ico_library.h"
#include "support/window_test.h"

#include <QLabel>
#include <QtTest>

namespace {

const QString finished = "Creat finish！";
const QString invalid = "Invalid ICO file !";

QVector<IconRecord> iconsOf(const QString &path)
{
    QVector<IconRecord> icons;
    if (!icoLibrary::read(readFile(path).value_or(QByteArray()), icons))
        qFatal("no library %s", qPrintable(path));
    return icons;
}

/// The positions of the icons, each with the colour of its first pixel.
QMap<int, QByteArray> colorsOf(const QString &path)
{
    QMap<int, QByteArray> colors;
    for (const IconRecord &icon : iconsOf(path))
        colors.insert(icon.position, icon.pixels().left(2).toHex());
    return colors;
}

} // namespace

/// Icon libraries made and looked at in the real window.
class TestIcoPages : public WindowTest
{
    Q_OBJECT

private slots:
    void foldersAreLoaded()
    {
        for (const char *button : {"creatIcoFile", "addIcoFile", "replaceIcoFile"})
            QVERIFY(!find<QPushButton>(button)->isEnabled());
        picture("b2.JPG", Qt::red);
        picture("A1.png", Qt::red, 800, 480);
        picture("12_c.bmp", Qt::red);
        QVERIFY(
            QFile::rename(picture("x.png", Qt::red), m_folder->filePath("d.ico"))); // PNG inside
        picture("e.jpeg", Qt::red);
        write("f.png", "no picture");
        link("g.png", "A1.png");
        choose("selectIcoPath", {m_folder->path()});
        QCOMPARE(find<QLabel>("filePathLabel")->text(), m_folder->path());
        QCOMPARE(names(), QStringList({"12_c.bmp", "A1.png", "b2.JPG", "d.ico"}));
        QCOMPARE(column("ICOFileTable", 0), QStringList({"12", "", "", ""}));
        QCOMPARE(column("ICOFileTable", 2).at(1), QString("800*480"));
        QCOMPARE(find<QTableWidget>("ICOFileTable")->verticalHeaderItem(3)->text(), QString("3"));
        QVERIFY(find<QPushButton>("creatIcoFile")->isEnabled());
        // A folder without any file changes nothing but the path; one without pictures empties the
        // list.
        QTemporaryDir empty;
        choose("selectIcoPath", {empty.path()});
        QCOMPARE(names().size(), 4);
        QFile other(empty.filePath("text.txt"));
        QVERIFY(other.open(QIODevice::WriteOnly));
        choose("selectIcoPath", {empty.path()});
        QCOMPARE(names(), QStringList());
        const QString created = m_folder->filePath("new.ICO");
        choose("creatIcoFile", {created});
        QVERIFY(colorsOf(created).isEmpty());
        m_dialog.reset();
        QCOMPARE(stored("DefaultPath/icoDefaultPath").toString(), empty.path());
    }

    void librariesAreCreated()
    {
        choose("selectIcoFilePath", {picture("5.png", Qt::red), picture("5_b.png", Qt::green),
                                     picture("x.png", Qt::blue)});
        choose("selectIcoFilePath", {});
        QCOMPARE(column("ICOFileTable", 0), QStringList({"5", "5", ""}));
        choose("creatIcoFile", {});
        QCOMPARE(m_boxes->texts, QStringList());
        const QString path = m_folder->filePath("new.ICO");
        choose("creatIcoFile", {m_folder->filePath("new")}); // the suffix comes by itself
        QCOMPARE(m_boxes->texts, QStringList{finished});
        QCOMPARE(colorsOf(path), (QMap<int, QByteArray>{{0, "001f"}, {5, "f800"}}));
        QCOMPARE(QFileInfo(path).size(), 0x40000 + 2 * 4 * 2 * 2);
        m_dialog->selectLanguage("中文");
        choose("creatIcoFile", {m_folder->filePath("no/such/folder.ICO")});
        QCOMPARE(m_boxes->texts.last(), QString("创建完成！"));
    }

    void misplacedPicturesAreNamed()
    {
        choose("selectIcoFilePath",
               {picture("32768_a.png", Qt::red), picture("32767_b.png", Qt::green),
                picture("99999999999_c.png", Qt::blue)});
        const QString path = m_folder->filePath("new.ICO");
        choose("creatIcoFile", {path});
        QCOMPARE(
            m_boxes->texts,
            QStringList({"Left out, because the number at the start of the name is above 32767:\n"
                         "32768_a.png\n99999999999_c.png",
                         finished}));
        QCOMPARE(colorsOf(path), (QMap<int, QByteArray>{{32767, "07e0"}}));
    }

    void picturesAreAddedOrPutFirst()
    {
        const QString path = libraryOf({7, 9}, Qt::red);
        choose("selectIcoFilePath",
               {picture("7_new.png", Qt::blue), picture("8_new.png", Qt::blue)});
        choose("addIcoFile", {path});
        QCOMPARE(colorsOf(path), (QMap<int, QByteArray>{{7, "f800"}, {8, "001f"}, {9, "f800"}}));
        choose("replaceIcoFile", {path});
        QCOMPARE(colorsOf(path), (QMap<int, QByteArray>{{7, "001f"}, {8, "001f"}, {9, "f800"}}));
        QCOMPARE(iconsOf(path).at(0).offset, 0x40000);
        QCOMPARE(m_boxes->texts, QStringList({finished, finished}));
    }

    void invalidLibrariesAreLeftAlone()
    {
        choose("selectIcoFilePath", {picture("7_new.png", Qt::blue)});
        const QString path = write("bad.ICO", "too short");
        for (const char *button : {"addIcoFile", "replaceIcoFile", "OpenIcoFile"})
            choose(button, {path});
        QCOMPARE(m_boxes->texts, QStringList({invalid, invalid, invalid}));
        QCOMPARE(content(path), QByteArray("too short"));
    }

    void iconsAreShownTenToARow()
    {
        auto *table = find<QTableWidget>("displayPicture");
        choose("OpenIcoFile", {libraryOf({0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 12}, Qt::red)});
        QCOMPARE(table->rowCount(), 4);
        QCOMPARE(table->columnCount(), 10);
        QVERIFY(table->rowHeight(0) > 80);
        QCOMPARE(table->rowHeight(1), 25);
        QCOMPARE(table->rowHeight(3), 25);
        QCOMPARE(shown(3, 0)->text(), QString("12:4*2"));
        QCOMPARE(shownPixel(2, 0, 3, 1), qRgb(0xF8, 0, 0));
        QVERIFY(!shown(2, 1));
        // A library without icons leaves the preview, a smaller one shrinks it.
        choose("OpenIcoFile", {libraryOf({}, Qt::red)});
        QCOMPARE(table->rowCount(), 4);
        choose("OpenIcoFile", {libraryOf({5}, Qt::blue)});
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(shownPixel(0, 0, 0, 0), qRgb(0, 0, 0xF8));
        QVERIFY(!shown(0, 1));
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void keyColorIsFiltered()
    {
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(Qt::red);
        image.setPixelColor(1, 1, Qt::blue);
        choose("OpenIcoFile", {write("a.ICO", *icoLibrary::write({icon::fromImage(3, image)}))});
        QCOMPARE(shownPixel(0, 0, 0, 0), qRgb(0xF8, 0, 0));
        click("filiterBackColor");
        QCOMPARE(shownPixel(0, 0, 0, 0), qRgb(255, 255, 255));
        QCOMPARE(shownPixel(0, 0, 1, 1), qRgb(0, 0, 0xF8));
        click("filiterBackColor");
        QCOMPARE(shownPixel(0, 0, 0, 0), qRgb(0xF8, 0, 0));
    }

    void previewKeepsItsIconsUntilItIsDrawn()
    {
        auto *table = find<QTableWidget>("displayPicture");
        click("filiterBackColor");
        QCOMPARE(table->rowCount(), 0);
        const QString path = libraryOf({7}, Qt::red);
        choose("OpenIcoFile", {path});
        choose("selectIcoFilePath",
               {picture("7_new.png", Qt::blue), picture("8_new.png", Qt::blue)});
        choose("addIcoFile", {path});
        QVERIFY(!shown(1, 1));
        // Both pictures stand behind the library's icon, although only one was written.
        click("filiterBackColor");
        QCOMPARE(shown(1, 1)->text(), QString("7:4*2"));
        QCOMPARE(shown(1, 2)->text(), QString("8:4*2"));
        choose("replaceIcoFile", {path});
        click("filiterBackColor");
        QCOMPARE(shown(1, 1)->text(), QString("8:4*2"));
        QVERIFY(!shown(1, 2));
    }

private:
    QStringList names() { return column("ICOFileTable", 1); }
    QTableWidgetItem *shown(int row, int column)
    {
        return find<QTableWidget>("displayPicture")->item(row, column);
    }
    QRgb shownPixel(int row, int column, int x, int y)
    {
        return shown(row, column)->icon().pixmap(4, 2).toImage().pixel(x, y);
    }
    QString libraryOf(std::initializer_list<int> positions, const QColor &color)
    {
        QVector<IconRecord> icons;
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(color);
        for (const int position : positions)
            icons.append(icon::fromImage(position, image));
        return write("library.ICO", *icoLibrary::write(icons));
    }
};

QTEST_MAIN(TestIcoPages)
#include "tst_ico_pages.moc"
