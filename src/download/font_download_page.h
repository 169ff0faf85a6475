#pragma once

#include "common/page_context.h"
#include "download/download_list.h"

#include <QVector>
#include <QWidget>

#include <memory>

class BlockDownload;
class Engine;

namespace Ui {
class FontDownloadPage;
}

/// The list of font and bin files, and their download over ED2. Each file goes to the 256 KiB flash
/// block that its position names, and to those after it when it is larger.
class FontDownloadPage : public QWidget
{
    Q_OBJECT

public:
    /// `moduleFolder` is where the module's configuration files are.
    FontDownloadPage(const PageContext &context, Engine &engine, BlockDownload &download,
                     const QString &moduleFolder, QWidget *parent = nullptr);
    ~FontDownloadPage() override;

private slots:
    void on_chooseFontFile_clicked();
    void on_deleteFontFile_clicked();
    void on_deleteFontAll_clicked();
    void on_downloadFont_clicked();
    void on_stopFont_clicked();
    void on_touchConfig_clicked(bool isOn);
    void on_variableConfig_clicked(bool isOn);

private:
    void add(const QStringList &paths);
    void showList();
    /// Adds the configuration file `name` for flash block `block`, or takes the first entry with
    /// that block out again, whatever file it is.
    void switchConfig(bool isOn, int block, const QString &name);

    const PageContext m_context;
    std::unique_ptr<Ui::FontDownloadPage> m_ui;
    DownloadList m_list;
    Engine &m_engine;
    BlockDownload &m_download;
    const QString &m_moduleFolder;
};
