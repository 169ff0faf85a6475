#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class ZeroFontPage;
}

/// The zero-font generator: makes the built-in ASCII font file from a desktop font.
class ZeroFontPage : public QWidget
{
    Q_OBJECT

public:
    explicit ZeroFontPage(QWidget *parent = nullptr);
    ~ZeroFontPage() override;

    /// Chooses one of the offered languages and asks for it, also when it is the shown one.
    void selectLanguage(const QString &language);

signals:
    /// The user asked for `language`, be it the one that is shown already: a window that started in
    /// a stored language shows an entry that may not be the language it has.
    void languageChosen(const QString &language);

private slots:
    void on_systemLanguage_currentTextChanged(const QString &language);
    void on_systemLanguage_activated(const QString &language);

private:
    std::unique_ptr<Ui::ZeroFontPage> m_ui;
    bool m_isTextChangeReported = false; ///< the choice that is under way was asked for already
};
