#pragma once

#include "cli/device_links.h"
#include "common/notices.h"
#include "crc/crc_comparison.h"
#include "download/downloads.h"
#include "engine/engine.h"

#include <array>
#include <functional>

class Report;

/// What is done with a module, one after the other: each function returns when its exchange has
/// ended, or throws a Failure.
class Exchanges : public QObject
{
    Q_OBJECT

public:
    Exchanges(DeviceLinks &links, const Patience &patience, Report &report);

    DeviceLinks &links() { return m_links; }
    /// From now on that is what is known of the module; its ports stay.
    void use(const Device &device);
    Engine &engine() { return m_engine; }
    Downloads &downloads() { return m_downloads; }
    CrcComparison &comparison() { return m_comparison; }

    /// Milliseconds that an exchange may do without getting any further, beyond what the line
    /// takes.
    static constexpr int usualPatience = 10000;
    /// Runs what `start` starts on the engine until that is idle. Its progress is told as that of
    /// `what`, unless this is empty.
    void run(Link link, const QString &what, const std::function<void()> &start,
             int patience = usualPatience);
    /// Opens `link` now, so that it is held from here on.
    void hold(Link link);
    /// Opens `links` and receives what comes, until Ctrl-C. `look` is called behind all that came,
    /// and may throw a Failure. A port that went away is waited for; when it is back, `tellGap` is
    /// told for how many milliseconds it was not there.
    [[noreturn]] void listen(const QVector<Link> &links, const std::function<void()> &look,
                             const std::function<void(Link link, qint64 gap)> &tellGap);
    /// Waits for a port that went away, until Ctrl-C. The milliseconds that it took.
    qint64 awaitReturn(Link link);
    /// Waits with open eyes for Ctrl-C.
    void pause(qint64 milliseconds);
    /// Calls `work` again and again while it fails for want of an answer, for so long at most.
    void untilAnswered(qint64 milliseconds, const std::function<void()> &work);
    /// Waits for a module that answers, if the user wants that.
    void awaitModule();

private:
    /// Keeps what the engine tells.
    struct Messages final : Notices
    {
        void warn(const Text &, const Text *, const QString &) override {}
    };

    /// Has the engine open the port of `link` next, unless it is open.
    void prepare(Link link);
    void apply(Link link);
    /// Waits for the system to list a port at all, if the user wants that and names none.
    void awaitListed(Link link);
    /// Calls `isOpened` until it is, for as long as the user wants to wait for a port.
    void awaitPort(Link link, const std::function<bool()> &isOpened);
    void onBeat();
    /// What became of one attempt.
    Outcome attempt(const std::function<void()> &start);

    DeviceLinks &m_links;
    const Patience m_patience;
    Report &m_report;
    Messages m_messages;
    Engine m_engine;
    Downloads m_downloads;
    CrcComparison &m_comparison;

    // Of the exchange that runs.
    Link m_link = Link::Uart2;
    QString m_what;
    int m_exchangePatience = usualPatience;
    Outcome m_outcome = Outcome::Done;
    bool m_isRead = false;
    bool m_isGivenUp = false;
    qint64 m_progressAt = 0; ///< when it got further last
    qint64 m_bytesAtProgress = 0;
    qint64 m_bytesToSend = 0;
};
