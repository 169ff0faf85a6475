#include "font/zero_font_page.h"

#include "ui_zero_font_page.h"

ZeroFontPage::ZeroFontPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::ZeroFontPage>())
{
    m_ui->setupUi(this);
}

ZeroFontPage::~ZeroFontPage() = default;
