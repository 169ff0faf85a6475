#pragma once

#include "engine/step.h"

/// Restarts the module's system over UART2: announces it with a system frame, then writes the reset
/// words. In the window no reply is awaited and no message is shown; a strict reset needs its
/// announcement acknowledged.
///
/// In the window an exchange that another one replaces keeps its stage, and the next reset goes on
/// from there. That is wanted.
class SystemReset final : public Step
{
public:
    static constexpr quint8 announceArgument = 0xA0;
    static constexpr quint16 resetAddress = 0x0004;
    static constexpr quint16 resetWord1 = 0x55AA;
    static constexpr quint16 resetWord2 = 0x5A5A;
    static constexpr int settleTicks = 70; ///< between the two frames
    static constexpr int drainTicks = 10;  ///< between the second frame and closing the link

    explicit SystemReset(const Line &line) : Step(commandType::systemReset, line) {}

    void start();
    void step() override;

protected:
    void rewind() override { m_stage = Stage::Announce; }

private:
    enum class Stage { Announce, Reset, Close };

    void enter(Stage stage);

    Stage m_stage = Stage::Announce;
};
