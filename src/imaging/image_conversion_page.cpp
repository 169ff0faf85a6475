#include "imaging/image_conversion_page.h"

#include "ui_image_conversion_page.h"

#include <QHeaderView>

ImageConversionPage::ImageConversionPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ImageConversionPage>())
{
    m_ui->setupUi(this);
    m_ui->pictureTable->horizontalHeader()->setStretchLastSection(true);
}

ImageConversionPage::~ImageConversionPage() = default;

void ImageConversionPage::setResolutions(const QStringList &resolutions)
{
    m_ui->pictureSrceen->clear();
    m_ui->pictureSrceen->addItems(resolutions);
}

void ImageConversionPage::showResolution(const QString &resolution)
{
    m_ui->pictureSrceen->setCurrentText(resolution);
}
