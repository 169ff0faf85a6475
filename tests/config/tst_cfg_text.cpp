#include "config/cfg_image.h"
#include "config/cfg_text.h"

#include <QRandomGenerator>
#include <QtTest>

/// The text form of configuration files.
class TestCfgText : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsLost()
    {
        QRandomGenerator random(1);
        // Marks, digits and zeros are what the keys look for; other bytes are for Raw.
        const QByteArray likely = QByteArray::fromHex("0000005AA5AA3132333401024C");
        for (int round = 0; round < 1000; ++round) {
            const int bytes = round < 250 ? 3 + round : 3 + random.bounded(300);
            QByteArray image(bytes, 0);
            for (char &byte : image)
                byte = static_cast<char>(random.bounded(8) > 0
                                             ? likely.at(random.bounded(likely.size()))
                                             : random.bounded(256));
            image.replace(0, 3, "K7D");
            const cfgText::Result text = cfgText::fromImage(image);
            QCOMPARE(text.fault, QString());
            const cfgText::Result again = cfgText::toImage(text.bytes);
            QCOMPARE(again.fault, QString());
            QVERIFY2(again.bytes == image, text.bytes);
        }
    }

    void keysSayWhatTheWindowSays()
    {
        // What the window writes is told by keys alone, and what is written by keys the window
        // reads.
        CfgSettings settings;
        settings.layout = 1;
        settings.file22 = 1;
        settings.watchDog = 1;
        settings.baudRate = 9600;
        settings.setsLightStandby = true;
        settings.lightTime = 300;
        settings.checksSdFiles = true;
        settings.bmpFiles = 7;
        settings.encryption = 1;
        settings.folderName = "abc-_9";
        settings.key = QString("0a ").repeated(32);
        const QByteArray image = cfgImage::fill(QByteArray(128, '\0'), settings).image;
        const QByteArray text = cfgText::fromImage(image).bytes;
        for (const char *line :
             {"bytes=128", "layout=K7UID2", "baudRate=9600", "file22=load", "watchdog=on",
              "[Backlight]\nset=on\nnormal=0\nstandby=0\nseconds=300", "bmp=7", "mode=locked",
              "folder=abc-_9", "key=0a 0a"})
            QVERIFY2(text.contains('\n' + QByteArray(line)), text);
        QVERIFY2(!text.contains("[Raw]"), text);
        const QByteArray edited =
            cfgText::toImage(QByteArray(text).replace("seconds=300", "seconds=7")).bytes;
        QCOMPARE(cfgImage::read(edited, {}).lightTime, 7);
    }

    void divisorsOfNoRateAreTold()
    {
        const QByteArray image = "K7D1" + QByteArray(5, '\0') + "\xC3\x50" + QByteArray(117, '\0');
        const QByteArray text = cfgText::fromImage(image).bytes;
        QVERIFY2(text.contains("\ndivisor=50000\n") && !text.contains("baudRate"), text);
    }

    void keysOfZerosAreToldWhereTheyLock()
    {
        for (const int bytes : {128, 111}) { // a shorter file has no room for the key
            const QByteArray image =
                "K7D1" + QByteArray(60, '\0') + "\x5A\xA5" + QByteArray(bytes - 66, '\0');
            const QByteArray text = cfgText::fromImage(image).bytes;
            QCOMPARE(text.contains("\nkey=00 00 "), bytes == 128);
            QCOMPARE(cfgText::toImage(text).fault, QString());
        }
    }

    void timingsNameTheirScreens()
    {
        QByteArray image = cfgImage::fill(QByteArray(128, '\0'), CfgSettings()).image;
        image.replace(16, 16,
                      QByteArray::fromHex("5AA500 30290201E0020A02011002 0000"
                                          "00"));
        const QByteArray text = cfgText::fromImage(image).bytes;
        QVERIFY2(text.contains("; 4.3_480*272 or 5.0_480*272"), text);
    }

    void baseKeepsWhatIsNotNamed()
    {
        const QByteArray base = "K7D2" + QByteArray(196, '\xEE');
        const QByteArray text =
            "[Module]\nautoUpload=off\n[Backlight]\rnormal=010\r\nseconds=0x102\n";
        QByteArray expected = base;
        expected[8] = '\x6E';
        expected[12] = '\x0A';
        expected.replace(14, 2, QByteArray::fromHex("0102"));
        QCOMPARE(cfgText::toImage(text, base).bytes, expected);
    }

    void mistakesAreNamed()
    {
        const struct
        {
            const char *text;
            const char *fault;
        } cases[] = {
            {"[Module]\nlayout=K7UID1", "Module/baudRate is missing"},
            {"[Module]\nbaudRate=9600", "Module/layout is missing"},
            {"\nwhat", "line 2 is neither a group, a key nor a comment"},
            {"[Module]\nlayot=K7UID1", "line 2: Module/layot is no key"},
            {"[Module]\nlayout=K7UID4",
             "line 2: Module/layout is not one of K7UID1, K7UID2, K7UID3"},
            {"[Module]\nbaudRate=119", "line 2: Module/baudRate is not 120 to 7833600"},
            {"[Backlight]\nnormal=256", "line 2: Backlight/normal is not 0 to 255"},
            {"[Tcon]\nvalue=1\nvalue=1", "line 3: Tcon/value stands there twice"},
            {"[Module]\nbytes=20\n[Tcon]\nvalue=1",
             "line 4: Tcon/value does not fit into the file"},
            {"[Encryption]\nkey=00", "line 2: Encryption/key is not 32 bytes in hexadecimal"},
            {"[Encryption]\nfolder=a b",
             "line 2: Encryption/folder is not up to 8 of 0-9, a-z, A-Z, - and _"},
            {"[Raw]\n70000=00", "line 2: Raw/70000 is not an offset with bytes in hexadecimal"},
            {"[Raw]\n200=", "line 2: Raw/200 is not an offset with bytes in hexadecimal"},
            {"[Tcon]\n\n[Raw]\n8=00", "line 1: [Tcon] has no key"},
            {"[Module]\nbaudRate=9600\ndivisor=8",
             "line 3: Module/divisor says the rate a second time"},
            {"[Encryption]\nmode=locked",
             "line 2: the card would be locked, and Encryption/key is missing"},
            {"[Raw]\n0=00", "the file would not begin with K7D"},
        };
        for (const auto &c : cases)
            QCOMPARE(cfgText::toImage(c.text).fault, QString(c.fault));
        QVERIFY(!cfgText::fromImage("K7").fault.isEmpty());
        QVERIFY(!cfgText::fromImage("K7D" + QByteArray(cfgText::maxBytes, 'x')).fault.isEmpty());
        QVERIFY(!cfgText::toImage("", "no base").fault.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCfgText)
#include "tst_cfg_text.moc"
