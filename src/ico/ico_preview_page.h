#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class IcoPreviewPage;
}

/// The preview of an icon library.
class IcoPreviewPage : public QWidget
{
    Q_OBJECT

public:
    explicit IcoPreviewPage(QWidget *parent = nullptr);
    ~IcoPreviewPage() override;

private:
    std::unique_ptr<Ui::IcoPreviewPage> m_ui;
};
