#include "crc/crc_page.h"

#include "ui_crc_page.h"

CrcPage::CrcPage(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::CrcPage>())
{
    m_ui->setupUi(this);
    // Name, calculated CRC, read CRC, result.
    for (const auto &[column, width] : {std::pair(0, 260), {1, 100}, {2, 100}, {3, 100}})
        m_ui->crcTableWidget->setColumnWidth(column, width);
}

CrcPage::~CrcPage() = default;
