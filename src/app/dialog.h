#pragma once

#include "app/language.h"
#include "app/message_box_notices.h"
#include "app/widget_file_dialogs.h"
#include "common/program_folder.h"
#include "common/tool_settings.h"
#include "download/downloads.h"
#include "engine/engine.h"
#include "engine/links.h"
#include "font/my_thread.h"
#include "font/stepwise_zero_font.h"
#include "ico/ico_manager.h"

#include <QDialog>
#include <QStringList>

#include <future>
#include <memory>

class QComboBox;
class QTabWidget;
class SerialSet;
class ZeroFontPage;

/// The window of the tool. It builds and owns everything: the engine with its two links, the pages,
/// the settings dialogs, the language.
class Dialog : public QDialog
{
    Q_OBJECT

public:
    /// Works on the ports of this computer.
    explicit Dialog(QWidget *parent = nullptr);
    explicit Dialog(Links links, QWidget *parent = nullptr);

    /// The folder of the module's configuration files.
    void setDefaultFolder(const QString &folder) { m_defaultFolder = folder; }
    /// The screen resolution that the picture pages begin with, such as "480X272".
    void setResolutionText(const QString &text);

    /// Where the tool keeps its files.
    const QString &folder() const { return m_folder.own; }

    /// The language that was applied last, as selectLanguage() takes it; empty before the first
    /// time.
    const QString &language() const { return m_language.applied(); }
    /// Chooses "English" or "中文", and applies it; any other text is ignored.
    void selectLanguage(const QString &language);
    /// Applies any stored text as a language, without choosing it.
    void applyLanguage(const QString &language) { m_language.apply(language); }

    /// Offers `ports` in both settings dialogs after the ports that the system lists, and uses the
    /// last of them, as if the system had listed it last.
    void offerPorts(const QStringList &ports);
    /// Uses two of the offered ports.
    void usePorts(const QString &uartPort, const QString &ed2Port);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void buildPages();
    void loadSettings();
    void openInitialTab();
    void showResolution();

    /// First of all: the system takes its time to list the ports, and the rest is built meanwhile.
    std::future<QStringList> m_systemPorts;
    const ProgramFolder m_folder = findProgramFolder();
    ToolSettings m_settings;
    Language m_language;
    QString m_defaultFolder;
    QString m_resolutionText;
    bool m_isResolutionPending = true;

    MessageBoxNotices m_notices;
    WidgetFileDialogs m_fileDialogs;
    Links m_links;
    Engine m_engine;
    Downloads m_downloads{m_engine};
    IcoManager m_icoManager;
    SerialSet *m_uartSet = nullptr;
    SerialSet *m_ed2Set = nullptr;
    QTabWidget *m_tabs = nullptr;
    ZeroFontPage *m_zeroFont = nullptr;
    QVector<QComboBox *> m_screenSizes; ///< which offer the same resolutions
    StepwiseZeroFont m_stepwiseZeroFont{m_folder.own};
    MyThread m_fontThread;
};
