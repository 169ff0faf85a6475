#pragma once

#include "common/texts.h"

/// Shows messages to the user, in the language that the window has at that moment.
class Notices
{
public:
    virtual ~Notices() = default;

    /// Shows `text` until the user confirms it; `detail`, where given, stands below it. `argument`
    /// takes the place of %1 in both. Events, ticks among them, go on meanwhile: whatever the
    /// message reports must be final before.
    virtual void warn(const Text &text, const Text *detail = nullptr,
                      const QString &argument = QString()) = 0;
};
