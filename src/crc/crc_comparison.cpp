#include "crc/crc_comparison.h"

#include "engine/line_ticks.h"

CrcComparison::CrcComparison(const Line &line) : Step(commandType::crcComparison, line) {}

void CrcComparison::setItems(const QVector<CrcCheckItem> &items)
{
    if (session().commandType == commandType())
        end(Outcome::Stopped);
    m_items = items;
    m_index = 0;
    showProgress(0, m_items.size());
}

void CrcComparison::start()
{
    if (m_items.isEmpty())
        return;
    m_index = 0;
    rewind();
    showProgress(0, m_items.size());
    session().start(commandType());
}

void CrcComparison::step()
{
    if (m_index >= m_items.size())
        return;
    switch (m_stage) {
    case Stage::Ask:
        if (session().tick > 0)
            ask();
        break;
    case Stage::Read:
        if (session().tick > ticksFor(390) + 1)
            read();
        break;
    case Stage::Compare:
        if (session().tick > ticksFor(650) + 1)
            compare();
        break;
    }
}

void CrcComparison::ask()
{
    if (!ensureOpen())
        return;
    m_line.builder.setVp(crcAddress, m_items.at(m_index).request);
    m_line.builder.setVp(crcAddress + 1, m_items.at(m_index).unit);
    session().replyReceived = false;
    writeAwaited(m_line.builder.buildWriteVpFrame(crcAddress, 2));
    enter(Stage::Read);
}

void CrcComparison::read()
{
    if (isAnswered())
        sendRead();
}

void CrcComparison::sendRead()
{
    writeAwaited(m_line.builder.buildReadVpFrame(crcAddress, 2));
    enter(Stage::Compare);
}

bool CrcComparison::isAnswered()
{
    const Verdict found = verdict();
    if (found != Verdict::Missing)
        return found == Verdict::Came;
    m_stage = Stage::Ask;
    if (!again())
        fail();
    return false;
}

void CrcComparison::compare()
{
    // The window takes what its mirror holds.
    if (isStrict() && !isAnswered())
        return;
    if (m_line.builder.vpAt(crcAddress) >> 8 == busyMark) {
        if (isStrict()) {
            sendRead();
            return;
        }
        // The tick stays: the very next one reads again.
        session().replyReceived = true;
        m_stage = Stage::Read;
        return;
    }
    CrcCheckItem &item = m_items[m_index];
    item.readCrc = crcCheck::crcText(m_line.builder.vpAt(crcAddress + 1));
    item.compareResult = item.isIntact() ? "true" : "false";
    ++m_index;
    showProgress(m_index, m_items.size());
    beginPiece();
    m_stage = Stage::Ask;
    if (m_index < m_items.size())
        return;
    end(Outcome::Done);
    m_line.notices.warn(texts::checkFinished);
}

void CrcComparison::enter(Stage stage)
{
    m_stage = stage;
    session().tick = 0;
}

int CrcComparison::ticksFor(int bits) const
{
    // At the rate at which the link really runs, not the chosen one.
    return lineTicks(bits, linkRate(m_line.settings.baudRate));
}
