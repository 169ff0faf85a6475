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
        // The link knows only some of the offered rates; waits are computed from the chosen one.
        QCOMPARE(linkRate(9600), 9600);
        QCOMPARE(linkRate(6250000), 6250000);
        QCOMPARE(linkRate(921600), 115200);
        QCOMPARE(waitRate(921600), 921600);
        QCOMPARE(waitRate(0), 115200);
        QCOMPARE(waitRate(-9600), 115200);
    }

    void hexTextBecomesBytes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("odd digits") << "1 23" << true << QByteArray("\x01\x23");
        QTest::newRow("both cases") << "aBCd eF" << true << QByteArray("\xAB\xCD\xEF");
        QTest::newRow("empty") << " " << true << QByteArray();
        QTest::newRow("no digit") << "12 3g" << false << QByteArray();
        QTest::newRow("tab") << "12\t34" << false << QByteArray();
        QTest::newRow("full-width digit") << QString("1２") << false << QByteArray();
    }

    void hexTextBecomesBytes()
    {
        QFETCH(const QString, text);
        QFETCH(const bool, valid);
        QFETCH(const QByteArray, bytes);
        const auto result = dataText::toBytes(text, true);
        QCOMPARE(result.has_value(), valid);
        QCOMPARE(result.value_or(QByteArray()), bytes);
    }

    void plainTextStaysAsItIs() { QCOMPARE(*dataText::toBytes("1 2g", false), QByteArray("1 2g")); }

    void wordsNeedAnEvenNumberOfBytes()
    {
        QCOMPARE(*dataText::toWords("00 10 00 20", true), (QVector<quint16>{0x10, 0x20}));
        QVERIFY(!dataText::toWords("AB", true));
        QVERIFY(!dataText::toWords("x", true));
        QCOMPARE(*dataText::toWords("AB", false), QVector<quint16>{0x4142});
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
        const quint16 id[] = {0x0123, 0x4567, 0x89AB, 0xCDEF};
        for (quint16 i = 0; i < 4; ++i)
            mirrors.setVp(i, id[i]);
        QCOMPARE(deviceValues::deviceIdText(mirrors), QString("0123456789abcdef"));
        mirrors.setVp(0x0F, 0x4521);
        QCOMPARE(deviceValues::versionText(mirrors), QString("GUI:V4.5 OS:V2.1"));
        mirrors.setVp(0x30, 0x8000);
        QCOMPARE(deviceValues::millivolts(mirrors), 2400);
        mirrors.setVp(0x30, 0xFFFF);
        QCOMPARE(deviceValues::millivolts(mirrors), 4800);
        const quint16 name[] = {0x4142, 0x4344, 0x0046, 0x4748};
        for (quint16 i = 0; i < 4; ++i)
            mirrors.setVp(static_cast<quint16>(0x7C + i), name[i]);
        QCOMPARE(deviceValues::sdNameText(mirrors), QString("ABCD"));
        mirrors.setVp(0x7E, 0x4546);
        QCOMPARE(deviceValues::sdNameText(mirrors), QString("ABCDEFGH"));
    }

    void configWordTakesTheFourGroups_data()
    {
        QTest::addColumn<int>("sd");
        QTest::addColumn<int>("voice");
        QTest::addColumn<int>("light");
        QTest::addColumn<int>("direction");
        QTest::addColumn<int>("word");
        QTest::newRow("nothing") << 0 << 0 << 0 << 0 << 0;
        QTest::newRow("SD") << 1 << 0 << 0 << 0 << 0x10;
        QTest::newRow("all at 270 degrees") << 1 << 1 << 1 << 3 << 0x1F;
        QTest::newRow("nothing checked") << -1 << -1 << -1 << -1 << 0xFFFF;
    }

    void configWordTakesTheFourGroups()
    {
        QFETCH(const int, sd);
        QFETCH(const int, voice);
        QFETCH(const int, light);
        QFETCH(const int, direction);
        QTEST(int(deviceValues::configWord(sd, voice, light, direction)), "word");
    }

    void devicePathsArePrefixedAboveNine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("path");
        QTest::newRow("COM9") << "COM9"
                              << "COM9";
        QTest::newRow("COM10") << "COM10"
                               << R"(\\.\COM10)";
        QTest::newRow("no number") << "ttyUSB12"
                                   << "ttyUSB12";
        QTest::newRow("a path") << "/dev/pts/12"
                                << "/dev/pts/12";
        QTest::newRow("a path with a number at once") << "/de12"
                                                      << "/de12";
        QTest::newRow("Refresh") << "Refresh"
                                 << "Refresh";
    }

    void devicePathsArePrefixedAboveNine()
    {
        QFETCH(const QString, name);
        QTEST(devicePath(name), "path");
    }

    void ratesFallBackTo115200_data()
    {
        QTest::addColumn<int>("chosen");
        QTest::addColumn<int>("rate");
        for (const int rate :
             {1200, 2400, 4800, 9600, 19200, 38400, 56000, 57600, 115200, 128000, 6250000})
            QTest::addRow("%d", rate) << rate << rate;
        for (const int rate : {0, -1, 110, 230400, 460800, 921600, 6250001})
            QTest::addRow("%d", rate) << rate << 115200;
    }

    void ratesFallBackTo115200()
    {
        QFETCH(const int, chosen);
        FakeLink link;
        applyToLink({"COM12", chosen, 0, 0, false}, link);
        QTEST(link.rate, "rate");
        QCOMPARE(link.name, QString(R"(\\.\COM12)"));
    }
};

QTEST_APPLESS_MAIN(TestValues)
#include "tst_values.moc"
