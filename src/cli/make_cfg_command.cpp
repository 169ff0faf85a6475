#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "config/cfg_image.h"
#include "config/cfg_text.h"

namespace {

struct Arguments
{
    std::string text;
    std::string base;
    std::string output;
};

int make(Report &report, const Arguments &given)
{
    const QString textPath = arguments::text(given.text);
    const QString output = arguments::text(given.output);
    const QByteArray base =
        given.base.empty() ? QByteArray() : contentOf(arguments::text(given.base));
    if (!given.base.empty() && !cfgImage::isCfg(base))
        throw Failure{ExitCode::badFile, arguments::text(given.base) + " is no configuration file",
                      "Name a CFG file after --base, or leave it out."};
    const cfgText::Result made = cfgText::toImage(contentOf(textPath), base);
    if (!made.fault.isEmpty())
        throw Failure{ExitCode::badFile, textPath + ": " + made.fault,
                      "k7 show-file prints a text with all keys."};
    writeFile(output, made.bytes);
    tellMade(report, output, made.bytes.size());
    return ExitCode::done;
}

} // namespace

void addMakeCfg(CLI::App &make, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command = make.add_subcommand("cfg", "A configuration file, from its text");
    command->add_option("TEXT.ini", given->text, "As k7 show-file prints it")
        ->type_name("")
        ->required();
    command->add_option("--base", given->base, "A CFG file that keeps what the text does not name")
        ->type_name("FILE");
    command->add_option("-o,--output", given->output, "The file to write")
        ->type_name("FILE")
        ->required();
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return ::make(cli.report(), *given); }); });
}
