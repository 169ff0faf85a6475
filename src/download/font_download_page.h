#pragma once

#include "download/download_list.h"
#include "serial/page_context.h"

#include <QVector>
#include <QWidget>

#include <memory>

class BlockDownload;

namespace Ui {
class FontDownloadPage;
}

/// The list of font and bin files, and their download over ED2. Each file goes to the 256 KiB flash
/// block that its position names, and to those after it when it is larger.
class FontDownloadPage : public QWidget
{
    Q_OBJECT

public:
    explicit FontDownloadPage(const PageContext &context, QWidget *parent = nullptr);
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
    BlockDownload *m_download;
};
