#include "cli/cli.h"

#include "cli/arguments.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/each_device.h"
#include "cli/exchanges.h"
#include "cli/failure.h"
#include "cli/ini_file.h"
#include "cli/memory.h"

#include <CLI/CLI.hpp>

#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <algorithm>

namespace {

constexpr char description[] =
    "Talks to a K7 display module, and keeps a project on it up to date.";
constexpr char exitCodes[] =
    "Exit codes: 0 done or equal; 1 differs (check, --dry-run); 2 usage; 3 a file is missing,\n"
    "damaged or cannot be written; 4 a port is absent, busy or forbidden, or leads to another\n"
    "module; 5 the module did not answer or went away; 6 sent, and the check still differs;\n"
    "130 interrupted.";

constexpr double year = 365 * 86400.0; // in seconds

constexpr char deviceGroup[] = "Device";
constexpr char outputGroup[] = "Output";

constexpr int longestDelay = 60000; ///< of a simulated adapter, in milliseconds

QString devicesFile()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/k7/devices.ini";
}

/// What devices.ini says of the device `name`; nothing for no name.
DeviceValues userValues(const QString &name)
{
    if (name.isEmpty())
        return {};
    const IniSections sections = readIniFile(devicesFile());
    if (!sections.contains(name))
        throw Failure{ExitCode::usage, QString("there is no device \"%1\"").arg(name),
                      QString("%1 has %2.")
                          .arg(devicesFile(),
                               sections.isEmpty() ? QString("none") : sections.keys().join(", "))};
    return sections.value(name);
}

/// What the environment says of the device.
DeviceValues environmentValues()
{
    DeviceValues values;
    for (const auto &[name, variable] :
         {std::pair("device", "K7_DEVICE"), {"uart2", "K7_UART2"}, {"ed2", "K7_ED2"}}) {
        const QString text = qEnvironmentVariable(variable);
        if (!text.isEmpty())
            values.insert(name, text);
    }
    return values;
}

/// All that is said of the device: by the options that were `typed`, by the `project`, and by what
/// lies outside of both. The first that says something counts, as docs/command-line.md has them.
DeviceValues allValues(const DeviceValues &typed, const DeviceValues &project)
{
    DeviceValues others = overlaid(project, environmentValues());
    if (!typed.contains("device")) {
        const DeviceValues said = overlaid(others, typed);
        return overlaid(userValues(said.value("device")), said);
    }
    const DeviceValues device = userValues(typed.value("device"));
    const QString wanted = project.value("id");
    if (!wanted.isEmpty() && device.value("id", wanted).compare(wanted, Qt::CaseInsensitive) != 0)
        throw Failure{ExitCode::usage,
                      QString("the project is for the device ID %1, and \"%2\" has %3")
                          .arg(wanted, typed.value("device"), device.value("id")),
                      "Choose the other device, or correct the id of k7.ini or devices.ini."};
    // Ports of another source may lead to another module.
    if (device.contains("uart2") || device.contains("ed2")) {
        others.remove("uart2");
        others.remove("ed2");
    }
    return overlaid(overlaid(others, device), typed);
}

} // namespace

struct Cli::Connection
{
    Connection(Cli &cli, const Device &device)
        : links(device, cli.reach()), exchanges(links, cli.patience(), cli.m_report)
    {
    }

    DeviceLinks links;
    Exchanges exchanges;
};

Cli::Cli(const Surroundings &surroundings)
    : m_links(surroundings.links)
    , m_app(std::make_unique<CLI::App>(description, "k7"))
    , m_report(surroundings.out, surroundings.err)
{
}

Cli::~Cli() = default;

std::optional<int> Cli::read(std::vector<std::string> words)
{
    // What is wrong with the words must be told as they want it.
    Report::Settings settings;
    if (std::count(words.begin(), words.end(), "--json") > 0)
        settings.format = Report::Format::Json;
    m_report.configure(settings);
    CLI::App &app = *m_app;
    app.set_version_flag("--version", "k7 " K7_VERSION, "Print the version and exit");
    app.footer(exitCodes);
    app.require_subcommand(0, 1);
    app.fallthrough();
    addOptions(app);
    addCommands(app, *this);
    try {
        app.parse(words);
    } catch (const CLI::ParseError &error) {
        return refusal(app, error);
    }
    applyOptions();
    return std::nullopt;
}

int Cli::refusal(const CLI::App &app, const CLI::ParseError &error)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(error);
    return m_report.fail(ExitCode::usage, console::decoded(error.what()).trimmed(),
                         "See `k7 --help`, or `k7 COMMAND --help`.");
}

void Cli::addOptions(CLI::App &app)
{
    Options &options = m_options;
    app.add_option("--device", options.device,
                   "A device of devices.ini, or several: a,b; else K7_DEVICE")
        ->type_name("NAME")
        ->group(deviceGroup);
    app.add_option("--uart2", options.uart2,
                   "The port of the UART2 link; else K7_UART2, or the only one")
        ->type_name("PORT[@RATE]")
        ->group(deviceGroup);
    app.add_option("--ed2", options.ed2, "The port of the fast ED2 link; else K7_ED2")
        ->type_name("PORT[@RATE]")
        ->group(deviceGroup);
    app.add_option("--header", options.header, "The first two bytes of frames (default 5AA5)")
        ->type_name("HEX")
        ->group(deviceGroup);
    app.add_flag("--crc", options.crc, "Frames carry a CRC")->group(deviceGroup);
    app.add_option("--model", options.model, "K7UID1 (default), K7UID2 or K7UID3")
        ->type_name("MODEL")
        ->group(deviceGroup);
    auto *simulate =
        app.add_flag("--simulate", options.simulate, "Use a simulated module in this program");
    simulate->group(deviceGroup);
    app.add_option("--latency", options.wiring.latency,
                   "Its replies come as through an adapter that gathers bytes so long")
        ->type_name("MS")
        ->check(CLI::Range(0, longestDelay))
        ->needs(simulate)
        ->group(deviceGroup);
    app.add_option("--jitter", options.wiring.jitter, "They come up to so much later")
        ->type_name("MS")
        ->check(CLI::Range(0, longestDelay))
        ->needs(simulate)
        ->group(deviceGroup);
    app.add_option("--wait", options.wait,
                   "Wait so long for a port that is absent or in use, or a silent module")
        ->type_name("SECONDS")
        ->check(arguments::seconds(0, year))
        ->group(deviceGroup);
    options.timeout = Patience().answer;
    app.add_option("--timeout", options.timeout,
                   "Wait so long for an answer, beyond what the line takes (default 250)")
        ->type_name("MS")
        ->transform(arguments::number(1, 60000))
        ->group(deviceGroup);
    app.add_flag("--json", options.json, "One JSON object a line, all on stdout")
        ->group(outputGroup);
    app.add_option("--progress", options.progress, "auto (default), bar, plain or none")
        ->type_name("KIND")
        ->check(CLI::IsMember({"auto", "bar", "plain", "none"}))
        ->group(outputGroup);
    auto *quiet = app.add_flag("-q,--quiet", options.isQuiet, "Results and errors only");
    quiet->group(outputGroup);
    app.add_flag("-v,--verbose", options.verbosity, "Say more")
        ->excludes(quiet)
        ->group(outputGroup);
    app.add_option("--log", options.log, "Append all that goes over the links to FILE")
        ->type_name("FILE")
        ->group(outputGroup);
}

void Cli::applyOptions()
{
    Report::Settings settings;
    settings.format = m_options.json ? Report::Format::Json : Report::Format::Text;
    settings.isQuiet = m_options.isQuiet;
    settings.verbosity = m_options.verbosity;
    const QStringList kinds{"auto", "bar", "plain", "none"};
    settings.progress =
        static_cast<Report::Progress>(kinds.indexOf(QString::fromStdString(m_options.progress)));
    m_report.configure(settings);
}

QStringList Cli::deviceNames() const
{
    const DeviceValues said = overlaid(environmentValues(), givenValues());
    return said.value("device").split(',', Qt::SkipEmptyParts);
}

int Cli::runOnEach(QStringList devices)
{
    if (!m_options.uart2.empty() || !m_options.ed2.empty())
        throw Failure{ExitCode::usage,
                      "--uart2 and --ed2 are the ports of one device, not of several",
                      "Leave them out: devices.ini tells the ports of each."};
    if (devices.removeDuplicates() > 0)
        throw Failure{ExitCode::usage, "a device is named twice", "Name each of them once."};
    return runOnEachDevice({devices, QCoreApplication::arguments().mid(1),
                            console::decoded(m_options.log), m_readsInput},
                           m_report);
}

void Cli::useProject(const QString &folder)
{
    if (m_project != folder)
        m_device.reset();
    m_project = folder;
}

DeviceValues Cli::givenValues() const
{
    const std::pair<const char *, const std::string &> texts[] = {
        {"device", m_options.device}, {"uart2", m_options.uart2}, {"ed2", m_options.ed2},
        {"header", m_options.header}, {"model", m_options.model},
    };
    DeviceValues values;
    for (const auto &[name, text] : texts)
        if (!text.empty())
            values.insert(name, console::decoded(text));
    if (m_options.crc)
        values.insert("crc", "true");
    return values;
}

const Device &Cli::device()
{
    if (!m_device) {
        const DeviceValues project = readIniFile(m_project + "/k7.ini").value("project");
        m_device = std::make_unique<Device>(deviceFrom(allValues(givenValues(), project)));
    }
    return *m_device;
}

std::optional<QSize> Cli::screen(const QString &given)
{
    return given.isEmpty() ? device().screen : screenSize(given);
}

void Cli::disconnect()
{
    m_connection.reset();
}

Reach Cli::reach() const
{
    return {m_links, m_options.simulate, m_options.wiring, console::decoded(m_options.log)};
}

Patience Cli::patience() const
{
    Patience patience;
    patience.answer = m_options.timeout;
    patience.seconds = m_options.wait;
    return patience;
}

Exchanges &Cli::connection(Access access)
{
    const Device &wanted = device();
    if (m_connection && !haveSamePorts(m_connection->links.device(), wanted))
        m_connection.reset();
    if (m_connection) {
        m_connection->exchanges.use(wanted);
    } else {
        m_connection = std::make_unique<Connection>(*this, wanted);
        if (access != Access::Listens)
            m_connection->exchanges.awaitModule();
    }
    if (access == Access::Writes)
        memory::expectDevice(m_connection->exchanges);
    return m_connection->exchanges;
}

int Cli::runCommand()
{
    if (!m_command)
        return m_report.fail(ExitCode::usage, "a command is missing", "See `k7 --help`.");
    try {
        const QStringList devices = deviceNames();
        return devices.size() > 1 ? runOnEach(devices) : m_command();
    } catch (const Failure &failure) {
        return m_report.fail(failure.code, failure.cause, failure.remedy);
    }
}
