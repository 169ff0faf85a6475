#include "serial/serial_settings.h"

#include "serial/serial_link.h"

#include <algorithm>

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
    // Rates that the dialog offers and the link replaces silently are wanted so.
    const bool isAccepted =
        std::find(linkRates.begin(), linkRates.end(), chosen) != linkRates.end();
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
