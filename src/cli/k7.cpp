#include "cli/cli.h"
#include "cli/console.h"
#include "cli/interrupt.h"
#include "common/qt_remarks.h"

#include <QGuiApplication>
#include <QTextCodec>

#include <memory>

namespace {

/// Programs without a locale, as in containers, work on files with names in UTF-8 all the same.
void useUtf8WithoutLocale()
{
    constexpr int usAscii = 3; // its number in the register of character sets
    if (QTextCodec::codecForLocale()->mibEnum() == usAscii)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[], bool drawsText)
{
    if (!drawsText)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", console::platform);
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int main(int argc, char *argv[])
{
    hideQtRemarks();
    Cli cli;
    if (const auto code = cli.read(console::words(argc, argv)))
        return *code;
    const auto application = makeApplication(argc, argv, cli.drawsText());
    useUtf8WithoutLocale();
    interrupt::watch();
    const int code = cli.runCommand();
    return cli.report().isCut() ? ExitCode::interrupted : code;
}
