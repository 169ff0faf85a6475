#include "engine/step.h"

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

void Step::writeAwaited(const QByteArray &bytes)
{
    if (m_line.policy.awaitsEach)
        session().replyReceived = false;
    m_line.link.write(bytes);
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

void Step::showProgress(int done, int all)
{
    emit m_line.reports.progressed(m_commandType,
                                   static_cast<int>(qint64{done} * 100 / qMax(1, all)));
}
