#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/exchanges.h"
#include "cli/memory.h"
#include "serial/device_values.h"
#include "serial/serial_device.h"

#include <QFileInfo>
#include <QSerialPortInfo>

#include <memory>

namespace {

struct Given
{
    std::vector<std::string> ports;
    bool allPorts = false;
};

/// All that nobody holds.
QStringList freePorts()
{
    QStringList names;
    for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts())
        if (serialDevice::holders(port.portName()).isEmpty())
            names.append(port.portName());
    return names;
}

/// The usual rate first.
QVector<int> ratesToTry()
{
    const int usual = Device().uart2.rate;
    QVector<int> rates{usual};
    std::copy_if(linkRates.rbegin(), linkRates.rend(), std::back_inserter(rates),
                 [usual](int rate) { return rate != usual; });
    return rates;
}

bool answers(Exchanges &module)
{
    try {
        memory::readVp(module, deviceValues::version.address, deviceValues::version.words);
        return true;
    } catch (const Failure &failure) {
        if (failure.code != ExitCode::noAnswer || module.links().wasLost())
            throw;
        return false;
    }
}

void tell(Report &report, const Device &device, const QString &version)
{
    const QString header = QString("%1%2")
                               .arg(device.header1, 2, 16, QChar('0'))
                               .arg(device.header2, 2, 16, QChar('0'))
                               .toUpper();
    const QString port = QString("%1@%2").arg(device.uart2.name).arg(device.uart2.rate);
    report.result({{"type", "found"},
                   {"uart2", port},
                   {"header", header},
                   {"crc", device.crcEnabled},
                   {"version", version}},
                  QString("# %1\n[%2]\nuart2 = %3\nheader = %4\ncrc = %5\n")
                      .arg(version, QFileInfo(device.uart2.name).fileName(), port, header,
                           device.crcEnabled ? "true" : "false"));
}

/// Tries `device` at all rates, without and with CRC; whether something answered.
bool find(Cli &cli, Device device)
{
    // What answers at all answers at once, and nothing else is worth asking again.
    Patience patience = cli.patience();
    patience.repeats = 0;
    DeviceLinks links(device, cli.reach());
    Exchanges module(links, patience, cli.report());
    bool wasTried = false;
    for (const int rate : ratesToTry())
        for (const bool crcEnabled : {false, true}) {
            device.uart2.rate = rate;
            device.crcEnabled = crcEnabled;
            cli.report().note(QString("%1: %2 bit/s, CRC %3")
                                  .arg(device.uart2.name)
                                  .arg(rate)
                                  .arg(crcEnabled ? "on" : "off"));
            try {
                module.use(device);
                const bool isFound = answers(module);
                wasTried = true;
                if (!isFound)
                    continue;
            } catch (const Failure &failure) {
                // A port that takes no rate is not to be tried; a rate that it refuses is
                // another's.
                if (failure.code == ExitCode::interrupted || !wasTried)
                    throw;
                cli.report().note("    " + failure.cause);
                continue;
            }
            tell(cli.report(), device, deviceValues::versionText(module.engine().mirrors()));
            return true;
        }
    return false;
}

int findAll(Cli &cli, const Given &given)
{
    const QStringList ports = given.allPorts ? freePorts() : arguments::texts(given.ports);
    if (ports.isEmpty() && !given.allPorts)
        throw Failure{ExitCode::usage, "no port is named",
                      "Name the ports to try, or give --all-ports: other devices may not like what "
                      "they hear."};
    if (cli.reach().isSimulated)
        throw Failure{ExitCode::usage, "a simulated module is not to be found",
                      "Leave out --simulate."};
    // A port of the commands before is to be tried, too.
    cli.disconnect();
    bool isFound = false;
    for (const QString &port : ports) {
        Device device = cli.device();
        device.uart2.name = port;
        device.ed2.name.clear();
        try {
            isFound = find(cli, device) || isFound;
        } catch (const Failure &failure) {
            // One port that cannot be tried leaves the others.
            if (failure.code == ExitCode::interrupted || ports.size() == 1)
                throw;
            cli.report().note(failure.cause);
        }
    }
    if (isFound)
        return ExitCode::done;
    return cli.report().fail(ExitCode::noAnswer, "no module answered",
                             "Is it on, and its UART2 wired to one of these ports? Its header may "
                             "be another one: --header.");
}

} // namespace

void addFind(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand(
        "find", "Try all rates on PORT, without and with CRC, and tell what answers");
    const auto given = std::make_shared<Given>();
    auto *ports = command->add_option("PORT", given->ports)->type_name("");
    command->add_flag("--all-ports", given->allPorts, "Try all ports that nobody holds")
        ->excludes(ports);
    command->callback(
        [&cli, given] { cli.setCommand([&cli, given] { return findAll(cli, *given); }); });
}
