#include "engine/traffic_log.h"
#include "support/row.h"
#include "support/window_test.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTabWidget>
#include <QtTest>

/// The real window against the simulated module.
class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    void slotsFindTheirWidgets()
    {
        static QStringList warnings;
        const auto note = [](QtMsgType, const QMessageLogContext &, const QString &message) {
            if (message.contains("connect"))
                warnings.append(message);
        };
        const QtMessageHandler previous = qInstallMessageHandler(note);
        const Dialog another;
        qInstallMessageHandler(previous);
        QCOMPARE(warnings, QStringList());
    }

    void pagesStandInTheirOrderAndBeginInTheirStates()
    {
        QCOMPARE(m_dialog->windowTitle(), QString("VORAII_Tool1.0.0.3"));
        QCOMPARE(m_dialog->size(), QSize(1017, 645));
        QCOMPARE(find<QTabWidget>("tabWidget")->geometry(), QRect(0, 0, 1010, 640));
        QStringList pages;
        for (const char *name : {"tabWidget", "tabWidgetICO", "tabWidgetSerial", "tabWidgetEd2"}) {
            const auto *tabs = find<QTabWidget>(name);
            for (int i = 0; i < tabs->count(); ++i)
                pages.append(tabs->widget(i)->objectName() + ": " + tabs->tabText(i));
        }
        QCOMPARE(pages,
                 (QStringList{"ZeroFont: Creat zero font library", "creatICOTab: ICO Manager",
                              "tab: Uart2 Communication", "tab_2: ED2 Communication",
                              "tab_7: System configuration", "tab_8: Image conversion",
                              "tab_5: CRC_Check", "creatIco: ICO File Generator",
                              "tab_3: Preview Of ICO File", "tab_4: VORA Serial Assistant",
                              "tab_9: Uart2 Communication", "tab_10: Fonts And Bin File Download",
                              "tab_11: Image Download"}));
        QStringList checked;
        for (const auto *button : m_dialog->findChildren<QRadioButton *>())
            if (button->isChecked())
                checked.append(button->objectName());
        checked.sort(Qt::CaseInsensitive);
        QCOMPARE(checked.join(' '),
                 QString("buzzerSoundMusic capacitanceTouch displayDirection0 displayDirection0_2 "
                         "enableSynchronizationUpdateClose enableUartCrcClose enableWatchDogClose "
                         "load22File notAutoUp pageNumber64 pclkFallingEdge renewalPageNow "
                         "sdEncryptionNotSet sdStatusOpen sdStatusOpen_2 touchExchangeXY "
                         "touchLightClose touchLightClose_2 touchMinToXmax touchMinToYmax "
                         "touchVoiceOpen touchVoiceOpen_2 uartCalibration"));
        const auto *characters = find<QComboBox>("comboBox");
        QCOMPARE(characters->count(), 96);
        QCOMPARE(characters->itemText(0), QString(" "));
        QCOMPARE(characters->currentText(), QString("A"));
        QCOMPARE(find<QComboBox>("scaleMultiple")->currentText(), QString("100%"));
    }

    void vpIsReadByHand()
    {
        select("serialCmd", "Read the VP");
        set("regVpAddr", 0x0F);
        set("regVpLen", 1);
        click("sendCmd");
        COMPARE_SOON(view("displayText"), QString("0x4521"));
        COMPARE_SOON(view("receiveText"), QString("5aa50483000f01\n5aa50683000f014521"));
        COMPARE_SOON(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
        finishExchange();
        // Longer than a reply can be: only the rest over 126 is asked for.
        set("regVpLen", 130);
        click("sendCmd");
        COMPARE_SOON(view("receiveText").contains("5aa50483000f04"), true);
    }

    void curveReachesTheModule()
    {
        select("serialCmd", "Curve of the cache area");
        click("channel0");
        click("channel3");
        // Only as many samples as every channel has go into the frame, however long one text is.
        type("0001 0002 0003" + QString(800, '0'));
        find<QLineEdit>("ChannelEdit3")->setText("00 10 00 20");
        // Sent twice, so that old samples would show up in the second frame.
        for (int times = 1; times <= 2; ++times) {
            click("sendCmd");
            COMPARE_SOON(module().curve(3).size(), 2 * times);
        }
        QCOMPARE(module().curve(3), (QVector<quint16>{0x10, 0x20, 0x10, 0x20}));
        QCOMPARE(module().curve(0), (QVector<quint16>{1, 2, 1, 2}));
    }

    void dataThatDoNotFitAreRefused()
    {
        click("channel0");
        for (const auto &[kind, data, address] :
             {std::tuple("Write the VP", QString("ABCG"), 0),
              {"Write the VP", QString(508, '1'), 0}, // more than a frame holds
              {"Write the VP", "11112222", 0xFFFF},   // beyond VP memory
              {"Write the register", "x", 0},
              {"Write the register", QString(506, '1'), 0},
              {"Curve of the cache area", "AB", 0}, // half a sample
              {"Curve of the cache area", QString(508, '1'), 0},
              {"Since writing instruction", "0x12", 0}}) {
            select("serialCmd", kind);
            set("regVpAddr", address);
            type(data);
            click("sendCmd");
            QVERIFY2(m_boxes->texts == QStringList{"The data do not meet the requirements !"},
                     qPrintable(kind + data));
            QCOMPARE(m_boxes->titles.last(), QString("Warnning"));
            m_boxes->texts.clear();
        }
        finishExchange();
        QCOMPARE(view("receiveText"), QString());
    }

    void enterSendsFromTheFieldsOnly()
    {
        show("tab_4");
        type("no hex digits"); // whoever sends is told at once
        const QStringList fields{"ChannelEdit0", "regPage", "regVpAddr", "regVpLen"};
        const QStringList others{"clearReceiveLog", "receiveText", "serialCmd", "hexMode"};
        for (const QString &name : fields + others) {
            const Row row(name);
            QTest::keyClick(find<QWidget>(name), Qt::Key_Return);
            QCOMPARE(std::exchange(m_boxes->texts, {}).size(), fields.contains(name) ? 1 : 0);
        }
    }

    void commandKindsArrangeThePage()
    {
        find<QTabWidget>("tabWidget")->setCurrentIndex(2);
        const auto label = [this](const char *name) { return find<QLabel>(name)->text(); };
        const auto isShown = [this](const char *name) { return find<QWidget>(name)->isVisible(); };
        for (const char *name : {"label_26", "label_27", "label_16", "label", "label_2"})
            QVERIFY2(find<QLabel>(name)->isHidden(), name);
        QCOMPARE(label("addrLabel"), QString("Reg 0x"));
        QCOMPARE(label("lenLabel"), QString("Reg Len 0x"));
        QCOMPARE(label("channelLabel0"), QString("Data"));
        QVERIFY(isShown("regPage") && isShown("regPageLabel"));
        QVERIFY(!isShown("ChannelEdit1") && !isShown("channel7"));
        select("serialCmd", "Curve of the cache area");
        QVERIFY(isShown("regPage") && isShown("regPageLabel") && isShown("regVpAddr"));
        select("serialCmd", "Read the VP");
        QCOMPARE(label("addrLabel"), QString("VP Addr 0x"));
        QCOMPARE(label("lenLabel"), QString("VP Len 0x"));
        QVERIFY(!isShown("regPage") && !isShown("regPageLabel"));
        select("serialCmd", "Curve of the cache area");
        QCOMPARE(label("channelLabel0"), QString("Channel0"));
        QVERIFY(isShown("ChannelEdit1") && isShown("channel7") && isShown("channelLabel7"));
        select("serialCmd", "Since writing instruction");
        QVERIFY(isShown("addrLabel") && isShown("regVpLen") &&
                find<QCheckBox>("channel0")->isEnabled());
        QCOMPARE(label("channelLabel0"), QString("Data"));
        QVERIFY(!isShown("ChannelEdit7"));
    }

    void readButtonsShowTheReplies()
    {
        module().setVp(0x14, 513);
        for (const auto &[button, address, words] : {std::tuple("readDeviceID", 0x00, 4),
                                                     {"readVersion", 0x0F, 1},
                                                     {"picSetRead", 0x14, 1},
                                                     {"readVccVoltage", 0x30, 1},
                                                     {"readSdName", 0x7C, 4},
                                                     {"readLedConfig", 0x82, 2}}) {
            click(button);
            QCOMPARE(value("regVpAddr"), address);
            QCOMPARE(value("regVpLen"), words);
            finishExchange();
        }
        QCOMPARE(line("displayDeviceID"), QString("0123456789abcdef"));
        QCOMPARE(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
        QCOMPARE(value("picSetPage"), 513);
        QCOMPARE(value("vccVoltage"), 2400);
        QCOMPARE(line("sdDownloadName"), QString("ZOLT_SET"));
        QCOMPARE(value("normalLight_2"), 0x64);
        QCOMPARE(value("standbyLight_2"), 0x14);
        QCOMPARE(value("lightTime_2"), 0x3C);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void configurationIsReadFromItsSecondWord()
    {
        module().setVp(0x80, 0xFFFF);
        module().setVp(0x81, 0x0045);
        click("readConfig");
        COMPARE_SOON(isChecked("pageNumber128_2"), true);
        for (const char *button : {"notLoad22File_2", "sdStatusClose_2", "touchVoiceClose_2",
                                   "touchLightOpen_2", "displayDirection270_2"})
            QVERIFY2(isChecked(button), button);
        finishExchange();
        click("displayDirection180_2");
        click("writeConfig");
        COMPARE_SOON(module().vp(0x81), quint16(0x0006));
        QCOMPARE(module().vp(0x80), quint16(0));
    }

    void writeButtonsReachTheModule()
    {
        const QMap<QString, int> values{
            {"picSetPage", 12},      {"musicPlayStart", 2},      {"musicPlayCount", 1},
            {"musicPlayVolume", 64}, {"normalLight_2", 100},     {"standbyLight_2", 10},
            {"lightTime_2", 300},    {"norFlashAddr", 0x012345}, {"norVp", 0x8000},
            {"norLength", 0x10},
        };
        for (auto it = values.begin(); it != values.end(); ++it)
            set(it.key(), it.value());
        for (const auto &[button, frame] : {std::pair("picSetQuery", "5aa5078200845a01000c"),
                                            {"musicPlayPlay", "5aa5078200a002014000"},
                                            {"musicPlayStop", "5aa5078200a000000000"},
                                            {"resetK7", "5aa50782000455aa5aa5"},
                                            {"writeConfig", "5aa50782008000000018"},
                                            {"writeLedConfig", "5aa507820082640a012c"},
                                            {"readNorFlash", "5aa50b8200085a01234580000010"},
                                            {"writeNorFlash", "5aa50b820008a501234580000010"},
                                            {"resetSystem", "5aa5038f4f4b"}}) {
            click("clearReceiveLog");
            click(button);
            COMPARE_SOON(view("receiveText"), QString(frame) + "\n5aa503824f4b");
            finishExchange();
        }
        QCOMPARE(module().restarts(), 1);
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void portsThatCannotBeOpenedAreReported()
    {
        m_dialog->offerPorts({"/dev/no-such-port"});
        for (const char *button : {"readVersion", "resetK7", "resetSystem"}) {
            m_boxes->texts.clear();
            click(button);
            COMPARE_SOON(m_boxes->texts, QStringList{"Serial opening failed !"});
            QVERIFY(m_boxes->details.last().startsWith("There is no such port."));
        }
        QCOMPARE(view("receiveText"), QString());
    }

    void silentModuleIsReportedForWrites()
    {
        k7::Behaviour silent;
        silent.silent = true;
        m_simulator->setBehaviour(silent);
        click("readVersion");
        finishExchange();
        QCOMPARE(m_boxes->texts, QStringList());
        for (const char *button : {"musicPlayStop", "sendCmd"}) { // a VP and a register
            m_boxes->texts.clear();
            click(button);
            waitForBox();
            finishExchange();
            QCOMPARE(m_boxes->texts, QStringList{"Communication failure !"});
        }
    }

    void pulledAdapterIsReportedOnceAndTheToolGoesOn()
    {
        auto *ports = m_dialog->findChild<SerialSet *>()->findChild<QComboBox *>();
        ports->addItem("of old"); // is no longer there as soon as the ports are listed anew
        k7::Behaviour unplugged;
        unplugged.hangUpAfter = 0;
        m_simulator->setBehaviour(unplugged);
        click("readVersion");
        COMPARE_SOON(m_boxes->texts, QStringList{"Communication failure !"});
        finishExchange();
        QCOMPARE(m_boxes->texts.size(), 1);

        // The port comes back under its name; nobody has to choose it again.
        m_simulator->setBehaviour({});
        QVERIFY(m_simulator->start(k7::Way::InProcess));
        click("readVersion");
        COMPARE_SOON(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
        QCOMPARE(ports->currentText(), m_simulator->uartPath());
        QVERIFY(ports->findText("of old") > 0);
    }

    void logShowsNoEmptyLineAndHasAnEnd()
    {
        TrafficLog log;
        const QSignalSpy batches(&log, &TrafficLog::linesReady);
        log.add(TrafficLog::Direction::Sent, "x");
        log.clear();
        pass(100);
        QVERIFY(batches.isEmpty());
        for (int i = 0; i <= TrafficLog::maxLines; ++i)
            log.add(TrafficLog::Direction::Sent, "x");
        QCOMPARE(log.record().count('\n'), TrafficLog::maxLines);
        COMPARE_SOON(batches.size(), 1);
        QCOMPARE(batches.first().first().toStringList().size(), TrafficLog::maxLines);
        const int most = find<QTextEdit>("receiveText")->document()->maximumBlockCount();
        QCOMPARE(most, TrafficLog::maxLines);
    }

    void escapeKeepsTheWindowOpen()
    {
        QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        QVERIFY(m_dialog->isVisible());
        m_dialog->close();
        QVERIFY(!m_dialog->isVisible());
    }

private:
    void type(const QString &text, bool hex = true)
    {
        find<QCheckBox>("hexMode")->setChecked(hex);
        find<QLineEdit>("ChannelEdit0")->setText(text);
    }
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
