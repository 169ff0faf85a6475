#pragma once

#include "common/page_context.h"
#include "download/download_list.h"
#include "download/screen_picture.h"

#include <QVector>
#include <QWidget>

#include <functional>
#include <memory>

class BlockDownload;
class Engine;
class QComboBox;

namespace Ui {
class PictureDownloadPage;
}

/// The list of pictures, and their download over ED2. A picture is converted to the screen size
/// that is selected when it is chosen.
class PictureDownloadPage : public QWidget
{
    Q_OBJECT

public:
    /// `editSettings` shows the settings of the ED2 port.
    PictureDownloadPage(const PageContext &context, Engine &engine, BlockDownload &download,
                        std::function<void()> editSettings, QWidget *parent = nullptr);
    ~PictureDownloadPage() override;

    /// Offers the screen sizes.
    QComboBox &screenSizes();

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
    int m_endTick = screenPicture::emptyEndTick;
    Engine &m_engine;
    BlockDownload &m_download;
    const std::function<void()> m_editSettings;
};
