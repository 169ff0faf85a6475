#pragma once

#include "common/page_context.h"
#include "ico/ico_manager.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace Ui {
class IcoGeneratorPage;
}

/// The icon library generator: creates and extends icon libraries.
class IcoGeneratorPage : public QWidget
{
    Q_OBJECT

public:
    IcoGeneratorPage(const PageContext &context, IcoManager &manager, QWidget *parent = nullptr);
    ~IcoGeneratorPage() override;

private slots:
    void on_selectIcoPath_clicked();
    void on_selectIcoFilePath_clicked();
    void on_creatIcoFile_clicked();
    void on_addIcoFile_clicked();
    void on_replaceIcoFile_clicked();

private:
    void load(const QStringList &paths);
    void loadFolder(const QString &folder);
    /// Has `change` write the library at `path`, and tells what came of it.
    void write(const QString &path, const std::function<IcoManager::Outcome()> &change);

    const PageContext m_context;
    IcoManager &m_manager;
    std::unique_ptr<Ui::IcoGeneratorPage> m_ui;
};
