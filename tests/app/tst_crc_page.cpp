#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QProgressBar>
#include <QTableWidget>
#include <QtTest>

/// Files compared with what the simulated module holds, in the real window.
class TestCrcPage : public WindowTest
{
    Q_OBJECT

private slots:
    void downloadedFilesAreIntact()
    {
        // The download fills the flash, and the check reads it back.
        const QString path = write("8_a.bin", randomBytes(0x43000));
        choose("chooseFontFile", {path});
        click("downloadFont");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{"The download is complete !"});
        m_boxes->texts.clear();
        module().setFlash(9 * k7::Flash::blockBytes + 5, "x");
        choose("openFile", {path});
        QCOMPARE(column(0), QStringList({"8_a.bin_0", "8_a.bin_1"}));
        QCOMPARE(column(2), QStringList({"0000", "0000"}));
        QCOMPARE(reds(), QVector<bool>(8, true));
        click("compareCheck");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{"Check finish !"});
        QCOMPARE(column(3), QStringList({"true", "false"}));
        QCOMPARE(column(1).first(), column(2).first());
        QCOMPARE(reds(), QVector<bool>(4, false) + QVector<bool>(4, true));
        QCOMPARE(find<QProgressBar>("crcCheckBar")->value(), 100);
    }

    void foldersAreListedByName()
    {
        QImage image(2, 2, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(m_folder->filePath("b2.bmp")));
        write("A10.bin", QByteArray(5000, 'x')); // no number
        write("10_C.bin", QByteArray(5000, 'x'));
        write("ZOLTOS_3.BIN", QByteArray(5000, 'x'));
        write("3.txt", "x");
        QVERIFY(QDir(m_folder->path()).mkdir("5_folder.bin"));
        QVERIFY(QFile::link(m_folder->filePath("10_C.bin"), m_folder->filePath("11_link.bin")));
        choose("openFolder", {m_folder->path()});
        QCOMPARE(column(0), QStringList({"10_C.bin_0", "b2.bmp", "ZOLTOS_3.BIN"}));
        QCOMPARE(m_boxes->texts, QStringList());
        // A file that is not checked empties the table all the same.
        choose("openFile", {m_folder->filePath("A10.bin")});
        QCOMPARE(column(0), QStringList());
        click("compareCheck");
        runEventLoop(50);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void emptyFoldersChangeNothing()
    {
        choose("openFile", {write("10_C.bin", QByteArray(5000, 'x'))});
        const QTemporaryDir empty;
        choose("openFolder", {empty.path()});
        choose("openFolder", {});
        choose("openFile", {});
        QCOMPARE(column(0), QStringList{"10_C.bin_0"});
    }

    void brokenPicturesAreListed()
    {
        choose("openFile", {write("5.bmp", "no picture")});
        QCOMPARE(m_boxes->texts, QStringList{"The file is not picture !"});
        QCOMPARE(column(0), QStringList{"5.bmp"});
        QCOMPARE(column(1), QStringList{"FFFF"});
        m_dialog->selectLanguage("中文");
        choose("openFile", {m_folder->filePath("5.bmp")});
        QCOMPARE(m_boxes->texts.last(), QString("该文件不是图片！"));
    }

    void newFilesStopTheComparison()
    {
        module().setBusyReads(1000000);
        choose("openFile", {write("10_C.bin", QByteArray(5000, 'x'))});
        click("compareCheck");
        runEventLoop(200); // polled, and never done
        QCOMPARE(m_boxes->texts, QStringList());
        choose("openFile", {m_folder->filePath("10_C.bin")});
        module().setBusyReads(0);
        runEventLoop(100);
        QCOMPARE(m_boxes->texts, QStringList());
        click("compareCheck");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{"Check finish !"});
    }

private:
    QStringList column(int column)
    {
        auto *table = find<QTableWidget>("crcTableWidget");
        QStringList texts;
        for (int row = 0; row < table->rowCount(); ++row)
            texts.append(table->item(row, column)->text());
        return texts;
    }
    QVector<bool> reds()
    {
        auto *table = find<QTableWidget>("crcTableWidget");
        QVector<bool> found;
        for (int row = 0; row < table->rowCount(); ++row)
            for (int column = 0; column < 4; ++column)
                found.append(table->item(row, column)->background().color() == QColor(Qt::red));
        return found;
    }
};

QTEST_MAIN(TestCrcPage)
#include "tst_crc_page.moc"
