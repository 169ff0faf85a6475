#pragma once

#include "common/page_context.h"
#include "config/cfg_image.h"

#include <QVector>
#include <QWidget>

#include <memory>
#include <utility>

class QButtonGroup;
class QCheckBox;
class QSpinBox;

namespace encryptionTexts {
struct Verdict;
}

namespace Ui {
class SystemConfigPage;
}

/// The system configuration: edits the configuration files of the module.
class SystemConfigPage : public QWidget
{
    Q_OBJECT

public:
    explicit SystemConfigPage(const PageContext &context, QWidget *parent = nullptr);
    ~SystemConfigPage() override;

private slots:
    void on_K7UIModel_currentTextChanged();
    void on_K7UISize_activated(const QString &size);
    void on_encryptionFolderName_textChanged(const QString &name);
    void on_encryptionKey_textChanged(const QString &key);
    void on_openZoltsetFolder_clicked();
    void on_openCfgFile_clicked();
    void on_createCfgFile_clicked();
    void on_addCfgFile_clicked();

private:
    /// Ties each setting to the widget that edits it. The ids of radio buttons are what the file
    /// holds, the checked ones its defaults.
    void bindSettings();
    CfgSettings settings() const;
    /// Shows all but the layout.
    void show(const CfgSettings &settings);
    /// Chooses the first size of the layout that has `timing`, if one has.
    void showTiming(const QByteArray &timing);
    void fillSizes();
    /// Not every layout has every setting.
    void enableForLayout();
    /// Chooses the PCLK edge of the chosen size.
    void showEdge();
    void showVerdict(const encryptionTexts::Verdict &verdict);
    /// Asks for a file, and writes `image` to it with the settings put in.
    void writeFile(const QByteArray &image);

    const PageContext m_context;
    std::unique_ptr<Ui::SystemConfigPage> m_ui;
    QVector<std::pair<QButtonGroup *, int CfgSettings::*>> m_choices;
    QVector<std::pair<QCheckBox *, bool CfgSettings::*>> m_options;
    QVector<std::pair<QSpinBox *, int CfgSettings::*>> m_numbers;
    QByteArray m_openedImage; ///< the file that was read last, whole
};
