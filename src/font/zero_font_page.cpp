#include "font/zero_font_page.h"

#include "ui_zero_font_page.h"

ZeroFontPage::ZeroFontPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZeroFontPage>())
{
    m_ui->setupUi(this);
    for (ushort code = 32; code <= 127; ++code)
        m_ui->comboBox->addItem(QString(QChar(code)));
    m_ui->comboBox->setCurrentText("A");
}

ZeroFontPage::~ZeroFontPage() = default;

void ZeroFontPage::selectLanguage(const QString &language)
{
    if (m_ui->systemLanguage->currentText() == language)
        emit languageChosen(language);
    else
        m_ui->systemLanguage->setCurrentText(language);
}

void ZeroFontPage::on_systemLanguage_currentTextChanged(const QString &language)
{
    emit languageChosen(language);
}

void ZeroFontPage::on_systemLanguage_activated(const QString &language)
{
    emit shownLanguageChosen(language);
}
