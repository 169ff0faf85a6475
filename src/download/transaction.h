#pragma once

#include "download/step.h"

#include <functional>

class TrafficLog;

/// A single frame that goes out over UART2, and the time that the module has to answer it.
class Transaction final : public Step
{
public:
    enum class Answer {
        Acknowledgement, ///< must have come by the end, or the exchange has failed
        Anything,        ///< replies are shown as they come; silence is no failure
    };

    static constexpr int sendTick = 1;
    static constexpr int endTick = 100;

    /// `frame` builds the bytes to send, at the very tick that sends them.
    Transaction(DownloadSession &session, SerialLink &link, Notices &notices, TrafficLog &log,
                Answer answer, std::function<QByteArray()> frame);

    void step() override;

protected:
    void rewind() override;

private:
    TrafficLog &m_log;
    const Answer m_answer;
    const std::function<QByteArray()> m_frame;
};
