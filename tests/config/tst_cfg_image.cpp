#include "config/cfg_image.h"
#include "config/encryption_texts.h"
#include "config/screen_timings.h"
#include "support/random_bytes.h"

#include <QtTest>

using cfgImage::Fault;

namespace {

const QByteArray blank(cfgImage::bytes, '\0');
const QString key = "00112233445566778899aabbccddeeff FFEEDDCCBBAA99887766554433221100";

/// `blank` with the parts written by hand: offset and hexadecimal bytes.
QByteArray image(std::initializer_list<std::pair<int, const char *>> parts)
{
    QByteArray bytes = blank;
    for (const auto &[offset, hex] : parts) {
        const QByteArray part = QByteArray::fromHex(hex);
        bytes.replace(offset, part.size(), part);
    }
    return bytes;
}

using Edit = std::function<void(CfgSettings &)>;

} // namespace

Q_DECLARE_METATYPE(Edit)
Q_DECLARE_METATYPE(cfgImage::Fault)

class TestCfgImage : public QObject
{
    Q_OBJECT

private slots:
    void settingsHaveTheirBytes_data()
    {
        QTest::addColumn<Edit>("edit");
        QTest::addColumn<QByteArray>("expected");
        using S = CfgSettings;
        const auto row = [](const char *title, const Edit &edit,
                            std::initializer_list<std::pair<int, const char *>> parts) {
            QByteArray expected = image({{0, "4B374431"}, {9, "0044"}});
            for (const auto &[offset, hex] : parts)
                expected.replace(offset, static_cast<int>(qstrlen(hex)) / 2,
                                 QByteArray::fromHex(hex));
            QTest::newRow(title) << edit << expected;
        };
        row("defaults", [](S &) {}, {});
        row("K7UID2", [](S &s) { s.layout = 1; }, {{3, "32"}});
        row("K7UID3", [](S &s) { s.layout = 2; }, {{3, "33"}});
        row("flash formatting", [](S &s) { s.formatsFlash = true; }, {{4, "5AA5"}});
        row("automatic upload", [](S &s) { s.autoUp = 1; }, {{8, "80"}});
        row("128 pages", [](S &s) { s.pageNumber = 1; }, {{8, "40"}});
        row("file 22", [](S &s) { s.file22 = 1; }, {{8, "20"}});
        row("SD interface", [](S &s) { s.sdStatus = 1; }, {{8, "10"}});
        row("touch sound", [](S &s) { s.touchVoice = 1; }, {{8, "08"}});
        row("touch light", [](S &s) { s.touchLight = 1; }, {{8, "04"}});
        row("270 degrees", [](S &s) { s.displayDirection = 3; }, {{8, "03"}});
        row("9600 baud", [](S &s) { s.baudRate = 9600; }, {{9, "0330"}});
        row("921600 baud", [](S &s) { s.baudRate = 921600; }, {{9, "0008"}});
        row("1 baud", [](S &s) { s.baudRate = 1; }, {{9, "8800"}});
        row("0 baud counts as 1", [](S &s) { s.baudRate = 0; }, {{9, "8800"}});
        row("standby",
            [](S &s) {
                s.setsLightStandby = true;
                s.normalLight = 0xFE;
                s.standbyLight = 0x12;
                s.lightTime = 0xAB4D;
            },
            {{11, "5AFE12AB4D"}});
        row("boot page",
            [](S &s) {
                s.setsBootPage = true;
                s.bootPage = 0x8001;
            },
            {{32, "5A8001"}});
        row("boot music",
            [](S &s) {
                s.setsBootMusic = true;
                s.musicPosition = 1;
                s.musicCount = 2;
                s.musicVolume = 0x83;
            },
            {{35, "5A010283"}});
        row("TCON",
            [](S &s) {
                s.setsTcon = true;
                s.tcon = 0x99;
            },
            {{42, "5A99"}});
        row("buzzer", [](S &s) { s.buzzer = 1; }, {{44, "80"}});
        row("UART CRC", [](S &s) { s.uartCrc = 1; }, {{44, "40"}});
        row("watchdog", [](S &s) { s.watchDog = 1; }, {{44, "20"}});
        row("synchronous update", [](S &s) { s.synchronousUpdate = 1; }, {{44, "10"}});
        row("SD files",
            [](S &s) {
                s.checksSdFiles = true;
                s.libFiles = 1;
                s.binFiles = 2;
                s.dzkFiles = 3;
                s.hzkFiles = 4;
                s.icoFiles = 5;
                s.wavFiles = 6;
                s.bmpFiles = 0xFF;
            },
            {{48, "5AA5010203040506FF"}});
        row("unlock", [](S &s) { s.encryption = 2; }, {{64, "5AAA"}});
        row("lock",
            [](S &s) {
                s.encryption = 1;
                s.folderName = "abc-_9XY";
                s.key = key;
            },
            {{64, "5AA5086162632D5F395859"},
             {80, "00112233445566778899AABBCCDDEEFFFFEEDDCCBBAA99887766554433221100"}});
    }

    void settingsHaveTheirBytes()
    {
        QFETCH(const Edit, edit);
        QFETCH(const QByteArray, expected);
        CfgSettings settings;
        edit(settings);
        const cfgImage::Filled filled = cfgImage::fill(blank, settings);
        QCOMPARE(filled.image.toHex(), expected.toHex());
        QCOMPARE(filled.fault, Fault::None);
        // What was written is read, but for bytes that read back as negative numbers.
        const CfgSettings read = cfgImage::read(expected, CfgSettings());
        const QByteArray again = cfgImage::fill(blank, read).image;
        if (settings.baudRate > 1)
            QCOMPARE(again.toHex(), expected.toHex());
    }

    void readOnlySettingsAreRead()
    {
        const QByteArray bytes = image({{0, "4B374433"},
                                        {6, "5AA5"},
                                        {16, "5AA5 01 07 40 40 01 05 54 01 40 06 10 03 00 10"},
                                        {39, "5A 84 7F"}});
        const CfgSettings read = cfgImage::read(bytes, CfgSettings());
        QVERIFY(read.setsCalibration);
        QCOMPARE(read.calibration, 0);
        QVERIFY(read.setsDisplay);
        QCOMPARE(read.pclkEdge, 1);
        const auto &record = screenTimings(2).at(3).record;
        QCOMPARE(read.timing, QByteArray(reinterpret_cast<const char *>(record.data()) + 1, 13));
        QVERIFY(read.setsTouchScreen);
        QCOMPARE(read.touchType, 1);
        QCOMPARE(read.touchX, 1);
        QCOMPARE(read.touchY, 0);
        QCOMPARE(read.touchExchange, 0);
        QCOMPARE(read.touchSensitivity, 0x7F);
        QCOMPARE(cfgImage::read(image({{6, "5A00"}}), {}).calibration, 1);
        QCOMPARE(cfgImage::read(image({{16, "5AA502"}}), {}).pclkEdge, 0);
        // None of it is written, and none of it is lost.
        const QByteArray again = cfgImage::fill(bytes, read).image;
        QCOMPARE(again.mid(6, 2) + again.mid(16, 16) + again.mid(39, 3),
                 bytes.mid(6, 2) + bytes.mid(16, 16) + bytes.mid(39, 3));
        QCOMPARE(cfgImage::fill(blank, read).image.mid(16, 16), QByteArray(16, '\0'));
    }

    void flagsAreOnlyEverSet()
    {
        const QByteArray old = image({{8, "80"}, {44, "81"}, {64, "5AAA"}, {127, "77"}}) + "longer";
        const QByteArray filled = cfgImage::fill(old, CfgSettings()).image;
        QCOMPARE(filled.mid(8, 1).toHex(), QByteArray("80"));
        QCOMPARE(filled.mid(44, 1).toHex(), QByteArray("81"));
        QCOMPARE(filled.mid(64), old.mid(64));
    }

    void imagesGrowAsFarAsNeeded()
    {
        CfgSettings settings;
        QCOMPARE(cfgImage::fill({}, settings).image.size(), 45);
        settings.checksSdFiles = true;
        QCOMPARE(cfgImage::fill({}, settings).image.size(), 57);
        settings.encryption = 2;
        QCOMPARE(cfgImage::fill({}, settings).image.size(), 66);
        settings.encryption = 1;
        settings.key = key;
        QCOMPARE(cfgImage::fill({}, settings).image.size(), 112);
    }

    void badLocksLeaveTheImageAlone_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("keyText");
        QTest::addColumn<Fault>("fault");
        QTest::newRow("nine bytes") << "123456789" << key << Fault::FolderNameTooLong;
        QTest::newRow("nine bytes, no key") << "123456789"
                                            << "" << Fault::FolderNameTooLong;
        QTest::newRow("31 bytes") << "ab" << key.left(63) << Fault::BadKey;
        QTest::newRow("33 bytes") << "ab" << key + "00" << Fault::BadKey;
        QTest::newRow("odd digits") << "ab" << key + "0" << Fault::BadKey;
        QTest::newRow("no digit") << "ab" << QString(key).replace(5, 1, "g") << Fault::BadKey;
    }

    void badLocksLeaveTheImageAlone()
    {
        QFETCH(const QString, name);
        QFETCH(const QString, keyText);
        QFETCH(const Fault, fault);
        CfgSettings settings;
        settings.encryption = 1;
        settings.folderName = name;
        settings.key = keyText;
        const QByteArray old = randomBytes(100);
        const cfgImage::Filled filled = cfgImage::fill(old, settings);
        QCOMPARE(filled.fault, fault);
        QCOMPARE(filled.image, old);
    }

    void directionsReadBackUnevenly()
    {
        const int readBack[] = {0, 3, 0, 3};
        for (int direction = 0; direction < 4; ++direction) {
            CfgSettings settings;
            settings.displayDirection = direction;
            const QByteArray written = cfgImage::fill(blank, settings).image;
            QCOMPARE(cfgImage::read(written, {}).displayDirection, readBack[direction]);
        }
    }

    void bytesAreReadSigned()
    {
        const CfgSettings read = cfgImage::read(
            image({{9, "0088"}, {11, "5A 80 7F 01 FF"}, {32, "5A FF 01"}, {66, "FF 61 62"}}), {});
        QCOMPARE(read.baudRate, 7833600 / -120);
        QCOMPARE(read.normalLight, -128);
        QCOMPARE(read.standbyLight, 127);
        QCOMPARE(read.lightTime, 255);
        QCOMPARE(read.bootPage, -255);
        const QByteArray negativeLength = image({{64, "5AA5FF6162"}});
        QCOMPARE(cfgImage::read(negativeLength, {}).folderName, QString());
    }

    void whatTheFileDoesNotSetStays()
    {
        CfgSettings before;
        before.layout = 1;
        before.calibration = 1;
        before.baudRate = 1234;
        before.normalLight = 55;
        before.pclkEdge = 1;
        before.touchType = 1;
        before.encryption = 2;
        before.folderName = "kept";
        before.setsTcon = true;
        before.tcon = 9;
        const CfgSettings after = cfgImage::read(image({{0, "4B374434"}, {64, "5A11"}}), before);
        QCOMPARE(after.layout, 1);
        QCOMPARE(after.calibration, 1);
        QCOMPARE(after.baudRate, 1234);
        QCOMPARE(after.normalLight, 55);
        QCOMPARE(after.pclkEdge, 1);
        QCOMPARE(after.touchType, 1);
        QCOMPARE(after.encryption, 2);
        QCOMPARE(after.folderName, QString("kept"));
        QVERIFY(!after.setsTcon);
        QCOMPARE(after.tcon, 9);
        // Every option without its marks is off, but for the check of the SD card's files.
        CfgSettings on;
        on.formatsFlash = on.setsCalibration = on.setsLightStandby = on.setsDisplay = true;
        on.setsBootPage = on.setsBootMusic = on.setsTouchScreen = on.checksSdFiles = true;
        const CfgSettings off =
            cfgImage::read(image({{4, "5A00"}, {16, "5A00"}, {48, "5A00"}}), on);
        QVERIFY(!off.formatsFlash && !off.setsCalibration && !off.setsLightStandby &&
                !off.setsDisplay && !off.setsBootPage && !off.setsBootMusic &&
                !off.setsTouchScreen);
        QVERIFY(off.checksSdFiles);
        QCOMPARE(cfgImage::read(blank, before).encryption, 0);
    }

    void everyTruncationIsRead()
    {
        CfgSettings settings;
        settings.encryption = 1;
        settings.folderName = "folder";
        settings.key = key;
        settings.setsLightStandby = true;
        settings.lightTime = 0x0102;
        const QByteArray whole = cfgImage::fill(blank, settings).image;
        for (int bytes = 0; bytes <= whole.size(); ++bytes) {
            const CfgSettings cut = cfgImage::read(whole.left(bytes), CfgSettings());
            const CfgSettings padded =
                cfgImage::read(whole.left(bytes).leftJustified(128, '\0'), CfgSettings());
            QCOMPARE(cut.lightTime, padded.lightTime);
            QCOMPARE(cut.key, padded.key);
            QCOMPARE(cut.folderName, padded.folderName);
        }
        QCOMPARE(cfgImage::read(whole.left(96), {}).key.size(), 96);
    }

    void onlyTheRightMagicIsAccepted()
    {
        QVERIFY(cfgImage::isCfg("K7D"));
        for (const char *bytes : {"", "K7", "K7d1", "7DK1"})
            QVERIFY(!cfgImage::isCfg(bytes));
    }

    void keysAndNamesAreJudged_data()
    {
        QTest::addColumn<bool>("isKey");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("verdict");
        QTest::addColumn<bool>("isGood");
        const QString badName = "It can only be : 0-9 , a-z , A-Z , or '-',or '_' ";
        const QString badKey = "It can only be in hexadecimal and even number !";
        QTest::newRow("name") << false << "abc-_9"
                              << "61 62 63 2d 5f 39 " << true;
        QTest::newRow("no name") << false << ""
                                 << "" << true;
        QTest::newRow("blank") << false << "a b" << badName << false;
        QTest::newRow("eight") << false << "ABCDEFGH"
                               << "41 42 43 44 45 46 47 48 " << true;
        QTest::newRow("nine") << false << "a b c d e"
                              << "The folder name is longer than 8 !" << false;
        QTest::newRow("key") << true << key << "secret key number :32" << true;
        QTest::newRow("short key") << true << key.left(63) << "secret key number :31" << false;
        QTest::newRow("no key") << true << ""
                                << "secret key number :0" << false;
        QTest::newRow("odd key") << true << "1" << badKey << false;
        QTest::newRow("no digits") << true << "1G" << badKey << false;
        QTest::newRow("tab") << true << "1\t1" << badKey << false;
    }

    void keysAndNamesAreJudged()
    {
        QFETCH(const bool, isKey);
        QFETCH(const QString, typed);
        const auto verdict =
            isKey ? encryptionTexts::checkKey(typed) : encryptionTexts::checkFolderName(typed);
        QTEST(verdict.text, "verdict");
        QTEST(verdict.isGood, "isGood");
    }

    void timingsNameTheirScreens()
    {
        // On K7UID1 width and height stand in the record; the other layouts have their own
        // arrangement.
        for (const ScreenTiming &timing : screenTimings(0)) {
            const QString size = QString(timing.size).section('_', 1);
            const auto &record = timing.record;
            QCOMPARE(
                QString("%1*%2").arg(record[4] << 8 | record[5]).arg(record[9] << 8 | record[10]),
                QString(size).remove('A').remove('B'));
        }
        // The same size has another edge on K7UID3 than on K7UID2.
        QCOMPARE(screenTimings(1).size(), 4);
        QCOMPARE(screenTimings(2).size(), 4);
        QCOMPARE(QByteArray(screenTimings(1).at(3).size), QByteArray("1024*768"));
        QCOMPARE(int{screenTimings(1).at(3).record.at(0)}, 1);
        QCOMPARE(QByteArray(screenTimings(2).at(1).size), QByteArray("1024*768"));
        QCOMPARE(int{screenTimings(2).at(1).record.at(0)}, 0);
        QVERIFY(screenTimings(-1).isEmpty());
        QVERIFY(screenTimings(3).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCfgImage)
#include "tst_cfg_image.moc"
