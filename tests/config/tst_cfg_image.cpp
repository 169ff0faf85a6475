#include "config/cfg_image.h"
#include "config/encryption_texts.h"
#include "config/screen_timings.h"
#include "support/random_bytes.h"

#include <QRegularExpression>
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

} // namespace

class TestCfgImage : public QObject
{
    Q_OBJECT

private slots:
    void settingsHaveTheirBytes()
    {
        CfgSettings s;
        s.layout = 2;
        s.formatsFlash = true;
        s.autoUp = s.touchVoice = s.touchLight = s.buzzer = s.uartCrc = s.watchDog = 1;
        s.displayDirection = 3;
        s.baudRate = 921600;
        s.setsLightStandby = true;
        s.normalLight = 0xFE;
        s.standbyLight = 0x12;
        s.lightTime = 0xAB4D;
        s.setsBootPage = true;
        s.bootPage = 0x8001;
        s.setsBootMusic = true;
        s.musicPosition = 1;
        s.musicCount = 2;
        s.musicVolume = 0x83;
        s.setsTcon = true;
        s.tcon = 0x99;
        s.checksSdFiles = true;
        s.bmpFiles = 0xFF;
        s.encryption = 1;
        s.folderName = "abc-_9XY";
        s.key = key;
        const QByteArray expected =
            image({{0, "4B374433 5AA50000 8F 0008 5AFE12AB4D"},
                   {32, "5A8001 5A010283 000000 5A99 E0 000000 5AA5000000000000FF"},
                   {64, "5AA5 08 6162632D5F395859"},
                   {80, "00112233445566778899AABBCCDDEEFFFFEEDDCCBBAA99887766554433221100"}});
        const cfgImage::Filled filled = cfgImage::fill(blank, s);
        QCOMPARE(filled.image.toHex(), expected.toHex());
        QCOMPARE(filled.fault, Fault::None);
        const CfgSettings read = cfgImage::read(expected, CfgSettings());
        QCOMPARE(cfgImage::fill(blank, read).image.toHex(), expected.toHex());
        for (s.baudRate = 0; s.baudRate < 2; ++s.baudRate) // 0 counts as 1
            QCOMPARE(cfgImage::fill(blank, s).image.mid(9, 2).toHex(), QByteArray("8800"));
    }

    void readOnlySettingsAreRead()
    {
        const QByteArray bytes =
            image({{6, "5AA5"}, {16, "5AA5 01 0203040506070809101112131D"}, {39, "5A 86 7F"}});
        const CfgSettings read = cfgImage::read(bytes, CfgSettings());
        QVERIFY(read.setsCalibration && read.setsDisplay && read.setsTouchScreen);
        QCOMPARE(read.calibration, 0);
        QCOMPARE(read.pclkEdge, 1);
        QCOMPARE(read.timing.toHex(), QByteArray("0203040506070809101112131d"));
        QCOMPARE(read.touchType, 1);
        QCOMPARE(read.touchX, 1);
        QCOMPARE(read.touchY, 1);
        QCOMPARE(read.touchExchange, 0);
        QCOMPARE(read.touchSensitivity, 0x7F);
        QCOMPARE(cfgImage::read(image({{6, "5A00"}}), {}).calibration, 1);
        QCOMPARE(cfgImage::read(image({{16, "5AA502"}}), {}).pclkEdge, 0);
        // None of it is written.
        QCOMPARE(cfgImage::fill(blank, read).image, cfgImage::fill(blank, CfgSettings()).image);
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
        const auto growsTo = [&settings](int size) {
            return cfgImage::fill({}, settings).image ==
                   cfgImage::fill(blank, settings).image.left(size);
        };
        QVERIFY(growsTo(45));
        settings.checksSdFiles = true;
        QVERIFY(growsTo(57));
        settings.encryption = 2;
        QVERIFY(growsTo(66));
        settings.encryption = 1;
        settings.key = key;
        QVERIFY(growsTo(112));
    }

    void badLocksLeaveTheImageAlone()
    {
        const QByteArray old = randomBytes(100);
        CfgSettings settings;
        settings.encryption = 1;
        settings.folderName = "ab";
        for (const QString &bad :
             {key.left(63), key + "00", key + "0", QString(key).replace(5, 1, "g")}) {
            settings.key = bad;
            const cfgImage::Filled filled = cfgImage::fill(old, settings);
            QCOMPARE(filled.fault, Fault::BadKey);
            QCOMPARE(filled.image, old);
        }
        settings.folderName = "123456789";
        QCOMPARE(cfgImage::fill(old, settings).fault, Fault::FolderNameTooLong);
    }

    void bytesAreReadSignedAndDirectionsUnevenly()
    {
        const CfgSettings read = cfgImage::read(
            image({{9, "0088"}, {11, "5A 80 7F 01 FF"}, {32, "5A FF 01"}, {64, "5AA5FF6162"}}), {});
        QCOMPARE(read.baudRate, 7833600 / -120);
        QCOMPARE(read.normalLight, -128);
        QCOMPARE(read.standbyLight, 127);
        QCOMPARE(read.lightTime, 255);
        QCOMPARE(read.bootPage, -255);
        QCOMPARE(read.folderName, QString());
        // Of the direction only the low bit counts.
        for (const auto &[byte, direction] : {std::pair("00", 0), {"01", 3}, {"02", 0}, {"03", 3}})
            QCOMPARE(cfgImage::read(image({{8, byte}}), {}).displayDirection, direction);
    }

    void whatTheFileDoesNotSetStays()
    {
        CfgSettings before;
        before.layout = before.calibration = before.pclkEdge = before.touchType = 1;
        before.baudRate = 1234;
        before.normalLight = 55;
        before.encryption = 2;
        before.folderName = "kept";
        before.tcon = 9;
        // Every option without its marks is off, but for the check of the SD card's files.
        before.formatsFlash = before.setsCalibration = before.setsLightStandby = true;
        before.setsDisplay = before.setsBootPage = before.setsBootMusic = true;
        before.setsTouchScreen = before.setsTcon = before.checksSdFiles = true;
        const CfgSettings after = cfgImage::read(
            image({{0, "4B374434 5A00"}, {16, "5A00"}, {48, "5A00"}, {64, "5A11"}}), before);
        for (const auto kept :
             {&CfgSettings::layout, &CfgSettings::calibration, &CfgSettings::pclkEdge,
              &CfgSettings::touchType, &CfgSettings::baudRate, &CfgSettings::normalLight,
              &CfgSettings::encryption, &CfgSettings::tcon})
            QCOMPARE(after.*kept, before.*kept);
        QCOMPARE(after.folderName, QString("kept"));
        QVERIFY(!after.formatsFlash && !after.setsCalibration && !after.setsLightStandby &&
                !after.setsDisplay && !after.setsBootPage && !after.setsBootMusic &&
                !after.setsTouchScreen && !after.setsTcon);
        QVERIFY(after.checksSdFiles);
        QCOMPARE(cfgImage::read(blank, before).encryption, 0);
        QCOMPARE(cfgImage::read(image({{64, "5AAA"}}), {}).encryption, 2);
    }

    void keysAndNamesAreJudged()
    {
        using encryptionTexts::checkFolderName;
        using encryptionTexts::checkKey;
        const QString badName = "It can only be : 0-9 , a-z , A-Z , or '-',or '_' ";
        const bool isUtf8 = QString("图").toLocal8Bit().size() == 3;
        const QString badKey = "It can only be in hexadecimal and even number !";
        const struct
        {
            encryptionTexts::Verdict verdict;
            QString text;
            bool isGood;
        } cases[] = {
            {checkFolderName("abc-_9"), "61 62 63 2d 5f 39 ", true},
            {checkFolderName(""), "", true},
            {checkFolderName("a b"), badName, false},
            {checkFolderName("ABCDEFGH"), "41 42 43 44 45 46 47 48 ", true},
            {checkFolderName("a b c d e"), "The folder name is longer than 8 !", false},
            {checkFolderName("图图图"), isUtf8 ? "The folder name is longer than 8 !" : badName,
             false},
            {checkKey(key), "secret key number :32", true},
            {checkKey(key.left(63)), "secret key number :31", false},
            {checkKey(""), "secret key number :0", false},
            {checkKey("1"), badKey, false},
            {checkKey("1G"), badKey, false},
            {checkKey("1\t1"), badKey, false},
        };
        for (const auto &[verdict, text, isGood] : cases) {
            QCOMPARE(verdict.text, text);
            QVERIFY2(verdict.isGood == isGood, qPrintable(text));
        }
        for (ushort code = 0; code < 128; ++code)
            QCOMPARE(checkFolderName(QChar(code)).isGood,
                     QString(QChar(code)).contains(QRegularExpression("[0-9A-Za-z_-]")));
    }

    void timingsAreThoseOfTheScreens()
    {
        // Size, PCLK edge, then the bytes as they stand in a configuration file.
        const QStringList expected{
            "2.4_240*320 00 500a1400f00a02020140020500",
            "2.8_240*320A 00 500a1400f00a02020140020500",
            "2.8_240*320B 00 50102000f020020e0140080100",
            "3.5_320*240 00 461e14014040030f00f0100200",
            "3.5_320*480 00 2c0a0401400a020201e0020400",
            "4.3_480*272 00 30290201e0020a020110020000",
            "5.0_480*272 00 30290201e0020a020110020000",
            "480*800 01 1408080001e00008040a03200a",
            "480*854 01 1408080001e00008020c035606",
            "1024*600 01 0aa0880004000018061d025803",
            "1024*768 01 09204000040000200408030004",
            "1024*600 01 0aa0880004000018061d025803",
            "1024*768 00 09204000040000200408030004",
            "1280*720 00 08101c0005000010082002d020",
            "1364*768 01 07404001055401400610030010",
        };
        QStringList found;
        for (int layout = -1; layout <= 3; ++layout)
            for (const ScreenTiming &timing : screenTimings(layout)) {
                const QByteArray bytes(reinterpret_cast<const char *>(timing.record.data()), 14);
                found.append(timing.size + QString(" ") + bytes.left(1).toHex() + ' ' +
                             bytes.mid(1).toHex());
            }
        QCOMPARE(found, expected);
    }
};

QTEST_GUILESS_MAIN(TestCfgImage)
#include "tst_cfg_image.moc"
