#pragma once

#include "engine/step.h"

#include <functional>

/// A single frame that goes out over UART2, and the time that the module has to answer it.
class Transaction final : public Step
{
public:
    enum class Answer {
        Acknowledgement, ///< must have come by the end, or the exchange has failed
        Reply,           ///< to a read: strict, the exchange ends with it, or has failed
        Anything,        ///< replies are taken in as they come; silence is no failure
    };

    static constexpr int sendTick = 1;
    static constexpr int endTick = 100;

    Transaction(int commandType, const Line &line, Answer answer)
        : Step(commandType, line), m_answer(answer)
    {
    }

    /// Starts the exchange; `frame` builds the bytes to send, at the very tick that sends them. It
    /// ends at tick `ticks`, above `sendTick`; strict ticks count from when all bytes are sent.
    void start(std::function<QByteArray()> frame, int ticks = endTick);
    void step() override;

protected:
    void rewind() override;

private:
    void judge();

    const Answer m_answer;
    std::function<QByteArray()> m_frame;
    int m_endTick = endTick;
};
