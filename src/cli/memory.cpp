#include "cli/memory.h"

#include "cli/exchanges.h"
#include "serial/device_values.h"

namespace memory {

namespace {

constexpr int wordsAtOnce = 120; ///< fit into one frame and into one reply, also with a CRC
constexpr int registersAtOnce = 240;

} // namespace

QVector<quint16> readVp(Exchanges &module, int address, int count)
{
    Engine &engine = module.engine();
    QVector<quint16> words;
    const int end = qMin(FrameBuilder::vpWords, address + count);
    for (int from = address; from < end; from += wordsAtOnce) {
        const int length = qMin(wordsAtOnce, end - from);
        module.run(Link::Uart2, {}, [&] {
            engine.readVp([=] { return Engine::Range{0, from, length}; });
        });
        for (int i = 0; i < length; ++i)
            words.append(engine.mirrors().vpAt(from + i));
    }
    return words;
}

QByteArray readRegisters(Exchanges &module, int page, int address, int count)
{
    Engine &engine = module.engine();
    QByteArray bytes;
    const int end = qMin(FrameBuilder::registersPerPage, address + count);
    for (int from = address; from < end; from += registersAtOnce) {
        const int length = qMin(registersAtOnce, end - from);
        module.run(Link::Uart2, {}, [&] {
            engine.readRegisters([=] { return Engine::Range{page, from, length}; });
        });
        for (int i = 0; i < length; ++i)
            bytes.append(static_cast<char>(engine.mirrors().registerAt(page, from + i)));
    }
    return bytes;
}

void writeVp(Exchanges &module, int address, const QVector<quint16> &words)
{
    for (int from = 0; from < words.size(); from += wordsAtOnce)
        module.run(Link::Uart2, {},
                   [&] { module.engine().writeVp(address + from, words.mid(from, wordsAtOnce)); });
}

void writeRegisters(Exchanges &module, int page, int address, const QByteArray &bytes)
{
    for (int from = 0; from < bytes.size(); from += registersAtOnce)
        module.run(Link::Uart2, {}, [&] {
            const QByteArray part = bytes.mid(from, registersAtOnce);
            const Engine::Range range{page, address + from, part.size()};
            module.engine().writeRegisters([range] { return range; }, part);
        });
}

QString deviceId(Exchanges &module)
{
    readVp(module, deviceValues::deviceId.address, deviceValues::deviceId.words);
    return deviceValues::deviceIdText(module.engine().mirrors());
}

void expectDevice(Exchanges &module)
{
    const QString &wanted = module.links().device().id;
    if (wanted.isEmpty())
        return;
    const QString id = deviceId(module);
    if (id != wanted)
        throw Failure{ExitCode::noPort,
                      QString("the module has the device ID %1, not %2").arg(id, wanted),
                      "Nothing was written. Connect the right module, or correct the ID in "
                      "devices.ini or k7.ini."};
}

} // namespace memory
