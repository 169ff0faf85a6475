#include "app/dialog.h"

#include "assistant/device_page.h"
#include "assistant/serial_assistant_page.h"
#include "assistant/serial_set.h"
#include "common/page_context.h"
#include "config/system_config_page.h"
#include "crc/crc_comparison.h"
#include "crc/crc_page.h"
#include "download/font_download_page.h"
#include "download/picture_download_page.h"
#include "font/zero_font_page.h"
#include "ico/ico_generator_page.h"
#include "ico/ico_preview_page.h"
#include "imaging/image_conversion_page.h"
#include "serial/system_ports.h"

#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTabWidget>

namespace {

/// A tab widget on a new page of `tabs`, which it fills.
QTabWidget *addInnerTabs(QTabWidget *tabs, const QString &pageName, const QString &caption,
                         const QString &name)
{
    auto *page = new QWidget(tabs);
    page->setObjectName(pageName);
    auto *inner = new QTabWidget(page);
    inner->setObjectName(name);
    inner->setGeometry(0, 0, 1004, 610);
    tabs->addTab(page, caption);
    return inner;
}

} // namespace

Dialog::Dialog(QWidget *parent) : Dialog(Links::ofTheSystem(), parent) {}

Dialog::Dialog(Links links, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint)
    , m_systemPorts(std::async(std::launch::async, &systemPorts))
    , m_settings(m_folder.own + "/SystemConfig.ini", m_folder.executable + "/SystemConfig.ini")
    , m_language(*this, m_settings)
    , m_notices(this, m_language.isEnglish())
    , m_fileDialogs(this)
    , m_links(std::move(links))
    , m_engine(*m_links.uart, *m_links.ed2, m_notices, windowPolicy, m_links.time)
{
    setWindowTitle("VORAII_Tool1.0.0.3");
    setFixedSize(1017, 645);
    // In pixels, so that the fixed geometry holds whatever the desktop's font is.
    QFont windowFont = font();
    windowFont.setPixelSize(12);
    setFont(windowFont);

    m_uartSet = new SerialSet(this);
    m_ed2Set = new SerialSet(this);
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
    const auto useUart = [this] { m_engine.useUart(m_uartSet->settings()); };
    const auto useEd2 = [this] { m_engine.useEd2(m_ed2Set->settings()); };
    useUart();
    useEd2();
    m_ed2Set->setBaudText(6250000);
    connect(m_uartSet, &SerialSet::accepted, this, useUart);
    connect(m_ed2Set, &SerialSet::accepted, this, useEd2);

    connect(&m_engine.heartbeat(), &Heartbeat::fired, this, [this] { m_stepwiseZeroFont.step(); });
    m_engine.start();
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
    if (!resolutions.isEmpty())
        for (QComboBox *sizes : m_screenSizes) {
            sizes->clear();
            sizes->addItems(resolutions);
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
    for (QComboBox *sizes : m_screenSizes)
        sizes->setCurrentText(m_resolutionText);
}

void Dialog::keyPressEvent(QKeyEvent *event)
{
    // A stray Escape must not end the tool in the middle of a download.
    if (event->key() != Qt::Key_Escape)
        QDialog::keyPressEvent(event);
}

void Dialog::buildPages()
{
    const PageContext context{m_notices, m_fileDialogs, m_settings, m_language.isEnglish()};

    // Each page has its place from the beginning: to move it there would dress its widgets twice.
    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName("tabWidget");
    m_tabs->setGeometry(0, 0, 1010, 640);

    m_zeroFont = new ZeroFontPage(context, m_folder.own, m_tabs);
    connect(m_zeroFont, &ZeroFontPage::languageChosen, this,
            [this](const QString &language) { m_language.apply(language); });
    m_tabs->addTab(m_zeroFont, "Creat zero font library");
    QTabWidget *ico = addInnerTabs(m_tabs, "creatICOTab", "ICO Manager", "tabWidgetICO");
    ico->addTab(new IcoGeneratorPage(context, m_icoManager, ico), "ICO File Generator");
    ico->addTab(new IcoPreviewPage(context, m_icoManager, ico), "Preview Of ICO File");

    QTabWidget *uart = addInnerTabs(m_tabs, "tab", "Uart2 Communication", "tabWidgetSerial");
    auto *assistant = new SerialAssistantPage(context, m_engine, uart);
    uart->addTab(assistant, "VORA Serial Assistant");
    uart->addTab(new DevicePage(context, m_engine, m_downloads, *m_uartSet, *assistant, uart),
                 "Uart2 Communication");

    QTabWidget *ed2 = addInnerTabs(m_tabs, "tab_2", "ED2 Communication", "tabWidgetEd2");
    ed2->addTab(new FontDownloadPage(context, m_engine, m_downloads.fonts, m_defaultFolder, ed2),
                "Fonts And Bin File Download");
    auto *pictures = new PictureDownloadPage(
        context, m_engine, m_downloads.pictures, [this] { m_ed2Set->exec(); }, ed2);
    ed2->addTab(pictures, "Image Download");

    m_tabs->addTab(new SystemConfigPage(context, m_tabs), "System configuration");
    auto *conversion = new ImageConversionPage(context, m_tabs);
    m_tabs->addTab(conversion, "Image conversion");
    m_screenSizes = {&pictures->screenSizes(), &conversion->screenSizes()};
    auto &comparison = m_engine.add(std::make_unique<CrcComparison>(m_engine.uart()));
    m_tabs->addTab(new CrcPage(context, m_engine, comparison, m_tabs), "CRC_Check");
}
