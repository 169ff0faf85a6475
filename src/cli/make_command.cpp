#include "cli/cli.h"
#include "cli/commands.h"

#include <CLI/CLI.hpp>

void addMake(CLI::App &app, Cli &cli)
{
    CLI::App *make =
        app.add_subcommand("make", "Makes files for a module, without a module or a display");
    make->require_subcommand(1);
    addMakeIco(*make, cli);
    addMakeFont(*make, cli);
    addMakeCfg(*make, cli);
    addMakeBmp(*make, cli);
}
