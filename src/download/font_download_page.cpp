#include "download/font_download_page.h"

#include "ui_font_download_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/read_file.h"
#include "common/tool_settings.h"
#include "download/download_table.h"
#include "download/flash_blocks.h"
#include "engine/engine.h"
#include "widgets/drop_target.h"

namespace {

const QString patterns = QStringLiteral("*.ICO;*.bin;*.hzk;*.dzk");

} // namespace

FontDownloadPage::FontDownloadPage(const PageContext &context, Engine &engine,
                                   BlockDownload &download, const QString &moduleFolder,
                                   QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_ui(std::make_unique<Ui::FontDownloadPage>())
    , m_engine(engine)
    , m_download(download)
    , m_moduleFolder(moduleFolder)
{
    m_ui->setupUi(this);
    m_ui->fontPath->setColumnWidth(1, 600);
    new DropTarget(*m_ui->fontPath,
                   [this](const QStringList &paths) { add(matching(paths, patterns)); });

    connect(&engine, &Engine::progressed, this, [this](int type, int percent) {
        if (type == m_download.commandType())
            m_ui->fontProgressBar->setValue(percent);
    });
}

FontDownloadPage::~FontDownloadPage() = default;

void FontDownloadPage::on_chooseFontFile_clicked()
{
    add(m_context.fileDialogs.openFiles(m_context.settings.fontFolder(), patterns));
}

void FontDownloadPage::add(const QStringList &paths)
{
    if (paths.isEmpty())
        return;
    m_context.settings.rememberFontFiles(paths);
    for (const QString &path : paths)
        m_list.append(path);
    showList();
}

void FontDownloadPage::on_deleteFontFile_clicked()
{
    const auto row = downloadTable::selectedRow(*m_ui->fontPath);
    if (!row)
        return;
    m_list.removeAt(*row);
    showList();
}

void FontDownloadPage::on_deleteFontAll_clicked()
{
    m_list.clear();
    showList();
}

void FontDownloadPage::on_downloadFont_clicked()
{
    if (m_list.paths.isEmpty()) {
        m_context.notices.warn(texts::notSelectFile);
        return;
    }
    const auto positions = downloadTable::positions(*m_ui->fontPath, m_list, m_context.notices);
    if (!positions)
        return;
    QVector<BlockDownload::Block> blocks;
    for (int row = 0; row < positions->size(); ++row) {
        // A file that cannot be opened is skipped without a word. That is wanted.
        ReadFault fault = ReadFault::None;
        if (const auto content = readFile(m_list.paths.at(row), &fault))
            blocks += flashBlocks(positions->at(row), *content);
        else if (const Text *message = messageOf(fault))
            m_context.notices.warn(*message);
    }
    if (!blocks.isEmpty())
        m_download.start(blocks, BlockDownload::fontEndTick);
}

void FontDownloadPage::on_stopFont_clicked()
{
    m_engine.stop();
}

void FontDownloadPage::on_touchConfig_clicked(bool isOn)
{
    switchConfig(isOn, 13, "/13触控配置文件.bin");
}

void FontDownloadPage::on_variableConfig_clicked(bool isOn)
{
    switchConfig(isOn, 14, "/14变量配置文件.bin");
}

void FontDownloadPage::switchConfig(bool isOn, int block, const QString &name)
{
    if (isOn) {
        m_list.append(m_moduleFolder + name, QString::number(block));
    } else {
        int row = 0;
        while (row < m_list.positions.size() && m_list.positions.at(row).toInt() != block)
            ++row;
        m_list.removeAt(row);
    }
    showList();
}

void FontDownloadPage::showList()
{
    downloadTable::show(*m_ui->fontPath, m_list);
}
