#pragma once

#include "app/language.h"
#include "app/message_box_notices.h"
#include "app/widget_file_dialogs.h"
#include "common/program_folder.h"
#include "common/tool_settings.h"
#include "download/download_session.h"
#include "download/heartbeat.h"
#include "download/step_dispatch.h"
#include "font/my_thread.h"
#include "font/stepwise_zero_font.h"
#include "ico/ico_manager.h"
#include "serial/frame_builder.h"
#include "serial/qt_serial_link.h"
#include "serial/reply_receiver.h"
#include "serial/traffic_log.h"

#include <QDialog>
#include <QStringList>

#include <future>

class ImageConversionPage;
class PictureDownloadPage;
class QTabWidget;
class SerialAssistantPage;
class SerialSet;
class ZeroFontPage;

/// The window of the tool. It builds and owns everything: the pages, the two links with their
/// settings dialogs, the frames, the session and its heartbeat.
class Dialog : public QDialog
{
    Q_OBJECT

public:
    explicit Dialog(QWidget *parent = nullptr);

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
    void connectLinks();
    void buildSteps();
    void loadSettings();
    void openInitialTab();
    void showResolution();
    void applyUartSettings();
    void applyEd2Settings();

    /// First of all: the system takes its time to list the ports, and the rest is built meanwhile.
    std::future<QStringList> m_systemPorts;
    const ProgramFolder m_folder = findProgramFolder();
    ToolSettings m_settings;
    Language m_language;
    QString m_defaultFolder;
    QString m_resolutionText;
    bool m_isResolutionPending = true;

    DownloadSession m_session;
    FrameBuilder m_builder;
    QtSerialLink m_uartPort;
    QtSerialLink m_ed2Port;
    ReplyReceiver m_uartReplies;
    ReplyReceiver m_ed2Replies;
    TrafficLog m_trafficLog;
    MessageBoxNotices m_notices;
    WidgetFileDialogs m_fileDialogs;
    IcoManager m_icoManager;
    SerialSet *m_uartSet;
    SerialSet *m_ed2Set;
    QTabWidget *m_tabs = nullptr;
    ZeroFontPage *m_zeroFont = nullptr;
    SerialAssistantPage *m_assistant = nullptr;
    PictureDownloadPage *m_pictureDownload = nullptr;
    ImageConversionPage *m_imageConversion = nullptr;
    StepDispatch m_dispatch;
    Heartbeat m_heartbeat;
    StepwiseZeroFont m_stepwiseZeroFont{m_folder.own};
    MyThread m_fontThread;
};
