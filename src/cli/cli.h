#pragma once

#include "cli/device.h"
#include "cli/reach.h"
#include "cli/report.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI
class Exchanges;

/// What the program finds outside itself.
struct Surroundings
{
    std::FILE *out = stdout;                           ///< for results
    std::FILE *err = stderr;                           ///< for all else
    std::function<Links()> links = Links::ofTheSystem; ///< to the module
};

/// What commands share: the report, the options of all commands, and the connection to the module,
/// which is made when first asked for.
class Cli
{
public:
    using Command = std::function<int()>;

    explicit Cli(const Surroundings &surroundings = {});
    ~Cli();

    Report &report() { return m_report; }

    /// Reads the command line, once: the words behind the name of the program, the last one first.
    /// The exit code where that is all.
    std::optional<int> read(std::vector<std::string> words);

    /// The folder whose k7.ini counts; the current one unless a command chooses another.
    void useProject(const QString &folder);
    const QString &project() const { return m_project; }
    /// The device, as the command line, the environment, the project and the user's devices.ini
    /// tell.
    const Device &device();
    /// The size of the screen: `given` if that is not empty, else what the device says.
    std::optional<QSize> screen(const QString &given);

    enum class Access {
        Listens, ///< sends nothing
        Reads,
        Writes, ///< and finds the module that the device names, or throws a Failure
    };
    /// The connection to the module: the same for all commands on the same ports.
    Exchanges &connection(Access access = Access::Reads);
    /// Lets its ports go.
    void disconnect();

    /// How the module is reached and waited for, as the options tell.
    Reach reach() const;
    Patience patience() const;

    /// What to run once the command line has been read; the result is the exit code. Called in the
    /// callback of a subcommand.
    void setCommand(Command command) { m_command = std::move(command); }
    /// Runs it, in a process for each device where the user named several, and tells why it failed
    /// if it did.
    int runCommand();

    /// The command draws glyphs, which takes a QGuiApplication; without a display.
    void setDrawsText() { m_drawsText = true; }
    bool drawsText() const { return m_drawsText; }

    /// The command reads the standard input.
    void setReadsInput() { m_readsInput = true; }

private:
    struct Options
    {
        std::string device;
        std::string uart2;
        std::string ed2;
        std::string header;
        std::string model;
        std::string log;
        std::string progress = "auto";
        double wait = 0;
        int timeout = 0; ///< in milliseconds
        k7::Wiring wiring;
        int verbosity = 0;
        bool crc = false;
        bool simulate = false;
        bool json = false;
        bool isQuiet = false;
    };

    struct Connection;

    void addOptions(CLI::App &app);
    void applyOptions();
    int refusal(const CLI::App &app, const CLI::ParseError &error);
    /// The devices that the user named, in their order; usually one or none.
    QStringList deviceNames() const;
    int runOnEach(QStringList devices);
    DeviceValues givenValues() const;

    const std::function<Links()> m_links;
    const std::unique_ptr<CLI::App> m_app; ///< the grammar, which a command may show
    Report m_report;
    Options m_options;
    Command m_command;
    QString m_project{"."};
    std::unique_ptr<Device> m_device;
    std::unique_ptr<Connection> m_connection;
    bool m_drawsText = false;
    bool m_readsInput = false;
};
