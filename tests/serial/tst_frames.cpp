#include "serial/frame_builder.h"
#include "serial/modbus_crc16.h"
#include "support/plain_crc.h"

#include <QtTest>

#include <memory>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

/// Frames with the usual header.
std::unique_ptr<FrameBuilder> builder(bool crc = false)
{
    auto frames = std::make_unique<FrameBuilder>();
    frames->setHeader(0x5A, 0xA5, crc);
    return frames;
}

} // namespace

class TestFrames : public QObject
{
    Q_OBJECT

private slots:
    void crcMatchesItsDefinition()
    {
        QCOMPARE(ModbusCrc16::of("123456789"), quint16(0x4B37));
        QByteArray bytes;
        for (int i = 0; i < 600; ++i) {
            QCOMPARE(ModbusCrc16::of(bytes), plainCrc(bytes));
            bytes.append(static_cast<char>(i * 37 + i / 256));
        }
    }

    void crcIsAppendedLowByteFirst()
    {
        QCOMPARE(ModbusCrc16::appendedTo("###123456789", 3), "###123456789" + hex("374B"));
        QCOMPARE(ModbusCrc16::appendedTo("###", 3), QByteArray("###"));
        // The length counts it, it does not count the length.
        QCOMPARE(builder(true)->buildReadVpFrame(0x1000, 1),
                 ModbusCrc16::appendedTo(hex("5AA5 06 83 1000 01"), 3));
    }

    void framesAreBuilt()
    {
        const auto frames = builder();
        QCOMPARE(frames->buildReadVpFrame(0xFFFF, 1), hex("5AA5 04 83 FFFF 01"));
        QCOMPARE(frames->buildReadRegisterFrame(2, 0xFE, 3), hex("5AA5 04 81 02FE 03"));
        frames->setCmd8FArgument(0xA0);
        QCOMPARE(frames->buildCmd8FFrame(), hex("5AA5 04 8F 0000 A0"));
        // Words beyond the memory are zero.
        frames->setVp(0xFFFF, 0x1234);
        frames->setVp(0x0000, 0x5678);
        QCOMPARE(frames->buildWriteVpFrame(0xFFFF, 2), hex("5AA5 07 82 FFFF 1234 0000"));
        // Registers go on in the next page; beyond the last they are zero.
        for (int i = 0; i < 10; ++i)
            frames->setRegister(i < 6 ? 1 : 2, 250 + i, static_cast<quint8>(0xA0 + i));
        QCOMPARE(frames->buildWriteRegisterFrame(1, 250, 10),
                 hex("5AA5 0D 80 01FA A0A1A2A3A4A5A6A7A8A9"));
        frames->setRegister(8, 255, 0x77);
        QCOMPARE(frames->buildWriteRegisterFrame(8, 255, 3), hex("5AA5 06 80 08FF 770000"));
        QCOMPARE(frames->buildWriteRegisterFrame(255, 255, 2), hex("5AA5 05 80 FFFF 0000"));
        frames->setHeader(0x12, 0x34, false);
        QCOMPARE(frames->buildReadVpFrame(0x000F, 1), hex("1234 04 83 000F 01"));
    }

    void curvesTakeTurnsAsLongAsAllHaveSamples()
    {
        const auto frames = builder();
        QCOMPARE(frames->buildCurveFrame(), hex("5AA5 02 84 00"));
        frames->setCurveSamples(0, {1, 2});
        frames->setCurveSamples(3, {0x1122, 0x3344, 5});
        frames->setCurveSamples(4, {9, 9});
        frames->setCurveSamples(8, {1});
        frames->setCurveChannelMask(0x09);
        for (int i = 0; i < 2; ++i) // the samples stay
            QCOMPARE(frames->buildCurveFrame(), hex("5AA5 0A 84 09 0001 1122 0002 3344"));
    }

    void longestFramesKeepTheirLengthByte()
    {
        for (const bool crc : {false, true}) {
            const auto frames = builder(crc);
            const auto words = static_cast<quint8>(frames->maxDataBytes() / 2);
            const QByteArray frame = frames->buildWriteVpFrame(0x8000, words);
            QCOMPARE(frame.size(), 258);
            QCOMPARE(frame.at(2), '\xFF');
        }
    }

    void registersOutsideTheTableAreIgnoredAndReadAsZero()
    {
        const auto frames = builder();
        frames->setRegister(9, 0, 0x11);
        frames->setRegister(0x101, 0x102, 0x22);
        QCOMPARE(frames->registerAt(9, 0), quint8(0));
        QCOMPARE(frames->vpAt(0), quint16(0)); // which stands behind the table
        QCOMPARE(frames->registerAt(0, -1), quint8(0));
        QCOMPARE(frames->registerAt(1, 2), quint8(0x22));
    }
};

QTEST_APPLESS_MAIN(TestFrames)
#include "tst_frames.moc"
