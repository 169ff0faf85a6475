#include "app/dialog.h"

#include "config/system_config_page.h"
#include "crc/crc_page.h"
#include "download/device_page.h"
#include "download/font_download_page.h"
#include "download/picture_download_page.h"
#include "download/system_reset.h"
#include "download/transaction.h"
#include "font/zero_font_page.h"
#include "ico/ico_generator_page.h"
#include "ico/ico_preview_page.h"
#include "imaging/image_conversion_page.h"
#include "serial/page_context.h"
#include "serial/serial_assistant_page.h"
#include "serial/serial_set.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QTabWidget>

namespace {

/// A tab widget on a new page of `tabs`, which it fills.
QTabWidget *addInnerTabs(QTabWidget *tabs, const QString &pageName, const QString &caption,
                         const QString &name)
{
    auto *page = new QWidget;
    page->setObjectName(pageName);
    auto *inner = new QTabWidget(page);
    inner->setObjectName(name);
    inner->setGeometry(0, 0, 1004, 610);
    tabs->addTab(page, caption);
    return inner;
}

} // namespace

Dialog::Dialog(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint)
    , m_systemPorts(std::async(std::launch::async, &SerialSet::systemPorts))
    , m_settings(m_folder.own + "/SystemConfig.ini", m_folder.executable + "/SystemConfig.ini")
    , m_language(*this, m_settings)
    , m_uartReplies(uartReceiveRules, m_builder, m_session.replyReceived)
    , m_ed2Replies(ed2ReceiveRules, m_builder, m_session.replyReceived)
    , m_notices(this, m_language.isEnglish())
    , m_fileDialogs(this)
    , m_uartSet(new SerialSet(this))
    , m_ed2Set(new SerialSet(this))
    , m_dispatch(m_session)
    , m_heartbeat(m_session, m_dispatch, [this] {
        m_uartPort.poll();
        m_ed2Port.poll();
    })
{
    setWindowTitle("VORAII_Tool1.0.0.3");
    setFixedSize(1017, 645);
    // In pixels, so that the fixed geometry holds whatever the desktop's font is.
    QFont windowFont = font();
    windowFont.setPixelSize(12);
    setFont(windowFont);

    for (SerialSet *set : {m_uartSet, m_ed2Set})
        set->setWindowTitle("Serial set");
    buildPages();
    // Some desktops give table headers a font of their own.
    for (auto *header : findChildren<QHeaderView *>())
        header->setFont(windowFont);
    const QStringList systemPorts = m_systemPorts.get();
    for (SerialSet *set : {m_uartSet, m_ed2Set})
        set->begin(systemPorts);

    // The ED2 link starts at 115200: its settings are applied before its dialog shows 6250000, and
    // count once the user confirms them. That is wanted.
    applyUartSettings();
    applyEd2Settings();
    m_ed2Set->setBaudText(6250000);
    connect(m_uartSet, &SerialSet::accepted, this, &Dialog::applyUartSettings);
    connect(m_ed2Set, &SerialSet::accepted, this, &Dialog::applyEd2Settings);

    connectLinks();
    buildSteps();
    connect(&m_heartbeat, &Heartbeat::fired, this, [this] { m_stepwiseZeroFont.step(); });
    m_heartbeat.start();
    loadSettings();
    openInitialTab();
}

void Dialog::setResolutionText(const QString &text)
{
    m_resolutionText = text;
    showResolution();
    if (m_resolutionText.isEmpty() || !m_isResolutionPending)
        return;
    // Once more when the event loop runs and the widgets have settled.
    m_isResolutionPending = false;
    QTimer::singleShot(0, this, &Dialog::showResolution);
}

void Dialog::selectLanguage(const QString &language)
{
    if (language == Language::chinese || language == Language::english)
        m_zeroFont->selectLanguage(language);
}

void Dialog::offerPorts(const QStringList &ports)
{
    for (SerialSet *set : {m_uartSet, m_ed2Set})
        set->offerPorts(ports);
    if (!ports.isEmpty())
        usePorts(ports.last(), ports.last());
}

void Dialog::usePorts(const QString &uartPort, const QString &ed2Port)
{
    m_uartSet->usePort(uartPort);
    m_ed2Set->usePort(ed2Port);
}

void Dialog::loadSettings()
{
    const QStringList resolutions = m_settings.loadResolutions();
    if (!resolutions.isEmpty()) {
        m_pictureDownload->setResolutions(resolutions);
        m_imageConversion->setResolutions(resolutions);
    }
    m_language.load();
}

void Dialog::openInitialTab()
{
    const QSettings config(m_folder.fileToRead("config.cfg"), QSettings::IniFormat);
    m_tabs->setCurrentIndex(config.value("tabview/tabview").toInt());
}

void Dialog::showResolution()
{
    m_pictureDownload->showResolution(m_resolutionText);
    m_imageConversion->showResolution(m_resolutionText);
}

void Dialog::keyPressEvent(QKeyEvent *event)
{
    // A stray Escape must not end the tool in the middle of a download.
    if (event->key() != Qt::Key_Escape)
        QDialog::keyPressEvent(event);
}

void Dialog::buildPages()
{
    const PageContext context{m_session,    m_builder,       m_uartReplies, m_ed2Replies,
                              m_trafficLog, m_uartPort,      m_ed2Port,     *m_uartSet,
                              *m_ed2Set,    m_notices,       m_fileDialogs, m_settings,
                              m_dispatch,   m_defaultFolder, m_folder.own,  m_language.isEnglish()};

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName("tabWidget");
    m_tabs->setGeometry(0, 0, 1010, 640);

    m_zeroFont = new ZeroFontPage(context);
    connect(m_zeroFont, &ZeroFontPage::languageChosen, this,
            [this](const QString &language) { m_language.apply(language); });
    m_tabs->addTab(m_zeroFont, "Creat zero font library");
    QTabWidget *ico = addInnerTabs(m_tabs, "creatICOTab", "ICO Manager", "tabWidgetICO");
    ico->addTab(new IcoGeneratorPage(context, m_icoManager), "ICO File Generator");
    ico->addTab(new IcoPreviewPage(context, m_icoManager), "Preview Of ICO File");

    QTabWidget *uart = addInnerTabs(m_tabs, "tab", "Uart2 Communication", "tabWidgetSerial");
    m_assistant = new SerialAssistantPage(context);
    uart->addTab(m_assistant, "VORA Serial Assistant");
    uart->addTab(new DevicePage(context, *m_assistant), "Uart2 Communication");

    QTabWidget *ed2 = addInnerTabs(m_tabs, "tab_2", "ED2 Communication", "tabWidgetEd2");
    ed2->addTab(new FontDownloadPage(context), "Fonts And Bin File Download");
    m_pictureDownload = new PictureDownloadPage(context);
    ed2->addTab(m_pictureDownload, "Image Download");

    m_tabs->addTab(new SystemConfigPage(context), "System configuration");
    m_imageConversion = new ImageConversionPage(context);
    m_tabs->addTab(m_imageConversion, "Image conversion");
    m_tabs->addTab(new CrcPage(context), "CRC_Check");
}

void Dialog::connectLinks()
{
    m_uartPort.setPeer(m_ed2Port);
    m_ed2Port.setPeer(m_uartPort);
    connect(&m_uartPort, &SerialLink::readyRead, this, [this] {
        const QByteArray bytes = m_uartPort.readAll();
        m_trafficLog.add(TrafficLog::Direction::Received, bytes);
        m_uartReplies.receive(bytes);
    });
    connect(&m_ed2Port, &SerialLink::readyRead, this,
            [this] { m_ed2Replies.receive(m_ed2Port.readAll()); });
    for (const SerialLink *link : {&m_uartPort, &m_ed2Port})
        connect(link, &SerialLink::lost, this, [this, link] { m_dispatch.linkLost(*link); });
}

void Dialog::buildSteps()
{
    using Answer = Transaction::Answer;
    const auto addTransaction = [this](int type, Answer answer, std::function<QByteArray()> frame) {
        m_dispatch.add(type, std::make_unique<Transaction>(m_session, m_uartPort, m_notices,
                                                           m_trafficLog, answer, std::move(frame)));
    };
    // Fields of a frame take the low bits of what the spin boxes hold.
    const auto page = [this] { return static_cast<quint8>(m_assistant->registerPage()); };
    const auto address = [this] { return static_cast<quint16>(m_assistant->address()); };
    const auto length = [this] { return m_assistant->length(); };

    addTransaction(commandType::readRegister, Answer::Anything, [=] {
        return m_builder.buildReadRegisterFrame(page(), static_cast<quint8>(address()),
                                                static_cast<quint8>(length()));
    });
    addTransaction(commandType::readVp, Answer::Anything, [=] {
        // A reply of 126 words or more would not fit its length byte.
        return m_builder.buildReadVpFrame(address(), static_cast<quint8>(length() % 126));
    });
    addTransaction(commandType::writeVp, Answer::Acknowledgement, [this] {
        return m_builder.buildWriteVpFrame(m_session.writeStart, m_session.writeCount);
    });
    addTransaction(commandType::writeRegister, Answer::Acknowledgement, [=] {
        return m_builder.buildWriteRegisterFrame(page(), static_cast<quint8>(address()),
                                                 m_session.writeCount);
    });
    addTransaction(commandType::curve, Answer::Anything,
                   [this] { return m_builder.buildCurveFrame(); });
    addTransaction(commandType::freeForm, Answer::Anything,
                   [this] { return m_assistant->freeFormBytes(); });
    m_dispatch.add(commandType::systemReset,
                   std::make_unique<SystemReset>(m_session, m_uartPort, m_notices, m_builder));
}

void Dialog::applyUartSettings()
{
    const SerialSettings &settings = m_uartSet->settings();
    applyToLink(settings, m_uartPort);
    // Both links are matched against the header of the UART2 settings.
    m_uartReplies.setHeader(settings.header1, settings.header2);
    m_ed2Replies.setHeader(settings.header1, settings.header2);
    m_builder.setHeader(settings.header1, settings.header2, settings.crcEnabled);
}

void Dialog::applyEd2Settings()
{
    applyToLink(m_ed2Set->settings(), m_ed2Port);
}
