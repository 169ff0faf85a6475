#include "support/window_test.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QtTest>

/// Configuration files written and read through the real page.
class TestSystemConfig : public WindowTest
{
    Q_OBJECT

private slots:
    void newFilesHoldTheDefaults()
    {
        const QByteArray expected = QByteArray::fromHex("4B374431 00000000 38 0044");
        QCOMPARE(written().toHex(), expected.leftJustified(128, '\0').toHex());
    }

    void everyControlReachesItsByte_data()
    {
        QTest::addColumn<QStringList>("controls"); // a number is set to 5, anything else is pressed
        QTest::addColumn<int>("offset");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char *controls, int offset, const char *hex) {
            QTest::newRow(controls)
                << QString(controls).split(' ') << offset << QByteArray::fromHex(hex);
        };
        row("flashFormatting", 4, "5AA5");
        row("openCalibration rtcCalibration", 6, "0000");
        row("autoUp", 8, "B8");
        row("pageNumber128", 8, "78");
        row("notLoad22File", 8, "18");
        row("sdStatusClose", 8, "28");
        row("touchVoiceClose", 8, "30");
        row("touchLightOpen", 8, "3C");
        row("displayDirection90", 8, "39");
        row("displayDirection180", 8, "3A");
        row("displayDirection270", 8, "3B");
        row("baudRateSet", 9, "E800"); // 7833600 / 5, low 16 bits
        row("openLightStandby normalLight", 11, "5A05000000");
        row("openLightStandby standbyLight", 11, "5A00050000");
        row("openLightStandby lightTime", 11, "5A00000005");
        row("openConfiguration pclkRisingEdge", 16, "000000");
        row("openBootSet bootPage", 32, "5A0005");
        row("bootMusicSet bootMusicPosition", 35, "5A050000");
        row("bootMusicSet bootMusicCount", 35, "5A000500");
        row("bootMusicSet bootMusicVolume", 35, "5A000005");
        row("openTouchScreenSet touchSensitivity", 39, "000000");
        row("enableTconSet tconSetValue", 42, "5A05");
        row("buzzerSoundBuzzer", 44, "80");
        row("enableUartCrcOpen", 44, "40");
        row("enableWatchDogOpen", 44, "20");
        row("enableSynchronizationUpdateOpen", 44, "10");
        row("sdCheckEnable libFileNumber", 48, "5AA505000000000000");
        row("sdCheckEnable binFileNumber", 48, "5AA500050000000000");
        row("sdCheckEnable dzkFileNumber", 48, "5AA500000500000000");
        row("sdCheckEnable hzkFileNumber", 48, "5AA500000005000000");
        row("sdCheckEnable icoFileNumber", 48, "5AA500000000050000");
        row("sdCheckEnable wavFileNumber", 48, "5AA500000000000500");
        row("sdCheckEnable bmpFileNumber", 48, "5AA500000000000005");
        row("encryptionUnlock", 64, "5AAA");
    }

    void everyControlReachesItsByte()
    {
        QFETCH(const QStringList, controls);
        QFETCH(const int, offset);
        QFETCH(const QByteArray, bytes);
        QByteArray expected =
            QByteArray::fromHex("4B374431 00000000 38 0044").leftJustified(128, '\0');
        for (const QString &control : controls) {
            if (!find<QWidget>(control)->isEnabled()) {
                find<QComboBox>("K7UIModel")->setCurrentText("K7UID2");
                expected[3] = '2';
            }
            if (auto *box = m_dialog->findChild<QSpinBox *>(control))
                box->setValue(5);
            else
                press(control);
        }
        expected.replace(offset, bytes.size(), bytes);
        QCOMPARE(written().toHex(), expected.toHex());
    }

    void filesAreReadIntoTheControls()
    {
        QByteArray file(128, '\0');
        const auto put = [&file](int offset, const char *hex) {
            const QByteArray bytes = QByteArray::fromHex(hex);
            file.replace(offset, bytes.size(), bytes);
        };
        put(0, "4B374432 5AA5 5A00 C7 0330 5A0A0B0C0D");
        put(32, "5A0102 5A030405 5A8709 5A0A B0 000000 5AA501020304050607");
        put(64, "5AA5 03616263");
        put(80, "00FF");
        choose("openCfgFile", {write("read.CFG", file)});
        QCOMPARE(m_boxes->texts, QStringList());
        QCOMPARE(find<QComboBox>("K7UIModel")->currentText(), QString("K7UID2"));
        for (const char *button : {"flashFormatting",
                                   "openCalibration",
                                   "rtcCalibration",
                                   "autoUp",
                                   "pageNumber128",
                                   "notLoad22File",
                                   "sdStatusClose",
                                   "touchVoiceClose",
                                   "touchLightOpen",
                                   "displayDirection270",
                                   "openLightStandby",
                                   "openBootSet",
                                   "bootMusicSet",
                                   "openTouchScreenSet",
                                   "capacitanceTouch",
                                   "touchXmaxToMin",
                                   "touchYmaxToMin",
                                   "touchExchangeYX",
                                   "enableTconSet",
                                   "buzzerSoundBuzzer",
                                   "enableUartCrcClose",
                                   "enableWatchDogOpen",
                                   "enableSynchronizationUpdateOpen",
                                   "sdCheckEnable",
                                   "encryptionLock"})
            QVERIFY2(isChecked(button), button);
        QVERIFY(!isChecked("openConfiguration"));
        const QMap<QString, int> numbers{
            {"baudRateSet", 9600}, {"normalLight", 10},    {"standbyLight", 11},
            {"lightTime", 0x0C0D}, {"bootPage", 0x0102},   {"bootMusicPosition", 3},
            {"bootMusicCount", 4}, {"bootMusicVolume", 5}, {"touchSensitivity", 9},
            {"tconSetValue", 10},  {"libFileNumber", 1},   {"binFileNumber", 2},
            {"dzkFileNumber", 3},  {"hzkFileNumber", 4},   {"icoFileNumber", 5},
            {"wavFileNumber", 6},  {"bmpFileNumber", 7},
        };
        for (auto number = numbers.begin(); number != numbers.end(); ++number)
            QCOMPARE(value(number.key()), number.value());
        QCOMPARE(find<QLineEdit>("encryptionFolderName")->text(), QString("abc"));
        QCOMPARE(find<QLineEdit>("encryptionKey")->text(), "00 ff " + QString("00 ").repeated(30));
        // The divisor 0x0088 reads as a negative rate, which the box clamps.
        put(9, "0088");
        choose("openCfgFile", {write("negative.CFG", file)});
        QCOMPARE(value("baudRateSet"), 1);
    }

    void oldFilesKeepWhatIsNotSet()
    {
        // Without an opened file the image grows only as far as it is filled.
        QCOMPARE(written("addCfgFile").size(), 45);
        QByteArray old(200, '\x11');
        old.replace(0, 9, QByteArray::fromHex("4B374433 00000000 80"));
        choose("openCfgFile", {write("old.CFG", old)});
        press("notAutoUp");
        press("sdStatusClose");
        set("baudRateSet", 115200);
        QByteArray expected = old;
        expected.replace(8, 3, QByteArray::fromHex("80 0044"));
        QCOMPARE(written("addCfgFile").toHex(), expected.toHex());
    }

    void longerFilesKeepTheirEnd()
    {
        const QString path = write("long.CFG", QByteArray(300, 'x'));
        // The dialog asks before it replaces a file; the person agrees.
        QTimer agree;
        connect(&agree, &QTimer::timeout, this, [] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
                box->button(QMessageBox::Yes)->click();
        });
        m_boxes->answers = false;
        agree.start(5);
        choose("createCfgFile", {path});
        QCOMPARE(content(path).left(3), QByteArray("K7D"));
        QCOMPARE(content(path).mid(128), QByteArray(172, 'x'));
        choose("createCfgFile", {});
        choose("createCfgFile", {m_folder->filePath("no/such/folder.CFG")});
    }

    void badLocksAreWrittenAsTheyWere()
    {
        press("encryptionLock");
        find<QLineEdit>("encryptionFolderName")->setText("123456789");
        QCOMPARE(written(), QByteArray(128, '\0'));
        find<QLineEdit>("encryptionFolderName")->setText("12345678");
        QCOMPARE(written(), QByteArray(128, '\0'));
        m_dialog->selectLanguage("中文");
        QCOMPARE(written("addCfgFile"), QByteArray());
        QCOMPARE(m_boxes->texts, QStringList({"The folder name is longer than 8 !",
                                              "Decryption data error !", "加密数据错误！"}));
    }

    void filesThatAreNoneChangeNothing()
    {
        choose("openCfgFile", {write("good.CFG", "K7D2")});
        QCOMPARE(find<QComboBox>("K7UIModel")->currentText(), QString("K7UID2"));
        choose("openCfgFile", {write("bad.CFG", "K7C1")});
        choose("openCfgFile", {});
        QCOMPARE(m_boxes->texts, QStringList{"The file is not the correct CFG file !"});
        QCOMPARE(find<QComboBox>("K7UIModel")->currentText(), QString("K7UID2"));
        QCOMPARE(written("addCfgFile").left(4), QByteArray("K7D2"));
    }

    void layoutsOfferTheirSizes()
    {
        auto *layouts = find<QComboBox>("K7UIModel");
        auto *sizes = find<QComboBox>("K7UISize");
        QCOMPARE(sizes->currentText(), QString("2.4_240*320"));
        layouts->setCurrentText("K7UID3");
        QCOMPARE(sizes->count(), 4);
        QCOMPARE(sizes->currentText(), QString("1024*600"));
        QVERIFY(isChecked("pclkRisingEdge"));
        for (const char *group : {"buzzerSound", "enableWatchDog", "enableSynchronizationUpdate"})
            QVERIFY(!find<QGroupBox>(group)->isEnabled());
        QVERIFY(!find<QRadioButton>("rtcCalibration")->isEnabled());
        QVERIFY(find<QGroupBox>("tconSet")->isEnabled());
        layouts->setCurrentText("K7UID1");
        QCOMPARE(sizes->count(), 7);
        QVERIFY(isChecked("pclkFallingEdge"));
        QVERIFY(find<QGroupBox>("buzzerSound")->isEnabled());
        QVERIFY(!find<QGroupBox>("tconSet")->isEnabled());
    }

    void sizesChooseTheirEdge()
    {
        find<QComboBox>("K7UIModel")->setCurrentText("K7UID3");
        auto *sizes = find<QComboBox>("K7UISize");
        for (const auto &[key, button] : {std::pair(Qt::Key_Down, "pclkFallingEdge"),
                                          {Qt::Key_End, "pclkRisingEdge"},
                                          {Qt::Key_Up, "pclkFallingEdge"},
                                          {Qt::Key_Home, "pclkRisingEdge"}}) {
            QTest::keyClick(sizes, key);
            QVERIFY(isChecked(button));
        }
    }

    void timingsChooseTheirSize()
    {
        const QByteArray timing = QByteArray::fromHex("08 10 1C 00 05 00 00 10 08 20 02 D0 20");
        QByteArray file = QByteArray("K7D3").leftJustified(128, '\0');
        file.replace(16, 3, QByteArray::fromHex("5AA501"));
        file.replace(19, timing.size(), timing);
        choose("openCfgFile", {write("timing.CFG", file)});
        QCOMPARE(find<QComboBox>("K7UISize")->currentText(), QString("1280*720"));
        QVERIFY(isChecked("openConfiguration"));
        QVERIFY(isChecked("pclkRisingEdge")); // as the file says, not the size
        // A timing that no screen has leaves the size, and so does a file without one.
        file[19] = 9;
        choose("openCfgFile", {write("unknown.CFG", file)});
        QCOMPARE(find<QComboBox>("K7UISize")->currentText(), QString("1280*720"));
        choose("openCfgFile", {write("none.CFG", "K7D3")});
        QCOMPARE(find<QComboBox>("K7UISize")->currentText(), QString("1280*720"));
        QVERIFY(isChecked("pclkRisingEdge"));
        // Another layout brings the edge of its first size.
        choose("openCfgFile", {write("other.CFG", "K7D1")});
        QVERIFY(isChecked("pclkFallingEdge"));
    }

    void typingIsJudged()
    {
        auto *label = find<QLabel>("textExplainLabel");
        find<QLineEdit>("encryptionFolderName")->setText("a b");
        QCOMPARE(label->text(), QString("It can only be : 0-9 , a-z , A-Z , or '-',or '_' "));
        QCOMPARE(labelColor(), QColor(Qt::red));
        find<QLineEdit>("encryptionFolderName")->setText("ab");
        QCOMPARE(label->text(), QString("61 62 "));
        QCOMPARE(labelColor(), QColor(Qt::black));
        find<QLineEdit>("encryptionKey")->setText("00");
        QCOMPARE(label->text(), QString("secret key number :1"));
        QCOMPARE(labelColor(), QColor(Qt::red));
    }

    void folderFilesAreCounted()
    {
        for (const char *name : {"1.bin", "2.BIN", "a.tar.Hzk", "x.ico", "bmp", "y.txt", "l.lib",
                                 "d.dzk", "e.dzk", "f.dzk", "w.wav"})
            write(name, "");
        QVERIFY(QDir(m_folder->path()).mkdir("folder.wav"));
        QVERIFY(QFile::link(m_folder->filePath("1.bin"), m_folder->filePath("3.bin")));
        set("wavFileNumber", 9);
        choose("openZoltsetFolder", {m_folder->path()});
        QCOMPARE(find<QLineEdit>("displayZoltsetPath")->text(), m_folder->path());
        const QMap<QString, int> counts{{"lib", 1}, {"bin", 2}, {"dzk", 3}, {"hzk", 1},
                                        {"ico", 1}, {"wav", 1}, {"bmp", 0}};
        for (auto count = counts.begin(); count != counts.end(); ++count)
            QCOMPARE(value(count.key() + "FileNumber"), count.value());
        choose("openZoltsetFolder", {});
        QCOMPARE(value("binFileNumber"), 2);
    }

private:
    /// What `button` writes to a new file.
    QByteArray written(const QString &button = "createCfgFile")
    {
        const QString path = m_folder->filePath(QString("new%1").arg(++m_files));
        choose(button, {path});
        return content(path + ".CFG");
    }
    void press(const QString &button) { find<QAbstractButton>(button)->click(); }
    QColor labelColor()
    {
        return find<QLabel>("textExplainLabel")->palette().color(QPalette::WindowText);
    }

    int m_files = 0;
};

QTEST_MAIN(TestSystemConfig)
#include "tst_system_config.moc"
