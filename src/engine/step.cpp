#include "engine/step.h"

#include "engine/line_ticks.h"

namespace {

const Text &cause(OpenFailure failure)
{
    switch (failure) {
    case OpenFailure::NoSuchPort:
        return texts::noSuchPort;
    case OpenFailure::InUse:
        return texts::portInUse;
    case OpenFailure::OurOwn:
        return texts::portIsOurOwn;
    case OpenFailure::NoPermission:
        return texts::noPermission;
    case OpenFailure::NotASerialPort:
        break;
    }
    return texts::notASerialPort;
}

} // namespace

bool Step::ensureOpen()
{
    if (m_line.link.open() || m_line.link.isOpen())
        return true;
    // What the step has reached stays: it has not begun.
    session().commandType = commandType::idle;
    emit m_line.reports.ended(m_commandType, Outcome::NotOpened);
    const OpenFailure failure = m_line.link.openFailure();
    const QString holders =
        failure == OpenFailure::InUse ? m_line.link.holders().join(", ") : QString();
    m_line.notices.warn(texts::serialOpeningFailed,
                        holders.isEmpty() ? &cause(failure) : &texts::portHeldBy, holders);
    return false;
}

void Step::write(const QByteArray &bytes)
{
    m_sentAt = session().passed + static_cast<quint32>(lineTime(bytes.size()));
    m_line.link.write(bytes);
}

void Step::writeAwaited(const QByteArray &bytes, int frames)
{
    if (isStrict()) {
        m_line.replies.expect(bytes);
        m_awaited = frames;
        m_answeredAt = 0;
        m_patience = m_line.policy.patience + lineTime(ReplyReceiver::replyBytes(bytes));
    }
    write(bytes);
}

int Step::lineTime(qint64 bytes) const
{
    constexpr int bitsPerByte = 10;
    return lineTicks(bytes * bitsPerByte, linkRate(m_line.settings.baudRate));
}

Step::Verdict Step::verdict()
{
    if (!isStrict())
        return session().replyReceived ? Verdict::Came : Verdict::Missing;
    const quint32 now = session().passed;
    if (m_line.replies.answers() >= m_awaited) {
        if (m_answeredAt == 0)
            m_answeredAt = now;
        // What was sent twice may be answered twice: that must not count for what comes next.
        if (session().repeats == 0 || now - m_answeredAt >= static_cast<quint32>(2 * m_patience))
            return Verdict::Came;
    } else if (ticksSinceSent() > m_patience) {
        return Verdict::Missing;
    }
    hold();
    return Verdict::Awaited;
}

bool Step::holdsUntilSent()
{
    if (!isStrict() || ticksSinceSent() > 0)
        return false;
    hold();
    return true;
}

int Step::ticksSinceSent()
{
    if (m_line.link.bytesToSend() > 0)
        m_sentAt = qMax(m_sentAt, session().passed);
    return qMax(0, static_cast<int>(session().passed - m_sentAt));
}

bool Step::again(int silence)
{
    if (!isStrict() || session().repeats >= m_line.policy.repeats)
        return false;
    ++session().repeats;
    emit m_line.reports.repeated(m_commandType, session().repeats);
    session().tick = -silence;
    return true;
}

void Step::end(Outcome outcome)
{
    session().commandType = commandType::idle;
    rewind();
    m_line.link.close();
    emit m_line.reports.ended(m_commandType, outcome);
}

void Step::complete()
{
    end(Outcome::Done);
    session().replyReceived = false;
    m_line.notices.warn(texts::downloadComplete);
}

void Step::fail()
{
    end(Outcome::Failed);
    session().replyReceived = false; // of a device that was lost, it must not count for the next
    m_line.notices.warn(texts::communicationFailure);
}

void Step::beginPiece()
{
    session().tick = 0;
    session().repeats = 0;
}

void Step::showProgress(int done, int all)
{
    emit m_line.reports.progressed(m_commandType,
                                   static_cast<int>(qint64{done} * 100 / qMax(1, all)));
}
