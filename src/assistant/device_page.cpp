#include "assistant/device_page.h"

#include "ui_device_page.h"

#include "assistant/serial_assistant_page.h"
#include "assistant/serial_set.h"
#include "common/file_dialogs.h"
#include "common/file_number.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "common/tool_settings.h"
#include "download/downloads.h"
#include "download/jpeg_file.h"
#include "engine/engine.h"
#include "widgets/radio_group.h"
#include "widgets/wait_cursor.h"

#include <QButtonGroup>

#include <set>

namespace {

/// The downloads that share the page's progress bar.
const std::set<int> uartDownloads{commandType::bmpDownload, commandType::pagedBmpDownload,
                                  commandType::jpgDownload, commandType::icoDownload};

} // namespace

/// Which widgets show the reply to a read from `startAddress` on.
struct DevicePage::Reply
{
    quint16 startAddress;
    void (DevicePage::*show)();
};

const std::array<DevicePage::Reply, 7> DevicePage::replies{{
    {deviceValues::deviceId.address, &DevicePage::showDeviceId},
    {deviceValues::version.address, &DevicePage::showVersion},
    {deviceValues::picture.address, &DevicePage::showPicture},
    {deviceValues::voltage.address, &DevicePage::showVoltage},
    {deviceValues::sdName.address, &DevicePage::showSdName},
    {deviceValues::config.address, &DevicePage::showConfig},
    {deviceValues::ledConfig.address, &DevicePage::showLedConfig},
}};

DevicePage::DevicePage(const PageContext &context, Engine &engine, Downloads &downloads,
                       SerialSet &uartSet, SerialAssistantPage &assistant, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_engine(engine)
    , m_downloads(downloads)
    , m_uartSet(uartSet)
    , m_assistant(assistant)
    , m_ui(std::make_unique<Ui::DevicePage>())
{
    m_ui->setupUi(this);
    // What these would say stands in the spin boxes beside them.
    for (QLabel *label :
         {m_ui->label_26, m_ui->label_27, m_ui->label_16, m_ui->label, m_ui->label_2})
        label->hide();

    m_jpgMode = makeRadioGroup({m_ui->renewalPageNow, m_ui->renewalPageID}, 0, this);
    m_sdStatus = makeRadioGroup({m_ui->sdStatusClose_2, m_ui->sdStatusOpen_2}, 1, this);
    m_touchVoice = makeRadioGroup({m_ui->touchVoiceClose_2, m_ui->touchVoiceOpen_2}, 1, this);
    m_touchLight = makeRadioGroup({m_ui->touchLightClose_2, m_ui->touchLightOpen_2}, 0, this);
    m_displayDirection = makeRadioGroup({m_ui->displayDirection0_2, m_ui->displayDirection90_2,
                                         m_ui->displayDirection180_2, m_ui->displayDirection270_2},
                                        0, this);

    connect(&engine, &Engine::vpRead, this, [this](quint16 startAddress) {
        m_arrived.insert(startAddress);
        m_refresh.request();
    });
    connect(&m_refresh, &PacedTrigger::fired, this, &DevicePage::showReplies);
    connect(&engine, &Engine::progressed, this, [this](int type, int percent) {
        if (uartDownloads.count(type) > 0)
            m_ui->pictureProgress->setValue(percent);
    });
}

DevicePage::~DevicePage() = default;

void DevicePage::on_readDeviceID_clicked()
{
    read(deviceValues::deviceId);
}

void DevicePage::on_readVersion_clicked()
{
    read(deviceValues::version);
}

void DevicePage::on_picSetRead_clicked()
{
    read(deviceValues::picture);
}

void DevicePage::on_readVccVoltage_clicked()
{
    read(deviceValues::voltage);
}

void DevicePage::on_readSdName_clicked()
{
    read(deviceValues::sdName);
}

void DevicePage::on_readConfig_clicked()
{
    read(deviceValues::config);
}

void DevicePage::on_readLedConfig_clicked()
{
    read(deviceValues::ledConfig);
}

void DevicePage::on_picSetQuery_clicked()
{
    writeVp(0x84, {0x5A01, m_ui->picSetPage->value()});
}

void DevicePage::on_musicPlayPlay_clicked()
{
    writeVp(0xA0, {m_ui->musicPlayStart->value() * 256 + m_ui->musicPlayCount->value(),
                   m_ui->musicPlayVolume->value() * 256});
}

void DevicePage::on_musicPlayStop_clicked()
{
    writeVp(0xA0, {0, 0});
}

void DevicePage::on_resetK7_clicked()
{
    writeVp(0x04, {0x55AA, 0x5AA5});
}

void DevicePage::on_resetSystem_clicked()
{
    m_engine.resetSystem();
}

void DevicePage::on_writeConfig_clicked()
{
    writeVp(deviceValues::config.address,
            {0x0000,
             deviceValues::configWord(m_sdStatus->checkedId(), m_touchVoice->checkedId(),
                                      m_touchLight->checkedId(), m_displayDirection->checkedId())});
}

void DevicePage::on_writeLedConfig_clicked()
{
    writeVp(deviceValues::ledConfig.address,
            {m_ui->normalLight_2->value() * 256 + m_ui->standbyLight_2->value(),
             m_ui->lightTime_2->value()});
}

void DevicePage::on_readNorFlash_clicked()
{
    accessNorFlash(0x5A00);
}

void DevicePage::on_writeNorFlash_clicked()
{
    accessNorFlash(0xA500);
}

void DevicePage::on_serialSet_clicked()
{
    m_uartSet.exec();
}

void DevicePage::on_K7UIModel_2_currentTextChanged()
{
    // Every layout takes both.
    m_ui->downloadBMPGroup->setEnabled(true);
    m_ui->renewalPageNow->setEnabled(true);
}

QString DevicePage::choosePicture(const QString &patterns)
{
    const QString path = m_context.fileDialogs.openFile(m_context.settings.imageFolder(), patterns);
    if (!path.isEmpty()) {
        m_context.settings.rememberImagePath(path);
        m_ui->bmpFilePathLabel->setText(path);
    }
    return path;
}

void DevicePage::on_openBmpFile_clicked()
{
    const QString path = choosePicture(picture::filePatterns);
    if (path.isEmpty())
        return;
    ReadFault fault = ReadFault::None;
    const QByteArray content = readFile(path, &fault).value_or(QByteArray());
    m_bmpPixels = picture::toRgb565(picture::decode(content));
    if (const Text *message = messageOf(fault))
        m_context.notices.warn(*message);
    else if (m_bmpPixels.isEmpty())
        m_context.notices.warn(picture::refusal(content));
}

void DevicePage::on_downloadBmpFile_clicked()
{
    if (m_bmpPixels.isEmpty()) {
        m_context.notices.warn(texts::notSelectFile);
        return;
    }
    const bool isPaged = m_ui->K7UIModel_2->currentText() == "K7UID2";
    (isPaged ? m_downloads.pagedBmp : m_downloads.linearBmp).start(m_bmpPixels, [this] {
        return m_ui->pageId->value();
    });
}

void DevicePage::on_openJpgFile_clicked()
{
    const QString path = choosePicture("*.jpg;*.jpeg;");
    if (path.isEmpty())
        return;
    ReadFault fault = ReadFault::None;
    const Jpeg jpeg = [&path, &fault]() -> Jpeg {
        const WaitCursor busy;
        const auto content = readFile(path, &fault);
        return content ? jpegWithin(*content, JpgDownload::maxBytes)
                       : Jpeg{{}, &texts::fileIsNotPicture};
    }();
    m_jpeg = jpeg.bytes;
    if (const Text *message = messageOf(fault))
        m_context.notices.warn(*message);
    else if (jpeg.refusal)
        m_context.notices.warn(*jpeg.refusal);
}

void DevicePage::on_downloadJpgFile_clicked()
{
    if (m_jpeg.isEmpty()) {
        m_context.notices.warn(texts::notSelectFile);
        return;
    }
    m_downloads.jpg.start(m_jpeg, [this]() -> JpgDownload::Display {
        const int mode = m_jpgMode->checkedId();
        if (mode == 0)
            return {mode, m_ui->jpgPositionX->value(), m_ui->jpgPositionY->value()};
        return {mode, m_ui->jpgPositionID->value(), 0};
    });
}

void DevicePage::on_openOsFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(QString(), "*.bin");
    if (path.isEmpty())
        return;
    m_ui->bmpFilePathLabel->setText(path);
    ReadFault fault = ReadFault::None;
    const auto content = readFile(path, &fault);
    const Text *refusal = content                        ? OsDownload::refusal(content->size())
                          : fault == ReadFault::TooLarge ? &texts::osFileTooLarge
                                                         : messageOf(fault);
    if (refusal)
        m_context.notices.warn(*refusal);
    else if (content)
        m_downloads.os.load(*content);
}

void DevicePage::on_downloadOsFile_clicked()
{
    if (m_downloads.os.isEmpty())
        m_context.notices.warn(texts::unselectedOsFile);
    else
        m_downloads.os.start();
}

void DevicePage::on_openIcpFile_clicked()
{
    // The last pattern has no dot. That is wanted.
    const QString path = m_context.fileDialogs.openFile(m_context.settings.icoFolder(),
                                                        "*.ICO;*.bin;*.hzk;*.dzk;*WAV");
    if (path.isEmpty())
        return;
    m_ui->bmpFilePathLabel->setText(path);
    m_context.settings.rememberIcoPath(path);
    ReadFault fault = ReadFault::None;
    const auto content = readFile(path, &fault);
    if (const Text *message = messageOf(fault))
        m_context.notices.warn(*message);
    if (!content)
        return;
    m_icoFileData = *content;
    m_icoFileNumber = leadingNumber(path);
    m_ui->icoPositionID->setValue(m_icoFileNumber);
}

void DevicePage::on_downloadIcoFile_clicked()
{
    if (m_icoFileData.isEmpty())
        m_context.notices.warn(texts::notSelectFile);
    else
        m_downloads.flash.start(m_icoFileData, m_icoFileNumber,
                                [this] { return m_ui->K7UIModel_2->currentText() == "K7UID1"; });
}

void DevicePage::read(const deviceValues::Block &block)
{
    m_assistant.readVp(block.address, block.words);
}

void DevicePage::writeVp(int address, std::initializer_list<int> words)
{
    QVector<quint16> low;
    for (const int word : words)
        low.append(static_cast<quint16>(word));
    m_engine.writeVp(address, low);
}

void DevicePage::accessNorFlash(int direction)
{
    const int address = m_ui->norFlashAddr->value();
    writeVp(0x08, {direction + (address >> 16), address & 0xFFFF, m_ui->norVp->value(),
                   m_ui->norLength->value()});
}

void DevicePage::showReplies()
{
    for (const Reply &reply : replies)
        if (m_arrived.contains(reply.startAddress))
            (this->*reply.show)();
    m_arrived.clear();
}

void DevicePage::showDeviceId()
{
    m_ui->displayDeviceID->setText(deviceValues::deviceIdText(m_engine.mirrors()));
}

void DevicePage::showVersion()
{
    m_ui->displayVersion->setText(deviceValues::versionText(m_engine.mirrors()));
}

void DevicePage::showPicture()
{
    m_ui->picSetPage->setValue(m_engine.mirrors().vpAt(deviceValues::picture.address));
}

void DevicePage::showVoltage()
{
    m_ui->vccVoltage->setValue(deviceValues::millivolts(m_engine.mirrors()));
}

void DevicePage::showSdName()
{
    m_ui->sdDownloadName->setText(deviceValues::sdNameText(m_engine.mirrors()));
}

void DevicePage::showConfig()
{
    // The second word of the block counts, not the first.
    const int bits = m_engine.mirrors().vpAt(deviceValues::config.address + 1);
    const auto choose = [bits](int bit, QAbstractButton *set, QAbstractButton *clear) {
        ((bits >> bit & 1) != 0 ? set : clear)->setChecked(true);
    };
    choose(6, m_ui->pageNumber128_2, m_ui->pageNumber64_2);
    choose(5, m_ui->load22File_2, m_ui->notLoad22File_2);
    choose(4, m_ui->sdStatusOpen_2, m_ui->sdStatusClose_2);
    choose(3, m_ui->touchVoiceOpen_2, m_ui->touchVoiceClose_2);
    choose(2, m_ui->touchLightOpen_2, m_ui->touchLightClose_2);
    // A read never chooses 90° or 180°, although a write can set them.
    choose(0, m_ui->displayDirection270_2, m_ui->displayDirection0_2);
}

void DevicePage::showLedConfig()
{
    const int lights = m_engine.mirrors().vpAt(deviceValues::ledConfig.address);
    m_ui->normalLight_2->setValue(lights >> 8);
    m_ui->standbyLight_2->setValue(lights & 0xFF);
    m_ui->lightTime_2->setValue(m_engine.mirrors().vpAt(deviceValues::ledConfig.address + 1));
}
