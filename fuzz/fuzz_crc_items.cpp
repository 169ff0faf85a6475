#include "crc/crc_check_item.h"

#include <QtGlobal>

/// Any file under any name can be cut into units. The input is a name, a zero byte and the content.
extern "C" int LLVMFuzzerTestOneInput(const quint8 *data, size_t size)
{
    const QByteArray input(reinterpret_cast<const char *>(data), static_cast<int>(size));
    const int end = input.indexOf('\0');
    const QByteArray content = end < 0 ? QByteArray() : input.mid(end + 1);
    const QString name = QString::fromUtf8(end < 0 ? input : input.left(end)).remove('/');
    const crcCheck::Units units = crcCheck::unitsOf(name, content);
    if (!units.items.isEmpty() && !crcCheck::isChecked(name))
        qFatal("units of a file that is not checked");
    return 0;
}
