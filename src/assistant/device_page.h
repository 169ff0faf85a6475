#pragma once

#include "common/paced_trigger.h"
#include "common/page_context.h"
#include "serial/device_values.h"

#include <QSet>
#include <QWidget>

#include <array>
#include <initializer_list>
#include <memory>

class Engine;
class QButtonGroup;
class SerialAssistantPage;
class SerialSet;
struct Downloads;

namespace Ui {
class DevicePage;
}

/// The device commands over UART2: short exchanges that read or write a few VP words, and the
/// downloads that need no ED2 link.
class DevicePage : public QWidget
{
    Q_OBJECT

public:
    /// Reads go through `assistant`, whose range shows the user what was asked. `uartSet` are the
    /// settings of the UART2 port.
    DevicePage(const PageContext &context, Engine &engine, Downloads &downloads, SerialSet &uartSet,
               SerialAssistantPage &assistant, QWidget *parent = nullptr);
    ~DevicePage() override;

private slots:
    void on_readDeviceID_clicked();
    void on_readVersion_clicked();
    void on_picSetRead_clicked();
    void on_readVccVoltage_clicked();
    void on_readSdName_clicked();
    void on_readConfig_clicked();
    void on_readLedConfig_clicked();

    void on_picSetQuery_clicked();
    void on_musicPlayPlay_clicked();
    void on_musicPlayStop_clicked();
    void on_resetK7_clicked();
    void on_resetSystem_clicked();
    void on_writeConfig_clicked();
    void on_writeLedConfig_clicked();
    void on_readNorFlash_clicked();
    void on_writeNorFlash_clicked();

    void on_serialSet_clicked();

    void on_K7UIModel_2_currentTextChanged();
    void on_openBmpFile_clicked();
    void on_downloadBmpFile_clicked();
    void on_openJpgFile_clicked();
    void on_downloadJpgFile_clicked();
    void on_openOsFile_clicked();
    void on_downloadOsFile_clicked();
    void on_openIcpFile_clicked();
    void on_downloadIcoFile_clicked();

private:
    struct Reply;
    static const std::array<Reply, 7> replies;

    void read(const deviceValues::Block &block);
    void writeVp(int address, std::initializer_list<int> words);
    /// Asks for a picture to send; its path is remembered and shown. Empty when the user cancels.
    QString choosePicture(const QString &patterns);
    void accessNorFlash(int direction);
    void showReplies();
    void showDeviceId();
    void showVersion();
    void showPicture();
    void showVoltage();
    void showSdName();
    void showConfig();
    void showLedConfig();

    const PageContext m_context;
    Engine &m_engine;
    Downloads &m_downloads;
    SerialSet &m_uartSet;
    SerialAssistantPage &m_assistant;
    std::unique_ptr<Ui::DevicePage> m_ui;
    QButtonGroup *m_jpgMode;
    QButtonGroup *m_sdStatus;
    QButtonGroup *m_touchVoice;
    QButtonGroup *m_touchLight;
    QButtonGroup *m_displayDirection;
    QSet<quint16> m_arrived; ///< start addresses of replies that are not shown yet
    PacedTrigger m_refresh{0};

    // What was chosen for the downloads; empty until then.
    QByteArray m_bmpPixels;
    QByteArray m_jpeg;
    QByteArray m_icoFileData;
    int m_icoFileNumber = 0;
};
