#include "download/step.h"

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
    if (m_link.open() || m_link.isOpen())
        return true;
    m_session.commandType = commandType::idle;
    ended();
    m_notices.warn(texts::serialOpeningFailed, &cause(m_link.openFailure()));
    return false;
}

void Step::finish()
{
    m_session.commandType = commandType::idle;
    rewind();
    m_link.close();
    ended();
}

void Step::complete()
{
    finish();
    m_session.replyReceived = false;
    m_notices.warn(texts::downloadComplete);
}

void Step::fail()
{
    finish();
    m_session.replyReceived = false; // of a device that was lost, it must not count for the next
    m_notices.warn(texts::communicationFailure);
}
