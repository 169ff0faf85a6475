#pragma once

#include "common/notices.h"

#include <QStringList>

#include <functional>

/// Remembers the English texts of the notices; `whileOpen` runs as long as a box would be open.
class RecordingNotices final : public Notices
{
public:
    QStringList shown;
    QStringList details;
    std::function<void()> whileOpen;

    void warn(const Text &text, const Text *detail, const QString &argument) override
    {
        shown.append(text.in(true).replace("%1", argument));
        details.append(detail ? detail->in(true).replace("%1", argument) : QString());
        if (whileOpen)
            whileOpen();
    }
};
