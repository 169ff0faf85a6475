#include "config/system_config_page.h"

#include "ui_system_config_page.h"

#include "common/radio_group.h"

SystemConfigPage::SystemConfigPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::SystemConfigPage>())
{
    m_ui->setupUi(this);
    makeGroups();
}

SystemConfigPage::~SystemConfigPage() = default;

void SystemConfigPage::makeGroups()
{
    const auto &ui = *m_ui;
    makeRadioGroup({ui.uartCalibration, ui.rtcCalibration}, 0, this);
    makeRadioGroup({ui.notAutoUp, ui.autoUp}, 0, this);
    makeRadioGroup({ui.pageNumber64, ui.pageNumber128}, 0, this);
    makeRadioGroup({ui.notLoad22File, ui.load22File}, 1, this);
    makeRadioGroup({ui.sdStatusClose, ui.sdStatusOpen}, 1, this);
    makeRadioGroup({ui.touchVoiceClose, ui.touchVoiceOpen}, 1, this);
    makeRadioGroup({ui.touchLightClose, ui.touchLightOpen}, 0, this);
    makeRadioGroup({ui.displayDirection0, ui.displayDirection90, ui.displayDirection180,
                    ui.displayDirection270},
                   0, this);
    makeRadioGroup({ui.pclkFallingEdge, ui.pclkRisingEdge}, 0, this);
    makeRadioGroup({ui.resistanceTouch, ui.capacitanceTouch}, 1, this);
    makeRadioGroup({ui.touchMinToXmax, ui.touchXmaxToMin}, 0, this);
    makeRadioGroup({ui.touchMinToYmax, ui.touchYmaxToMin}, 0, this);
    makeRadioGroup({ui.touchExchangeXY, ui.touchExchangeYX}, 0, this);
    makeRadioGroup({ui.sdEncryptionNotSet, ui.encryptionLock, ui.encryptionUnlock}, 0, this);
    makeRadioGroup({ui.buzzerSoundMusic, ui.buzzerSoundBuzzer}, 0, this);
    makeRadioGroup({ui.enableUartCrcClose, ui.enableUartCrcOpen}, 0, this);
    makeRadioGroup({ui.enableWatchDogClose, ui.enableWatchDogOpen}, 0, this);
    makeRadioGroup({ui.enableSynchronizationUpdateClose, ui.enableSynchronizationUpdateOpen}, 0,
                   this);
}
