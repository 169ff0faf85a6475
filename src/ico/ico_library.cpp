#include "ico/ico_library.h"

#include "common/big_endian.h"

#include <limits>

using bigEndian::byteAt;

namespace icoLibrary {

namespace {

/// The first record of each position that the index has.
QVector<const IconRecord *> firstOfEach(const QVector<IconRecord> &records)
{
    QVector<bool> isTaken(IconRecord::maxPosition + 1);
    QVector<const IconRecord *> kept;
    for (const IconRecord &record : records) {
        if (record.position < 0 || record.position > IconRecord::maxPosition ||
            isTaken.at(record.position))
            continue;
        isTaken[record.position] = true;
        kept.append(&record);
    }
    return kept;
}

} // namespace

QByteArray entryAt(const IconRecord &record, quint32 address)
{
    QByteArray entry;
    bigEndian::appendByte(entry, byteAt(record.entry, 0));
    bigEndian::appendByte(entry, byteAt(record.entry, 1));
    bigEndian::appendByte(entry,
                          static_cast<quint8>((byteAt(record.entry, 2) & 0xF0) | address >> 24));
    bigEndian::appendByte(entry, static_cast<quint8>(address >> 16));
    bigEndian::appendWord(entry, static_cast<quint16>(address));
    return entry + record.entry.mid(6, 2).leftJustified(2, '\0');
}

int addressIn(const QByteArray &entry)
{
    return (byteAt(entry, 2) & 0x0F) << 24 | byteAt(entry, 3) << 16 | bigEndian::wordAt(entry, 4);
}

std::optional<QByteArray> write(const QVector<IconRecord> &records)
{
    const QVector<const IconRecord *> kept = firstOfEach(records);
    qint64 size = indexBytes;
    for (const IconRecord *record : kept) {
        if (size / 2 > maxAddress)
            return std::nullopt;
        size += record->pixelBytes();
    }
    QByteArray file(indexBytes, '\0');
    file.reserve(static_cast<int>(size));
    for (const IconRecord *record : kept) {
        const auto address = static_cast<quint32>(file.size() / 2);
        file.replace(record->position * entryBytes, entryBytes, entryAt(*record, address));
        file.append(record->pixels());
    }
    return file;
}

bool read(const QByteArray &file, QVector<IconRecord> &records)
{
    if (file.size() < indexBytes)
        return false;
    records.clear();
    for (int position = 0; position <= IconRecord::maxPosition; ++position) {
        const int at = position * entryBytes;
        const int sizeBits = byteAt(file, at + 2);
        if (byteAt(file, at) == 0 && byteAt(file, at + 1) == 0 && sizeBits == 0)
            continue;
        IconRecord record;
        record.position = position;
        record.width = byteAt(file, at) | (sizeBits & 0xC0) << 2;
        record.height = byteAt(file, at + 1) | (sizeBits & 0x30) << 4;
        record.entry = file.mid(at, entryBytes);
        const qint64 address = addressIn(record.entry);
        if (2 * address + record.pixelBytes() > file.size())
            return false;
        record.buffer = file;
        record.offset = static_cast<int>(2 * address);
        records.append(record);
    }
    return true;
}

} // namespace icoLibrary
