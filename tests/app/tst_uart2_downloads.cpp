#include "serial/serial_set.h"
#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QComboBox>
#include <QLabel>
#include <QProgressBar>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QtTest>

namespace {

const QString complete = "The download is complete !";

} // namespace

/// Files on their way to the simulated module over UART2, through the real window.
class TestUart2Downloads : public WindowTest
{
    Q_OBJECT

private slots:
    void picturesGoWhereTheLayoutSays_data()
    {
        QTest::addColumn<QString>("layout");
        for (const char *layout : {"K7UID1", "K7UID2", "K7UID3"})
            QTest::newRow(layout) << layout;
    }

    void picturesGoWhereTheLayoutSays()
    {
        QFETCH(const QString, layout);
        QImage image(25, 5, QImage::Format_RGB32);
        image.fill(QColor(255, 0, 0));
        image.setPixelColor(0, 0, QColor(0, 0, 255));
        const QString path = writePicture("1.png", image);
        choose("openBmpFile", {path});
        QCOMPARE(shownPath(), path);
        QCOMPARE(stored("DefaultPath/imageDefaultPath").toString(), path);
        find<QComboBox>("K7UIModel_2")->setCurrentText(layout);
        find<QSpinBox>("pageId")->setValue(300);
        click("downloadBmpFile");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QCOMPARE(find<QProgressBar>("pictureProgress")->value(), 100);
        QByteArray expected = QByteArray::fromHex("001F");
        while (expected.size() < 250)
            expected += QByteArray::fromHex("F800");
        const bool isPaged = layout == "K7UID2";
        QCOMPARE(module().pictureMemory().left(250), isPaged ? QByteArray() : expected);
        QCOMPARE(module().pictures().value(300).left(250), isPaged ? expected : QByteArray());
    }

    void jpegsAreShownWhereTheWindowSays()
    {
        const QByteArray jpeg = randomBytes(500); // whatever it is, it is sent as it stands
        choose("openJpgFile", {write("a.jpg", jpeg)});
        find<QSpinBox>("jpgPositionX")->setValue(300);
        find<QSpinBox>("jpgPositionY")->setValue(200);
        click("downloadJpgFile");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QCOMPARE(module().jpeg().content.left(500), jpeg);
        QVERIFY(!module().jpeg().isStored);
        QCOMPARE(module().jpeg().first, 300);
        QCOMPARE(module().jpeg().second, 200);
        m_boxes->texts.clear();
        find<QSpinBox>("jpgPositionID")->setValue(77);
        find<QRadioButton>("renewalPageID")->click();
        click("downloadJpgFile");
        waitForBox();
        QVERIFY(module().jpeg().isStored);
        QCOMPARE(module().jpeg().first, 77);
        QCOMPARE(module().jpeg().second, 0);
    }

    void iconsGoToTheBlockOfTheirName()
    {
        const QByteArray content = randomBytes(40000);
        const QString path = write("3_icons.ICO", content);
        choose("openIcpFile", {path});
        QCOMPARE(shownPath(), path);
        QCOMPARE(stored("DefaultPath/icoDefaultPath").toString(), path);
        QCOMPARE(find<QSpinBox>("icoPositionID")->value(), 3);
        QVERIFY(find<QSpinBox>("icoPositionID")->isReadOnly());
        find<QSpinBox>("icoPositionID")->setValue(9); // shows the number, and no more
        click("downloadIcoFile");
        runEventLoopUntil([this] { return !m_boxes->texts.isEmpty(); }, 60000);
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QVERIFY(module().flash().read(3 * k7::Flash::blockBytes, content.size()) == content);
    }

    void systemFilesRestartTheModule()
    {
        const QByteArray system = randomBytes(5000);
        const QString path = write("os.bin", QByteArray(4096, 0) + system);
        choose("openOsFile", {path});
        QCOMPARE(shownPath(), path);
        choose("openOsFile", {write("refused.bin", "short")});
        m_boxes->texts.clear();
        // Each box that is closed starts the reset anew: in a hurry none comes to its end.
        m_boxes->setPause(200);
        click("downloadOsFile");
        runEventLoopUntil([this] { return m_boxes->texts.size() == 4; }, 10000);
        QCOMPARE(m_boxes->texts, QStringList({complete, complete, complete, complete}));
        COMPARE_SOON(module().restarts() > 0, true);
        for (int i = 0; i < system.size() / 2; ++i)
            QCOMPARE(module().vp(static_cast<quint16>(0x1000 + i)),
                     static_cast<quint16>(static_cast<quint8>(system.at(2 * i)) << 8 |
                                          static_cast<quint8>(system.at(2 * i + 1))));
    }

    void waitsFollowTheChosenRate()
    {
        k7::Behaviour silent;
        silent.silent = true;
        m_simulator->setBehaviour(silent);
        chooseRate(1200);
        choose("openBmpFile", {writePicture("1.bmp", QImage(8, 8, QImage::Format_RGB32))});
        click("downloadBmpFile");
        // At the default rate the acknowledgement would be missed 29 ticks from here, not 2667.
        runEventLoop(500);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void nothingChosenIsRefused_data()
    {
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("chinese");
        for (const char *button : {"downloadBmpFile", "downloadJpgFile", "downloadIcoFile"})
            QTest::newRow(button) << "Not select file !"
                                  << "未选中文件 !";
        QTest::newRow("downloadOsFile") << "Unselected OS file !"
                                        << "未选中OS文件！";
    }

    void nothingChosenIsRefused()
    {
        QFETCH(const QString, english);
        QFETCH(const QString, chinese);
        choose(QString(QTest::currentDataTag()).replace("download", "open").replace("IcoF", "IcpF"),
               {});
        click(QTest::currentDataTag());
        m_dialog->selectLanguage("中文");
        click(QTest::currentDataTag());
        QCOMPARE(m_boxes->texts, QStringList({english, chinese}));
        QCOMPARE(shownPath(), QString());
    }

    void filesThatCannotBeSentAreRefused()
    {
        choose("openBmpFile", {writePicture("1.png", QImage(2, 2, QImage::Format_RGB32))});
        choose("openBmpFile", {write("text.bmp", "no picture")});
        click("downloadBmpFile");
        choose("openJpgFile", {write("large.jpg", QByteArray(70000, 'x'))});
        click("downloadJpgFile");
        choose("openOsFile", {write("short.bin", QByteArray(4095, 'x'))});
        choose("openOsFile", {write("long.bin", QByteArray(126977, 'x'))});
        click("downloadOsFile");
        choose("openOsFile", {write("empty.bin", QByteArray(4096, 'x'))});
        click("downloadOsFile");
        choose("openIcpFile", {write("empty.ICO", {})});
        click("downloadIcoFile");
        const QString notSelected = "Not select file !";
        QCOMPARE(m_boxes->texts,
                 QStringList({"The file is not picture !", notSelected, "The file is not picture !",
                              notSelected, "The OS file size is less than 0X1000 !",
                              "The OS file is too large !\nThe module takes files of up to 126976 "
                              "bytes.",
                              "Unselected OS file !", "Unselected OS file !", notSelected}));
    }

    void pulledAdapterEndsTheDownload_data()
    {
        QTest::addColumn<QString>("open");
        QTest::addColumn<QString>("download");
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("received"); // bytes, before the module is gone
        const auto rows = [](const char *open, const char *download, const char *file, int bytes) {
            for (int tenth = 0; tenth < 10; ++tenth)
                QTest::addRow("%s, tenth %d", file, tenth)
                    << open << download << file << bytes * tenth / 10;
        };
        rows("openBmpFile", "downloadBmpFile", "1.bmp", 20 * 260);
        rows("openJpgFile", "downloadJpgFile", "1.jpg", 20 * 246);
        rows("openOsFile", "downloadOsFile", "1.bin", 5000);
        rows("openIcpFile", "downloadIcoFile", "1.ICO", 256 * 134);
    }

    void pulledAdapterEndsTheDownload()
    {
        QFETCH(const QString, open);
        QFETCH(const QString, download);
        QFETCH(const QString, file);
        QFETCH(const int, received);
        k7::Behaviour unplugged;
        unplugged.hangUpAfter = received;
        m_simulator->setBehaviour(unplugged);
        const QString path = file.endsWith("bmp")
                                 ? writePicture(file, QImage(60, 40, QImage::Format_RGB32))
                                 : write(file, randomBytes(file.endsWith("bin") ? 9200 : 4800));
        choose(open, {path});
        click(download);
        waitForBox();
        runEventLoop(100);
        // Whichever is noticed first: that the device is gone, or that the next chunk cannot open
        // it.
        QCOMPARE(m_boxes->texts.size(), 1);
        QVERIFY((QStringList{"Communication failure !", "Serial opening failed !"})
                    .contains(m_boxes->texts.first()));
        QVERIFY(find<QProgressBar>("pictureProgress")->value() < 100);
    }

private:
    QString shownPath() { return find<QLabel>("bmpFilePathLabel")->text(); }
    void chooseRate(int rate)
    {
        auto *set = m_dialog->findChildren<SerialSet *>().first();
        set->setBaudText(rate);
        QMetaObject::invokeMethod(set, "query_clicked");
    }
};

QTEST_MAIN(TestUart2Downloads)
#include "tst_uart2_downloads.moc"
