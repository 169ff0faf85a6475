// On its own, because what declares termios2 clashes with <termios.h>, which knows no odd rates.
#include "simulator/line_rate.h"

#include <asm/termbits.h>
#include <sys/ioctl.h>

int k7::lineRate(int descriptor)
{
    termios2 settings = {};
    return ::ioctl(descriptor, TCGETS2, &settings) == 0 ? static_cast<int>(settings.c_ospeed) : 0;
}
