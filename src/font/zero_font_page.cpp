#include "font/zero_font_page.h"

#include "ui_zero_font_page.h"

#include <QTimer>

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
    m_isTextChangeReported = false;
}

void ZeroFontPage::on_systemLanguage_currentTextChanged(const QString &language)
{
    // When the user chooses another entry, this comes first and activated() at once afterwards.
    m_isTextChangeReported = true;
    QTimer::singleShot(0, this, [this] { m_isTextChangeReported = false; });
    emit languageChosen(language);
}

void ZeroFontPage::on_systemLanguage_activated(const QString &language)
{
    if (!m_isTextChangeReported)
        emit languageChosen(language);
    m_isTextChangeReported = false;
}
