#include "app/dialog.h"
#include "app/screenshots.h"
#include "app/tour.h"
#include "serial/serial_set.h"
#include "simulator/simulator.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>
#include <QStandardPaths>

#include <cstdio>
#include <memory>

namespace {

/// The application; without a window system where only a text is asked for.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[])
{
    for (int i = 1; i < argc; ++i)
        for (const char *option : {"-h", "--help", "--help-all", "-v", "--version"})
            if (qstrcmp(argv[i], option) == 0)
                return std::make_unique<QCoreApplication>(argc, argv);
    return std::make_unique<QApplication>(argc, argv);
}

/// The exit status of the tour.
int takeTour(Dialog &dialog, k7::Simulator &simulator, const QString &folder)
{
    if (simulator.uartPath().isEmpty()) {
        std::fputs("The tour needs --simulate.\n", stderr);
        return 2;
    }
    const bool allHeld = runTour(dialog, simulator, folder, [](const QString &line) {
        std::puts(qPrintable(line));
        std::fflush(stdout);
    });
    std::puts(allHeld ? "All comparisons held." : "Some comparisons did not hold.");
    return allHeld ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const auto application = makeApplication(argc, argv);
    QApplication::setApplicationName("VORAII_Tool");
    QApplication::setApplicationVersion(VORAII_VERSION);

    const QCommandLineOption simulate("simulate",
                                      "Start a simulated module and use its two ports.");
    const QCommandLineOption simulateAlone("simulate-without-ports",
                                           "The same, where the system lists no serial port.");
    const QCommandLineOption port(
        "port", "Offer a port that the system does not list (repeatable).", "NAME");
    const QCommandLineOption language("language", "Choose the language: English or 中文.", "TEXT");
    const QCommandLineOption screenshots(
        "screenshots", "Save a picture of every page in both languages, and exit.", "DIR");
    const QCommandLineOption tour(
        "tour",
        "With --simulate: drive the window through all it can do, compare what comes of it, save "
        "pictures of the pages, and exit.",
        "DIR");
    QCommandLineParser parser;
    parser.setApplicationDescription("Talks to K7 display modules and prepares their files.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({simulate, simulateAlone, port, language, screenshots, tour});
    parser.process(*application);

    // The geometry of the pages is drawn for this style.
    QApplication::setStyle("Fusion");
    // Wayland takes the icon from the desktop entry, others from the window: a PNG, because the
    // plugin that reads SVG may not be installed.
    QApplication::setDesktopFileName("voraii-tool");
    QApplication::setWindowIcon(QIcon(":/voraii-tool.png"));
    k7::Simulator simulator;
    Dialog dialog;
    dialog.setDefaultFolder(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) +
                            "/ZOLT_SET");
    dialog.setResolutionText("480X272");
    dialog.offerPorts(parser.values(port));
    const bool isAlone = parser.isSet(simulateAlone) && SerialSet::systemPorts().isEmpty();
    if (parser.isSet(simulate) || isAlone) {
        if (!simulator.start()) {
            std::fputs("The simulated module needs two pseudo-terminals, and there are none.\n",
                       stderr);
            return 1;
        }
        dialog.offerPorts({simulator.uartPath(), simulator.ed2Path()});
        dialog.usePorts(simulator.uartPath(), simulator.ed2Path());
    }
    dialog.selectLanguage(parser.value(language));
    dialog.show();
    if (parser.isSet(screenshots)) {
        if (saveScreenshots(dialog, parser.value(screenshots)))
            return 0;
        std::fputs("Some pictures could not be written.\n", stderr);
        return 1;
    }
    if (parser.isSet(tour))
        return takeTour(dialog, simulator, parser.value(tour));
    return QApplication::exec();
}
