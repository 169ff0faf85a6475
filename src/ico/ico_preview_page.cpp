#include "ico/ico_preview_page.h"

#include "ui_ico_preview_page.h"

#include <QHeaderView>

IcoPreviewPage::IcoPreviewPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::IcoPreviewPage>())
{
    m_ui->setupUi(this);
    m_ui->displayPicture->setColumnCount(10);
    // Ten icons side by side are seen at once.
    m_ui->displayPicture->horizontalHeader()->setDefaultSectionSize(92);
}

IcoPreviewPage::~IcoPreviewPage() = default;
