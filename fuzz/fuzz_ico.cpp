#include "ico/ico_library.h"
#include "ico/ico_text.h"

#include <QMap>

#include <QtEndian>

#include <algorithm>

namespace {

/// What `file` holds up to an icon that runs past its end, by the bits of its entries: 8 low bits
/// of width and height each, their 2 high ones, an address of 28 bits in words, the key colour.
QVector<IconRecord> expectedIcons(const QByteArray &file, bool &isWhole)
{
    QVector<IconRecord> icons;
    for (int position = 0; position <= IconRecord::maxPosition; ++position) {
        const auto entry = qFromBigEndian<quint64>(file.constData() + 8 * position);
        if (entry >> 40 == 0)
            continue;
        const auto width = static_cast<int>(entry >> 56 | (entry >> 38 & 0x300));
        const auto height = static_cast<int>((entry >> 48 & 0xFF) | (entry >> 36 & 0x300));
        const auto start = static_cast<int>(entry >> 15 & 0x1FFFFFFE);
        isWhole = start + 2 * width * height <= file.size();
        if (!isWhole)
            break;
        icons.append({position, width, height, file.mid(8 * position, 8), file, start});
    }
    return icons;
}

bool isSame(const IconRecord &a, const IconRecord &b)
{
    return a.position == b.position && a.width == b.width && a.height == b.height &&
           a.entry.mid(6) == b.entry.mid(6) && a.pixels() == b.pixels();
}

} // namespace

namespace {

void goToTextAndBack(const QByteArray &file, const QVector<IconRecord> &icons)
{
    qint64 bytes = 0;
    for (const IconRecord &icon : icons)
        bytes += icon.pixelBytes();
    if (bytes > 10000)
        return;
    const icoText::Parts parts = icoText::fromLibrary(file);
    QMap<QString, QByteArray> files{{icoText::restName, parts.rest}};
    for (const icoText::Picture &picture : parts.pictures)
        files[picture.name] = icoText::pngOf(picture.icon);
    const auto load = [&files](const QString &name) { return files.value(name); };
    if (icoText::toLibrary(parts.text, load).bytes != file)
        qFatal("the text lost something");
}

} // namespace

/// Any file of the length of an index can be read as a library. What was read can be looked at and
/// written, and reads back the same.
///
/// Its text form and pictures say all of a library that is not too large for a quick look.
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
    bool isWhole = true;
    const QVector<IconRecord> expected = expectedIcons(file, isWhole);
    if (icoLibrary::read(file, records) != isWhole ||
        !std::equal(records.begin(), records.end(), expected.begin(), expected.end(), isSame))
        qFatal("the icons are not those of the index");
    if (isWhole)
        goToTextAndBack(file, records);
    for (const IconRecord &record : qAsConst(records))
        if (record.pixelBytes() < 10000)
            icon::toImage(record, true);
    const auto written = icoLibrary::write(records);
    QVector<IconRecord> again;
    if (!written || !icoLibrary::read(*written, again))
        qFatal("a library that was written cannot be read");
    // Without a size an icon is only seen by a high address, which it has no more.
    records.erase(
        std::remove_if(records.begin(), records.end(),
                       [](const IconRecord &icon) { return icon.width + icon.height == 0; }),
        records.end());
    if (!std::equal(records.begin(), records.end(), again.begin(), again.end(), isSame))
        qFatal("an icon came back different");
    return 0;
}
