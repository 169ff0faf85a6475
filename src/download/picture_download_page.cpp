#include "download/picture_download_page.h"

#include "ui_picture_download_page.h"

#include "common/drop_target.h"
#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/tool_settings.h"
#include "download/block_download.h"
#include "download/download_table.h"
#include "download/step_dispatch.h"
#include "serial/serial_set.h"

#include <optional>

namespace {

const QString patterns = QStringLiteral("*.bmp;*.jpg;*.jpeg;*.png;*.gif");

/// The size that `text`, such as "480X272", names. None for other texts, for sizes without pixels,
/// and for sizes that no picture may have.
std::optional<QSize> screenSize(const QString &text)
{
    const QStringList parts = text.split('X');
    if (parts.size() != 2)
        return std::nullopt;
    const QSize size(parts.at(0).toInt(), parts.at(1).toInt());
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    return size.isEmpty() || pixels > picture::maxPixels ? std::nullopt : std::optional(size);
}

/// Ticks from one picture to the next: what its bytes take at 6250000 baud, and half a second.
int ticksOf(const QSize &size)
{
    return size.width() * size.height() / 313 + 500;
}

} // namespace

PictureDownloadPage::PictureDownloadPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::PictureDownloadPage>())
{
    m_ui->setupUi(this);
    m_ui->picturePath->setColumnWidth(1, 600);
    new DropTarget(*m_ui->picturePath,
                   [this](const QStringList &paths) { add(matching(paths, patterns)); });

    auto download = std::make_unique<BlockDownload>(
        context.session, context.ed2Port, context.notices, BlockDownload::pictures(),
        [this](int percent) { m_ui->pictureProgressBar->setValue(percent); });
    m_download = download.get();
    context.dispatch.add(commandType::pictureDownload, std::move(download));
}

PictureDownloadPage::~PictureDownloadPage() = default;

void PictureDownloadPage::setResolutions(const QStringList &resolutions)
{
    m_ui->srceenSize->clear();
    m_ui->srceenSize->addItems(resolutions);
}

void PictureDownloadPage::showResolution(const QString &resolution)
{
    m_ui->srceenSize->setCurrentText(resolution);
}

void PictureDownloadPage::on_choosePictureFile_clicked()
{
    add(m_context.fileDialogs.openFiles(m_context.settings.imageFolder(), patterns));
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
        m_download->start(blocks, m_endTick);
}

void PictureDownloadPage::on_stopPicture_clicked()
{
    m_context.session.commandType = commandType::idle;
    m_download->rewind();
    // The UART2 port is closed, not the ED2 port on which the download ran. That is wanted.
    m_context.uartPort.close();
}

void PictureDownloadPage::on_serialSet_2_clicked()
{
    m_context.ed2Set.exec();
}

void PictureDownloadPage::convert(const QString &path)
{
    ReadFault fault = ReadFault::None;
    if (const auto content = readFile(path, &fault)) {
        m_data.append(pixels(*content));
    } else if (fault == ReadFault::TooLarge) {
        m_data.append(QByteArray());
        m_context.notices.warn(texts::fileTooLarge);
    }
}

QByteArray PictureDownloadPage::pixels(const QByteArray &content)
{
    const QImage image = picture::decode(content);
    if (image.isNull()) {
        m_context.notices.warn(picture::refusal(content));
        return {};
    }
    const auto size = screenSize(m_ui->srceenSize->currentText());
    if (!size) {
        m_context.notices.warn(texts::screenSizeError);
        return {};
    }
    m_endTick = ticksOf(*size);
    // Scaled before the pixels are converted: palette pictures take another nearest-pixel map.
    return picture::toRgb565(image.scaled(*size, Qt::IgnoreAspectRatio, Qt::FastTransformation));
}

void PictureDownloadPage::showList()
{
    downloadTable::show(*m_ui->picturePath, m_list);
}
