#include "simulator/vp_reactions.h"

#include "common/big_endian.h"
#include "crc/file_crc.h"

#include <QStringList>

namespace k7 {

namespace {

constexpr int resetVp = 0x04;
constexpr int norFlashVp = 0x08;
constexpr int showPageVp = 0x84;
constexpr int musicVp = 0xA0;
constexpr int movePictureVp = 0xA2;
constexpr int showJpegVp = 0xA6;
constexpr int moveToFlashVp = 0xAA;
constexpr int crcVp = 0xE0;
constexpr int stagingVp = 0x8000;

quint8 highByte(quint16 word)
{
    return static_cast<quint8>(word >> 8);
}

quint8 lowByte(quint16 word)
{
    return static_cast<quint8>(word & 0xFF);
}

QString reset(ModuleState &state)
{
    constexpr quint16 unlock = 0x55AA;
    constexpr quint16 resetK7 = 0x5AA5;
    constexpr quint16 restartSystem = 0x5A5A;

    const quint16 kind = state.vp.at(resetVp + 1);
    if (state.vp.at(resetVp) != unlock || (kind != resetK7 && kind != restartSystem))
        return {};
    state.vp[resetVp] = 0;
    state.vp[resetVp + 1] = 0;
    if (kind == restartSystem) {
        ++state.restarts;
        return "system restarts";
    }
    ++state.resets;
    state.registers.fill(0);
    return "K7 resets";
}

/// VP words from `address` on, high byte first, as many of `count` as there are.
QByteArray vpBytes(const ModuleState &state, int address, int count)
{
    QByteArray bytes;
    for (const quint16 word : state.vp.mid(address, count))
        bigEndian::appendWord(bytes, word);
    return bytes;
}

void storeVp(ModuleState &state, int address, const QByteArray &bytes)
{
    for (int i = 0; i < bytes.size() / 2; ++i)
        state.vp[address + i] = bigEndian::wordAt(bytes, 2 * i);
}

QString moveNorFlash(ModuleState &state)
{
    constexpr quint8 read = 0x5A;
    constexpr quint8 write = 0xA5;

    const quint16 control = state.vp.at(norFlashVp);
    const quint8 direction = highByte(control);
    if (direction != read && direction != write)
        return {};
    const int flashWord = lowByte(control) << 16 | state.vp.at(norFlashVp + 1);
    const int address = state.vp.at(norFlashVp + 2);
    const int count = qMin<int>(state.vp.at(norFlashVp + 3), state.vp.size() - address);
    if (direction == read)
        storeVp(state, address, state.flash.read(2 * flashWord, 2 * count));
    else
        state.flash.write(2 * flashWord, vpBytes(state, address, count));
    // An empty high byte tells that the move is done.
    state.vp[norFlashVp] = lowByte(state.vp.at(norFlashVp));
    return QString::asprintf(
        "%s NOR flash 0x%06X, VP 0x%04X, %d words", direction == read ? "reads" : "writes",
        static_cast<unsigned>(flashWord), static_cast<unsigned>(address), count);
}

QString showPage(ModuleState &state)
{
    constexpr quint16 show = 0x5A01;

    if (state.vp.at(showPageVp) != show)
        return {};
    state.vp[showPageVp] = 0;
    state.vp[picturePageVp] = state.vp.at(showPageVp + 1);
    return QString::asprintf("shows page %d", state.vp.at(picturePageVp));
}

QString playMusic(ModuleState &state)
{
    const quint16 range = state.vp.at(musicVp);
    state.music = {highByte(range), lowByte(range), highByte(state.vp.at(musicVp + 1))};
    if (state.music.count == 0)
        return "stops the music";
    return QString::asprintf("plays music %d, %d pieces, volume %d", state.music.position,
                             state.music.count, state.music.volume);
}

/// Overwrites `memory` at `offset`, filling what lies before it with zeros; beyond `limit` bytes
/// all is dropped.
void overwrite(QByteArray &memory, qint64 offset, const QByteArray &data, int limit)
{
    if (offset < 0 || offset + data.size() > limit)
        return;
    const int end = static_cast<int>(offset) + data.size();
    if (memory.size() < end)
        memory.append(QByteArray(end - memory.size(), 0));
    memory.replace(static_cast<int>(offset), data.size(), data);
}

QString movePicture(ModuleState &state)
{
    constexpr quint16 toMemory = 0x5A80;
    constexpr quint16 toPage = 0x5AA5;
    constexpr quint32 memoryBase = 0x78000000; // in words
    constexpr int memoryChunkWords = 120;
    constexpr int pageChunkWords = 0x1000;
    constexpr int limit = 64 * 1024 * 1024;

    const quint16 command = state.vp.at(movePictureVp);
    const quint16 high = state.vp.at(movePictureVp + 2);
    const quint16 low = state.vp.at(movePictureVp + 3);
    if (command == toMemory) {
        const qint64 word = (qint64{high} << 16 | low) - memoryBase;
        overwrite(state.pictureMemory, 2 * word, vpBytes(state, stagingVp, memoryChunkWords),
                  limit);
        return QString::asprintf("moves to picture memory word %lld", static_cast<long long>(word));
    }
    if (command != toPage)
        return {};
    overwrite(state.pictures[high], qint64{low} * 2 * pageChunkWords,
              vpBytes(state, state.vp.at(movePictureVp + 1), pageChunkWords), limit);
    return QString::asprintf("moves to picture page %d, chunk %d", high, low);
}

QString showJpeg(ModuleState &state)
{
    constexpr quint16 now = 0x5A01;
    constexpr quint16 store = 0x5A02;

    const quint16 command = state.vp.at(showJpegVp);
    if (command != now && command != store)
        return {};
    const int address = state.vp.at(showJpegVp + 1);
    state.jpeg = {vpBytes(state, address, state.vp.size() - address), command == store,
                  state.vp.at(showJpegVp + 2), state.vp.at(showJpegVp + 3)};
    if (state.jpeg.isStored)
        return QString::asprintf("stores JPEG picture %d", state.jpeg.first);
    return QString::asprintf("shows JPEG picture at %d, %d", state.jpeg.first, state.jpeg.second);
}

/// K7UID1 counts the flash in units of 32 KiB, the others in blocks of 256 KiB and words in these;
/// what tells them apart is where the source address stands.
QString moveToFlash(ModuleState &state)
{
    constexpr quint16 move = 0x5A02;
    constexpr int unitWords = 0x4000;

    if (state.vp.at(moveToFlashVp) != move)
        return {};
    const auto argument = [&state](int index) { return int{state.vp.at(moveToFlashVp + index)}; };
    const bool isInUnits = argument(3) == 1;
    const qint64 offset = isInUnits ? qint64{argument(1)} * 2 * unitWords
                                    : qint64{argument(1) >> 8} * Flash::blockBytes +
                                          2 * (qint64{argument(1) & 0xFF} << 16 | argument(2));
    const int source = isInUnits ? argument(2) : argument(3);
    const int words = isInUnits ? unitWords : argument(4);
    if (offset < Flash::bytes)
        state.flash.write(static_cast<int>(offset), vpBytes(state, source, words));
    return QString::asprintf("moves %d words to flash 0x%llX", words,
                             static_cast<unsigned long long>(offset));
}

/// What the module would compute the CRC of; nothing for a unit that it does not know.
QByteArray checkedBytes(const ModuleState &state, quint8 kind, quint16 unit)
{
    constexpr int pageBytes = 4096;
    constexpr int systemVp = 0x1000;

    switch (kind) {
    case 0:
        return state.flash.read(highByte(unit) * Flash::blockBytes, lowByte(unit) * pageBytes);
    case 1:
        return state.pictures.value(unit);
    case 2:
        return vpBytes(state, systemVp, (unit + 1) / 2).left(unit);
    default:
        return {};
    }
}

void answerCrc(ModuleState &state)
{
    state.vp[crcVp] = lowByte(state.vp.at(crcVp));
    state.vp[crcVp + 1] = state.crc;
    state.crcReadsLeft = -1;
}

QString computeCrc(ModuleState &state)
{
    constexpr quint8 compute = 0x5A;

    const quint16 request = state.vp.at(crcVp);
    const quint16 unit = state.vp.at(crcVp + 1);
    if (highByte(request) != compute)
        return {};
    const quint16 crc = fileCrc(checkedBytes(state, lowByte(request), unit));
    state.crc = static_cast<quint16>(crc << 8 | crc >> 8);
    state.crcReadsLeft = state.busyReads;
    if (state.busyReads == 0)
        answerCrc(state);
    return QString::asprintf("computes the CRC of unit 0x%04X, kind %d", unit, lowByte(request));
}

/// A command starts when its first word is written; the words after it are its arguments.
struct Reaction
{
    int address;
    QString (*act)(ModuleState &);
};

constexpr Reaction reactions[] = {
    {resetVp, reset},
    {norFlashVp, moveNorFlash},
    {showPageVp, showPage},
    {musicVp, playMusic},
    {movePictureVp, movePicture},
    {showJpegVp, showJpeg},
    {moveToFlashVp, moveToFlash},
    {crcVp, computeCrc},
};

} // namespace

void reactToVpRead(ModuleState &state, int address, int count)
{
    const bool isAsked = address <= crcVp && crcVp < address + count;
    if (isAsked && state.crcReadsLeft >= 0 && state.crcReadsLeft-- == 0)
        answerCrc(state);
}

QString reactToVpWrite(ModuleState &state, int address, int count)
{
    QStringList done;
    for (const Reaction &reaction : reactions)
        if (reaction.address >= address && reaction.address - address < count)
            done.append(reaction.act(state));
    done.removeAll(QString());
    return done.join(", ");
}

} // namespace k7
