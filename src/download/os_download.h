#pragma once

#include "download/frame_train.h"
#include "engine/step.h"

/// The module's operating system, which goes over UART2: announced by a system frame, then all
/// frames back to back. In the window, when the module has acknowledged any of them, it is
/// restarted; strict, each must be, and whoever sends a system restarts the module once it is
/// checked.
///
/// In the window, an exchange that another one replaces keeps its stage, and the next one goes on
/// from there; that is wanted. So is that the outcome is final only after its box: each tick
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
    bool isEmpty() const { return m_loaded.isEmpty(); }

    /// Starts sending what was loaded last.
    void start();
    void step() override;

protected:
    void rewind() override;

private:
    enum class Stage { Announce, Send, Verdict };

    void announce();
    bool isAnnounced();
    void send();
    void judge();
    void tellAsTheWindow();
    int ticksFor(int bits) const;
    /// The bytes for which the line and the module need their time now.
    int bytesAwaited() const;
    void enter(Stage stage);

    QVector<QByteArray> m_loaded;
    FrameTrain m_frames; ///< of the running exchange
    int m_allBytes = 0;  ///< of these
    int m_bytes = 0;     ///< that were sent last
    Stage m_stage = Stage::Announce;
    bool m_isAnnounced = false;
    int m_openBoxes = 0;
};
