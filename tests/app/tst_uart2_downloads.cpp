#include "support/random_bytes.h"
#include "support/row.h"
#include "support/window_test.h"

#include <QLabel>
#include <QProgressBar>

namespace {

const QString complete = "The download is complete !";
const QString notSelected = "Not select file !";
} // namespace

/// Files on their way to the simulated module over UART2, through the real window.
class TestUart2Downloads : public WindowTest
{
    Q_OBJECT

private slots:
    void picturesGoWhereTheLayoutSays()
    {
        QImage image(25, 5, QImage::Format_RGB32);
        image.fill(QColor(255, 0, 0));
        image.setPixelColor(0, 0, QColor(0, 0, 255));
        const QString path = writePicture("1.png", image);
        choose("openBmpFile", {path});
        QCOMPARE(shownPath(), path);
        QCOMPARE(stored("DefaultPath/imageDefaultPath").toString(), path);
        set("pageId", 300);
        for (const auto &[layout, command] :
             {std::pair("K7UID1", 0x5A80), {"K7UID2", 0x5AA5}, {"K7UID3", 0x5A80}}) {
            const Row row(layout);
            chooseLayout(layout);
            click("downloadBmpFile");
            QCOMPARE(nextBoxes(), QStringList{complete});
            QCOMPARE(module().vp(0xA2), static_cast<quint16>(command));
            QCOMPARE(find<QProgressBar>("pictureProgress")->value(), 100);
        }
        const QByteArray pixels = "001F" + QByteArray("F800").repeated(124);
        QCOMPARE(module().pictureMemory().toHex().toUpper(), pixels);
        QCOMPARE(module().pictures().value(300).left(250).toHex().toUpper(), pixels);
    }

    void jpegsAreShownOrStoredUnderTheirId()
    {
        const QByteArray jpeg = randomBytes(500); // whatever it is, it is sent as it stands
        choose("openJpgFile", {write("a.jpg", jpeg)});
        set("jpgPositionX", 300);
        set("jpgPositionY", 200);
        set("jpgPositionID", 77);
        for (const auto &[button, isStored, first, second] :
             {std::tuple("renewalPageNow", false, 300, 200), {"renewalPageID", true, 77, 0}}) {
            const Row row(button);
            click(button);
            click("downloadJpgFile");
            QCOMPARE(nextBoxes(), QStringList{complete});
            QCOMPARE(module().jpeg().content, jpeg);
            QCOMPARE(module().jpeg().isStored, isStored);
            QCOMPARE(module().jpeg().first, first);
            QCOMPARE(module().jpeg().second, second);
        }
    }

    void iconsGoToTheBlockOfTheirName()
    {
        const QByteArray content = randomBytes(1000);
        const QString path = write("3", content); // digits alone are a number here
        choose("openIcpFile", {path});
        QCOMPARE(shownPath(), path);
        QCOMPARE(stored("DefaultPath/icoDefaultPath").toString(), path);
        QCOMPARE(value("icoPositionID"), 3);
        QVERIFY(find<QSpinBox>("icoPositionID")->isReadOnly());
        choose("openIcpFile", {write("70000_a.ICO", "x")});
        QCOMPARE(value("icoPositionID"), 70000);
        choose("openIcpFile", {path});
        set("icoPositionID", 9); // shows the number, and no more
        // Only K7UID1 counts in units of 32 KiB.
        for (const auto &[layout, unit] : {std::pair("K7UID1", 0x18), {"K7UID3", 0x300}}) {
            chooseLayout(layout);
            module().setVp(0x8000, 0);
            chooseRate(115200);
            click("downloadIcoFile");
            runEventLoopUntil([this] { return module().vp(0x8000) != 0; });
            chooseRate(921600); // the only acknowledgement that counts is on its way
            QCOMPARE(nextBoxes(), QStringList{complete});
            QCOMPARE(module().vp(0xAB), static_cast<quint16>(unit));
            QCOMPARE(module().flash().read(3 * k7::Flash::blockBytes, content.size()), content);
        }
    }

    void systemFilesOutliveARefusedOne()
    {
        const QString path = write("os.bin", QByteArray(4096, 0) + "OS");
        choose("openOsFile", {path});
        QCOMPARE(shownPath(), path);
        choose("openOsFile", {write("refused.bin", "short")});
        QCOMPARE(nextBoxes(), QStringList{"The OS file size is less than 0X1000 !"});
        click("downloadOsFile");
        QCOMPARE(nextBoxes().value(0), complete);
        QCOMPARE(module().vp(0x1000), quint16{0x4F53});
    }

    void waitsFollowTheChosenRate()
    {
        k7::Behaviour silent;
        silent.silent = true;
        m_simulator->setBehaviour(silent);
        chooseRate(300);
        choose("openBmpFile", {picture("1.bmp", Qt::red)});
        click("downloadBmpFile");
        // At the link's rate the acknowledgement would be missed 29 ticks from here, not 10 662.
        pass(500);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void nothingChosenIsRefused()
    {
        for (const char *button : {"openBmpFile", "openJpgFile", "openIcpFile", "openOsFile"})
            choose(button, {});
        for (const auto &[file, osFile] :
             {std::pair(notSelected, "Unselected OS file !"), {"未选中文件 !", "未选中OS文件！"}}) {
            for (const char *button :
                 {"downloadBmpFile", "downloadJpgFile", "downloadIcoFile", "downloadOsFile"})
                click(button);
            QCOMPARE(nextBoxes(), QStringList({file, file, file, osFile}));
            m_dialog->selectLanguage("中文");
        }
        QCOMPARE(shownPath(), QString());
    }

    void filesThatCannotBeSentAreRefused()
    {
        choose("openBmpFile", {picture("1.png", Qt::red)});
        choose("openBmpFile", {write("text.bmp", "no picture")});
        click("downloadBmpFile");
        choose("openJpgFile", {write("large.jpg", QByteArray(0x10000, 'x'))});
        click("downloadJpgFile");
        choose("openOsFile", {write("short.bin", QByteArray(4095, 'x'))});
        choose("openOsFile", {write("long.bin", QByteArray(126977, 'x'))});
        click("downloadOsFile");
        choose("openOsFile", {write("empty.bin", QByteArray(4096, 'x'))});
        click("downloadOsFile");
        choose("openOsFile", {write("largest.bin", QByteArray(126976, 'x'))});
        choose("openIcpFile", {write("empty.ICO", {})});
        click("downloadIcoFile");
        const QString noPicture = "The file is not picture !";
        QCOMPARE(nextBoxes(),
                 QStringList({noPicture, notSelected, noPicture, notSelected,
                              "The OS file size is less than 0X1000 !",
                              "The OS file is too large !\nThe module takes files of up to 126976 "
                              "bytes.",
                              "Unselected OS file !", "Unselected OS file !", notSelected}));
    }

    void pulledAdapterEndsTheDownload()
    {
        const QByteArray data = randomBytes(4800);
        for (const auto &[open, download, path] :
             {std::tuple("openBmpFile", "downloadBmpFile", picture("1.bmp", Qt::red, 60, 40)),
              {"openJpgFile", "downloadJpgFile", write("1.jpg", data)},
              {"openOsFile", "downloadOsFile", write("1.bin", QByteArray(4096, 0) + data)},
              {"openIcpFile", "downloadIcoFile", write("1.ICO", data)}}) {
            choose(open, {path});
            for (const int received : {0, 2500, 4700}) {
                const Row row(open, received);
                QVERIFY(plugInFor(received));
                click(download);
                const QStringList boxes = nextBoxes();
                pass(100);
                // Whichever is noticed first: that the device is gone, or that the next chunk
                // cannot open it.
                QCOMPARE(boxes.size(), 1);
                QVERIFY((QStringList{"Communication failure !", "Serial opening failed !"})
                            .contains(boxes.first()));
                QCOMPARE(m_boxes->texts, QStringList());
                QVERIFY(find<QProgressBar>("pictureProgress")->value() < 100);
            }
        }
    }

private:
    /// In the window, for a module that has it.
    void chooseLayout(const QString &layout)
    {
        select("K7UIModel_2", layout);
        useLayout(static_cast<k7::Layout>(find<QComboBox>("K7UIModel_2")->currentIndex()));
    }
    QString shownPath() { return find<QLabel>("bmpFilePathLabel")->text(); }
};

QTEST_MAIN(TestUart2Downloads)
#include "tst_uart2_downloads.moc"
