#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class CrcPage;
}

/// The CRC check: compares files with what the module holds.
class CrcPage : public QWidget
{
    Q_OBJECT

public:
    explicit CrcPage(QWidget *parent = nullptr);
    ~CrcPage() override;

private:
    std::unique_ptr<Ui::CrcPage> m_ui;
};
