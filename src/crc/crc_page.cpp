#include "crc/crc_page.h"

#include "ui_crc_page.h"

CrcPage::CrcPage(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::CrcPage>())
{
    m_ui->setupUi(this);
}

CrcPage::~CrcPage() = default;
