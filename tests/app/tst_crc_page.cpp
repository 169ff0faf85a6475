#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QProgressBar>
#include <QtTest>

/// Files compared with what the simulated module holds, in the real window.
class TestCrcPage : public WindowTest
{
    Q_OBJECT

private slots:
    void differencesAreRed()
    {
        const QByteArray content = randomBytes(0x43000);
        module().setFlash(8 * k7::Flash::blockBytes, content);
        module().setFlash(9 * k7::Flash::blockBytes + 5, "x");
        choose("openFile", {write("8_a.bin", content)});
        QCOMPARE(column(m_table, 0), QStringList({"8_a.bin_0", "8_a.bin_1"}));
        QCOMPARE(column(m_table, 2), QStringList({"0000", "0000"}));
        QCOMPARE(reds(), QVector<bool>(8, true));
        chooseRate(10); // none that the link takes, and so none to wait by: that would take minutes
        click("compareCheck");
        QCOMPARE(nextBoxes(), QStringList{"Check finish !"});
        QCOMPARE(column(m_table, 3), QStringList({"true", "false"}));
        QCOMPARE(column(m_table, 1).first(), column(m_table, 2).first());
        QCOMPARE(reds(), QVector<bool>(4, false) + QVector<bool>(4, true));
        QCOMPARE(find<QProgressBar>("crcCheckBar")->value(), 100);
    }

    void foldersAreListedByName()
    {
        picture("b2.bmp", Qt::red);
        write("A10.bin", QByteArray(5000, 'x')); // no number
        write("10_C.bin", QByteArray(5000, 'x'));
        write("ZOLTOS_3.BIN", QByteArray(5000, 'x'));
        write("3.txt", "x");
        QVERIFY(QDir(m_folder->path()).mkdir("5_folder.bin"));
        link("11_link.bin", "10_C.bin");
        choose("openFolder", {m_folder->path()});
        // An empty folder changes nothing, nor does none.
        choose("openFolder", {m_folder->filePath("5_folder.bin")});
        choose("openFolder", {});
        choose("openFile", {});
        QCOMPARE(column(m_table, 0), QStringList({"10_C.bin_0", "b2.bmp", "ZOLTOS_3.BIN"}));
        // A file that is not checked empties the table all the same.
        choose("openFile", {m_folder->filePath("A10.bin")});
        QCOMPARE(column(m_table, 0), QStringList());
        click("compareCheck");
        pass(50);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void brokenPicturesAreListed()
    {
        choose("openFile", {write("5.bmp", "no picture")});
        QCOMPARE(nextBoxes(), QStringList{"The file is not picture !"});
        QCOMPARE(column(m_table, 0), QStringList{"5.bmp"});
        QCOMPARE(column(m_table, 1), QStringList{"FFFF"});
        m_dialog->selectLanguage("中文");
        choose("openFile", {m_folder->filePath("5.bmp")});
        QCOMPARE(nextBoxes(), QStringList{"该文件不是图片！"});
    }

private:
    QVector<bool> reds()
    {
        auto *table = find<QTableWidget>(m_table);
        QVector<bool> found;
        for (int row = 0; row < table->rowCount(); ++row)
            for (int column = 0; column < 4; ++column)
                found.append(table->item(row, column)->background().color() == QColor(Qt::red));
        return found;
    }

    const QString m_table = "crcTableWidget";
};

QTEST_MAIN(TestCrcPage)
#include "tst_crc_page.moc"
