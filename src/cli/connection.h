#pragma once

#include "cli/device.h"
#include "cli/failure.h"
#include "cli/watched_link.h"
#include "common/notices.h"
#include "crc/crc_comparison.h"
#include "download/downloads.h"
#include "engine/engine.h"
#include "engine/links.h"
#include "simulator/adapter.h"

#include <QFile>

#include <array>
#include <functional>
#include <memory>
#include <optional>

class Report;

/// The links to one module and the engine on them. Everything is done one after the other: each
/// function returns when its exchange has ended, or throws a Failure.
class Connection : public QObject
{
    Q_OBJECT

public:
    struct Setup
    {
        std::function<Links()> links; ///< to the module, where it is not simulated
        bool isSimulated = false;
        double waitSeconds = 0; ///< for a port that is absent or in use
        QString logFile;        ///< of all that goes over the links; empty: none
        k7::Wiring wiring{};    ///< of the simulated module
    };
    enum class Link { Uart2, Ed2 };

    Connection(const Device &device, const Setup &setup, Report &report);
    ~Connection() override;

    const Device &device() const { return m_device; }
    bool isSimulated() const { return m_simulation != nullptr; }
    Engine &engine() { return m_engine; }
    Downloads &downloads() { return m_downloads; }
    WatchedLink &link(Link link) { return link == Link::Uart2 ? *m_links.uart : *m_links.ed2; }

    /// Milliseconds that an exchange may do without getting any further, beyond what the line
    /// takes.
    static constexpr int usualPatience = 10000;
    /// Runs what `start` starts on the engine until that is idle. Its progress is told as that of
    /// `what`, unless this is empty.
    void run(Link link, const QString &what, const std::function<void()> &start,
             int patience = usualPatience);
    /// Opens `links` and receives what comes, until Ctrl-C or until one of them goes away, which
    /// throws a Failure; so may `look`, which is called every now and then.
    [[noreturn]] void listen(const QVector<Link> &links, const std::function<void()> &look);
    /// Waits with open eyes for Ctrl-C.
    void pause(int milliseconds);

    /// `count` words or registers, as many as there are from `address` on.
    QVector<quint16> readVp(int address, int count);
    QByteArray readRegisters(int page, int address, int count);
    void writeVp(int address, const QVector<quint16> &words);
    void writeRegisters(int page, int address, const QByteArray &bytes);
    /// Fills in what the module holds of `items`.
    void compare(QVector<CrcCheckItem> &items, const QString &what);

    /// The module's device ID.
    QString deviceId();
    /// Throws a Failure when the module is another one than the device names.
    void expectDevice();

private:
    /// The links that the program watches.
    struct WatchedLinks
    {
        explicit WatchedLinks(Links links);

        const std::unique_ptr<WatchedLink> uart;
        const std::unique_ptr<WatchedLink> ed2;
        const TimeSource time;
    };
    struct Simulation;

    /// Keeps what the engine tells.
    struct Messages final : Notices
    {
        void warn(const Text &, const Text *, const QString &) override {}
    };

    void prepare(Link link);
    /// Calls `isOpened` until it is, for as long as the user wants to wait for a port.
    void awaitPort(Link link, const std::function<bool()> &isOpened);
    void openLog(const QString &path);
    void log(const char *link, char direction, const QByteArray &bytes);
    /// In milliseconds, from whatever beginning.
    qint64 now() const { return m_links.time.now() / 1'000'000; }
    qint64 sentBytes() const;
    void onBeat();
    /// What became of one attempt.
    Outcome attempt(const std::function<void()> &start);
    Failure silence(Link link, const QString &complaint);

    const Device m_device;
    const Setup m_setup;
    Report &m_report;
    const std::unique_ptr<Simulation> m_simulation;
    Messages m_messages;
    const WatchedLinks m_links;
    Engine m_engine;
    Downloads m_downloads;
    CrcComparison &m_comparison;
    QFile m_log;
    std::array<bool, 2> m_isPrepared{};
    bool m_isExpected = false;

    // Of the exchange that runs.
    QString m_what;
    int m_patience = usualPatience;
    int m_progressFrom = 0; ///< percent that were done before
    Outcome m_outcome = Outcome::Done;
    bool m_isGivenUp = false;
    qint64 m_progressAt = 0; ///< when it got further last
    qint64 m_bytesAtProgress = 0;
};
