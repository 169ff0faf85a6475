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

private:
    std::unique_ptr<Ui::ZeroFontPage> m_ui;
};
