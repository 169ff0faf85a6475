#include "font/zero_font_page.h"

#include "ui_zero_font_page.h"

#include "common/notices.h"
#include "font/zero_font.h"
#include "widgets/wait_cursor.h"

#include <QFontDialog>
#include <QSignalBlocker>
#include <QTimer>

ZeroFontPage::ZeroFontPage(const PageContext &context, const QString &folder, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_folder(folder)
    , m_ui(std::make_unique<Ui::ZeroFontPage>())
    , m_font("宋体", 8)
{
    m_ui->setupUi(this);
    const QSignalBlocker noPreview(m_ui->comboBox); // not yet
    QStringList characters;
    for (ushort code = 32; code <= 127; ++code)
        characters.append(QString(QChar(code)));
    m_ui->comboBox->addItems(characters);
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

void ZeroFontPage::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    if (m_isPreviewDue)
        QTimer::singleShot(0, this, &ZeroFontPage::drawPreview);
    m_isPreviewDue = false;
}

void ZeroFontPage::on_CreatZeroFont_clicked()
{
    const Overwritten outcome = [this] {
        const WaitCursor busy;
        return zeroFont::write(m_folder, zeroFont::make(style(), [this](int percent) {
                                   m_ui->progressBar->setValue(percent);
                               }));
    }();
    if (outcome == Overwritten::NotKept)
        m_context.notices.warn(texts::oldFileNotKept);
    // Whatever became of the file. That is wanted.
    m_context.notices.warn(texts::libraryFinished);
}

void ZeroFontPage::on_selectFont_clicked()
{
    bool isChosen = false;
    const QFont font = QFontDialog::getFont(&isChosen, m_font, this, "自定义文字属性");
    if (!isChosen)
        return;
    m_font = font;
    m_ui->label_font->setText("Font Name: " + font.family());
    drawPreview();
}

void ZeroFontPage::on_comboBox_currentTextChanged()
{
    drawPreview();
}

void ZeroFontPage::on_horScale_valueChanged(int /*value*/)
{
    drawPreview();
}

void ZeroFontPage::on_verScale_valueChanged(int /*value*/)
{
    drawPreview();
}

void ZeroFontPage::on_horShift_valueChanged(int /*value*/)
{
    drawPreview();
}

void ZeroFontPage::on_verShift_valueChanged(int /*value*/)
{
    drawPreview();
}

GlyphStyle ZeroFontPage::style() const
{
    return {m_font, m_ui->horScale->value(), m_ui->verScale->value(), m_ui->horShift->value(),
            m_ui->verShift->value()};
}

void ZeroFontPage::drawPreview()
{
    m_ui->fontDisplay->setPixmap(
        QPixmap::fromImage(zeroFont::preview(m_ui->comboBox->currentText(), style())));
}
