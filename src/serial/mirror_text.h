#pragma once

#include <QString>

class FrameBuilder;

/// What the mirrors hold, as text for people: 0x and upper-case digits, eight values to a line.
namespace mirrorText {

/// `count` words from VP `address` on, up to the end of VP memory.
QString vpWords(const FrameBuilder &mirrors, int address, int count);

/// `count` registers (256 at most) of `page` from `address` on; like the module's replies they go
/// on at register 0 of the same page. Only the low 8 bits of `page` and `address` count.
QString registers(const FrameBuilder &mirrors, int page, int address, int count);

} // namespace mirrorText
