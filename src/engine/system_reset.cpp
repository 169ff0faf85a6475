#include "engine/system_reset.h"

void SystemReset::start()
{
    if (isStrict())
        rewind();
    session().start(commandType());
}

void SystemReset::step()
{
    switch (m_stage) {
    case Stage::Announce:
        if (!ensureOpen())
            return;
        m_line.builder.setCmd8FArgument(announceArgument);
        writeAwaited(m_line.builder.buildCmd8FFrame());
        enter(Stage::Reset);
        break;
    case Stage::Reset:
        if (session().tick <= settleTicks)
            return;
        switch (strictVerdict()) {
        case Verdict::Awaited:
            return;
        case Verdict::Missing:
            fail();
            return;
        case Verdict::Came:
            break;
        }
        m_line.builder.setVp(resetAddress, resetWord1);
        m_line.builder.setVp(resetAddress + 1, resetWord2);
        m_line.link.write(m_line.builder.buildWriteVpFrame(resetAddress, 2));
        enter(Stage::Close);
        break;
    case Stage::Close:
        if (session().tick > drainTicks)
            end(Outcome::Done);
        break;
    }
}

void SystemReset::enter(Stage stage)
{
    m_stage = stage;
    session().tick = 0;
}
