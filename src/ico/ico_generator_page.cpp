#include "ico/ico_generator_page.h"

#include "ui_ico_generator_page.h"

IcoGeneratorPage::IcoGeneratorPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::IcoGeneratorPage>())
{
    m_ui->setupUi(this);
    m_ui->ICOFileTable->setColumnWidth(1, 400);
    // Until pictures are loaded there is nothing to write.
    for (QPushButton *button : {m_ui->creatIcoFile, m_ui->addIcoFile, m_ui->replaceIcoFile})
        button->setEnabled(false);
}

IcoGeneratorPage::~IcoGeneratorPage() = default;
