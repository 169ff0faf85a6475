#pragma once

namespace CLI {
class App;
}
class Cli;

/// Adds all commands to the grammar `app`, in the order of the help.
void addCommands(CLI::App &app, Cli &cli);

// Each of these adds a command, or a few that belong together.
void addPorts(CLI::App &app, Cli &cli);
void addFind(CLI::App &app, Cli &cli);
void addInfo(CLI::App &app, Cli &cli);
void addSync(CLI::App &app, Cli &cli);
void addSend(CLI::App &app, Cli &cli);
void addCheck(CLI::App &app, Cli &cli);
void addJpeg(CLI::App &app, Cli &cli);   // show, store
void addDevice(CLI::App &app, Cli &cli); // page, play, stop, nor, backlight, reset
void addRead(CLI::App &app, Cli &cli);
void addWrite(CLI::App &app, Cli &cli);
void addCurve(CLI::App &app, Cli &cli);
void addRaw(CLI::App &app, Cli &cli);
void addRun(CLI::App &app, Cli &cli);
void addCompletion(CLI::App &app, Cli &cli);
void addCrc(CLI::App &app, Cli &cli);
void addMonitor(CLI::App &app, Cli &cli);
void addMake(CLI::App &app, Cli &cli);
void addShowFile(CLI::App &app, Cli &cli);

// Of `k7 make`.
void addMakeBmp(CLI::App &make, Cli &cli);
void addMakeCfg(CLI::App &make, Cli &cli);
void addMakeFont(CLI::App &make, Cli &cli);
void addMakeIco(CLI::App &make, Cli &cli);
