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

    /// Offers `resolutions`, such as "480X272", in place of the built-in ones.
    void setResolutions(const QStringList &resolutions);
    /// Shows `resolution` if it is offered.
    void showResolution(const QString &resolution);

private:
    std::unique_ptr<Ui::ImageConversionPage> m_ui;
};
