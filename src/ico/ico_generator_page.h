#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class IcoGeneratorPage;
}

/// The icon library generator: creates and extends icon libraries.
class IcoGeneratorPage : public QWidget
{
    Q_OBJECT

public:
    explicit IcoGeneratorPage(QWidget *parent = nullptr);
    ~IcoGeneratorPage() override;

private:
    std::unique_ptr<Ui::IcoGeneratorPage> m_ui;
};
