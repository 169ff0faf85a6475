#include "simulator/module.h"
#include "simulator/module_dump.h"

#include <QTemporaryDir>
#include <QtTest>

using k7::Flash;
using k7::Layout;
using k7::Link;
using k7::Module;
using k7::ModuleSettings;

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

const QByteArray acknowledged = hex("5AA503824F4B");
const QByteArray heard = hex("5AA503804F4B");
const ModuleSettings otherFormat{{0x12, 0x34, true}};

/// A module that keeps the lines of its trace.
struct TracedModule : Module
{
    explicit TracedModule(const ModuleSettings &settings = ModuleSettings()) : Module(settings)
    {
        setTrace([this](const QString &line) { lines.append(line); });
    }
    QByteArray uart(const QByteArray &bytes, qint64 now = 0)
    {
        return receive(Link::Uart2, bytes, now).join();
    }
    QByteArray ed2(const QByteArray &bytes, qint64 now = 0)
    {
        return receive(Link::Ed2, bytes, now).join();
    }
    /// Sends `words` words `value` to VP 0x8000, as many in a frame as the downloads do.
    void stage(int words, int address = 0x8000, char value = '\x11')
    {
        for (int count = qMin(64, words); words > 0; words -= count, address += count) {
            count = qMin(64, words);
            uart(hex("5AA5") + char(3 + 2 * count) + '\x82' + char(address >> 8) +
                 char(address & 0xFF) + QByteArray(2 * count, value));
        }
    }
    quint16 crcOfPicture(int number)
    {
        uart(hex("5AA5 07 82 00E0 5A01 00") + char(number) + hex("5AA5 04 83 00E0 02"));
        return vp(0xE1);
    }

    QStringList lines;
};

} // namespace

class ModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void framesAreAnswered()
    {
        const struct
        {
            const char *frames, *replies, *lastLine;
        } rows[] = {
            {"5AA5 04 83 FFFF 02", "5AA5 06 83 FFFF 01 0000", "read VP 0xFFFF, 1 word"},
            {"5AA5 06 82 1000 1234 56 5AA5 04 83 1000 02",
             "5AA5 03 82 4F4B 5AA5 08 83 1000 02 1234 0000", "read VP 0x1000, 2 words"},
            {"5AA5 07 82 FFFF 1111 2222", "5AA5 03 82 4F4B", "write VP 0xFFFF, 1 word"},
            {"5AA5 05 80 01 FF 77 88 5AA5 04 81 01 FF 02",
             "5AA5 03 80 4F4B 5AA5 06 81 01 FF 02 77 00",
             "read registers, page 1, address 0xFF, 2 bytes"},
            {"5AA5 05 80 08 FF 33 44 5AA5 04 81 09 00 01", "5AA5 03 80 4F4B 5AA5 05 81 09 00 01 00",
             "read registers, page 9, address 0x00, 1 byte"},
            {"5AA5 0C 84 09 0001 0101 0002 0102 0003", "", "curves, mask 0x09, 5 samples"},
            {"5AA5 03 83 000F 5AA5 02 82 10 5AA5 03 42 0000 5AA5 00 A5 5A 4F4B 5A 5AA5 03 82 1000",
             "5AA5 03 82 4F4B", "write VP 0x1000, 0 words"},
            {"5AA5 07 82 0004 55AA 5AA5", "5AA5 03 82 4F4B", "write VP 0x0004, 2 words: K7 resets"},
            {"5AA5 04 8F 0000 A0 5AA5 07 82 0004 55AA 5A5A", "5AA5 03 8F 4F4B 5AA5 03 82 4F4B",
             "write VP 0x0004, 2 words: system restarts"},
            {"5AA5 0B 82 0082 0001 0002 5A01 0009", "5AA5 03 82 4F4B",
             "write VP 0x0082, 4 words: shows page 9"},
            // Half a command is data.
            {"5AA5 07 82 0004 55AB 5AA5", "5AA5 03 82 4F4B", "write VP 0x0004, 2 words"},
        };
        for (const auto &row : rows) {
            const QByteArray frames = hex(row.frames);
            for (int cut = 0; cut <= frames.size(); ++cut) {
                TracedModule module;
                const QByteArray first = module.uart(frames.left(cut));
                QCOMPARE((first + module.uart(frames.mid(cut))).toHex(), hex(row.replies).toHex());
                QCOMPARE(module.lines.last(), QString("UART2 ") + row.lastLine);
            }
        }
        QCOMPARE(TracedModule().uart(hex("5AA5 04 83 8000 FF")).size(), 257); // what fits
    }

    void crcDecidesWhetherAFrameCounts()
    {
        const QByteArray good = hex("1234 06 83 000F 01 ED90");
        const QByteArray reply = hex("1234 08 83 000F 01 4521 BFB4");
        const std::pair<QByteArray, QByteArray> rows[] = {
            {hex("1234 06 83 000F 01 ED91") + good, reply},
            {hex("1234 06 83 000F 01 90ED"), {}},
            {hex("1234 02 FFFF 1234 09 83 00") + good, reply},
        };
        for (const auto &[frames, replies] : rows)
            QCOMPARE(TracedModule(otherFormat).uart(frames).toHex(), replies.toHex());
        // ED2 knows neither the header bytes nor the CRC, and replies with the header bytes.
        QCOMPARE(TracedModule(otherFormat).ed2(hex("5AA5 04 80 F3 5A 20")), hex("1234 03 80 4F4B"));
    }

    void whatTheToolNeverSendsIsRefused()
    {
        const char *memory = "5AA5 0B 82 00A2 5A80 0000 7800 0000";
        const char *page = "5AA5 0B 82 00A2 5AA5 8000 0007 0000";
        const char *unit = "5AA5 0F 82 00AA 5A02 0018 8000 0001 0000 0000";
        const char *words = "5AA5 0F 82 00AA 5A02 0301 4000 8000 4000 0000";
        const struct
        {
            int layout, stagedWords;
            const char *frame, *reason; // none: it is done
        } rows[] = {
            {1, 0, "5AA5 07 82 0004 55AA 5A5A", "not announced"},
            {1, 1, memory, ""},
            {3, 1, memory, ""},
            {2, 1, memory, "another layout"},
            {1, 0, memory, "nothing is staged"},
            {1, 1, "5AA5 0B 82 00A2 5A80 0000 77FF FFFF", "no such word"},
            {1, 1, "5AA5 0B 82 00A2 5A80 0000 7A00 0000", "no such word"},
            {2, 4096, page, ""},
            {1, 4096, page, "another layout"},
            {2, 4032, page, "not staged"},
            {2, 4096, "5AA5 0B 82 00A2 5AA5 7FFF 0007 0000", "not staged"},
            {2, 4096, "5AA5 0B 82 00A2 5AA5 8000 0007 2000", "no such chunk"},
            {1, 0x4000, unit, ""},
            {1, 0x3FC0, unit, "not staged"},
            {2, 0x4000, unit, "another layout"},
            {1, 0x4000, "5AA5 0F 82 00AA 5A02 0800 8000 0001 0000 0000", "no such unit"},
            {2, 0x4000, words, ""},
            {1, 0x4000, words, "another layout"},
            {3, 0x4000, "5AA5 0F 82 00AA 5A02 FF02 0000 8000 4000 0000", "no such unit"},
        };
        for (const auto &row : rows) {
            ModuleSettings settings;
            settings.layout = static_cast<Layout>(row.layout - 1);
            TracedModule module(settings);
            module.stage(row.stagedWords);
            const bool isDone = *row.reason == '\0';
            const QByteArray frame = hex(row.frame);
            QCOMPARE(module.uart(frame), isDone ? acknowledged : QByteArray());
            QCOMPARE(module.lines.last().contains(" refused: "), !isDone);
            QVERIFY2(module.lines.last().contains(row.reason), row.frame);
            QCOMPARE(module.vp(static_cast<quint8>(frame.at(5))) == 0, !isDone);
            // What was moved is not staged any more; only the same command may come again.
            QCOMPARE(module.uart(frame), isDone ? acknowledged : QByteArray());
            QCOMPARE(module.lines.last().contains("already"), isDone);
        }
        for (const char *handshake :
             {"5AA5 04 80 F3 5B 20", "5AA5 03 80 F3 5A", "5AA5 05 80 F3 5A 20 00",
              "5AA5 06 80 F5 5A 01 01 07", "5AA5 06 80 F5 5A 00 00 07", "5AA5 06 80 F5 A5 01 00 07",
              "5AA5 04 80 F5 5A 07"}) {
            TracedModule module;
            QCOMPARE(module.ed2(hex(handshake)), QByteArray());
            QVERIFY2(module.lines.last().contains(" refused: "), handshake);
            QCOMPARE(module.ed2(hex("5AA5 06 80 F5 5A 01 00 07")), heard);
        }
    }

    void fullBlocksEndWhereverTheReadEnds()
    {
        const QByteArray block(Flash::blockBytes, '\x5A');
        const QByteArray stream =
            hex("5AA5 04 80 F3 5A 20") + block + hex("5AA5 04 80 F3 5A 21") + "next";
        for (const int pieceBytes : {1000, Flash::blockBytes + 7, stream.size()}) {
            TracedModule module;
            QByteArray replies;
            for (int i = 0; i < stream.size(); i += pieceBytes)
                replies += module.ed2(stream.mid(i, pieceBytes));
            QCOMPARE(replies, heard + heard);
            QVERIFY(module.flash().read(0x20 * Flash::blockBytes, block.size()) == block);
            QCOMPARE(module.flash().read(0x21 * Flash::blockBytes, 5), QByteArray("next\xFF"));
        }
    }

    void silenceEndsFramesAndBlocks()
    {
        TracedModule module;
        const QByteArray question = hex("5AA5 03 82 1000");
        module.uart(hex("5AA5 FF 82"), 1000);
        QCOMPARE(module.uart(question, 1000 + Module::frameSilence - 1), QByteArray());
        QCOMPARE(module.uart(question, 2000), acknowledged);
        // A handshake within a picture is part of it; behind a silence it is the next one.
        const QByteArray handshake = hex("5AA5 06 80 F5 5A 01 00 07");
        const int end = Module::blockPatience + 100;
        QCOMPARE(module.ed2(handshake, 0), heard);
        QCOMPARE(module.ed2(handshake, Module::blockPatience - 1), QByteArray());
        QCOMPARE(module.ed2("ab", end), QByteArray()); // however late
        QCOMPARE(module.pictures().value(7), handshake + "ab");
        QCOMPARE(module.ed2(handshake, end + Module::blockSilence), heard);
        // Nothing at all came: the picture is empty.
        QCOMPARE(module.ed2(hex("5AA5 06 80 F5 5A 01 00 08"), 5000), heard);
        QCOMPARE(module.pictures(), (QMap<int, QByteArray>{{7, {}}, {8, {}}}));
    }

    void bytesAreLostWhileTheFlashIsProgrammed()
    {
        const QByteArray handshake = hex("5AA5 04 80 F3 5A 20");
        const QByteArray question = hex("5AA5 03 82 1000");
        for (const bool takesTime : {true, false}) {
            TracedModule module;
            module.setProgrammingTakesTime(takesTime);
            // A short block is programmed from its last byte on, which silence tells later.
            for (const QByteArray &block : {QByteArray(Flash::blockBytes, 'x'), QByteArray("ab")}) {
                module.dropUnfinishedFrames();
                module.ed2(handshake + block, 1000);
                QCOMPARE(module.ed2(handshake, 1000 + Module::blockProgramming - 1),
                         takesTime ? QByteArray() : heard);
            }
            module.dropUnfinishedFrames();
            module.stage(0x4000);
            module.uart(hex("5AA5 0F 82 00AA 5A02 0018 8000 0001 0000 0000"), 2000);
            QCOMPARE(module.uart(question, 2000 + Module::unitProgramming - 1),
                     takesTime ? QByteArray() : acknowledged);
            QCOMPARE(module.uart(question, 2000 + Module::unitProgramming), acknowledged);
            QCOMPARE(module.lines.filter("loses bytes").size(), takesTime ? 3 : 0);
        }
    }

    void pagesEndWithTheScreenOrTheLastPixel()
    {
        for (const int screenWords : {3000, 4000}) {
            ModuleSettings settings;
            settings.layout = Layout::K7uid2;
            settings.screen = {screenWords, 1};
            TracedModule module(settings);
            module.stage(3520);
            module.stage(4096 - 3520, 0x8000 + 3520, '\0'); // what fills the chunk
            module.uart(hex("5AA5 0B 82 00A2 5AA5 8000 0007 0000"));
            const QByteArray pixels(2 * 3520, '\x11');
            module.setPicture(8, pixels.leftJustified(2 * screenWords, '\0'));
            QCOMPARE(module.crcOfPicture(7), module.crcOfPicture(8));
        }
    }

    void memoriesEndWhereTheyEnd()
    {
        const std::array<int, 3> rows[] = {{Flash::bytes - 1, 4, 1}, {Flash::bytes, 4, 0},
                                           {INT_MAX, INT_MAX, 0},    {-1, 4, 0},
                                           {INT_MIN, 4, 0},          {0, -1, 0}};
        for (const auto &[offset, count, available] : rows) {
            Flash flash;
            flash.write(offset, "abcd");
            QCOMPARE(flash.read(offset, count), QByteArray("abcd").left(available));
        }
        TracedModule module;
        module.setVp(0x3000, 0xCAFE);
        module.uart(hex("5AA5 0B 82 0008 A501 2345 3000 0001"));
        module.uart(hex("5AA5 0B 82 0008 5A01 2344 FFFE FFFF"));
        QCOMPARE(module.vp(0xFFFE), quint16{0xFFFF});
        QCOMPARE(module.vp(0xFFFF), quint16{0xCAFE});
        QCOMPARE(module.vp(0x0000), quint16{0x0123});
        module.uart((hex("5AA5 FE 84 01") + QByteArray(252, '\0')).repeated(600));
        QCOMPARE(module.curve(0).size(), Module::maxCurveSamples);
        QCOMPARE(module.curve(-1).size() + module.curve(8).size(), 0);
    }

    void dumpHoldsTheMemory()
    {
        QTemporaryDir folder;
        TracedModule module;
        module.uart(hex("5AA5 06 84 02 0102 FFFF 5AA5 0B 82 0008 A502 0000 0000 0001"));
        QVERIFY(k7::dump(module, folder.filePath("new/folder")));
        const QDir dumped(folder.filePath("new/folder"));
        QCOMPARE(dumped.entryList(QDir::Files, QDir::Name),
                 QStringList({"curve_1.txt", "flash_001.bin", "registers.bin", "vp.bin"}));
        QFile flash(dumped.filePath("flash_001.bin"));
        QVERIFY(flash.open(QIODevice::ReadOnly));
        QCOMPARE(flash.readAll(), hex("0123") + QByteArray(Flash::blockBytes - 2, '\xFF'));
    }
};

QTEST_GUILESS_MAIN(ModuleTest)
#include "tst_module.moc"
