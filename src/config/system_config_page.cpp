#include "config/system_config_page.h"

#include "ui_system_config_page.h"

SystemConfigPage::SystemConfigPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::SystemConfigPage>())
{
    m_ui->setupUi(this);
}

SystemConfigPage::~SystemConfigPage() = default;
