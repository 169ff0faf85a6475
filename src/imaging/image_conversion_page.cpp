#include "imaging/image_conversion_page.h"

#include "ui_image_conversion_page.h"

ImageConversionPage::ImageConversionPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ImageConversionPage>())
{
    m_ui->setupUi(this);
}

ImageConversionPage::~ImageConversionPage() = default;
