#include "download/picture_download_page.h"

#include "ui_picture_download_page.h"

#include "serial/serial_set.h"

PictureDownloadPage::PictureDownloadPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::PictureDownloadPage>())
{
    m_ui->setupUi(this);
    m_ui->picturePath->setColumnWidth(1, 600);
}

PictureDownloadPage::~PictureDownloadPage() = default;

void PictureDownloadPage::setResolutions(const QStringList &resolutions)
{
    m_ui->srceenSize->clear();
    m_ui->srceenSize->addItems(resolutions);
}

void PictureDownloadPage::showResolution(const QString &resolution)
{
    m_ui->srceenSize->setCurrentText(resolution);
}

void PictureDownloadPage::on_serialSet_2_clicked()
{
    m_context.ed2Set.exec();
}
