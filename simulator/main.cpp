#include "simulator/module_dump.h"
#include "simulator/quit_on_stop.h"
#include "simulator/screen_window.h"
#include "simulator/serial_wire.h"
#include "simulator/simulator.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QRegularExpression>

#include <climits>
#include <cstdio>
#include <memory>

namespace {

constexpr int failed = 1;
constexpr int badUsage = 2;

struct Options
{
    k7::ModuleSettings module;
    k7::Behaviour behaviour;
    QString uartPort;   // empty: a pseudo-terminal
    QString ed2Port;    // the same
    QString dumpFolder; // empty: no dump
    bool showsScreen = false;
};

void print(std::FILE *file, const QString &line)
{
    std::fprintf(file, "%s\n", line.toLocal8Bit().constData());
    std::fflush(file);
}

[[noreturn]] void exitOnBadUsage(const QString &message)
{
    print(stderr, "k7-simulator: " + message);
    std::exit(badUsage);
}

void readHeader(const QString &text, k7::FrameFormat &format)
{
    static const QRegularExpression fourDigits("\\A[0-9A-Fa-f]{4}\\z");
    if (!fourDigits.match(text).hasMatch())
        exitOnBadUsage("--header needs two bytes as four hexadecimal digits, such as 5AA5, not \"" +
                       text + "\"");
    const QByteArray bytes = QByteArray::fromHex(text.toLatin1());
    format.header1 = static_cast<quint8>(bytes.at(0));
    format.header2 = static_cast<quint8>(bytes.at(1));
}

void readNumber(const QString &name, const QString &text, int &number)
{
    bool isNumber = false;
    number = text.toInt(&isNumber);
    if (!isNumber || number < 0)
        exitOnBadUsage(QString("--%1 needs a whole number from 0 to %2, not \"%3\"")
                           .arg(name)
                           .arg(INT_MAX)
                           .arg(text));
}

void readLayout(const QString &text, k7::Layout &layout)
{
    const int index = QStringList{"K7UID1", "K7UID2", "K7UID3"}.indexOf(text);
    if (index < 0)
        exitOnBadUsage("--layout needs K7UID1, K7UID2 or K7UID3, not \"" + text + "\"");
    layout = static_cast<k7::Layout>(index);
}

void readScreen(const QString &text, QSize &screen)
{
    static const QRegularExpression size("\\A([1-9][0-9]{0,3})x([1-9][0-9]{0,3})\\z");
    const QRegularExpressionMatch match = size.match(text);
    if (!match.hasMatch())
        exitOnBadUsage("--screen needs a size of up to 9999x9999, such as 480x272, not \"" + text +
                       "\"");
    screen = {match.captured(1).toInt(), match.captured(2).toInt()};
}

Options readOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Simulates a K7 display module on two pseudo-terminals or serial ports.");
    parser.addOptions({
        {"crc", "Frames on UART2 carry a CRC."},
        {"header", "Header bytes of frames, hexadecimal (default 5AA5).", "bytes", "5AA5"},
        {"layout", "Know the downloads of <layout> (default K7UID1).", "layout", "K7UID1"},
        {"uart-port", "Use serial port <name> for UART2 instead of a pseudo-terminal.", "name"},
        {"ed2-port", "Use serial port <name> for ED2 instead of a pseudo-terminal.", "name"},
        {"uart-rate", "Listen on UART2 at <rate> bit/s (default 115200).", "rate", "115200"},
        {"real-time", "Be as slow as the lines, and deaf while the flash is programmed."},
        {"protect-flash", "Acknowledge what is sent to the flash, and keep none of it."},
        {"screen", "Show the screen of the module, of <size>.", "size"},
        {"delay", "Wait <ms> milliseconds before each reply.", "ms", "0"},
        {"silent", "Never reply."},
        {"noise", "Send garbage before each reply."},
        {"split", "Send replies in pieces of <bytes> bytes; 0: whole.", "bytes", "0"},
        {"latency", "Gather bytes for <ms> milliseconds, as a USB adapter does.", "ms", "0"},
        {"jitter", "Hold each piece of a reply back for up to <ms> milliseconds.", "ms", "0"},
        {"hang-up-after", "Unplug the module after <bytes> received bytes.", "bytes"},
        {"dump", "Write the module's memory to folder <dir> at the end.", "dir"},
    });
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(application.arguments()))
        exitOnBadUsage(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();
    if (parser.isSet(version))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        exitOnBadUsage("unexpected argument \"" + parser.positionalArguments().constFirst() + "\"");

    Options options;
    options.module.format.crcEnabled = parser.isSet("crc");
    readHeader(parser.value("header"), options.module.format);
    readLayout(parser.value("layout"), options.module.layout);
    readNumber("uart-rate", parser.value("uart-rate"), options.module.uartRate);
    if (options.module.uartRate == 0)
        exitOnBadUsage("--uart-rate needs a rate above 0");
    options.uartPort = parser.value("uart-port");
    options.ed2Port = parser.value("ed2-port");
    options.behaviour.realTime = parser.isSet("real-time");
    options.behaviour.flashProtected = parser.isSet("protect-flash");
    options.showsScreen = parser.isSet("screen");
    if (options.showsScreen)
        readScreen(parser.value("screen"), options.module.screen);
    options.behaviour.silent = parser.isSet("silent");
    options.behaviour.noisy = parser.isSet("noise");
    readNumber("delay", parser.value("delay"), options.behaviour.delay);
    readNumber("split", parser.value("split"), options.behaviour.split);
    readNumber("latency", parser.value("latency"), options.behaviour.latency);
    readNumber("jitter", parser.value("jitter"), options.behaviour.jitter);
    if (parser.isSet("hang-up-after"))
        readNumber("hang-up-after", parser.value("hang-up-after"), options.behaviour.hangUpAfter);
    options.dumpFolder = parser.value("dump");
    if (parser.isSet("dump") && options.dumpFolder.isEmpty())
        exitOnBadUsage("--dump needs the name of a folder");
    return options;
}

/// The wire of `link`; null where none is named and the system has no pseudo-terminals.
k7::Wire *makeWire(const QString &port, const k7::ModuleSettings &module, k7::Link link)
{
    return port.isEmpty() ? k7::makeTerminal(nullptr) : new k7::SerialWire(port, module.rate(link));
}

/// The application; without a window system where no screen is shown.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char *argv[])
{
    for (int i = 1; i < argc; ++i)
        if (qstrncmp(argv[i], "--screen", 8) == 0)
            return std::make_unique<QApplication>(argc, argv);
    return std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace

int main(int argc, char *argv[])
{
    const auto application = makeApplication(argc, argv);
    QCoreApplication::setApplicationName("k7-simulator");
    QCoreApplication::setApplicationVersion(K7_SIMULATOR_VERSION);
    const Options options = readOptions(*application);

    k7::Simulator simulator(options.module);
    simulator.setBehaviour(options.behaviour);
    if (!k7::quitOnStop() ||
        !simulator.start(makeWire(options.uartPort, options.module, k7::Link::Uart2),
                         makeWire(options.ed2Port, options.module, k7::Link::Ed2))) {
        const QString ports = QStringList{options.uartPort, options.ed2Port}.join(' ').trimmed();
        print(stderr, ports.isEmpty() ? "k7-simulator: the system has no pseudo-terminals left"
                                      : "k7-simulator: cannot open " + ports);
        return failed;
    }
    QObject::connect(&simulator, &k7::Simulator::hungUp, application.get(), &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QObject::connect(&simulator, &k7::Simulator::traced,
                     [](const QString &line) { print(stdout, line); });
    for (const auto &[link, path] :
         {std::pair("UART2 ", simulator.uartPath()), std::pair("ED2 ", simulator.ed2Path())})
        if (!path.isEmpty())
            print(stdout, link + path);
    std::unique_ptr<k7::ScreenWindow> screen;
    if (options.showsScreen) {
        screen = std::make_unique<k7::ScreenWindow>(simulator);
        screen->show();
    }
    QCoreApplication::exec();

    if (options.dumpFolder.isEmpty() || k7::dump(simulator.module(), options.dumpFolder))
        return 0;
    print(stderr, "k7-simulator: cannot write all files to " + options.dumpFolder);
    return failed;
}
