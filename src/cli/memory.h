#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

class Exchanges;

/// The module's memory, read and written in as many frames as that takes. A Failure is thrown where
/// the module does not answer.
namespace memory {

/// `count` words or registers, as many as there are from `address` on; the engine's mirrors hold
/// them, too.
QVector<quint16> readVp(Exchanges &module, int address, int count);
QByteArray readRegisters(Exchanges &module, int page, int address, int count);
void writeVp(Exchanges &module, int address, const QVector<quint16> &words);
void writeRegisters(Exchanges &module, int page, int address, const QByteArray &bytes);

/// The module's device ID.
QString deviceId(Exchanges &module);
/// Throws a Failure when the module is another one than the device names.
void expectDevice(Exchanges &module);

} // namespace memory
