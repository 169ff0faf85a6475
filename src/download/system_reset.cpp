#include "download/system_reset.h"

SystemReset::SystemReset(DownloadSession &session, SerialLink &link, Notices &notices,
                         FrameBuilder &builder)
    : Step(session, link, notices), m_builder(builder)
{
}

void SystemReset::step()
{
    switch (m_stage) {
    case Stage::Announce:
        if (!ensureOpen())
            return;
        m_builder.setCmd8FArgument(announceArgument);
        m_link.write(m_builder.buildCmd8FFrame());
        enter(Stage::Reset);
        break;
    case Stage::Reset:
        if (m_session.tick <= settleTicks)
            return;
        m_builder.setVp(resetAddress, resetWord1);
        m_builder.setVp(resetAddress + 1, resetWord2);
        m_link.write(m_builder.buildWriteVpFrame(resetAddress, 2));
        enter(Stage::Close);
        break;
    case Stage::Close:
        if (m_session.tick > drainTicks)
            finish();
        break;
    }
}

void SystemReset::enter(Stage stage)
{
    m_stage = stage;
    m_session.tick = 0;
}
