#include "serial/data_text.h"
#include "serial/device_values.h"
#include "serial/frame_builder.h"
#include "serial/mirror_text.h"
#include "serial/serial_settings.h"
#include "support/fake_link.h"

#include <QtTest>

class TestValues : public QObject
{
    Q_OBJECT

private slots:
    void ratesFallBackToTheDefault()
    {
        for (const int rate :
             {1200, 2400, 4800, 9600, 19200, 38400, 56000, 57600, 115200, 128000, 6250000})
            QCOMPARE(linkRate(rate), rate);
        for (const int rate : {0, -1, 110, 230400, 460800, 921600, 6250001})
            QCOMPARE(linkRate(rate), 115200);
        // Waits are computed from the chosen rate all the same.
        QCOMPARE(waitRate(921600), 921600);
        QCOMPARE(waitRate(0), 115200);
        QCOMPARE(waitRate(-9600), 115200);
        FakeLink link;
        applyToLink({"COM12", 921600, 0, 0, false}, link);
        QCOMPARE(link.rate, 115200);
        QCOMPARE(link.name, QString(R"(\\.\COM12)"));
    }

    void devicePathsArePrefixedAboveNine()
    {
        QCOMPARE(devicePath("COM10"), QString(R"(\\.\COM10)"));
        for (const char *name : {"COM9", "ttyUSB12", "/dev/pts/12", "/de12", "Refresh"})
            QCOMPARE(devicePath(name), QString(name));
    }

    void textBecomesBytesAndWords()
    {
        const std::pair<QString, std::optional<QByteArray>> cases[] = {
            {"1 23", "\x01\x23"},
            {"aBCd eF", "\xAB\xCD\xEF"},
            {" ", ""},
            {"12 3g", std::nullopt},
            {"12\t34", std::nullopt},
            {"1２", std::nullopt}, // a full-width digit
        };
        for (const auto &[text, bytes] : cases)
            QVERIFY2(dataText::toBytes(text, true) == bytes, qPrintable(text));
        QCOMPARE(*dataText::toBytes("1 2图", false), QString("1 2图").toLocal8Bit());
        QCOMPARE(*dataText::toWords("00 10 00 20", true), (QVector<quint16>{0x10, 0x20}));
        QCOMPARE(*dataText::toWords("AB", false), QVector<quint16>{0x4142});
        for (const char *odd : {"AB", "x"})
            QVERIFY(!dataText::toWords(odd, true));
    }

    void mirrorsAreShownEightToALine()
    {
        FrameBuilder mirrors;
        mirrors.setVp(0xFFFE, 0xABC);
        QCOMPARE(mirrorText::vpWords(mirrors, 0xFFFE, 9), QString("0x0ABC 0x0000"));
        QCOMPARE(mirrorText::vpWords(mirrors, 0, 9).split('\n').last(), QString("0x0000"));
        QCOMPARE(mirrorText::vpWords(mirrors, 0, 0), QString());
        mirrors.setRegister(2, 0xFF, 0xA);
        mirrors.setRegister(2, 0, 0xB);
        QCOMPARE(mirrorText::registers(mirrors, 2, 0xFF, 2), QString("0x0A 0x0B"));
        QCOMPARE(mirrorText::registers(mirrors, 9, 0, 2), QString("0x00 0x00"));
        QCOMPARE(mirrorText::registers(mirrors, 0, 0, 0xFFFF).split(' ').size(), 256 - 31);
    }

    void deviceValuesAreShown()
    {
        FrameBuilder mirrors;
        const std::pair<int, int> words[] = {
            {0x00, 0x0123}, {0x01, 0x4567}, {0x02, 0x89AB}, {0x03, 0xCDEF}, {0x0F, 0x4521},
            {0x30, 0xFFFC}, {0x7C, 0x4142}, {0x7D, 0x4344}, {0x7E, 0x0046}, {0x7F, 0x4748}};
        for (const auto &[address, word] : words)
            mirrors.setVp(static_cast<quint16>(address), static_cast<quint16>(word));
        QCOMPARE(deviceValues::deviceIdText(mirrors), QString("0123456789abcdef"));
        QCOMPARE(deviceValues::versionText(mirrors), QString("GUI:V4.5 OS:V2.1"));
        QCOMPARE(deviceValues::millivolts(mirrors), 4800);
        QCOMPARE(deviceValues::sdNameText(mirrors), QString("ABCD"));
        mirrors.setVp(0x7E, 0x4546);
        QCOMPARE(deviceValues::sdNameText(mirrors), QString("ABCDEFGH"));
    }

    void configWordTakesTheFourGroups()
    {
        QCOMPARE(deviceValues::configWord(0, 0, 0, 0), quint16(0));
        QCOMPARE(deviceValues::configWord(1, 0, 0, 0), quint16(0x10));
        QCOMPARE(deviceValues::configWord(0, 1, 0, 2), quint16(0x0A));
        QCOMPARE(deviceValues::configWord(1, 1, 1, 3), quint16(0x1F));
        QCOMPARE(deviceValues::configWord(-1, -1, -1, -1), quint16(0xFFFF)); // nothing checked
    }
};

QTEST_APPLESS_MAIN(TestValues)
#include "tst_values.moc"
