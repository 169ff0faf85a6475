#pragma once

#include <QByteArray>
#include <QRandomGenerator>

/// Always the same bytes for the same `count`.
inline QByteArray randomBytes(int count)
{
    QRandomGenerator random(static_cast<quint32>(count));
    QByteArray bytes(count, 0);
    for (char &byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    return bytes;
}
