#pragma once

#include "common/texts.h"

#include <QByteArray>

/// A JPEG file as it can be sent, or why there is none.
struct Jpeg
{
    QByteArray bytes;
    const Text *refusal = nullptr; ///< what to tell the user, when there are no bytes
};

/// The JPEG file `content`: unchanged when it has at most `maxBytes` bytes, whatever it is;
/// otherwise its picture, compressed until it fits.
Jpeg jpegWithin(const QByteArray &content, int maxBytes);
