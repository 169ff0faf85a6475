#include "common/big_endian.h"
#include "common/read_file.h"
#include "support/random_bytes.h"
#include "support/row.h"
#include "support/window_test.h"

#include <QPainter>
#include <QProgressBar>

namespace {

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

/// The module's pixels of `image` at 32 x 50, by the definition.
QByteArray expectedPixels(const QImage &image)
{
    const QImage scaled = image.scaled(32, 50, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    QByteArray bytes;
    for (int i = 0; i < 32 * 50; ++i) {
        const QColor color = scaled.pixelColor(i % 32, i / 32);
        bigEndian::appendWord(bytes,
                              static_cast<quint16>((color.red() >> 3) << 11 |
                                                   (color.green() >> 2) << 5 | color.blue() >> 3));
    }
    return bytes;
}

} // namespace

/// Files and pictures on their way to the simulated module, through the real window.
class TestEd2Downloads : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(openWindow());
        confirmEd2Rate();
    }

    void filesStandInTheirFlashBlocks()
    {
        const QString gone = write("1_gone.bin", "x");
        choose("chooseFontFile", {gone});
        QVERIFY(QFile::remove(gone));
        click("downloadFont");
        pass(50);
        QCOMPARE(m_boxes->texts, QStringList());
        const QByteArray large = randomBytes(k7::Flash::blockBytes + 1);
        const QStringList paths{write("32_large.dzk", large), write("7.empty.bin", ""),
                                write("b.bin", "bb")};
        choose("chooseFontFile", paths);
        choose("chooseFontFile", {}); // cancelled
        QCOMPARE(column("fontPath", 1), QStringList{gone} + paths);
        QCOMPARE(column("fontPath", 0), QStringList({"1", "32", "7", ""}));
        QCOMPARE(stored("DefaultPath/fontDefaultPath").toStringList(), paths);
        click("downloadFont");
        QCOMPARE(nextBoxes(), QStringList{"The 3 row position is not number !"});
        // The low 8 bits count: this is block 246.
        find<QTableWidget>("fontPath")->item(3, 0)->setText("-010");
        const qint64 start = m_time->milliseconds();
        click("downloadFont");
        QCOMPARE(nextBoxes(), QStringList{complete});
        QVERIFY(m_time->milliseconds() - start >= 4 * 800); // what the flash needs, four times
        QVERIFY(block(32, large.size()) == large);
        QCOMPARE(block(33, 2), large.right(1) + '\xFF');
        QCOMPARE(block(7, 1), QByteArray("\xFF"));
        QCOMPARE(block(246, 2), QByteArray("bb"));
        QCOMPARE(module().flash().writtenBlocks(), (QList<int>{7, 32, 33, 246}));
        QCOMPARE(find<QProgressBar>("fontProgressBar")->value(), 100);
        // The number's plain text shows once the table is filled again.
        choose("chooseFontFile", {paths.last()});
        QCOMPARE(column("fontPath", 0).at(3), QString("-10"));
    }

    void emptyListsAreRefused()
    {
        for (const QString refusal : {"Not select file !", "未选中文件 !"}) {
            click("downloadFont");
            click("downloadPicture");
            QCOMPARE(nextBoxes(), QStringList({refusal, refusal}));
            m_dialog->selectLanguage("中文");
        }
    }

    void rowsComeAndGo()
    {
        const QString first = write("1_a.bin", "a");
        choose("chooseFontFile", {first, write("2_b.bin", "b")});
        choose("chooseFontFile", {first});
        auto *table = find<QTableWidget>("fontPath");
        table->setCurrentCell(0, 1);
        table->clearSelection();
        click("deleteFontFile");
        QCOMPARE(column("fontPath", 0), QStringList({"1", "2", "1"}));
        table->setCurrentCell(0, 1);
        click("deleteFontFile");
        QCOMPARE(column("fontPath", 0), QStringList({"2", "1"}));
        click("deleteFontAll");
        m_dialog->setDefaultFolder("/project/ZOLT_SET");
        const QString config = "/project/ZOLT_SET/13触控配置文件.bin";
        const QString own = write("13_own.bin", "a");
        choose("chooseFontFile", {own});
        click("touchConfig");
        click("variableConfig");
        QCOMPARE(column("fontPath", 0), QStringList({"13", "13", "14"}));
        QCOMPARE(column("fontPath", 1),
                 QStringList({own, config, "/project/ZOLT_SET/14变量配置文件.bin"}));
        // The first entry with the number goes, whoever added it.
        click("touchConfig");
        click("variableConfig");
        QCOMPARE(column("fontPath", 1), QStringList{config});
    }

    void sizeChosenDuringADownloadIsForTheNext()
    {
        select("srceenSize", "480X272");
        choose("choosePictureFile", {picture("1.png", Qt::red)});
        click("downloadPicture");
        pass(800);
        select("srceenSize", "320X240"); // its pictures take 745 ms
        choose("choosePictureFile", {picture("2.png", Qt::blue)});
        QCOMPARE(nextBoxes(), QStringList{complete});
    }

    void picturesArriveAtTheScreenSize()
    {
        QImage image(64, 48, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < 16; ++i) {
            painter.setBrush(QColor(i * 16, 255 - i * 13, i * 7, i % 2 == 0 ? 255 : 90));
            painter.drawRect(i * 4, 2 * i, 20, 18);
        }
        painter.end();
        QStringList paths;
        for (const auto &[name, format] : {std::pair("1_alpha.png", QImage::Format_ARGB32),
                                           {"2_photo.jpg", QImage::Format_RGB888},
                                           {"3_palette.png", QImage::Format_Indexed8},
                                           {"4_mono.png", QImage::Format_Mono}})
            paths.append(writePicture(name, image.convertToFormat(format)));
        // The smallest picture of its format: one red pixel.
        paths.append(
            write("5_red.gif", QByteArray::fromHex("474946383761010001008000 00FF0000 000000"
                                                   "2C000000000100010000 02024401003B")));
        useSize("32X50");
        for (const char *button : {"deletePictureAll", "deletePictureFile"}) {
            choose("choosePictureFile", {picture("9_deleted.png", Qt::red)});
            find<QTableWidget>("picturePath")->setCurrentCell(0, 1);
            click(button);
        }
        choose("choosePictureFile", paths);
        QCOMPARE(stored("DefaultPath/imageDefaultPath").toStringList(), paths);
        select("srceenSize", "320X240"); // too late for these
        click("downloadPicture");
        QCOMPARE(nextBoxes(), QStringList{complete});
        for (int i = 0; i < paths.size(); ++i)
            QCOMPARE(module().pictures().value(i + 1).toHex(),
                     expectedPixels(QImage(paths.at(i))).toHex());
        QCOMPARE(find<QProgressBar>("pictureProgressBar")->value(), 100);
    }

    void screenSizesThatAreNoneAreRefused()
    {
        const QString path = picture("1.p.png", Qt::red);
        for (const char *size : {"480x272", "1X2X3", "0X5", "-4X-4", "60000X60000", "X"}) {
            const Row row(size);
            useSize(size);
            choose("choosePictureFile", {path});
            QCOMPARE(nextBoxes(), QStringList{"The srceen size error !"});
        }
        QCOMPARE(column("picturePath", 1).size(), 6);
    }

private:
    /// Chooses a screen size that the settings need not have.
    void useSize(const QString &size)
    {
        find<QComboBox>("srceenSize")->addItem(size);
        select("srceenSize", size);
    }
    QByteArray block(int number, int bytes)
    {
        return module().flash().read(number * k7::Flash::blockBytes, bytes);
    }
};

QTEST_MAIN(TestEd2Downloads)
#include "tst_ed2_downloads.moc"
