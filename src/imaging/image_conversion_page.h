#pragma once

#include "common/page_context.h"
#include "imaging/picture_list.h"

#include <QDateTime>
#include <QImage>
#include <QWidget>

#include <memory>

class QComboBox;

namespace Ui {
class ImageConversionPage;
}

/// The picture list, its preview, and the conversion to the screen size.
class ImageConversionPage : public QWidget
{
    Q_OBJECT

public:
    explicit ImageConversionPage(const PageContext &context, QWidget *parent = nullptr);
    ~ImageConversionPage() override;

    /// Offers the screen sizes.
    QComboBox &screenSizes();

    // No button fires these; they are kept for those who call them.
    void on_enlargement_clicked();
    void on_shrink_clicked();

private slots:
    void on_addPicture_clicked();
    void on_deletePicture_clicked();
    void on_deleteAllPicture_clicked();
    void on_upPicture_clicked();
    void on_downPicture_clicked();
    void on_pictureTable_clicked();
    void on_pictureTable_currentCellChanged();
    void on_scaleMultiple_currentTextChanged();
    void on_pictureHorizontal_valueChanged();
    void on_pictureVertical_valueChanged();
    void on_pictureSrceen_currentTextChanged(const QString &size);
    void on_imagesConversion_clicked();
    void on_reNameImageConversion_clicked();

private:
    /// What was decoded last, and the state of its file at that moment.
    struct Decoded
    {
        QString path;
        QDateTime modified;
        QImage image;
    };

    void listFolder(const QString &path);
    void onHeaderClicked(int section);
    void move(int rows);
    /// Shows the list with `row` as the current one.
    void showList(int row);
    /// Of the current row; nothing when there is none, or no picture in its file.
    void drawPreview();
    /// The picture of the current row; decoded when it was not the current one before, or its file
    /// has changed.
    const QImage &currentPicture();
    void convert(bool isRenamed);

    const PageContext m_context;
    std::unique_ptr<Ui::ImageConversionPage> m_ui;
    PictureList m_list;
    QSize m_screen{480, 272};
    Decoded m_decoded;
};
