#pragma once

#include "cli/device_links.h"
#include "cli/report.h"

#include <QJsonObject>
#include <QString>

/// How it is told that the port of `link` was away, for `milliseconds`.
namespace gap {

inline QJsonObject json(const QString &link, qint64 milliseconds)
{
    return {{"type", "gap"}, {"link", link}, {"seconds", static_cast<double>(milliseconds) / 1000}};
}

inline QString text(const QString &link, qint64 milliseconds)
{
    return QString("-- %1: the port was away for %2 s")
        .arg(link)
        .arg(static_cast<double>(milliseconds) / 1000, 0, 'f', 1);
}

inline void tell(Report &report, Link link, qint64 milliseconds)
{
    report.result(json(nameOf(link), milliseconds), text(nameOf(link), milliseconds));
}

} // namespace gap
