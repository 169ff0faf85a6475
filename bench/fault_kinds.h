#pragma once

#include "simulator/module.h"
#include "simulator/random.h"

#include <QStringList>
#include <QTemporaryDir>

#include <functional>

/// What a session of the matrix is about.
namespace faultMatrix {

/// What the files of a session are made of.
struct Source
{
    k7::Random random;
    k7::Module &module;
    const QTemporaryDir &folder;
    bool isLarge; ///< several blocks or pictures

    QByteArray bytes(int count);
    /// The path of a new file.
    QString write(const QString &name, const QByteArray &content) const;
    /// Paints a picture and returns its pixels as RGB565. The last one is white: where a page that
    /// ends in black pixels ends, nobody knows.
    QByteArray paint(const QString &name, const QSize &size);
};

struct Task
{
    QStringList arguments;
    /// How many blocks, pictures or other values the module does not hold, or the tool has not
    /// `printed`; 0 is success.
    std::function<int(const QString &printed)> missing;
};

/// What is done in a session.
struct Kind
{
    const char *name;
    Task (*prepare)(Source &source);
    k7::Layout layout;
    bool isDownload;
};

extern const QVector<Kind> kinds;

} // namespace faultMatrix
