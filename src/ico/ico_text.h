#pragma once

#include "ico/icon_record.h"

#include <QString>
#include <QVector>

#include <functional>

/// An icon library as people change it: a picture for each icon, and a text, an INI file, that says
/// which icon it is. Both ways lose nothing.
namespace icoText {

inline constexpr char textName[] = "library.ini";

struct Picture
{
    QString name; ///< of its file: "00007.png"
    IconRecord icon;
};

/// With a fault, one line in English, nothing else counts.
struct Parts
{
    QByteArray text;
    QVector<Picture> pictures; ///< icons that share their pixels share one
    QByteArray rest;           ///< for the file `restName`; empty when it is not needed
    QString fault;
};

/// What no icon uses: it keeps its place, and zeros stand for what the text and the pictures tell.
inline constexpr char restName[] = "rest.bin";

/// The parts of `library`. Refused is what is no library, and one whose icons overlap so much that
/// their pixels would take more than 1 GiB.
Parts fromLibrary(const QByteArray &library);

/// The picture of `icon` as a PNG file, which keeps its colours.
QByteArray pngOf(const IconRecord &icon);

struct Library
{
    QByteArray bytes;
    int icons = 0;
    QString fault;
};

/// The content of a file beside the text; null when there is none.
using Loader = std::function<QByteArray(const QString &name)>;

/// The library that `text` describes, icons in its order.
Library toLibrary(const QByteArray &text, const Loader &load);

} // namespace icoText
