#include "engine/links.h"

#include "serial/qt_serial_link.h"

Links Links::ofTheSystem()
{
    auto uart = std::make_unique<QtSerialLink>();
    auto ed2 = std::make_unique<QtSerialLink>();
    // Each knows of the other, which may hold the port that it wants.
    uart->setPeer(*ed2);
    ed2->setPeer(*uart);
    return {std::move(uart), std::move(ed2)};
}
