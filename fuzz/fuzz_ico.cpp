#include "ico/ico_library.h"

#include <QtGlobal>

/// Any file of the length of an index can be read as a library. What was read can be looked at and
/// written, and reads back the same.
///
/// The index is long and mostly empty: the input lists the entries that it has, each a position of
/// two bytes and eight bytes of the index, behind a byte that counts them. The rest are pixels.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    if (input.isEmpty())
        return 0;
    QByteArray file(icoLibrary::indexBytes, '\0');
    int at = 1;
    for (int count = static_cast<quint8>(input.at(0)); count > 0 && at + 10 <= input.size();
         --count, at += 10) {
        const int position =
            (static_cast<quint8>(input.at(at)) & 0x7F) << 8 | static_cast<quint8>(input.at(at + 1));
        file.replace(position * icoLibrary::entryBytes, icoLibrary::entryBytes,
                     input.mid(at + 2, icoLibrary::entryBytes));
    }
    file += input.mid(at);

    QVector<IconRecord> records;
    icoLibrary::read(file, records);
    for (const IconRecord &record : qAsConst(records))
        if (record.pixelBytes() < 10000)
            icon::toImage(record, true);
    const auto written = icoLibrary::write(records);
    QVector<IconRecord> again;
    if (!written || !icoLibrary::read(*written, again))
        qFatal("a library that was written cannot be read");
    int next = 0;
    for (const IconRecord &record : qAsConst(again)) {
        while (next < records.size() && records.at(next).position != record.position)
            ++next;
        if (next == records.size() || records.at(next).pixels() != record.pixels())
            qFatal("an icon came back different");
    }
    return 0;
}
