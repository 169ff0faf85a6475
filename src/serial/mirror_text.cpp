#include "serial/mirror_text.h"

#include "serial/frame_builder.h"

namespace {

/// `valueAt(i)` for each i below `count`, `digits` digits each.
template<typename ValueAt>
QString listing(int count, int digits, ValueAt valueAt)
{
    constexpr int valuesPerLine = 8;
    QString text;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            text += i % valuesPerLine == 0 ? '\n' : ' ';
        text += "0x" + QString::number(valueAt(i), 16).toUpper().rightJustified(digits, '0');
    }
    return text;
}

} // namespace

QString mirrorText::vpWords(const FrameBuilder &mirrors, int address, int count)
{
    return listing(qMin(count, FrameBuilder::vpWords - address), 4,
                   [&](int i) { return mirrors.vpAt(address + i); });
}

QString mirrorText::registers(const FrameBuilder &mirrors, int page, int address, int count)
{
    constexpr int size = FrameBuilder::registersPerPage;
    return listing(qMin(count, size), 2,
                   [&](int i) { return mirrors.registerAt(page % size, (address + i) % size); });
}
