#include "crc/crc_comparison.h"

#include "download/line_ticks.h"

CrcComparison::CrcComparison(DownloadSession &session, SerialLink &link, Notices &notices,
                             FrameBuilder &builder, const Window &window)
    : Step(session, link, notices), m_builder(builder), m_window(window)
{
}

void CrcComparison::setItems(const QVector<CrcCheckItem> &items)
{
    if (m_session.commandType == commandType::crcComparison)
        finish();
    m_items = items;
    m_index = 0;
    m_window.showProgress(0);
}

void CrcComparison::start()
{
    if (m_items.isEmpty())
        return;
    m_index = 0;
    rewind();
    m_window.showProgress(0);
    m_session.start(commandType::crcComparison);
}

void CrcComparison::step()
{
    if (m_index >= m_items.size())
        return;
    switch (m_stage) {
    case Stage::Ask:
        ask();
        break;
    case Stage::Read:
        if (m_session.tick > lineTicks(390, m_window.rate()) + 1)
            read();
        break;
    case Stage::Compare:
        if (m_session.tick > lineTicks(650, m_window.rate()) + 1)
            compare();
        break;
    }
}

void CrcComparison::ask()
{
    if (!ensureOpen())
        return;
    m_builder.setVp(crcAddress, m_items.at(m_index).request);
    m_builder.setVp(crcAddress + 1, m_items.at(m_index).unit);
    m_session.replyReceived = false;
    m_link.write(m_builder.buildWriteVpFrame(crcAddress, 2));
    enter(Stage::Read);
}

void CrcComparison::read()
{
    if (!m_session.replyReceived) {
        fail();
        return;
    }
    m_link.write(m_builder.buildReadVpFrame(crcAddress, 2));
    enter(Stage::Compare);
}

void CrcComparison::compare()
{
    if (m_builder.vpAt(crcAddress) >> 8 == busyMark) {
        // The tick stays: the very next one reads again.
        m_session.replyReceived = true;
        m_stage = Stage::Read;
        return;
    }
    CrcCheckItem &item = m_items[m_index];
    item.readCrc = crcCheck::crcText(m_builder.vpAt(crcAddress + 1));
    item.compareResult = item.isIntact() ? "true" : "false";
    ++m_index;
    m_window.showProgress(static_cast<int>(qint64{m_index} * 100 / m_items.size()));
    enter(Stage::Ask);
    if (m_index < m_items.size())
        return;
    finish();
    m_notices.warn(texts::checkFinished);
}

void CrcComparison::enter(Stage stage)
{
    m_stage = stage;
    m_session.tick = 0;
}
