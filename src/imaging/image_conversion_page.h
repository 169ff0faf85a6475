#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ImageConversionPage;
}

/// The picture list, its preview, and the conversion to the screen size.
class ImageConversionPage : public QWidget
{
    Q_OBJECT

public:
    explicit ImageConversionPage(QWidget *parent = nullptr);
    ~ImageConversionPage() override;

private:
    std::unique_ptr<Ui::ImageConversionPage> m_ui;
};
