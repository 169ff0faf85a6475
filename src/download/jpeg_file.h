#pragma once

#include <QByteArray>

/// The JPEG file `content` as it can be sent: unchanged when it has at most `maxBytes` bytes,
/// whatever it is; otherwise its picture, compressed until it fits. Empty when it is no picture, or
/// when even the lowest quality is too large.
QByteArray jpegWithin(const QByteArray &content, int maxBytes);
