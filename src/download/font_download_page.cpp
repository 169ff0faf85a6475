#include "download/font_download_page.h"

#include "ui_font_download_page.h"

FontDownloadPage::FontDownloadPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::FontDownloadPage>())
{
    m_ui->setupUi(this);
    m_ui->fontPath->setColumnWidth(1, 600);
}

FontDownloadPage::~FontDownloadPage() = default;
