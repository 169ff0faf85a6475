#include "download/picture_download_page.h"

#include "ui_picture_download_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/tool_settings.h"
#include "download/block_download.h"
#include "download/download_table.h"
#include "engine/engine.h"
#include "widgets/drop_target.h"

PictureDownloadPage::PictureDownloadPage(const PageContext &context, Engine &engine,
                                         BlockDownload &download,
                                         std::function<void()> editSettings, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_ui(std::make_unique<Ui::PictureDownloadPage>())
    , m_engine(engine)
    , m_download(download)
    , m_editSettings(std::move(editSettings))
{
    m_ui->setupUi(this);
    m_ui->picturePath->setColumnWidth(1, 600);
    new DropTarget(*m_ui->picturePath, [this](const QStringList &paths) {
        add(matching(paths, picture::filePatterns));
    });

    connect(&engine, &Engine::progressed, this, [this](int type, int percent) {
        if (type == m_download.commandType())
            m_ui->pictureProgressBar->setValue(percent);
    });
}

PictureDownloadPage::~PictureDownloadPage() = default;

QComboBox &PictureDownloadPage::screenSizes()
{
    return *m_ui->srceenSize;
}

void PictureDownloadPage::on_choosePictureFile_clicked()
{
    add(m_context.fileDialogs.openFiles(m_context.settings.imageFolder(), picture::filePatterns));
}

void PictureDownloadPage::add(const QStringList &paths)
{
    if (!paths.isEmpty())
        m_context.settings.rememberImageFiles(paths);
    for (const QString &path : paths) {
        convert(path);
        m_list.append(path);
    }
    showList();
}

void PictureDownloadPage::on_deletePictureFile_clicked()
{
    const auto row = downloadTable::selectedRow(*m_ui->picturePath);
    if (!row)
        return;
    m_list.removeAt(*row);
    if (*row < m_data.size())
        m_data.removeAt(*row);
    showList();
}

void PictureDownloadPage::on_deletePictureAll_clicked()
{
    m_list.clear();
    m_data.clear();
    showList();
}

void PictureDownloadPage::on_downloadPicture_clicked()
{
    if (m_list.paths.isEmpty()) {
        m_context.notices.warn(texts::notSelectFile);
        return;
    }
    const auto positions = downloadTable::positions(*m_ui->picturePath, m_list, m_context.notices);
    if (!positions)
        return;
    // Fewer data than rows: what there is goes out, under the numbers of the first rows.
    QVector<BlockDownload::Block> blocks;
    for (int i = 0; i < qMin(m_data.size(), positions->size()); ++i)
        blocks.append({static_cast<quint8>(positions->at(i)), m_data.at(i)});
    if (blocks.isEmpty())
        m_context.notices.warn(texts::notSelectFile);
    else
        m_download.start(blocks, m_endTick);
}

void PictureDownloadPage::on_stopPicture_clicked()
{
    m_engine.stop();
}

void PictureDownloadPage::on_serialSet_2_clicked()
{
    m_editSettings();
}

void PictureDownloadPage::convert(const QString &path)
{
    ReadFault fault = ReadFault::None;
    if (const auto content = readFile(path, &fault)) {
        m_data.append(pixels(*content));
    } else if (const Text *message = messageOf(fault)) {
        m_data.append(QByteArray());
        m_context.notices.warn(*message);
    }
}

QByteArray PictureDownloadPage::pixels(const QByteArray &content)
{
    const QImage image = picture::decode(content);
    if (image.isNull()) {
        m_context.notices.warn(picture::refusal(content));
        return {};
    }
    const auto size = screenPicture::sizeFrom(m_ui->srceenSize->currentText());
    if (!size) {
        m_context.notices.warn(texts::screenSizeError);
        return {};
    }
    m_endTick = screenPicture::endTick(*size);
    return screenPicture::pixels(image, *size);
}

void PictureDownloadPage::showList()
{
    downloadTable::show(*m_ui->picturePath, m_list);
}
