#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/input_files.h"
#include "font/zero_font.h"

#include <QFontDatabase>

namespace {

struct Arguments
{
    std::string family;
    std::string style;
    std::string output;
    GlyphStyle glyphs;
};

QFont fontOf(const QString &family, const QString &style)
{
    const QFontDatabase fonts;
    constexpr int pointSize = 8; // as the window begins with; the glyphs have their own
    if (!fonts.hasFamily(family))
        throw Failure{ExitCode::badFile, "there is no font family " + family,
                      "Install it; fc-list : family prints those that there are."};
    if (style.isEmpty())
        return QFont(family, pointSize);
    if (!fonts.styles(family).contains(style))
        throw Failure{ExitCode::badFile, family + " has no style " + style,
                      "It has " + fonts.styles(family).join(", ") + '.'};
    return fonts.font(family, style, pointSize);
}

int make(Report &report, const Arguments &given)
{
    GlyphStyle style = given.glyphs;
    style.font = fontOf(arguments::text(given.family), arguments::text(given.style));
    const QString output = arguments::text(given.output);
    const QByteArray font = zeroFont::make(style, [&](int percent) {
        checkInterrupt();
        report.progress(output, percent);
    });
    writeFile(output, font);
    tellMade(report, output, font.size());
    return ExitCode::done;
}

} // namespace

void addMakeFont(CLI::App &make, Cli &cli)
{
    const auto given = std::make_shared<Arguments>();
    CLI::App *command = make.add_subcommand("font", "The built-in ASCII font, from a desktop font");
    command->add_option("FAMILY", given->family, "Such as \"DejaVu Sans Mono\"")
        ->type_name("")
        ->required();
    command->add_option("--style", given->style, "Such as Bold; the plain one if left out")
        ->type_name("STYLE");
    GlyphStyle &glyphs = given->glyphs;
    const auto number = [command](const char *name, int &value, const char *help) {
        command->add_option(name, value, help)
            ->type_name("N")
            ->transform(arguments::number(-500, 500))
            ->capture_default_str();
    };
    number("--hor-scale", glyphs.horScale, "Horizontal scale, in twentieths above 1");
    number("--ver-scale", glyphs.verScale, "Vertical scale, in twentieths above 1");
    number("--hor-shift", glyphs.horShift, "Shift to the right, in tenths of a pixel");
    number("--ver-shift", glyphs.verShift, "Shift downwards, in tenths of a pixel");
    command->add_option("-o,--output", given->output, "The file to write")
        ->type_name("FILE")
        ->required();
    command->callback([&cli, given] {
        cli.setDrawsText();
        cli.setCommand([&cli, given] { return ::make(cli.report(), *given); });
    });
}
