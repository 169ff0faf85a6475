#include "simulator/vp_reactions.h"

#include "simulator/bytes.h"
#include "simulator/module.h"

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
constexpr int systemVp = 0x1000;

/// No screen has larger pictures.
constexpr int maxPictureBytes = 64 * 1024 * 1024;
constexpr int pageChunkBytes = 0x2000;

VpReaction done(const QString &text)
{
    return {text, {}};
}

VpReaction refused(const char *reason)
{
    return {{}, reason};
}

VpReaction reset(ModuleState &state, const ModuleSettings &)
{
    constexpr quint16 unlock = 0x55AA;
    constexpr quint16 resetK7 = 0x5AA5;
    constexpr quint16 restartSystem = 0x5A5A;

    const quint16 kind = state.vp.at(resetVp + 1);
    if (state.vp.at(resetVp) != unlock || (kind != resetK7 && kind != restartSystem))
        return {};
    if (kind == restartSystem && !state.isRestartAnnounced)
        return refused("the restart was not announced");
    state.vp[resetVp] = 0;
    state.vp[resetVp + 1] = 0;
    state.isScreenStale = true;
    if (kind == restartSystem) {
        state.isRestartAnnounced = false;
        ++state.restarts;
        return done("system restarts");
    }
    ++state.resets;
    state.registers.fill(0);
    return done("K7 resets");
}

/// VP words from `address` on, high byte first, as many of `count` as there are.
QByteArray vpBytes(const ModuleState &state, int address, int count)
{
    QByteArray bytes;
    for (const quint16 word : state.vp.mid(address, count))
        appendWord(bytes, word);
    return bytes;
}

void storeVp(ModuleState &state, int address, const QByteArray &bytes)
{
    for (int i = 0; i < bytes.size() / 2; ++i)
        state.vp[address + i] = wordAt(bytes, 2 * i);
}

VpReaction moveNorFlash(ModuleState &state, const ModuleSettings &)
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
    if (direction == read) {
        storeVp(state, address, state.flash.read(2 * flashWord, 2 * count));
    } else {
        state.flash.write(2 * flashWord, vpBytes(state, address, count));
        state.programmingTime = Module::unitProgramming;
    }
    // An empty high byte tells that the move is done.
    state.vp[norFlashVp] = lowByte(state.vp.at(norFlashVp));
    return done(QString::asprintf(
        "%s NOR flash 0x%06X, VP 0x%04X, %d words", direction == read ? "reads" : "writes",
        static_cast<unsigned>(flashWord), static_cast<unsigned>(address), count));
}

VpReaction showPage(ModuleState &state, const ModuleSettings &)
{
    constexpr quint16 show = 0x5A01;

    if (state.vp.at(showPageVp) != show)
        return {};
    state.vp[showPageVp] = 0;
    state.vp[picturePageVp] = state.vp.at(showPageVp + 1);
    state.showsMemory = false;
    state.overlays.clear();
    state.isScreenStale = true;
    return done(QString::asprintf("shows page %d", state.vp.at(picturePageVp)));
}

VpReaction playMusic(ModuleState &state, const ModuleSettings &)
{
    const quint16 range = state.vp.at(musicVp);
    state.music = {highByte(range), lowByte(range), highByte(state.vp.at(musicVp + 1))};
    if (state.music.count == 0)
        return done("stops the music");
    return done(QString::asprintf("plays music %d, %d pieces, volume %d", state.music.position,
                                  state.music.count, state.music.volume));
}

/// Overwrites `memory` at `offset`, filling what lies before it with zeros. The first byte begins
/// it anew: what is behind the new content belongs to an older one.
void overwrite(QByteArray &memory, qint64 offset, const QByteArray &data)
{
    if (offset == 0)
        memory.clear();
    const int end = static_cast<int>(offset) + data.size();
    if (memory.size() < end)
        memory.append(QByteArray(end - memory.size(), 0));
    memory.replace(static_cast<int>(offset), data.size(), data);
}

bool existsInPicture(qint64 offset, int bytes)
{
    return offset >= 0 && offset + bytes <= maxPictureBytes;
}

/// What a command says: its words from `address` on.
QVector<quint16> commandAt(const ModuleState &state, int address)
{
    constexpr int words = 6;
    return state.vp.mid(address, words);
}

/// The tool, which did not hear the answer, sends the command again that moved what was staged.
bool isMovedAlready(const ModuleState &state, int address)
{
    return !state.staging.holds(StagingArea::begin, 1) &&
           state.lastMove == commandAt(state, address);
}

void endMove(ModuleState &state, int address)
{
    state.staging.clear();
    state.lastMove = commandAt(state, address);
}

/// A chunk into picture memory: as many of its 120 words as were sent.
VpReaction moveToMemory(ModuleState &state)
{
    constexpr qint64 memoryBase = 0x78000000; // in words
    constexpr int chunkWords = 120;

    if (!state.staging.holds(StagingArea::begin, 1))
        return refused("nothing is staged");
    const qint64 word =
        (qint64{state.vp.at(movePictureVp + 2)} << 16 | state.vp.at(movePictureVp + 3)) -
        memoryBase;
    const int words = qMin(state.staging.wordsFrom(StagingArea::begin), chunkWords);
    if (!existsInPicture(2 * word, 2 * words))
        return refused("picture memory has no such word");
    overwrite(state.pictureMemory, 2 * word, vpBytes(state, StagingArea::begin, words));
    endMove(state, movePictureVp);
    state.showsMemory = true;
    state.isScreenStale = true;
    return done(
        QString::asprintf("moves to picture memory word %lld", static_cast<long long>(word)));
}

/// A whole chunk into a picture page.
VpReaction moveToPage(ModuleState &state)
{
    const int source = state.vp.at(movePictureVp + 1);
    const int page = state.vp.at(movePictureVp + 2);
    const int chunk = state.vp.at(movePictureVp + 3);
    if (!state.staging.holds(source, pageChunkBytes / 2))
        return refused("the chunk is not staged");
    const qint64 offset = qint64{chunk} * pageChunkBytes;
    if (!existsInPicture(offset, pageChunkBytes))
        return refused("a page has no such chunk");
    overwrite(state.pictures[page], offset, vpBytes(state, source, pageChunkBytes / 2));
    state.pagedPictures.insert(page);
    state.storedJpegs.remove(page);
    endMove(state, movePictureVp);
    state.isScreenStale = state.isScreenStale || page == state.vp.at(picturePageVp);
    return done(QString::asprintf("moves to picture page %d, chunk %d", page, chunk));
}

VpReaction movePicture(ModuleState &state, const ModuleSettings &settings)
{
    constexpr quint16 toMemory = 0x5A80;
    constexpr quint16 toPage = 0x5AA5;

    const quint16 command = state.vp.at(movePictureVp);
    if (command != toMemory && command != toPage)
        return {};
    if ((command == toPage) != (settings.layout == Layout::K7uid2))
        return refused("the command belongs to another layout");
    if (isMovedAlready(state, movePictureVp))
        return done("has moved that already");
    return command == toPage ? moveToPage(state) : moveToMemory(state);
}

VpReaction showJpeg(ModuleState &state, const ModuleSettings &)
{
    constexpr quint16 now = 0x5A01;
    constexpr quint16 store = 0x5A02;
    constexpr int maxOverlays = 32;

    const quint16 command = state.vp.at(showJpegVp);
    if (command != now && command != store)
        return {};
    const int address = state.vp.at(showJpegVp + 1);
    state.jpeg = {vpBytes(state, address, state.staging.wordsFrom(address)), command == store,
                  state.vp.at(showJpegVp + 2), state.vp.at(showJpegVp + 3)};
    state.isScreenStale = true;
    if (state.jpeg.isStored) {
        state.storedJpegs[state.jpeg.first] = state.jpeg.content;
        return done(QString::asprintf("stores JPEG picture %d", state.jpeg.first));
    }
    state.overlays.append(state.jpeg);
    if (state.overlays.size() > maxOverlays)
        state.overlays.removeFirst();
    return done(
        QString::asprintf("shows JPEG picture at %d, %d", state.jpeg.first, state.jpeg.second));
}

/// K7UID1 counts the flash in units of 32 KiB, the others in blocks of 256 KiB and words in these;
/// what tells them apart are the words behind the source address.
VpReaction moveToFlash(ModuleState &state, const ModuleSettings &settings)
{
    constexpr quint16 move = 0x5A02;
    constexpr int unitWords = 0x4000;

    if (state.vp.at(moveToFlashVp) != move)
        return {};
    const auto argument = [&state](int index) { return int{state.vp.at(moveToFlashVp + index)}; };
    const bool isInUnits = argument(3) == 1 && argument(4) == 0;
    if (isInUnits != (settings.layout == Layout::K7uid1))
        return refused("the command belongs to another layout");
    if (isMovedAlready(state, moveToFlashVp))
        return done("has moved that already");
    const qint64 offset = isInUnits ? qint64{argument(1)} * 2 * unitWords
                                    : qint64{argument(1) >> 8} * Flash::blockBytes +
                                          2 * (qint64{argument(1) & 0xFF} << 16 | argument(2));
    const int source = isInUnits ? argument(2) : argument(3);
    const int words = isInUnits ? unitWords : argument(4);
    if (!state.staging.holds(source, words))
        return refused("the unit is not staged");
    if (offset + 2 * words > Flash::bytes)
        return refused("the flash has no such unit");
    state.flash.write(static_cast<int>(offset), vpBytes(state, source, words));
    endMove(state, moveToFlashVp);
    state.programmingTime = Module::unitProgramming;
    return done(QString::asprintf("moves %d words to flash 0x%llX", words,
                                  static_cast<unsigned long long>(offset)));
}

/// What a picture number stands for.
///
/// A page that came in chunks ends with zeros that fill its last chunk, and nobody says how many:
/// it ends where the screen does when that may be, else behind its last pixel that is not black.
/// Picture memory has no number; on a module without pages it stands for those that were not sent.
QByteArray checkedPicture(const ModuleState &state, const ModuleSettings &settings, int number)
{
    if (!state.pictures.contains(number))
        return state.pictureMemory;
    const QByteArray bytes = state.pictures.value(number);
    if (!state.pagedPictures.contains(number))
        return bytes;
    int end = bytes.size();
    while (end > bytes.size() - pageChunkBytes + 2 && bytes.at(end - 1) == 0)
        --end;
    end += end % 2;
    const qint64 screenBytes = qint64{2} * settings.screen.width() * settings.screen.height();
    const bool endsWithScreen = screenBytes >= end && screenBytes <= bytes.size();
    return bytes.left(endsWithScreen ? static_cast<int>(screenBytes) : end);
}

/// What the module would compute the CRC of; nothing for a unit that it does not know.
QByteArray checkedBytes(const ModuleState &state, const ModuleSettings &settings, quint8 kind,
                        quint16 unit)
{
    constexpr int pageBytes = 4096;
    constexpr int sizeCycle = 0x10000;

    switch (kind) {
    case 0:
        return state.flash.read(highByte(unit) * Flash::blockBytes, lowByte(unit) * pageBytes);
    case 1:
        return checkedPicture(state, settings, unit);
    case 2: {
        // The unit is the size of the system, of which only the low 16 bits are asked for.
        const bool isLong = unit + sizeCycle <= 2 * state.systemWords;
        const int bytes = unit + (isLong ? sizeCycle : 0);
        return vpBytes(state, systemVp, (bytes + 1) / 2).left(bytes);
    }
    default:
        return {};
    }
}

/// The tool has a few milliseconds of patience for the acknowledgement, and asks for the CRC until
/// it is there: so it is computed when it is asked for.
VpReaction computeCrc(ModuleState &state, const ModuleSettings &)
{
    constexpr quint8 compute = 0x5A;

    const quint16 request = state.vp.at(crcVp);
    if (highByte(request) != compute)
        return {};
    state.crcReadsLeft = state.busyReads;
    return done(QString::asprintf("computes the CRC of unit 0x%04X, kind %d",
                                  state.vp.at(crcVp + 1), lowByte(request)));
}

void answerCrc(ModuleState &state, const ModuleSettings &settings)
{
    const quint8 kind = lowByte(state.vp.at(crcVp));
    const quint16 crc = crc16(checkedBytes(state, settings, kind, state.vp.at(crcVp + 1)));
    state.vp[crcVp] = kind;
    state.vp[crcVp + 1] = static_cast<quint16>(lowByte(crc) << 8 | highByte(crc));
}

/// A command starts when its first word is written; the words after it are its arguments.
struct Reaction
{
    int address;
    VpReaction (*act)(ModuleState &, const ModuleSettings &);
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

/// What becomes of words that are data: a system, or something staged.
void noteData(ModuleState &state, int address, int count)
{
    state.staging.note(address, count);
    if (address == systemVp)
        state.systemWords = count;
    else if (address == systemVp + state.systemWords)
        state.systemWords += count;
    for (const int shown : {picturePageVp, configVp, lightVp, lightTimeVp})
        state.isScreenStale = state.isScreenStale || (shown >= address && shown < address + count);
}

} // namespace

void reactToVpRead(ModuleState &state, const ModuleSettings &settings, int address, int count)
{
    const bool isAsked = address <= crcVp && crcVp < address + count;
    if (isAsked && state.crcReadsLeft >= 0 && state.crcReadsLeft-- == 0)
        answerCrc(state, settings);
}

VpReaction reactToVpWrite(ModuleState &state, const ModuleSettings &settings, int address,
                          int count)
{
    noteData(state, address, count);
    QStringList deeds;
    for (const Reaction &reaction : reactions) {
        if (reaction.address < address || reaction.address - address >= count)
            continue;
        const VpReaction reacted = reaction.act(state, settings);
        if (!reacted.refusal.isEmpty())
            return reacted;
        if (!reacted.done.isEmpty())
            deeds.append(reacted.done);
    }
    return done(deeds.join(", "));
}

} // namespace k7
