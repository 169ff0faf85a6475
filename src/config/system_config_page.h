#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class SystemConfigPage;
}

/// The system configuration: edits the configuration files of the module.
class SystemConfigPage : public QWidget
{
    Q_OBJECT

public:
    explicit SystemConfigPage(QWidget *parent = nullptr);
    ~SystemConfigPage() override;

private:
    /// Groups the radio buttons; their ids are what the file holds, the checked ones its defaults.
    void makeGroups();

    std::unique_ptr<Ui::SystemConfigPage> m_ui;
};
