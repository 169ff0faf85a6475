#include "imaging/image_conversion_page.h"

#include "ui_image_conversion_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/tool_settings.h"
#include "imaging/picture_conversion.h"
#include "imaging/picture_preview.h"
#include "widgets/busy.h"
#include "widgets/drop_target.h"

#include <QDir>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QtConcurrent>

namespace {

const QString folderCaption = QStringLiteral("请选择需要转换图片路径");

} // namespace

ImageConversionPage::ImageConversionPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::ImageConversionPage>())
{
    m_ui->setupUi(this);
    m_ui->pictureTable->horizontalHeader()->setStretchLastSection(true);
    m_ui->pictureHorizontal->setPageStep(m_ui->pictureLabel->width());
    m_ui->pictureVertical->setPageStep(m_ui->pictureLabel->height());
    new DropTarget(*m_ui->pictureTable, [this](const QStringList &paths) {
        if (QFileInfo(paths.first()).isDir())
            listFolder(paths.first());
    });
    connect(m_ui->pictureTable->horizontalHeader(), &QHeaderView::sectionClicked, this,
            &ImageConversionPage::onHeaderClicked);
}

ImageConversionPage::~ImageConversionPage() = default;

QComboBox &ImageConversionPage::screenSizes()
{
    return *m_ui->pictureSrceen;
}

void ImageConversionPage::on_enlargement_clicked()
{
    m_ui->pictureHorizontal->setMaximum(0);
}

void ImageConversionPage::on_shrink_clicked()
{
    // The value is read, and that is all.
    m_ui->pictureHorizontal->value();
}

void ImageConversionPage::on_addPicture_clicked()
{
    const QString path =
        m_context.fileDialogs.openFolder(folderCaption, m_context.settings.imageFolder());
    if (!path.isEmpty())
        listFolder(path);
}

void ImageConversionPage::listFolder(const QString &path)
{
    m_context.settings.rememberImagePath(path);
    const QDir folder(path);
    if (!folder.exists())
        return;
    QStringList paths;
    for (const QFileInfo &file : folder.entryInfoList(QDir::Files | QDir::NoSymLinks))
        paths.append(file.absoluteFilePath());
    m_list.load(paths);
    showList(0);
}

void ImageConversionPage::on_deletePicture_clicked()
{
    const int row = m_ui->pictureTable->currentRow();
    if (!m_list.has(row))
        return;
    m_list.remove(row);
    showList(qMin(row, m_list.pictures().size() - 1));
}

void ImageConversionPage::on_deleteAllPicture_clicked()
{
    m_list.clear();
    showList(-1);
}

void ImageConversionPage::on_upPicture_clicked()
{
    move(-1);
}

void ImageConversionPage::on_downPicture_clicked()
{
    move(1);
}

void ImageConversionPage::move(int rows)
{
    const int row = m_ui->pictureTable->currentRow();
    if (!m_list.exchange(row, row + rows))
        return;
    showList(row + rows);
}

void ImageConversionPage::onHeaderClicked(int section)
{
    if (section == 0)
        m_list.sortByNumber();
    else if (section == 1)
        m_list.sortByFirstByte();
    else
        return;
    showList(m_ui->pictureTable->currentRow());
}

void ImageConversionPage::showList(int row)
{
    const QSignalBlocker oneRedraw(m_ui->pictureTable);
    const QVector<ListedPicture> &pictures = m_list.pictures();
    m_ui->pictureTable->setRowCount(pictures.size());
    for (int i = 0; i < pictures.size(); ++i) {
        m_ui->pictureTable->setItem(i, 0, new QTableWidgetItem(pictures.at(i).number));
        m_ui->pictureTable->setItem(i, 1, new QTableWidgetItem(pictures.at(i).name));
    }
    m_ui->pictureTable->setCurrentCell(row, 0);
    drawPreview();
}

void ImageConversionPage::on_pictureTable_clicked()
{
    drawPreview();
}

void ImageConversionPage::on_pictureTable_currentCellChanged()
{
    drawPreview();
}

void ImageConversionPage::on_scaleMultiple_currentTextChanged()
{
    drawPreview();
}

void ImageConversionPage::on_pictureHorizontal_valueChanged()
{
    drawPreview();
}

void ImageConversionPage::on_pictureVertical_valueChanged()
{
    drawPreview();
}

void ImageConversionPage::on_pictureSrceen_currentTextChanged(const QString &size)
{
    const QStringList parts = size.split('X');
    if (parts.size() >= 2)
        m_screen = QSize(parts.at(0).toInt(), parts.at(1).toInt());
    drawPreview();
}

void ImageConversionPage::drawPreview()
{
    const QImage picture =
        m_list.has(m_ui->pictureTable->currentRow()) ? currentPicture() : QImage();
    if (picture.isNull()) {
        m_ui->pictureLabel->clear();
        return;
    }
    const int percent = m_ui->scaleMultiple->currentText().section('%', 0, 0).toInt();
    const QPoint offset(m_ui->pictureHorizontal->value(), m_ui->pictureVertical->value());
    const PicturePreview preview =
        ::drawPreview(picture, m_screen, percent, offset, m_ui->pictureLabel->size());
    for (const auto &[slider, maximum] : {std::pair(m_ui->pictureHorizontal, preview.maxX),
                                          {m_ui->pictureVertical, preview.maxY}}) {
        const QSignalBlocker blocker(slider); // it is drawn for the new range already
        slider->setMaximum(maximum);
    }
    m_ui->pictureLabel->setPixmap(QPixmap::fromImage(preview.canvas));
}

const QImage &ImageConversionPage::currentPicture()
{
    const QString &path = m_list.pictures().at(m_ui->pictureTable->currentRow()).path;
    const QDateTime modified = QFileInfo(path).lastModified();
    if (m_decoded.path != path || m_decoded.modified != modified)
        m_decoded = {path, modified, picture::decode(readFile(path).value_or(QByteArray()))};
    return m_decoded.image;
}

void ImageConversionPage::on_imagesConversion_clicked()
{
    convert(false);
}

void ImageConversionPage::on_reNameImageConversion_clicked()
{
    convert(true);
}

void ImageConversionPage::convert(bool isRenamed)
{
    const QString folder = m_context.fileDialogs.openFolder(folderCaption, "./");
    if (folder.isEmpty() || m_list.pictures().isEmpty())
        return;
    const auto batches = pictureConversion::batches(m_list.pictures(), folder, isRenamed);
    waitFor(QtConcurrent::map(batches, [size = m_screen](const pictureConversion::Batch &batch) {
        pictureConversion::run(batch, size);
    }));
    m_context.notices.warn(texts::conversionComplete);
}
