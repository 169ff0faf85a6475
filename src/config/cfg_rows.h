#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <functional>
#include <optional>

/// The keys of the text form of a configuration file.
namespace cfgRows {

/// A key of the text and the bytes that it stands for.
struct Row
{
    QString name; ///< "Group/key"
    int offset;
    int bytes;
    QString expected; ///< what its value may be
    /// What the bytes, from `offset` on, say; null when the key cannot say it.
    std::function<QString(const QByteArray &)> read;
    /// The bytes with the value put in; nothing when it is none of those expected.
    std::function<std::optional<QByteArray>(const QByteArray &, const QString &)> put;

    QString group() const { return name.section('/', 0, 0); }
};

/// All keys in the order in which they are written.
const QVector<Row> &all();

/// The bytes of hexadecimal `text`, one at least and whole ones only.
std::optional<QByteArray> bytesFromHex(const QString &text);

} // namespace cfgRows
