#include "cli/commands.h"

#include <initializer_list>

void addCommands(CLI::App &app, Cli &cli)
{
    for (const auto add : {addPorts, addFind, addInfo, addSync, addSend, addCheck, addCrc, addJpeg,
                           addDevice, addRead, addWrite, addCurve, addRaw, addMonitor, addMake,
                           addShowFile, addRun, addCompletion})
        add(app, cli);
}
