#include "app/desktop.h"
#include "app/screenshots.h"
#include "app/simulated_dialog.h"
#include "app/tour.h"
#include "common/qt_remarks.h"
#include "serial/system_ports.h"
#include "simulator/screen_window.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QIcon>
#include <QScreen>
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

/// A module as slow as a real one, and the time that the window shares with it.
struct Simulation
{
    k7::SharedTime time{k7::SharedTime::Pace::OfTheSystem};
    k7::Simulator module{k7::ModuleSettings(), &time};
};

/// Starts the module, and opens a window that can reach it.
std::unique_ptr<Dialog> startedDialog(Simulation &simulation)
{
    k7::Behaviour behaviour;
    behaviour.realTime = true;
    simulation.module.setBehaviour(behaviour);
    simulation.module.start();
    return simulatedDialog(simulation.module, simulation.time);
}

/// Shows `screen` beside `dialog` where the desktop has room for both, else wherever it comes to
/// lie. The dialog is the window in use, and closing it ends the program.
void showBeside(k7::ScreenWindow &screen, Dialog &dialog)
{
    constexpr int gap = 8;
    screen.setAttribute(Qt::WA_QuitOnClose, false);
    const QRect desktop = dialog.screen()->availableGeometry();
    const QSize tool = dialog.frameGeometry().size();
    const int room = desktop.width() - tool.width() - gap - screen.sizeHint().width();
    if (room >= 0) {
        dialog.move(desktop.left() + room / 2, dialog.y());
        screen.move(dialog.x() + tool.width() + gap, dialog.y());
    }
    screen.show();
    dialog.activateWindow();
    dialog.raise();
}

/// The exit status of the tour.
int takeTour(Dialog &dialog, Simulation *simulation, k7::ScreenWindow *screen,
             const QString &folder)
{
    if (!simulation) {
        std::fputs("The tour needs --simulate.\n", stderr);
        return 2;
    }
    const auto tell = [](const QString &line) {
        std::puts(qPrintable(line));
        std::fflush(stdout);
    };
    const TourResult result =
        runTour(dialog, simulation->module, simulation->time, *screen, folder, tell);
    tell(QString(QDir(folder).exists()
                     ? "%1 of %2 comparisons held. The pictures are in %3."
                     : "%1 of %2 comparisons held. The folder %3 could not be made.")
             .arg(result.held)
             .arg(result.all)
             .arg(QDir::toNativeSeparators(folder)));
    return result.held == result.all ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    prepareDesktop();
    hideQtRemarks();
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const auto application = makeApplication(argc, argv);
    QApplication::setApplicationName("VORAII_Tool");
    QApplication::setApplicationVersion(VORAII_VERSION);

    const QCommandLineOption simulate("simulate",
                                      "Start a simulated module, use its two ports, and show its "
                                      "screen.");
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
        "pictures of the pages and of the module's screen, and exit.",
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
    const bool isAlone = parser.isSet(simulateAlone) && systemPorts().isEmpty();
    const bool isSimulated = parser.isSet(simulate) || isAlone;
    const auto simulation = isSimulated ? std::make_unique<Simulation>() : nullptr;
    const auto window = simulation ? startedDialog(*simulation) : std::make_unique<Dialog>();
    Dialog &dialog = *window;
    dialog.setDefaultFolder(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) +
                            "/ZOLT_SET");
    dialog.setResolutionText("480X272");
    dialog.offerPorts(parser.values(port));
    if (simulation)
        useModule(dialog, simulation->module);
    dialog.selectLanguage(parser.value(language));
    dialog.show();
    if (parser.isSet(screenshots)) {
        if (saveScreenshots(dialog, parser.value(screenshots)))
            return 0;
        std::fputs("Some pictures could not be written.\n", stderr);
        return 1;
    }
    std::unique_ptr<k7::ScreenWindow> screen;
    if (simulation) {
        screen = std::make_unique<k7::ScreenWindow>(simulation->module);
        showBeside(*screen, dialog);
    }
    if (parser.isSet(tour))
        return takeTour(dialog, simulation.get(), screen.get(), parser.value(tour));
    return QApplication::exec();
}
