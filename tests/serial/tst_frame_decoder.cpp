#include "engine/traffic_log.h"
#include "serial/frame_decoder.h"

#include <QtTest>

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace

class TestFrameDecoder : public QObject
{
    Q_OBJECT

private slots:
    void framesHaveMeanings()
    {
        const struct
        {
            FrameSender sender;
            const char *frame;
            const char *meaning;
        } cases[] = {
            {FrameSender::Tool, "5AA50483000F01", "read VP 0x000F, 1 word (version)"},
            {FrameSender::Module, "5AA50683000F014521", "holds VP 0x000F, 1 word (version)"},
            {FrameSender::Tool, "5AA507 82 0004 55AA5AA5", "write VP 0x0004, 2 words (reset)"},
            {FrameSender::Module, "5AA503 82 4F4B", "acknowledgement of a write"},
            {FrameSender::Module, "5AA504 80 4F4B00", "acknowledgement of a write"},
            {FrameSender::Module, "5AA503 82 4E4B", "answer to a write, but no OK"},
            {FrameSender::Tool, "5AA506 80 02FE 010203", "write register 0xFE of page 2, 3 bytes"},
            {FrameSender::Tool, "5AA504 81 02FE03", "read register 0xFE of page 2, 3 bytes"},
            {FrameSender::Module, "5AA507 81 02FE03 010203",
             "holds register 0xFE of page 2, 3 bytes"},
            {FrameSender::Module, "5AA506 83 1000 03 0102",
             "holds VP 0x1000, 3 words, of which 4 bytes did not come"},
            {FrameSender::Module, "5AA507 83 1000 01 010203",
             "holds VP 0x1000, 1 word, and 1 byte more"},
            {FrameSender::Tool, "5AA50A 84 09 000100020003 0004",
             "curve of 2 channels (0, 3), 2 samples each"},
            {FrameSender::Tool, "5AA502 84 00", "curve of no channel"},
            {FrameSender::Tool, "5AA504 8F 0000A0", "system command 0xA0"},
            {FrameSender::Module, "5AA503 8F 4F4B", "acknowledgement of a system command"},
            {FrameSender::Tool, "5AA504 80 F35A07", "announces flash block 7"},
            {FrameSender::Tool, "5AA506 80 F55A010123", "announces picture 291"},
            {FrameSender::Tool, "5AA503 83 1000", "cut-off frame of command 0x83"},
            {FrameSender::Module, "5AA501 99", "unknown command 0x99"},
            {FrameSender::Module, "5AA500", "empty frame"},
        };
        for (const auto &c : cases) {
            FrameDecoder decoder(c.sender);
            const auto found = decoder.take(hex(c.frame));
            QCOMPARE(found.size(), 1);
            QCOMPARE(found.first().meaning, QString(c.meaning));
            QCOMPARE(found.first().bytes, hex(c.frame));
        }
    }

    void crcIsLookedAt()
    {
        // Over 83 1000 01.
        const auto meaning = [](const char *frame, FrameSender sender) {
            return frameMeaning(hex(frame), sender, true);
        };
        QCOMPARE(meaning("5AA506 83 1000 01 8540", FrameSender::Tool),
                 QString("read VP 0x1000, 1 word, wrong CRC"));
        QCOMPARE(meaning("5AA503 82 4F4B", FrameSender::Module),
                 QString("acknowledgement of a write, no right CRC"));
        // As the module computes it, independent of the tool: the check value over 1 to 9.
        QCOMPARE(meaning("5AA50B 31323334 3536373839 374B", FrameSender::Tool),
                 QString("unknown command 0x31"));
    }

    void cutsDoNotMatter()
    {
        const QByteArray stream = hex("00 5A 01 5AA5 03 82 4F4B 4F4B 5A5A A5 04 83 000F 01 5A");
        for (int cut = 0; cut <= stream.size(); ++cut) {
            FrameDecoder decoder(FrameSender::Module, {});
            QStringList meanings;
            QByteArray bytes;
            const auto add = [&](const QVector<DecodedFrame> &found) {
                for (const DecodedFrame &frame : found) {
                    meanings.append(frame.meaning);
                    bytes += frame.bytes;
                }
            };
            add(decoder.take(stream.left(cut)));
            add(decoder.take(stream.mid(cut)));
            add(decoder.takeRest());
            QCOMPARE(meanings.join('|'),
                     QString("garbage, 3 bytes|acknowledgement of a write|garbage, 3 bytes, an "
                             "acknowledgement in it|holds VP 0x000F, 1 word (version), of which 2 "
                             "bytes did not come|garbage, 1 byte"));
            QCOMPARE(bytes, stream);
        }
    }

    void restIsNamed()
    {
        FrameDecoder decoder(FrameSender::Module, {0x11, 0x22, false});
        QVERIFY(decoder.take(hex("5AA5 4F4B 11")).isEmpty());
        QCOMPARE(decoder.takeGarbage().size(), 1);
        QVERIFY(decoder.take(hex("22 05")).isEmpty());
        QCOMPARE(decoder.takeRest().first().meaning, QString("unfinished frame, 3 bytes"));
        QCOMPARE(decoder.waiting(), 0);
        QVERIFY(decoder.take("OK").isEmpty());
        QCOMPARE(decoder.takeRest().first().meaning, QString("acknowledgement without a frame"));
        // Garbage without an end does not gather.
        QCOMPARE(decoder.take(QByteArray(FrameDecoder::maxGarbage, 'x')).size(), 1);
    }

    void savedLogTellsTheMeaning()
    {
        TrafficLog log;
        const auto sent = TrafficLog::Direction::Sent;
        const auto received = TrafficLog::Direction::Received;
        log.add(sent, "abc");
        log.add(received, hex("00 5AA50683"));
        log.add(received, hex("000F014521 5AA5038F4F4B"));
        log.setFormat({0x11, 0x22, true});
        log.add(received, hex("1122 03 82 4F4B"));
        QStringList meanings;
        for (const QString &line : log.record().split('\n', Qt::SkipEmptyParts))
            meanings.append(line.section("  ", 1));
        QCOMPARE(meanings,
                 (QStringList{"no frame, 3 bytes", "garbage, 1 byte; beginning of a frame",
                              "holds VP 0x000F, 1 word (version); acknowledgement of a system "
                              "command",
                              "acknowledgement of a write, no right CRC"}));
    }
};

QTEST_GUILESS_MAIN(TestFrameDecoder)
#include "tst_frame_decoder.moc"
