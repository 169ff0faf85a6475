#include "app/dialog.h"
#include "simulator/simulator.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QStandardPaths>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    QApplication::setApplicationName("VORAII_Tool");
    QApplication::setApplicationVersion(VORAII_VERSION);
    // The geometry of the pages is drawn for this style.
    QApplication::setStyle("Fusion");

    const QCommandLineOption simulate("simulate",
                                      "Start a simulated module and use its two ports.");
    const QCommandLineOption port(
        "port", "Offer a port that the system does not list (repeatable).", "NAME");
    QCommandLineParser parser;
    parser.setApplicationDescription("Talks to K7 display modules and prepares their files.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({simulate, port});
    parser.process(application);

    k7::Simulator simulator;
    Dialog dialog;
    dialog.setDefaultFolder(QStandardPaths::writableLocation(QStandardPaths::DesktopLocation) +
                            "/ZOLT_SET");
    dialog.setResolutionText("480X272");
    dialog.offerPorts(parser.values(port));
    if (parser.isSet(simulate)) {
        if (!simulator.start()) {
            std::fputs("The simulated module needs two pseudo-terminals, and there are none.\n",
                       stderr);
            return 1;
        }
        dialog.offerPorts({simulator.uartPath(), simulator.ed2Path()});
        dialog.usePorts(simulator.uartPath(), simulator.ed2Path());
    }
    dialog.show();
    return QApplication::exec();
}
