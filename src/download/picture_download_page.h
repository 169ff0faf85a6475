#pragma once

#include "serial/page_context.h"

#include <QWidget>

#include <memory>

namespace Ui {
class PictureDownloadPage;
}

/// The list of pictures, and their download over ED2.
class PictureDownloadPage : public QWidget
{
    Q_OBJECT

public:
    explicit PictureDownloadPage(const PageContext &context, QWidget *parent = nullptr);
    ~PictureDownloadPage() override;

    /// Offers `resolutions`, such as "480X272", in place of the built-in ones.
    void setResolutions(const QStringList &resolutions);
    /// Shows `resolution` if it is offered.
    void showResolution(const QString &resolution);

private slots:
    void on_serialSet_2_clicked();

private:
    const PageContext m_context;
    std::unique_ptr<Ui::PictureDownloadPage> m_ui;
};
