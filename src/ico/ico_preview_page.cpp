#include "ico/ico_preview_page.h"

#include "ui_ico_preview_page.h"

IcoPreviewPage::IcoPreviewPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::IcoPreviewPage>())
{
    m_ui->setupUi(this);
    m_ui->displayPicture->setColumnCount(10);
}

IcoPreviewPage::~IcoPreviewPage() = default;
