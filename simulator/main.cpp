#include "simulator/module_dump.h"
#include "simulator/simulator.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>
#include <QSocketNotifier>

#include <climits>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int failed = 1;
constexpr int badUsage = 2;

struct Options
{
    k7::FrameFormat format;
    k7::Behaviour behaviour;
    QString dumpFolder; // empty: no dump
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

Options readOptions(const QCoreApplication &application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription("Simulates a K7 display module on two pseudo-terminals.");
    parser.addOptions({
        {"crc", "Frames on UART2 carry a CRC."},
        {"header", "Header bytes of frames, hexadecimal (default 5AA5).", "bytes", "5AA5"},
        {"delay", "Wait <ms> milliseconds before each reply.", "ms", "0"},
        {"silent", "Never reply."},
        {"noise", "Send garbage before each reply."},
        {"split", "Send replies in pieces of <bytes> bytes; 0: whole.", "bytes", "0"},
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
    options.format.crcEnabled = parser.isSet("crc");
    readHeader(parser.value("header"), options.format);
    options.behaviour.silent = parser.isSet("silent");
    options.behaviour.noisy = parser.isSet("noise");
    readNumber("delay", parser.value("delay"), options.behaviour.delay);
    readNumber("split", parser.value("split"), options.behaviour.split);
    if (parser.isSet("hang-up-after"))
        readNumber("hang-up-after", parser.value("hang-up-after"), options.behaviour.hangUpAfter);
    options.dumpFolder = parser.value("dump");
    if (parser.isSet("dump") && options.dumpFolder.isEmpty())
        exitOnBadUsage("--dump needs the name of a folder");
    return options;
}

// A signal handler may do little more than write: the event loop reads the other end of this pipe.
int signalPipe[2];

void onSignal(int)
{
    const char byte = 0;
    // When the pipe is full, an earlier signal has not been read yet, which will do.
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

/// The read end of a pipe that becomes readable on SIGINT and SIGTERM; -1 when there is none.
int catchSignals()
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return -1;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    const bool caught =
        ::sigaction(SIGINT, &action, nullptr) == 0 && ::sigaction(SIGTERM, &action, nullptr) == 0;
    return caught ? signalPipe[0] : -1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("k7-simulator");
    QCoreApplication::setApplicationVersion(K7_SIMULATOR_VERSION);
    const Options options = readOptions(application);

    const int signalled = catchSignals();
    k7::Simulator simulator(options.format);
    simulator.setBehaviour(options.behaviour);
    if (signalled < 0 || !simulator.start()) {
        print(stderr, "k7-simulator: the system has no pseudo-terminals left");
        return failed;
    }
    QSocketNotifier stop(signalled, QSocketNotifier::Read);
    // Queued, so that it ends the event loop even when it comes before the loop has begun.
    QObject::connect(&stop, &QSocketNotifier::activated, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QObject::connect(&simulator, &k7::Simulator::hungUp, &application, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QObject::connect(&simulator, &k7::Simulator::traced,
                     [](const QString &line) { print(stdout, line); });
    print(stdout, "UART2 " + simulator.uartPath());
    print(stdout, "ED2 " + simulator.ed2Path());
    QCoreApplication::exec();

    if (options.dumpFolder.isEmpty() || k7::dump(simulator.module(), options.dumpFolder))
        return 0;
    print(stderr, "k7-simulator: cannot write all files to " + options.dumpFolder);
    return failed;
}
