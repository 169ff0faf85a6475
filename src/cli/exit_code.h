#pragma once

/// How `k7` ends; scripts rely on these numbers.
enum ExitCode {
    done = 0,         ///< done, or equal
    differs = 1,      ///< the module holds something else, and nothing was to be sent
    usage = 2,        ///< the command line makes no sense
    badFile = 3,      ///< a file is missing, damaged or cannot be written
    noPort = 4,       ///< a port is absent, busy or forbidden
    noAnswer = 5,     ///< the module did not answer, or went away
    stillDiffers = 6, ///< sent, and the check still differs
    interrupted = 130 ///< Ctrl-C; 128 and the number of the signal, as shells have it
};
