#pragma once

#include "common/page_context.h"

#include <QFont>
#include <QWidget>

#include <memory>

struct GlyphStyle;

namespace Ui {
class ZeroFontPage;
}

/// The zero-font generator: makes the built-in ASCII font file from a desktop font. The language of
/// the window is chosen here too.
class ZeroFontPage : public QWidget
{
    Q_OBJECT

public:
    /// The font file goes to `folder`.
    ZeroFontPage(const PageContext &context, const QString &folder, QWidget *parent = nullptr);
    ~ZeroFontPage() override;

    /// Chooses one of the offered languages and asks for it, also when it is the shown one.
    void selectLanguage(const QString &language);

signals:
    /// The user asked for `language`, be it the one that is shown already: a window that started in
    /// a stored language shows an entry that may not be the language it has.
    void languageChosen(const QString &language);

protected:
    void paintEvent(QPaintEvent *event) override;

private slots:
    void on_systemLanguage_currentTextChanged(const QString &language);
    void on_systemLanguage_activated(const QString &language);
    void on_CreatZeroFont_clicked();
    void on_selectFont_clicked();
    void on_comboBox_currentTextChanged();
    void on_horScale_valueChanged(int);
    void on_verScale_valueChanged(int);
    void on_horShift_valueChanged(int);
    void on_verShift_valueChanged(int);

private:
    GlyphStyle style() const;
    void drawPreview();

    const PageContext m_context;
    const QString m_folder;
    std::unique_ptr<Ui::ZeroFontPage> m_ui;
    QFont m_font;
    /// The first preview is drawn when the window has been painted: its start does not wait for it.
    bool m_isPreviewDue = true;
    bool m_isTextChangeReported = false; ///< the choice that is under way was asked for already
};
