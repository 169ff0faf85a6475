#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class FontDownloadPage;
}

/// The list of font and bin files, and their download over ED2.
class FontDownloadPage : public QWidget
{
    Q_OBJECT

public:
    explicit FontDownloadPage(QWidget *parent = nullptr);
    ~FontDownloadPage() override;

private:
    std::unique_ptr<Ui::FontDownloadPage> m_ui;
};
