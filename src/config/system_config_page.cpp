#include "config/system_config_page.h"

#include "ui_system_config_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/read_file.h"
#include "common/replace_file.h"
#include "config/encryption_texts.h"
#include "config/screen_timings.h"
#include "widgets/radio_group.h"

#include <QButtonGroup>
#include <QDir>

#include <algorithm>

SystemConfigPage::SystemConfigPage(const PageContext &context, QWidget *parent)
    : QWidget(parent), m_context(context), m_ui(std::make_unique<Ui::SystemConfigPage>())
{
    m_ui->setupUi(this);
    bindSettings();
    fillSizes();
    enableForLayout();
}

SystemConfigPage::~SystemConfigPage() = default;

void SystemConfigPage::bindSettings()
{
    const auto &ui = *m_ui;
    using S = CfgSettings;
    const auto choice = [this](int S::*setting, std::initializer_list<QAbstractButton *> buttons,
                               int checkedId = 0) {
        m_choices.append({makeRadioGroup(buttons, checkedId, this), setting});
    };
    choice(&S::calibration, {ui.uartCalibration, ui.rtcCalibration});
    choice(&S::autoUp, {ui.notAutoUp, ui.autoUp});
    choice(&S::pageNumber, {ui.pageNumber64, ui.pageNumber128});
    choice(&S::file22, {ui.notLoad22File, ui.load22File}, 1);
    choice(&S::sdStatus, {ui.sdStatusClose, ui.sdStatusOpen}, 1);
    choice(&S::touchVoice, {ui.touchVoiceClose, ui.touchVoiceOpen}, 1);
    choice(&S::touchLight, {ui.touchLightClose, ui.touchLightOpen});
    choice(&S::displayDirection, {ui.displayDirection0, ui.displayDirection90,
                                  ui.displayDirection180, ui.displayDirection270});
    choice(&S::pclkEdge, {ui.pclkFallingEdge, ui.pclkRisingEdge});
    choice(&S::touchType, {ui.resistanceTouch, ui.capacitanceTouch}, 1);
    choice(&S::touchX, {ui.touchMinToXmax, ui.touchXmaxToMin});
    choice(&S::touchY, {ui.touchMinToYmax, ui.touchYmaxToMin});
    choice(&S::touchExchange, {ui.touchExchangeXY, ui.touchExchangeYX});
    choice(&S::encryption, {ui.sdEncryptionNotSet, ui.encryptionLock, ui.encryptionUnlock});
    choice(&S::buzzer, {ui.buzzerSoundMusic, ui.buzzerSoundBuzzer});
    choice(&S::uartCrc, {ui.enableUartCrcClose, ui.enableUartCrcOpen});
    choice(&S::watchDog, {ui.enableWatchDogClose, ui.enableWatchDogOpen});
    choice(&S::synchronousUpdate,
           {ui.enableSynchronizationUpdateClose, ui.enableSynchronizationUpdateOpen});

    m_options = {
        {ui.flashFormatting, &S::formatsFlash},       {ui.openCalibration, &S::setsCalibration},
        {ui.openLightStandby, &S::setsLightStandby},  {ui.openConfiguration, &S::setsDisplay},
        {ui.openBootSet, &S::setsBootPage},           {ui.bootMusicSet, &S::setsBootMusic},
        {ui.openTouchScreenSet, &S::setsTouchScreen}, {ui.enableTconSet, &S::setsTcon},
        {ui.sdCheckEnable, &S::checksSdFiles},
    };
    m_numbers = {
        {ui.baudRateSet, &S::baudRate},
        {ui.normalLight, &S::normalLight},
        {ui.standbyLight, &S::standbyLight},
        {ui.lightTime, &S::lightTime},
        {ui.bootPage, &S::bootPage},
        {ui.bootMusicPosition, &S::musicPosition},
        {ui.bootMusicCount, &S::musicCount},
        {ui.bootMusicVolume, &S::musicVolume},
        {ui.touchSensitivity, &S::touchSensitivity},
        {ui.tconSetValue, &S::tcon},
        {ui.libFileNumber, &S::libFiles},
        {ui.binFileNumber, &S::binFiles},
        {ui.dzkFileNumber, &S::dzkFiles},
        {ui.hzkFileNumber, &S::hzkFiles},
        {ui.icoFileNumber, &S::icoFiles},
        {ui.wavFileNumber, &S::wavFiles},
        {ui.bmpFileNumber, &S::bmpFiles},
    };
}

CfgSettings SystemConfigPage::settings() const
{
    CfgSettings settings;
    settings.layout = m_ui->K7UIModel->currentIndex();
    for (const auto &[group, setting] : m_choices)
        settings.*setting = group->checkedId();
    for (const auto &[box, setting] : m_options)
        settings.*setting = box->isChecked();
    for (const auto &[box, setting] : m_numbers)
        settings.*setting = box->value();
    settings.folderName = m_ui->encryptionFolderName->text();
    settings.key = m_ui->encryptionKey->text();
    return settings;
}

void SystemConfigPage::show(const CfgSettings &settings)
{
    for (const auto &[group, setting] : m_choices)
        group->button(settings.*setting)->setChecked(true);
    for (const auto &[box, setting] : m_options)
        box->setChecked(settings.*setting);
    for (const auto &[box, setting] : m_numbers)
        box->setValue(settings.*setting);
    m_ui->encryptionFolderName->setText(settings.folderName);
    m_ui->encryptionKey->setText(settings.key);
    showTiming(settings.timing);
}

void SystemConfigPage::showTiming(const QByteArray &timing)
{
    const QVector<ScreenTiming> timings = screenTimings(m_ui->K7UIModel->currentIndex());
    const auto found =
        std::find_if(timings.begin(), timings.end(), [&timing](const ScreenTiming &screen) {
            return std::equal(
                screen.record.begin() + 1, screen.record.end(), timing.begin(), timing.end(),
                [](quint8 byte, char read) { return byte == static_cast<quint8>(read); });
        });
    if (found != timings.end())
        m_ui->K7UISize->setCurrentIndex(static_cast<int>(found - timings.begin()));
}

void SystemConfigPage::on_K7UIModel_currentTextChanged()
{
    enableForLayout();
    fillSizes();
    showEdge();
}

void SystemConfigPage::enableForLayout()
{
    const bool isK7Uid1 = m_ui->K7UIModel->currentText() == "K7UID1";
    for (QWidget *widget :
         std::initializer_list<QWidget *>{m_ui->rtcCalibration, m_ui->buzzerSound,
                                          m_ui->enableWatchDog, m_ui->enableSynchronizationUpdate})
        widget->setEnabled(isK7Uid1);
    m_ui->tconSet->setEnabled(!isK7Uid1);
}

void SystemConfigPage::fillSizes()
{
    m_ui->K7UISize->clear();
    for (const ScreenTiming &timing : screenTimings(m_ui->K7UIModel->currentIndex()))
        m_ui->K7UISize->addItem(timing.size);
}

void SystemConfigPage::on_K7UISize_activated(const QString & /*size*/)
{
    showEdge();
}

void SystemConfigPage::showEdge()
{
    const QVector<ScreenTiming> timings = screenTimings(m_ui->K7UIModel->currentIndex());
    const int index = m_ui->K7UISize->currentIndex();
    if (index < 0 || index >= timings.size())
        return;
    const bool isRising = timings.at(index).record.front() != 0;
    (isRising ? m_ui->pclkRisingEdge : m_ui->pclkFallingEdge)->setChecked(true);
}

void SystemConfigPage::on_encryptionFolderName_textChanged(const QString &name)
{
    showVerdict(encryptionTexts::checkFolderName(name));
}

void SystemConfigPage::on_encryptionKey_textChanged(const QString &key)
{
    showVerdict(encryptionTexts::checkKey(key));
}

void SystemConfigPage::showVerdict(const encryptionTexts::Verdict &verdict)
{
    QPalette palette = m_ui->textExplainLabel->palette();
    palette.setColor(QPalette::WindowText, verdict.isGood ? Qt::black : Qt::red);
    // Neither is read on a dark desktop: the text gets a ground of its own there.
    const bool isDark = this->palette().color(QPalette::Window).lightness() < 128;
    if (isDark)
        palette.setColor(QPalette::Window, Qt::white);
    m_ui->textExplainLabel->setPalette(palette);
    m_ui->textExplainLabel->setAutoFillBackground(isDark && !verdict.text.isEmpty());
    m_ui->textExplainLabel->setText(verdict.text);
}

void SystemConfigPage::on_openZoltsetFolder_clicked()
{
    const QString path = m_context.fileDialogs.openFolder("请选择需要转换图片路径", QString());
    const QDir folder(path);
    if (path.isEmpty() || !folder.exists())
        return;
    m_ui->displayZoltsetPath->setText(path);
    const QFileInfoList files = folder.entryInfoList(QDir::Files | QDir::NoSymLinks);
    for (const auto &[suffix, box] : {std::pair("lib", m_ui->libFileNumber),
                                      {"bin", m_ui->binFileNumber},
                                      {"dzk", m_ui->dzkFileNumber},
                                      {"hzk", m_ui->hzkFileNumber},
                                      {"ico", m_ui->icoFileNumber},
                                      {"wav", m_ui->wavFileNumber},
                                      {"bmp", m_ui->bmpFileNumber}}) {
        const auto count =
            std::count_if(files.begin(), files.end(), [suffix = suffix](const QFileInfo &file) {
                return file.suffix().compare(QLatin1String(suffix), Qt::CaseInsensitive) == 0;
            });
        box->setValue(static_cast<int>(count));
    }
}

void SystemConfigPage::on_openCfgFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(QString(), "*.CFG");
    if (path.isEmpty())
        return;
    ReadFault fault = ReadFault::None;
    const QByteArray image = readFile(path, &fault).value_or(QByteArray());
    if (!cfgImage::isCfg(image)) {
        m_context.notices.warn(fault == ReadFault::Unreadable ? texts::fileNotRead
                                                              : texts::notCfgFile);
        return;
    }
    m_openedImage = image;
    // The layout first: its sizes choose a PCLK edge, which stays unless the file sets one.
    if (const auto layout = cfgImage::layoutOf(image))
        m_ui->K7UIModel->setCurrentIndex(*layout);
    show(cfgImage::read(image, settings()));
}

void SystemConfigPage::on_createCfgFile_clicked()
{
    writeFile(QByteArray(cfgImage::bytes, '\0'));
}

void SystemConfigPage::on_addCfgFile_clicked()
{
    writeFile(m_openedImage);
}

void SystemConfigPage::writeFile(const QByteArray &image)
{
    const QString path = m_context.fileDialogs.saveFile(QString(), "*.CFG");
    if (path.isEmpty())
        return;
    const auto [filled, fault] = cfgImage::fill(image, settings());
    // The file is written all the same, with the image as it was. That is wanted.
    if (fault == cfgImage::Fault::FolderNameTooLong)
        m_context.notices.warn(texts::folderNameTooLong);
    else if (fault == cfgImage::Fault::BadKey)
        m_context.notices.warn(texts::keyError);
    // What a longer file holds behind the image stays. A file that cannot be written is no message.
    if (overwriteStart(path, filled) == Overwritten::NotKept)
        m_context.notices.warn(texts::oldFileNotKept);
}
