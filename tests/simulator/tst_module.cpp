#include "simulator/module.h"
#include "simulator/module_dump.h"

#include <QTemporaryDir>
#include <QtTest>

using k7::Flash;
using k7::FrameFormat;
using k7::Link;
using k7::Module;

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

constexpr FrameFormat crcFormat{0x5A, 0xA5, true};
constexpr FrameFormat otherHeader{0x12, 0x34, true};

} // namespace

class ModuleTest : public QObject
{
    Q_OBJECT

private slots:
    void framesAreAnswered_data();
    void framesAreAnswered();
    void framesAreFoundHoweverTheyAreCut();
    void crcDecidesWhetherAFrameCounts_data();
    void crcDecidesWhetherAFrameCounts();
    void ed2IgnoresTheConfiguredFormatButRepliesWithItsHeader();
    void promisedBytesAreWaitedFor();
    void unfinishedFramesCanBeDropped();
    void registersRunOnAcrossPagesAndEndWithTheLast();
    void vpBeyondTheEndIsDropped();
    void curveSamplesTakeTurnsAndTheOldestGo();
    void systemCommandIsRemembered();
    void vpCommandsAct_data();
    void vpCommandsAct();
    void resetClearsRegistersAndKeepsTheDevice();
    void halfACommandDoesNothing_data();
    void halfACommandDoesNothing();
    void norFlashKeepsWhatVpMemoryHeld();
    void norFlashMovesEndWithVpMemory();
    void flashEndsAtItsLastByte_data();
    void flashEndsAtItsLastByte();
    void flashRunsAcrossBlocks();
    void dumpHoldsTheMemory();
    void dumpFailsWhereNothingCanBeWritten();
};

void ModuleTest::framesAreAnswered_data()
{
    QTest::addColumn<QByteArray>("frames");
    QTest::addColumn<QByteArray>("replies");
    QTest::addColumn<QStringList>("lines");

    const auto row = [](const char *title, const char *frames, const char *replies,
                        const QStringList &lines) {
        QTest::newRow(title) << hex(frames) << hex(replies) << lines;
    };
    row("device ID", "5AA5 04 83 0000 04", "5AA5 0C 83 0000 04 0123 4567 89AB CDEF",
        {"UART2 read VP 0x0000, 4 words"});
    row("version", "5AA5 04 83 000F 01", "5AA5 06 83 000F 01 4521",
        {"UART2 read VP 0x000F, 1 word"});
    row("voltage", "5AA5 04 83 0030 01", "5AA5 06 83 0030 01 8000",
        {"UART2 read VP 0x0030, 1 word"});
    row("SD name", "5AA5 04 83 007C 04", "5AA5 0C 83 007C 04 5A4F 4C54 5F53 4554",
        {"UART2 read VP 0x007C, 4 words"});
    row("settings", "5AA5 04 83 0080 04", "5AA5 0C 83 0080 04 0000 0038 6414 003C",
        {"UART2 read VP 0x0080, 4 words"});
    row("no words", "5AA5 04 83 0000 00", "5AA5 04 83 0000 00", {"UART2 read VP 0x0000, 0 words"});
    row("last word of two", "5AA5 04 83 FFFF 02", "5AA5 06 83 FFFF 01 0000",
        {"UART2 read VP 0xFFFF, 1 word"});
    row("VP written and read", "5AA5 07 82 1000 1234 5678 5AA5 04 83 1000 02",
        "5AA5 03 82 4F4B 5AA5 08 83 1000 02 1234 5678",
        {"UART2 write VP 0x1000, 2 words", "UART2 read VP 0x1000, 2 words"});
    row("half a word is left out", "5AA5 06 82 1000 1234 56 5AA5 04 83 1000 02",
        "5AA5 03 82 4F4B 5AA5 08 83 1000 02 1234 0000",
        {"UART2 write VP 0x1000, 1 word", "UART2 read VP 0x1000, 2 words"});
    row("no words written", "5AA5 03 82 1000", "5AA5 03 82 4F4B",
        {"UART2 write VP 0x1000, 0 words"});
    row("registers written and read", "5AA5 05 80 02 10 AB CD 5AA5 04 81 02 10 03",
        "5AA5 03 80 4F4B 5AA5 07 81 02 10 03 AB CD 00",
        {"UART2 write registers, page 2, address 0x10, 2 bytes",
         "UART2 read registers, page 2, address 0x10, 3 bytes"});
    row("registers read past their page", "5AA5 05 80 01 FF 77 88 5AA5 04 81 01 FF 02",
        "5AA5 03 80 4F4B 5AA5 06 81 01 FF 02 77 00",
        {"UART2 write registers, page 1, address 0xFF, 2 bytes",
         "UART2 read registers, page 1, address 0xFF, 2 bytes"});
    row("registers of no page", "5AA5 04 81 FF FF 01", "5AA5 05 81 FF FF 01 00",
        {"UART2 read registers, page 255, address 0xFF, 1 byte"});
    row("system command", "5AA5 04 8F 0000 A0", "5AA5 03 8F 4F4B", {"UART2 system command 0xA0"});
    row("curves are not answered", "5AA5 04 84 01 0001", "", {"UART2 curves, mask 0x01, 1 sample"});
    row("unknown command", "5AA5 03 42 0000 5AA5 03 82 1000", "5AA5 03 82 4F4B",
        {"UART2 write VP 0x1000, 0 words"});
    row("too short for its command", "5AA5 03 83 000F 5AA5 02 82 10 5AA5 01 84", "", {});
    row("no command at all", "5AA5 00 5AA5 03 82 1000", "5AA5 03 82 4F4B",
        {"UART2 write VP 0x1000, 0 words"});
    row("garbage around", "A5 5A 00 4F4B 5A 5AA5 03 82 1000 A5A5", "5AA5 03 82 4F4B",
        {"UART2 write VP 0x1000, 0 words"});
}

void ModuleTest::framesAreAnswered()
{
    QFETCH(QByteArray, frames);
    QFETCH(QByteArray, replies);
    QFETCH(QStringList, lines);
    Module module;
    QStringList traced;
    module.setTrace([&traced](const QString &line) { traced.append(line); });
    QCOMPARE(module.receive(Link::Uart2, frames).join().toHex(), replies.toHex());
    QCOMPARE(traced, lines);
}

void ModuleTest::framesAreFoundHoweverTheyAreCut()
{
    const QByteArray stream = hex("00 5A 5AA5 05 82 1000 5AA5 FF 5AA5 04 83 1000 01");
    const QByteArray expected = hex("5AA5 03 82 4F4B 5AA5 06 83 1000 01 5AA5");
    for (int cut = 0; cut <= stream.size(); ++cut) {
        Module module;
        QByteArray replies = module.receive(Link::Uart2, stream.left(cut)).join();
        replies += module.receive(Link::Uart2, stream.mid(cut)).join();
        QCOMPARE(replies.toHex(), expected.toHex());
    }
    Module module;
    QByteArray replies;
    for (int i = 0; i < stream.size(); ++i)
        replies += module.receive(Link::Uart2, stream.mid(i, 1)).join();
    QCOMPARE(replies.toHex(), expected.toHex());
}

void ModuleTest::crcDecidesWhetherAFrameCounts_data()
{
    QTest::addColumn<QByteArray>("frames");
    QTest::addColumn<QByteArray>("replies");
    const QByteArray good = hex("5AA5 06 83 000F 01 ED90");
    const QByteArray reply = hex("5AA5 08 83 000F 01 4521 BFB4");
    QTest::newRow("right") << good << reply;
    QTest::newRow("write") << hex("5AA5 07 82 0005 0007 0DDD") << hex("5AA5 05 82 4F4B A5EF");
    QTest::newRow("wrong") << hex("5AA5 06 83 000F 01 ED91") << QByteArray();
    QTest::newRow("bytes swapped") << hex("5AA5 06 83 000F 01 90ED") << QByteArray();
    QTest::newRow("missing") << hex("5AA5 04 83 000F 01 0000") << QByteArray();
    QTest::newRow("nothing but a CRC") << hex("5AA5 02 FFFF") + good << reply;
    QTest::newRow("wrong before right") << hex("5AA5 06 83 000F 01 ED91") + good << reply;
    QTest::newRow("length too long") << hex("5AA5 09 83 00") + good << reply;
}

void ModuleTest::crcDecidesWhetherAFrameCounts()
{
    QFETCH(QByteArray, frames);
    QFETCH(QByteArray, replies);
    Module module(crcFormat);
    QCOMPARE(module.receive(Link::Uart2, frames).join().toHex(), replies.toHex());
}

void ModuleTest::ed2IgnoresTheConfiguredFormatButRepliesWithItsHeader()
{
    Module module(otherHeader);
    QCOMPARE(module.receive(Link::Ed2, hex("5AA5 04 80 F3 5A 20")).join().toHex(),
             QByteArray("123403804f4b"));
    QCOMPARE(module.registerAt(0, 0xF4), quint8{0x20});
    QCOMPARE(module.receive(Link::Ed2, hex("1234 04 80 F3 5A 20")).size(), 0);
    QCOMPARE(module.receive(Link::Ed2, hex("5AA5 04 83 0000 01")).size(), 0);
    QCOMPARE(module.receive(Link::Uart2, hex("1234 06 83 000F 01 ED90")).join().toHex(),
             QByteArray("12340883000f014521bfb4"));
}

void ModuleTest::promisedBytesAreWaitedFor()
{
    Module module;
    const QByteArray question = hex("5AA5 04 83 000F 01");
    QCOMPARE(module.receive(Link::Uart2, hex("5AA5 FF 42")).size(), 0);
    // 36 questions of 7 bytes and 2 more bytes are what the frame has promised.
    for (int i = 0; i < 36; ++i)
        QCOMPARE(module.receive(Link::Uart2, question).size(), 0);
    QCOMPARE(module.receive(Link::Uart2, hex("0000") + question).size(), 1);
}

void ModuleTest::unfinishedFramesCanBeDropped()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 FF 82"));
    module.receive(Link::Ed2, hex("5AA5 FF 80"));
    module.dropUnfinishedFrames();
    QCOMPARE(module.receive(Link::Uart2, hex("5AA5 03 82 1000")).size(), 1);
    QCOMPARE(module.receive(Link::Ed2, hex("5AA5 03 80 F3 5A")).size(), 1);
}

void ModuleTest::registersRunOnAcrossPagesAndEndWithTheLast()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 05 80 03 FF 11 22"));
    QCOMPARE(module.registerAt(3, 255), quint8{0x11});
    QCOMPARE(module.registerAt(4, 0), quint8{0x22});
    QCOMPARE(module.receive(Link::Uart2, hex("5AA5 05 80 08 FF 33 44")).size(), 1);
    QCOMPARE(module.registerAt(8, 255), quint8{0x33});
    QCOMPARE(module.receive(Link::Uart2, hex("5AA5 04 80 FF FF 55")).size(), 1);
    QCOMPARE(module.registerAt(9, 0), quint8{0});
    QCOMPARE(module.registerAt(-1, 256), quint8{0});
    QCOMPARE(module.registerAt(INT_MAX, INT_MAX), quint8{0});
}

void ModuleTest::vpBeyondTheEndIsDropped()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 07 82 FFFF 1111 2222"));
    QCOMPARE(module.vp(0xFFFF), quint16{0x1111});
    QCOMPARE(module.vp(0x0000), quint16{0x0123});

    const QByteArray all = hex("5AA5 04 83 8000 FF");
    const QByteArray reply = module.receive(Link::Uart2, all).join();
    QCOMPARE(reply.left(7).toHex(), QByteArray("5aa5fe8380007d")); // 125 words fit
    QCOMPARE(reply.size(), 257);
    const QByteArray allRegisters = hex("5AA5 04 81 00 00 FF");
    QCOMPARE(module.receive(Link::Uart2, allRegisters).join().size(), 258);
}

void ModuleTest::curveSamplesTakeTurnsAndTheOldestGo()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 0C 84 09 0001 0101 0002 0102 0003"));
    module.receive(Link::Uart2, hex("5AA5 04 84 00 0009"));
    QCOMPARE(module.curve(0), QVector<quint16>({1, 2, 3}));
    QCOMPARE(module.curve(3), QVector<quint16>({0x101, 0x102}));
    QCOMPARE(module.curve(1).size(), 0);
    QCOMPARE(module.curve(-1).size(), 0);
    QCOMPARE(module.curve(8).size(), 0);

    const QByteArray zeros = hex("5AA5 FE 84 01") + QByteArray(252, '\0');
    module.receive(Link::Uart2, zeros.repeated(Module::maxCurveSamples / 126 + 1));
    module.receive(Link::Uart2, hex("5AA5 04 84 01 0007"));
    QCOMPARE(module.curve(0).size(), Module::maxCurveSamples);
    QCOMPARE(module.curve(0).first(), quint16{0});
    QCOMPARE(module.curve(0).last(), quint16{7});
}

void ModuleTest::systemCommandIsRemembered()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 04 8F 0000 A0"));
    QCOMPARE(module.systemArgument(), quint8{0xA0});
}

void ModuleTest::vpCommandsAct_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QVector<int>>("state"); // resets, restarts, page, music

    const auto row = [](const char *title, const char *frame, const char *line,
                        const QVector<int> &state) {
        QTest::newRow(title) << hex(frame) << QString(line) << state;
    };
    row("reset", "5AA5 07 82 0004 55AA 5AA5", "UART2 write VP 0x0004, 2 words: K7 resets",
        {1, 0, 0, 0, 0, 0});
    row("restart", "5AA5 07 82 0004 55AA 5A5A", "UART2 write VP 0x0004, 2 words: system restarts",
        {0, 1, 0, 0, 0, 0});
    row("page", "5AA5 07 82 0084 5A01 0102", "UART2 write VP 0x0084, 2 words: shows page 258",
        {0, 0, 258, 0, 0, 0});
    row("music", "5AA5 07 82 00A0 0201 4000",
        "UART2 write VP 0x00A0, 2 words: plays music 2, 1 pieces, volume 64", {0, 0, 0, 2, 1, 64});
    row("music stops", "5AA5 07 82 00A0 0000 0000",
        "UART2 write VP 0x00A0, 2 words: stops the music", {0, 0, 0, 0, 0, 0});
    row("a long write reaches a command", "5AA5 0B 82 0082 0001 0002 5A01 0009",
        "UART2 write VP 0x0082, 4 words: shows page 9", {0, 0, 9, 0, 0, 0});
}

void ModuleTest::vpCommandsAct()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, line);
    QFETCH(QVector<int>, state);
    Module module;
    QStringList traced;
    module.setTrace([&traced](const QString &text) { traced.append(text); });
    QCOMPARE(module.receive(Link::Uart2, frame).join().toHex(), QByteArray("5aa503824f4b"));
    QCOMPARE(traced, QStringList(line));
    const k7::Music music = module.music();
    QCOMPARE(QVector<int>({module.resets(), module.restarts(), module.picturePage(), music.position,
                           music.count, music.volume}),
             state);
    // A command is carried out once: its first word no longer asks for it.
    QCOMPARE(module.vp(0x04), quint16{0});
    QCOMPARE(module.vp(0x84), quint16{0});
}

void ModuleTest::resetClearsRegistersAndKeepsTheDevice()
{
    Module module;
    module.receive(Link::Uart2, hex("5AA5 04 80 08 01 55 5AA5 05 82 2000 BEEF"));
    module.receive(Link::Uart2, hex("5AA5 07 82 0004 55AA 5AA5"));
    QCOMPARE(module.registerAt(8, 1), quint8{0});
    QCOMPARE(module.vp(0x00), quint16{0x0123});
    QCOMPARE(module.vp(0x0F), quint16{0x4521});
    QCOMPARE(module.vp(0x2000), quint16{0xBEEF});
}

void ModuleTest::halfACommandDoesNothing_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("reset without kind") << hex("5AA5 07 82 0004 55AA 1234");
    QTest::newRow("reset without unlock") << hex("5AA5 07 82 0004 55AB 5AA5");
    QTest::newRow("page without marker") << hex("5AA5 07 82 0084 5A02 0007");
    QTest::newRow("flash without direction") << hex("5AA5 0B 82 0008 1200 0000 0000 0001");
    QTest::newRow("command's arguments alone") << hex("5AA5 05 82 0085 0007");
    QTest::newRow("no word at a command") << hex("5AA5 03 82 0084");
}

void ModuleTest::halfACommandDoesNothing()
{
    QFETCH(QByteArray, frame);
    Module module;
    QString traced;
    module.setTrace([&traced](const QString &line) { traced = line; });
    module.receive(Link::Uart2, frame);
    QVERIFY2(!traced.isEmpty() && !traced.contains(':'), qPrintable(traced));
    QCOMPARE(module.resets() + module.restarts() + module.picturePage(), 0);
}

void ModuleTest::norFlashKeepsWhatVpMemoryHeld()
{
    Module module;
    module.setVp(0x3000, 0xCAFE);
    module.setVp(0x3001, 0xF00D);
    module.receive(Link::Uart2, hex("5AA5 0B 82 0008 A501 2345 3000 0002"));
    QCOMPARE(module.vp(0x08), quint16{0x0001});
    QCOMPARE(module.flash().read(2 * 0x12345, 6).toHex(), QByteArray("cafef00dffff"));
    QCOMPARE(module.flash().writtenBlocks(), QList<int>({0}));

    module.receive(Link::Uart2, hex("5AA5 0B 82 0008 5A01 2344 4000 0004"));
    QCOMPARE(module.vp(0x08), quint16{0x0001});
    QCOMPARE(module.vp(0x4000), quint16{0xFFFF});
    QCOMPARE(module.vp(0x4001), quint16{0xCAFE});
    QCOMPARE(module.vp(0x4002), quint16{0xF00D});
    QCOMPARE(module.vp(0x4003), quint16{0xFFFF});
    QCOMPARE(module.vp(0x4004), quint16{0});
}

void ModuleTest::norFlashMovesEndWithVpMemory()
{
    Module module;
    module.setVp(0xFFFF, 0xABCD);
    module.receive(Link::Uart2, hex("5AA5 0B 82 0008 A5FF FFFF FFFF FFFF"));
    QCOMPARE(module.flash().read(2 * 0xFFFFFF, 4).toHex(), QByteArray("abcdffff"));
    module.receive(Link::Uart2, hex("5AA5 0B 82 0008 5A00 0000 FFFE FFFF"));
    QCOMPARE(module.vp(0xFFFF), quint16{0xFFFF});
    QCOMPARE(module.vp(0x0000), quint16{0x0123});
}

void ModuleTest::flashEndsAtItsLastByte_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("available");
    QTest::newRow("first byte") << 0 << 4 << 4;
    QTest::newRow("last byte") << Flash::bytes - 1 << 4 << 1;
    QTest::newRow("the end") << Flash::bytes << 4 << 0;
    QTest::newRow("far beyond") << INT_MAX << INT_MAX << 0;
    QTest::newRow("before the start") << -1 << 4 << 0;
    QTest::newRow("far before") << INT_MIN << 4 << 0;
    QTest::newRow("negative count") << 0 << -1 << 0;
}

void ModuleTest::flashEndsAtItsLastByte()
{
    QFETCH(int, offset);
    QFETCH(int, count);
    QFETCH(int, available);
    Flash flash;
    flash.write(offset, "abcd");
    QCOMPARE(flash.read(offset, count), QByteArray("abcd").left(available));
}

void ModuleTest::flashRunsAcrossBlocks()
{
    Flash flash;
    const QByteArray data = QByteArray("12") + QByteArray(Flash::blockBytes, 'x') + "34";
    flash.write(5 * Flash::blockBytes - 2, data);
    QCOMPARE(flash.writtenBlocks(), QList<int>({4, 5, 6}));
    QCOMPARE(flash.read(5 * Flash::blockBytes - 3, data.size() + 2), "\xFF" + data + "\xFF");
}

void ModuleTest::dumpHoldsTheMemory()
{
    QTemporaryDir folder;
    const QDir target(folder.filePath("new/folder"));
    Module module;
    module.receive(Link::Uart2, hex("5AA5 04 80 01 02 99"));
    module.receive(Link::Uart2, hex("5AA5 06 84 02 0102 FFFF"));
    module.receive(Link::Uart2, hex("5AA5 0B 82 0008 A502 0000 0000 0001"));
    QVERIFY(k7::dump(module, target));

    QCOMPARE(target.entryList(QDir::Files, QDir::Name),
             QStringList({"curve_1.txt", "flash_001.bin", "registers.bin", "vp.bin"}));
    QCOMPARE(contentOf(target.filePath("curve_1.txt")), QByteArray("258\n65535\n"));
    QCOMPARE(contentOf(target.filePath("registers.bin")),
             QByteArray(258, '\0') + '\x99' + QByteArray(9 * 256 - 259, '\0'));
    QCOMPARE(contentOf(target.filePath("vp.bin")).left(8).toHex(), QByteArray("0123456789abcdef"));
    QCOMPARE(contentOf(target.filePath("vp.bin")).size(), 0x20000);
    QCOMPARE(contentOf(target.filePath("flash_001.bin")),
             hex("0123") + QByteArray(Flash::blockBytes - 2, '\xFF'));
}

void ModuleTest::dumpFailsWhereNothingCanBeWritten()
{
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("vp.bin"));
    QVERIFY(!k7::dump(Module(), folder.path()));
    QFile file(folder.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(!k7::dump(Module(), folder.filePath("file/below")));
}

QTEST_GUILESS_MAIN(ModuleTest)
#include "tst_module.moc"
