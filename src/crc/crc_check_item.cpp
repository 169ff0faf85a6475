#include "crc/crc_check_item.h"

#include "common/file_number.h"
#include "common/picture.h"
#include "crc/file_crc.h"

#include <QFileInfo>

namespace crcCheck {

namespace {

constexpr int blockBytes = 0x40000;
constexpr int pageBytes = 0x1000;
constexpr int bootBytes = 0x1000; // of the operating system, which the module keeps elsewhere

// Kinds of units.
constexpr quint8 flashKind = 0;
constexpr quint8 pictureKind = 1;
constexpr quint8 systemKind = 2;

CrcCheckItem item(quint8 kind, int unit, const QString &name, const char *data, int bytes)
{
    CrcCheckItem item;
    item.request = static_cast<quint16>(0x5A00 | kind);
    item.unit = static_cast<quint16>(unit);
    item.name = name;
    item.calculatedCrc = crcText(swapped(fileCrc(data, bytes)));
    return item;
}

} // namespace

QVector<CrcCheckItem> flashUnits(int number, const QString &name, const QByteArray &content)
{
    QVector<CrcCheckItem> items;
    for (int offset = 0; content.size() - offset >= pageBytes; offset += blockBytes) {
        const int block = offset / blockBytes;
        const int pages = qMin(content.size() - offset, blockBytes) / pageBytes;
        const int sector = (number % 0x100 + block) & 0xFF;
        items.append(item(flashKind, sector << 8 | pages, name + '_' + QString::number(block),
                          content.constData() + offset, pages * pageBytes));
    }
    return items;
}

CrcCheckItem pictureUnit(int number, const QString &name, const QByteArray &pixels)
{
    return item(pictureKind, number, name, pixels.constData(), pixels.size());
}

CrcCheckItem systemUnit(const QString &name, const QByteArray &content)
{
    const int bytes = content.size() - bootBytes;
    return item(systemKind, bytes, name, content.constData() + qMin(bootBytes, content.size()),
                qMax(0, bytes));
}

namespace {

Units pictureUnits(int number, const QString &name, const QByteArray &content)
{
    const QImage image = picture::decode(content);
    const QByteArray pixels = picture::toRgb565(image);
    return {{pictureUnit(number, name, pixels)},
            image.isNull() ? &picture::refusal(content) : nullptr};
}

} // namespace

quint16 swapped(quint16 crc)
{
    return static_cast<quint16>(crc << 8 | crc >> 8);
}

QString crcText(quint16 number)
{
    return QString::number(number, 16).toUpper();
}

bool isChecked(const QString &name)
{
    const QStringList suffixes{"bin", "ico", "bmp"};
    return suffixes.contains(QFileInfo(name).suffix(), Qt::CaseInsensitive);
}

Units unitsOf(const QString &name, const QByteArray &content)
{
    const int number = leadingNumber(name);
    if (!isChecked(name))
        return {};
    if (QFileInfo(name).suffix().compare("bmp", Qt::CaseInsensitive) == 0)
        return pictureUnits(number, name, content);
    if (number > 0)
        return {flashUnits(number, name, content)};
    if (!name.startsWith("ZOLTOS"))
        return {};
    return {{systemUnit(name, content)}};
}

} // namespace crcCheck
