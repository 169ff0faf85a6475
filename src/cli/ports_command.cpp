#include "cli/arguments.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "serial/serial_device.h"

#include <QJsonArray>
#include <QSerialPortInfo>

void addPorts(CLI::App &app, Cli &cli)
{
    auto *command = app.add_subcommand("ports", "List the serial ports and who holds them");
    command->callback([&cli] {
        cli.setCommand([&cli] {
            for (const QSerialPortInfo &port : QSerialPortInfo::availablePorts()) {
                const QStringList holders = serialDevice::holders(port.portName());
                const std::optional<int> latency = serialDevice::latency(port.portName());
                const QString latencyText =
                    latency ? QString("latency %1 ms").arg(*latency) : QString();
                QStringList columns{port.portName()};
                for (const QString &text : {port.description(), port.serialNumber(), latencyText})
                    columns.append(text.isEmpty() ? "-" : text);
                columns.append(holders.isEmpty() ? "free" : "held by " + holders.join(", "));
                cli.report().result({{"type", "port"},
                                     {"name", port.portName()},
                                     {"description", port.description()},
                                     {"serialNumber", port.serialNumber()},
                                     {"latency", latency ? QJsonValue(*latency) : QJsonValue()},
                                     {"holders", QJsonArray::fromStringList(holders)}},
                                    columns.join("  "));
            }
            return ExitCode::done;
        });
    });
}
