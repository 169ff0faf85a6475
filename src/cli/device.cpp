#include "cli/device.h"

#include "cli/failure.h"
#include "common/whole_number.h"
#include "download/screen_picture.h"
#include "serial/serial_settings.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

[[noreturn]] void refuse(const QString &name, const QString &text, const QString &remedy)
{
    throw Failure{ExitCode::usage, QString("%1 cannot be \"%2\"").arg(name, text), remedy};
}

bool matches(const QString &text, const char *pattern)
{
    return QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(text).hasMatch();
}

/// PORT[@RATE]. A rate at which the link does not run would run at another one, unnoticed.
void readPort(const QString &text, const QString &name, Device::Port &port)
{
    const int at = text.lastIndexOf('@');
    port.name = text.left(at);
    if (at < 0)
        return;
    port.rate = wholeNumber(text.mid(at + 1)).value_or(0);
    if (port.name.isEmpty() || port.rate <= 0 || linkRate(port.rate) != port.rate)
        refuse(name, text,
               "It is PORT or PORT@RATE; the rate is 1200, 2400, 4800, 9600, 19200, 38400, 56000, "
               "57600, 115200, 128000 or 6250000.");
}

void readUart2(const QString &text, Device &device)
{
    readPort(text, "uart2", device.uart2);
}

void readEd2(const QString &text, Device &device)
{
    readPort(text, "ed2", device.ed2);
}

void readHeader(const QString &text, Device &device)
{
    if (!matches(text, "[0-9A-Fa-f]{4}"))
        refuse("header", text, "It is two bytes as four hexadecimal digits, such as 5AA5.");
    const QByteArray bytes = QByteArray::fromHex(text.toLatin1());
    device.header1 = static_cast<quint8>(bytes.at(0));
    device.header2 = static_cast<quint8>(bytes.at(1));
}

void readCrc(const QString &text, Device &device)
{
    const QStringList on{"true", "on", "yes", "1"};
    const QStringList off{"false", "off", "no", "0"};
    device.crcEnabled = on.contains(text);
    if (!device.crcEnabled && !off.contains(text))
        refuse("crc", text, "It is true or false.");
}

void readModel(const QString &text, Device &device)
{
    const int model = QStringList{"K7UID1", "K7UID2", "K7UID3"}.indexOf(text);
    if (model < 0)
        refuse("model", text, "It is K7UID1, K7UID2 or K7UID3.");
    device.model = static_cast<Model>(model);
}

void readSize(const QString &text, Device &device)
{
    device.screen = screenSize(text);
}

void readId(const QString &text, Device &device)
{
    device.id = text.toLower();
    if (!matches(device.id, "[0-9a-f]{16}"))
        refuse("id", text, "It is the device ID that `k7 info` prints, 16 hexadecimal digits.");
}

void readNothing(const QString &, Device &) {}

struct Value
{
    const char *name;
    void (*read)(const QString &text, Device &device);
};

constexpr Value knownValues[] = {
    {"uart2", readUart2}, {"ed2", readEd2},   {"header", readHeader}, {"crc", readCrc},
    {"model", readModel}, {"size", readSize}, {"id", readId},         {"device", readNothing},
};

} // namespace

bool haveSamePorts(const Device &one, const Device &other)
{
    return one.uart2.name == other.uart2.name && one.ed2.name == other.ed2.name;
}

DeviceValues overlaid(DeviceValues values, const DeviceValues &stronger)
{
    for (auto value = stronger.begin(); value != stronger.end(); ++value)
        values.insert(value.key(), value.value());
    return values;
}

Device deviceFrom(const DeviceValues &values)
{
    Device device;
    for (auto value = values.begin(); value != values.end(); ++value) {
        const auto known =
            std::find_if(std::begin(knownValues), std::end(knownValues),
                         [&value](const Value &each) { return value.key() == each.name; });
        if (known == std::end(knownValues))
            throw Failure{ExitCode::usage,
                          QString("nothing is known of a setting \"%1\"").arg(value.key()),
                          "The settings are uart2, ed2, header, crc, model, size and id."};
        known->read(value.value(), device);
    }
    return device;
}

QSize screenSize(const QString &text)
{
    const auto size = screenPicture::sizeFrom(text.toUpper());
    if (!size)
        refuse("size", text, "It is the width and height of the screen, such as 480x272.");
    return *size;
}
