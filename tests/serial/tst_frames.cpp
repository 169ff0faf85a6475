#include "serial/frame_builder.h"
#include "serial/modbus_crc16.h"

#include <QtTest>

#include <functional>
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

/// The definition of the CRC, bit by bit.
quint16 bitwiseCrc(const QByteArray &bytes)
{
    unsigned crc = 0xFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1U) != 0 ? (crc >> 1) ^ 0xA001U : crc >> 1;
    }
    return static_cast<quint16>(crc);
}

} // namespace

using Build = std::function<QByteArray(FrameBuilder &)>;
Q_DECLARE_METATYPE(Build)

class TestFrames : public QObject
{
    Q_OBJECT

private slots:
    void crcMatchesItsDefinition()
    {
        QCOMPARE(ModbusCrc16::of("123456789"), quint16(0x4B37));
        QByteArray bytes;
        for (int i = 0; i < 600; ++i) {
            QCOMPARE(ModbusCrc16::of(bytes), bitwiseCrc(bytes));
            bytes.append(static_cast<char>(i * 37 + i / 256));
        }
    }

    void crcIsAppendedLowByteFirst()
    {
        QCOMPARE(ModbusCrc16::appendedTo("###123456789", 3), "###123456789" + hex("374B"));
        QCOMPARE(ModbusCrc16::appendedTo("###", 3), QByteArray("###"));
    }

    void framesAreBuilt_data()
    {
        QTest::addColumn<Build>("build");
        QTest::addColumn<QByteArray>("frame");

        QTest::newRow("read one word at VP 0x1000")
            << Build([](FrameBuilder &b) { return b.buildReadVpFrame(0x1000, 1); })
            << hex("5AA5 04 83 1000 01");
        QTest::newRow("read at the last VP address")
            << Build([](FrameBuilder &b) { return b.buildReadVpFrame(0xFFFF, 1); })
            << hex("5AA5 04 83 FFFF 01");
        QTest::newRow("read registers")
            << Build([](FrameBuilder &b) { return b.buildReadRegisterFrame(2, 0xFE, 3); })
            << hex("5AA5 04 81 02FE 03");
        QTest::newRow("reset words") << Build([](FrameBuilder &b) {
            b.setVp(0x04, 0x55AA);
            b.setVp(0x05, 0x5AA5);
            return b.buildWriteVpFrame(0x04, 2);
        }) << hex("5AA5 07 82 0004 55AA 5AA5");
        QTest::newRow("other header") << Build([](FrameBuilder &b) {
            b.setHeader(0x12, 0x34, false);
            return b.buildReadVpFrame(0x000F, 1);
        }) << hex("1234 04 83 000F 01");
        QTest::newRow("registers that go on in the next page") << Build([](FrameBuilder &b) {
            for (int i = 0; i < 10; ++i)
                b.setRegister(i < 6 ? 1 : 2, 250 + i, static_cast<quint8>(0xA0 + i));
            return b.buildWriteRegisterFrame(1, 250, 10);
        }) << hex("5AA5 0D 80 01FA A0A1A2A3A4A5A6A7A8A9");
        QTest::newRow("registers beyond the last page") << Build([](FrameBuilder &b) {
            b.setRegister(8, 255, 0x77);
            return b.buildWriteRegisterFrame(8, 255, 3);
        }) << hex("5AA5 06 80 08FF 770000");
        QTest::newRow("a page that does not exist")
            << Build([](FrameBuilder &b) { return b.buildWriteRegisterFrame(255, 255, 2); })
            << hex("5AA5 05 80 FFFF 0000");
        QTest::newRow("no registers at all")
            << Build([](FrameBuilder &b) { return b.buildWriteRegisterFrame(0, 0, 0); })
            << hex("5AA5 03 80 0000");
        QTest::newRow("curve, as long as both channels have samples") << Build([](FrameBuilder &b) {
            b.setCurveSamples(0, {1, 2, 3, 4, 5});
            b.setCurveSamples(3, {0x1122, 0x3344});
            b.setCurveSamples(4, {9, 9});
            b.setCurveChannelMask(0x09);
            return b.buildCurveFrame();
        }) << hex("5AA5 0A 84 09 0001 1122 0002 3344");
        QTest::newRow("curve without channels")
            << Build([](FrameBuilder &b) { return b.buildCurveFrame(); }) << hex("5AA5 02 84 00");
        QTest::newRow("system command") << Build([](FrameBuilder &b) {
            b.setCmd8FArgument(0xA0);
            return b.buildCmd8FFrame();
        }) << hex("5AA5 04 8F 0000 A0");
    }

    void framesAreBuilt()
    {
        QFETCH(const Build, build);
        QFETCH(const QByteArray, frame);
        QCOMPARE(build(*builder()).toHex(), frame.toHex());
    }

    void crcSwitchLengthensTheFrameByTwo()
    {
        const QByteArray body = hex("83 1000 01");
        const quint16 crc = bitwiseCrc(body);
        QByteArray expected = hex("5AA5 06") + body;
        expected.append(static_cast<char>(crc & 0xFF)).append(static_cast<char>(crc >> 8));
        QCOMPARE(builder(true)->buildReadVpFrame(0x1000, 1), expected);
    }

    void longestFramesKeepTheirLengthByte_data()
    {
        QTest::addColumn<bool>("crc");
        QTest::addColumn<int>("size");
        QTest::newRow("without CRC") << false << 258;
        QTest::newRow("with CRC") << true << 258;
    }

    void longestFramesKeepTheirLengthByte()
    {
        QFETCH(const bool, crc);
        QFETCH(const int, size);
        const auto frames = builder(crc);
        const auto words = static_cast<quint8>(frames->maxDataBytes() / 2);
        const QByteArray frame = frames->buildWriteVpFrame(0x8000, words);
        QCOMPARE(frame.size(), size);
        QCOMPARE(static_cast<quint8>(frame.at(2)), quint8(size - 3));
    }

    void registersOutsideTheTableAreIgnoredAndReadAsZero()
    {
        const auto frames = builder();
        frames->setRegister(9, 0, 0x11);
        frames->setRegister(0x101, 0x102, 0x22);
        QCOMPARE(frames->registerAt(9, 0), quint8(0));
        QCOMPARE(frames->registerAt(0, -1), quint8(0));
        QCOMPARE(frames->registerAt(1, 2), quint8(0x22));
    }

    void wordsBeyondVpMemoryAreZero()
    {
        const auto frames = builder();
        frames->setVp(0xFFFF, 0x1234);
        frames->setVp(0x0000, 0x5678);
        QCOMPARE(frames->buildWriteVpFrame(0xFFFF, 2).toHex(), QByteArray("5aa50782ffff12340000"));
    }

    void curveQueuesStayAfterBuilding()
    {
        const auto frames = builder();
        frames->setCurveSamples(7, {0xABCD});
        frames->setCurveSamples(8, {1});
        frames->setCurveChannelMask(0x80);
        QCOMPARE(frames->buildCurveFrame().toHex(), QByteArray("5aa5048480abcd"));
        QCOMPARE(frames->buildCurveFrame().toHex(), QByteArray("5aa5048480abcd"));
    }
};

QTEST_APPLESS_MAIN(TestFrames)
#include "tst_frames.moc"
