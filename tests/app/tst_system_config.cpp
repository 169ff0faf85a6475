#include "support/window_test.h"

#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QtTest>

/// Configuration files written and read through the real page.
class TestSystemConfig : public WindowTest
{
    Q_OBJECT

private slots:
    void everyControlReachesItsByte()
    {
        QByteArray expected =
            QByteArray::fromHex("4B374431 00000000 38 0044").leftJustified(128, '\0');
        QCOMPARE(written().toHex(), expected.toHex());
        QVERIFY(isChecked("capacitanceTouch")); // which is not written
        // Each after the ones before. A number is set to its place in the row, a layout is chosen,
        // anything else pressed.
        const struct
        {
            const char *controls;
            int offset;
            const char *bytes;
        } steps[] = {
            {"flashFormatting", 4, "5AA5"},
            {"openCalibration rtcCalibration", 6, "0000"},
            {"autoUp", 8, "B8"},
            {"pageNumber128", 8, "F8"},
            {"notLoad22File", 8, "D8"},
            {"sdStatusClose", 8, "C8"},
            {"touchVoiceClose", 8, "C0"},
            {"touchLightOpen", 8, "C4"},
            {"displayDirection90", 8, "C5"},
            {"displayDirection180", 8, "C6"},
            {"displayDirection270", 8, "C7"},
            {"baudRateSet", 9, "8800"}, // 7833600, low 16 bits
            {"openLightStandby normalLight standbyLight lightTime", 11, "5A02030004"},
            {"openConfiguration pclkRisingEdge", 16, "000000"},
            {"openBootSet bootPage", 32, "5A0002"},
            {"bootMusicSet bootMusicPosition bootMusicCount bootMusicVolume", 35, "5A020304"},
            {"openTouchScreenSet touchSensitivity", 39, "000000"},
            {"buzzerSoundBuzzer", 44, "80"},
            {"enableUartCrcOpen", 44, "C0"},
            {"enableWatchDogOpen", 44, "E0"},
            {"enableSynchronizationUpdateOpen", 44, "F0"},
            {"K7UID2", 3, "32"},
            {"enableTconSet tconSetValue", 42, "5A02"},
            {"sdCheckEnable libFileNumber binFileNumber dzkFileNumber hzkFileNumber "
             "icoFileNumber wavFileNumber bmpFileNumber",
             48, "5AA502030405060708"},
            {"encryptionUnlock", 64, "5AAA"},
        };
        for (const auto &[controls, offset, hex] : steps) {
            int place = 0;
            for (const QString &control : QString(controls).split(' ')) {
                ++place;
                if (m_dialog->findChild<QSpinBox *>(control))
                    set(control, place);
                else if (control.startsWith("K7"))
                    select("K7UIModel", control);
                else
                    click(control);
            }
            const QByteArray bytes = QByteArray::fromHex(hex);
            expected.replace(offset, bytes.size(), bytes);
            QVERIFY2(written() == expected, controls);
        }
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
        QCOMPARE(layout(), QString("K7UID2"));
        for (const QString &button :
             QString("flashFormatting openCalibration rtcCalibration autoUp pageNumber128 "
                     "notLoad22File sdStatusClose touchVoiceClose touchLightOpen "
                     "displayDirection270 openLightStandby openBootSet bootMusicSet "
                     "openTouchScreenSet capacitanceTouch touchXmaxToMin touchYmaxToMin "
                     "touchExchangeYX enableTconSet buzzerSoundBuzzer enableUartCrcClose "
                     "enableWatchDogOpen enableSynchronizationUpdateOpen sdCheckEnable "
                     "encryptionLock")
                 .split(' '))
            QVERIFY2(isChecked(button), qPrintable(button));
        QVERIFY(!isChecked("openConfiguration"));
        const std::pair<const char *, int> numbers[] = {
            {"baudRateSet", 9600}, {"normalLight", 10},    {"standbyLight", 11},
            {"lightTime", 0x0C0D}, {"bootPage", 0x0102},   {"bootMusicPosition", 3},
            {"bootMusicCount", 4}, {"bootMusicVolume", 5}, {"touchSensitivity", 9},
            {"tconSetValue", 10},  {"libFileNumber", 1},   {"binFileNumber", 2},
            {"dzkFileNumber", 3},  {"hzkFileNumber", 4},   {"icoFileNumber", 5},
            {"wavFileNumber", 6},  {"bmpFileNumber", 7},
        };
        for (const auto &[box, number] : numbers)
            QVERIFY2(value(box) == number, box);
        QCOMPARE(line("encryptionFolderName"), QString("abc"));
        QCOMPARE(line("encryptionKey"), "00 ff " + QString("00 ").repeated(30));
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
        click("notAutoUp");
        click("sdStatusClose");
        set("baudRateSet", 115200);
        QByteArray expected = old;
        expected.replace(8, 3, QByteArray::fromHex("80 0044"));
        QCOMPARE(written("addCfgFile").toHex(), expected.toHex());
    }

    void longerFilesKeepTheirEnd()
    {
        const QString path = write("long.CFG", QByteArray(300, 'x'));
        chooseOverOldFile("createCfgFile", path);
        QCOMPARE(content(path).left(3), QByteArray("K7D"));
        QCOMPARE(content(path).mid(128), QByteArray(172, 'x'));
        choose("createCfgFile", {});
        choose("createCfgFile", {m_folder->filePath("no/such/folder.CFG")});
    }

    void badLocksAreWrittenAsTheyWere()
    {
        click("encryptionLock");
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
        QCOMPARE(layout(), QString("K7UID2"));
        choose("openCfgFile", {write("bad.CFG", QByteArray(99, 'x'))});
        choose("openCfgFile", {});
        QCOMPARE(m_boxes->texts, QStringList{"The file is not the correct CFG file !"});
        QCOMPARE(layout(), QString("K7UID2"));
        QCOMPARE(written("addCfgFile").size(), 45);
    }

    void layoutsOfferTheirSizes()
    {
        auto *sizes = find<QComboBox>("K7UISize");
        QCOMPARE(sizes->currentText(), QString("2.4_240*320"));
        select("K7UIModel", "K7UID3");
        QCOMPARE(sizes->count(), 4);
        QCOMPARE(sizes->currentText(), QString("1024*600"));
        QVERIFY(isChecked("pclkRisingEdge"));
        for (const char *group : {"buzzerSound", "enableWatchDog", "enableSynchronizationUpdate"})
            QVERIFY(!find<QGroupBox>(group)->isEnabled());
        QVERIFY(!find<QRadioButton>("rtcCalibration")->isEnabled());
        QVERIFY(find<QGroupBox>("tconSet")->isEnabled());
        select("K7UIModel", "K7UID1");
        QCOMPARE(sizes->count(), 7);
        QVERIFY(isChecked("pclkFallingEdge"));
        QVERIFY(find<QGroupBox>("buzzerSound")->isEnabled());
        QVERIFY(!find<QGroupBox>("tconSet")->isEnabled());
    }

    void sizesChooseTheirEdge()
    {
        select("K7UIModel", "K7UID3");
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
        const auto verdictOn = [this](const QString &edit, const QString &text) {
            find<QLineEdit>(edit)->setText(text);
            auto *label = find<QLabel>("textExplainLabel");
            return label->palette().color(QPalette::WindowText).name() + ' ' + label->text();
        };
        QCOMPARE(verdictOn("encryptionFolderName", "a b"),
                 QString("#ff0000 It can only be : 0-9 , a-z , A-Z , or '-',or '_' "));
        QCOMPARE(verdictOn("encryptionFolderName", "ab"), QString("#000000 61 62 "));
        QCOMPARE(verdictOn("encryptionKey", "00"), QString("#ff0000 secret key number :1"));
    }

    void folderFilesAreCounted()
    {
        for (const char *name : {"1.bin", "2.BIN", "a.tar.Hzk", "x.ico", "bmp", "y.txt", "l.lib",
                                 "d.dzk", "e.dzk", "f.dzk", "w.wav"})
            write(name, "");
        QVERIFY(QDir(m_folder->path()).mkdir("folder.wav"));
        link("3.bin", "1.bin");
        set("wavFileNumber", 9);
        choose("openZoltsetFolder", {m_folder->path()});
        QCOMPARE(line("displayZoltsetPath"), m_folder->path());
        const std::pair<const char *, int> counts[] = {
            {"lib", 1}, {"bin", 2}, {"dzk", 3}, {"hzk", 1}, {"ico", 1}, {"wav", 1}, {"bmp", 0},
        };
        for (const auto &[suffix, count] : counts)
            QVERIFY2(value(suffix + QString("FileNumber")) == count, suffix);
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
    QString layout() { return find<QComboBox>("K7UIModel")->currentText(); }

    int m_files = 0;
};

QTEST_MAIN(TestSystemConfig)
#include "tst_system_config.moc"
