#include "download/device_page.h"

#include "ui_device_page.h"

#include "common/radio_group.h"
#include "download/download_session.h"
#include "serial/frame_builder.h"
#include "serial/reply_receiver.h"
#include "serial/serial_assistant_page.h"
#include "serial/serial_set.h"

#include <QButtonGroup>

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

DevicePage::DevicePage(const PageContext &context, SerialAssistantPage &assistant, QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_assistant(assistant)
    , m_ui(std::make_unique<Ui::DevicePage>())
{
    m_ui->setupUi(this);
    // What these would say stands in the spin boxes beside them.
    for (QLabel *label :
         {m_ui->label_26, m_ui->label_27, m_ui->label_16, m_ui->label, m_ui->label_2})
        label->hide();

    makeRadioGroup({m_ui->renewalPageNow, m_ui->renewalPageID}, 0, this);
    m_sdStatus = makeRadioGroup({m_ui->sdStatusClose_2, m_ui->sdStatusOpen_2}, 1, this);
    m_touchVoice = makeRadioGroup({m_ui->touchVoiceClose_2, m_ui->touchVoiceOpen_2}, 1, this);
    m_touchLight = makeRadioGroup({m_ui->touchLightClose_2, m_ui->touchLightOpen_2}, 0, this);
    m_displayDirection = makeRadioGroup({m_ui->displayDirection0_2, m_ui->displayDirection90_2,
                                         m_ui->displayDirection180_2, m_ui->displayDirection270_2},
                                        0, this);

    for (const ReplyReceiver *receiver : {&context.uartReplies, &context.ed2Replies})
        connect(receiver, &ReplyReceiver::vpRead, this, [this](quint16 startAddress) {
            m_arrived.insert(startAddress);
            m_refresh.request();
        });
    connect(&m_refresh, &PacedTrigger::fired, this, &DevicePage::showReplies);
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
    m_context.session.start(commandType::systemReset);
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
    m_context.uartSet.exec();
}

void DevicePage::read(const deviceValues::Block &block)
{
    m_assistant.readVp(block.address, block.words);
}

void DevicePage::writeVp(quint16 address, std::initializer_list<int> words)
{
    quint16 next = address;
    for (const int word : words)
        m_context.builder.setVp(next++, static_cast<quint16>(word));
    m_context.session.writeStart = address;
    m_context.session.writeCount = static_cast<quint8>(words.size());
    m_context.session.start(commandType::writeVp);
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
    m_ui->displayDeviceID->setText(deviceValues::deviceIdText(m_context.builder));
}

void DevicePage::showVersion()
{
    m_ui->displayVersion->setText(deviceValues::versionText(m_context.builder));
}

void DevicePage::showPicture()
{
    m_ui->picSetPage->setValue(m_context.builder.vpAt(deviceValues::picture.address));
}

void DevicePage::showVoltage()
{
    m_ui->vccVoltage->setValue(deviceValues::millivolts(m_context.builder));
}

void DevicePage::showSdName()
{
    m_ui->sdDownloadName->setText(deviceValues::sdNameText(m_context.builder));
}

void DevicePage::showConfig()
{
    // The second word of the block counts, not the first.
    const int bits = m_context.builder.vpAt(deviceValues::config.address + 1);
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
    const int lights = m_context.builder.vpAt(deviceValues::ledConfig.address);
    m_ui->normalLight_2->setValue(lights >> 8);
    m_ui->standbyLight_2->setValue(lights & 0xFF);
    m_ui->lightTime_2->setValue(m_context.builder.vpAt(deviceValues::ledConfig.address + 1));
}
