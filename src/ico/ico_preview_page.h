#pragma once

#include "common/page_context.h"
#include "ico/ico_manager.h"
#include "ico/icon_pictures.h"

#include <QWidget>

#include <memory>

namespace Ui {
class IcoPreviewPage;
}

/// The preview of an icon library, ten icons side by side, each with its position and size below.
class IcoPreviewPage : public QWidget
{
    Q_OBJECT

public:
    IcoPreviewPage(const PageContext &context, IcoManager &manager, QWidget *parent = nullptr);
    ~IcoPreviewPage() override;

private slots:
    void on_OpenIcoFile_clicked();
    void on_filiterBackColor_clicked();

private:
    /// Shows the icons of the library that was read last; without any, what was shown stays.
    void draw();

    const PageContext m_context;
    IcoManager &m_manager;
    IconPictures m_pictures;
    std::unique_ptr<Ui::IcoPreviewPage> m_ui;
};
