#pragma once

#include "download/download_list.h"
#include "serial/page_context.h"

#include <QVector>
#include <QWidget>

#include <memory>

class BlockDownload;

namespace Ui {
class PictureDownloadPage;
}

/// The list of pictures, and their download over ED2. A picture is converted to the screen size
/// that is selected when it is chosen.
class PictureDownloadPage : public QWidget
{
    Q_OBJECT

public:
    explicit PictureDownloadPage(const PageContext &context, QWidget *parent = nullptr);
    ~PictureDownloadPage() override;

    /// Offers `resolutions`, such as "480X272", in place of the built-in ones.
    void setResolutions(const QStringList &resolutions);
    /// Shows `resolution` if it is offered.
    void showResolution(const QString &resolution);

private slots:
    void on_choosePictureFile_clicked();
    void on_deletePictureFile_clicked();
    void on_deletePictureAll_clicked();
    void on_downloadPicture_clicked();
    void on_stopPicture_clicked();
    void on_serialSet_2_clicked();

private:
    void add(const QStringList &paths);
    void showList();
    /// Converts the picture and appends it to the data; what is no picture appends an empty one. A
    /// file that cannot be opened appends nothing, so data and list no longer line up; that is
    /// wanted.
    void convert(const QString &path);
    /// The pixels of `content` at the selected screen size; none when it is no picture, or too
    /// large a one, or the size is none, which the user is told.
    QByteArray pixels(const QByteArray &content);

    const PageContext m_context;
    std::unique_ptr<Ui::PictureDownloadPage> m_ui;
    DownloadList m_list;
    QVector<QByteArray> m_data;
    /// Ticks of one picture, as the last successful conversion set them; before that, those of an
    /// empty one.
    int m_endTick = 500;
    BlockDownload *m_download;
};
