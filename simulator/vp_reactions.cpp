#include "simulator/vp_reactions.h"

#include "common/big_endian.h"

#include <QStringList>

namespace k7 {

namespace {

constexpr int resetVp = 0x04;
constexpr int norFlashVp = 0x08;
constexpr int showPageVp = 0x84;
constexpr int musicVp = 0xA0;

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
};

} // namespace

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
