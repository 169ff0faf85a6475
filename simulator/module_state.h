#pragma once

#include "serial/frame_builder.h"
#include "simulator/flash.h"

#include <QMap>
#include <QVector>

#include <array>

namespace k7 {

/// What the module plays: `count` pieces of music from number `position` on, all values 0 to 255.
/// Nothing is played while `count` is 0.
struct Music
{
    int position = 0;
    int count = 0;
    int volume = 0;
};

/// The JPEG picture that was shown last: what VP memory holds from its start on, and where it is.
struct ShownJpeg
{
    QByteArray content;
    bool isStored = false; ///< under the picture ID `first`, not on the screen at `first`, `second`
    int first = 0;
    int second = 0;
};

/// Everything a display module remembers. A new one has the device's ID, version, name, voltage and
/// settings in its VP words.
struct ModuleState
{
    ModuleState();

    std::array<quint8, FrameBuilder::registerPages * FrameBuilder::registersPerPage> registers{};
    QVector<quint16> vp; // always the full 0x10000 words
    Flash flash;
    /// Downloaded pictures by their number, as RGB565 bytes.
    QMap<int, QByteArray> pictures;
    /// Picture memory without pages, from its first word on.
    QByteArray pictureMemory;
    ShownJpeg jpeg;
    std::array<QVector<quint16>, FrameBuilder::channels> curves;
    Music music;
    /// How often a computed CRC is asked for before it is there; and the one that is on its way.
    int busyReads = 0;
    int crcReadsLeft = -1; // none is
    quint16 crc = 0;
    quint8 systemArgument = 0; // of the last system command
    int resets = 0;
    int restarts = 0;
};

} // namespace k7
