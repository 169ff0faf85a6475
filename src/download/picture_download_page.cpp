#include "download/picture_download_page.h"

#include "ui_picture_download_page.h"

#include "serial/serial_set.h"

PictureDownloadPage::PictureDownloadPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::PictureDownloadPage>())
{
    m_ui->setupUi(this);
}

PictureDownloadPage::~PictureDownloadPage() = default;

void PictureDownloadPage::on_serialSet_2_clicked()
{
    m_context.ed2Set.exec();
}
