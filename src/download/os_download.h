#pragma once

#include "engine/step.h"

/// The module's operating system, which goes over UART2 in one write: announced by a system frame,
/// then all frames back to back. When the module has acknowledged them it is restarted.
///
/// An exchange that another one replaces keeps its stage, and the next one goes on from there; that
/// is wanted. So is, in the window, that the outcome is final only after its box: each tick
/// meanwhile opens another box, up to `maxBoxes`.
class OsDownload final : public Step
{
public:
    static constexpr int maxBoxes = 4;
    static constexpr int bootBytes = 0x1000; ///< at the start of the file, which are never sent
    static constexpr quint16 firstAddress = 0x1000;
    /// The longest file whose words fit between `firstAddress` and the end of the VP memory.
    static constexpr int maxBytes = bootBytes + 2 * (FrameBuilder::vpWords - firstAddress);

    explicit OsDownload(const Line &line);

    /// What to tell the user of a file of `bytes` bytes that cannot be sent; nullptr for all
    /// others.
    static const Text *refusal(qint64 bytes);

    /// Builds the frames of `file`, `bootBytes` to `maxBytes` long, with the header and CRC
    /// settings of this moment.
    void load(const QByteArray &file);
    /// Nothing was loaded, or nothing behind the boot bytes.
    bool isEmpty() const { return m_frames.isEmpty(); }

    /// Starts sending what was loaded last. A stage that an earlier exchange left stays, and so
    /// does the tick.
    void start();
    void step() override;

protected:
    void rewind() override { m_stage = Stage::Announce; }

private:
    enum class Stage { Announce, Send, Verdict };

    void announce();
    void send();
    void judge();
    void settle(bool isAcknowledged);
    int ticksFor(int bits) const;
    void enter(Stage stage);

    QByteArray m_frames; ///< that were loaded last
    QByteArray m_sent;   ///< of the running exchange
    Stage m_stage = Stage::Announce;
    int m_openBoxes = 0;
};
