#pragma once

#include <QObject>

/// How an exchange ended.
enum class Outcome {
    Done,      ///< as far as the module is asked to tell
    Failed,    ///< the module did not acknowledge or refused, or its device went away
    NotOpened, ///< the port could not be opened
    Stopped    ///< from outside
};

/// What exchanges tell whoever watches them.
class ExchangeReports : public QObject
{
    Q_OBJECT

signals:
    /// Of the exchange `type`; `percent` from 0 to 100.
    void progressed(int type, int percent);
    /// A piece was not answered, and is sent again: for the `time`th time, from 1.
    void repeated(int type, int time);
    /// Emitted when the outcome is final, before any box about it. An exchange that another one
    /// replaces has no end.
    void ended(int type, Outcome outcome);
};
