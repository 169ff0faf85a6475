#include "serial/serial_settings.h"

#include "serial/serial_link.h"

#include <algorithm>
#include <array>

namespace {

constexpr int fallbackRate = 115200;

} // namespace

QString devicePath(const QString &portName)
{
    if (portName.startsWith('/'))
        return portName;
    constexpr int prefixLength = 3; // of "COM"
    const bool needsPrefix = portName.mid(prefixLength).toInt() > 9;
    return needsPrefix ? R"(\\.\)" + portName : portName;
}

int linkRate(int chosen)
{
    constexpr std::array<int, 11> accepted{1200,  2400,  4800,   9600,   19200,  38400,
                                           56000, 57600, 115200, 128000, 6250000};
    // Rates that the dialog offers and the link replaces silently are wanted so.
    const bool isAccepted = std::find(accepted.begin(), accepted.end(), chosen) != accepted.end();
    return isAccepted ? chosen : fallbackRate;
}

int waitRate(int chosen)
{
    return chosen <= 0 ? fallbackRate : chosen;
}

void applyToLink(const SerialSettings &settings, SerialLink &link)
{
    link.setPortName(devicePath(settings.portName));
    link.setBaudRate(linkRate(settings.baudRate));
}
