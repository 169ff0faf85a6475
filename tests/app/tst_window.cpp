#include "support/window_test.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTextEdit>
#include <QtTest>

namespace {

QStringList connectionWarnings;

void noteConnectionWarnings(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (message.contains("connect"))
        connectionWarnings.append(message);
}

} // namespace

/// The real window against the simulated module.
class TestWindow : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        connectionWarnings.clear();
        const QtMessageHandler previous = qInstallMessageHandler(noteConnectionWarnings);
        const bool isOpen = openWindow();
        qInstallMessageHandler(previous);
        QVERIFY(isOpen);
    }

    void slotsFindTheirWidgets() { QCOMPARE(connectionWarnings, QStringList()); }

    void pagesStandInTheirOrder()
    {
        const auto pages = [this](const QString &name) {
            QStringList names;
            const auto *tabs = find<QTabWidget>(name);
            for (int i = 0; i < tabs->count(); ++i)
                names.append(tabs->widget(i)->objectName() + ": " + tabs->tabText(i));
            return names;
        };
        QCOMPARE(m_dialog->windowTitle(), QString("VORAII_Tool1.0.0.3"));
        QCOMPARE(m_dialog->size(), QSize(1017, 645));
        QCOMPARE(find<QTabWidget>("tabWidget")->geometry(), QRect(0, 0, 1010, 640));
        QCOMPARE(pages("tabWidget"),
                 (QStringList{"ZeroFont: Creat zero font library", "creatICOTab: ICO Manager",
                              "tab: Uart2 Communication", "tab_2: ED2 Communication",
                              "tab_7: System configuration", "tab_8: Image conversion",
                              "tab_5: CRC_Check"}));
        QCOMPARE(pages("tabWidgetICO"),
                 (QStringList{"creatIco: ICO File Generator", "tab_3: Preview Of ICO File"}));
        QCOMPARE(pages("tabWidgetSerial"),
                 (QStringList{"tab_4: VORA Serial Assistant", "tab_9: Uart2 Communication"}));
        QCOMPARE(pages("tabWidgetEd2"),
                 (QStringList{"tab_10: Fonts And Bin File Download", "tab_11: Image Download"}));
    }

    void vpIsReadByHand()
    {
        choose("Read the VP");
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

    void vpIsWrittenByHand()
    {
        choose("Write the VP");
        set("regVpAddr", 0x1234);
        type("11 22 33 44");
        click("sendCmd");
        COMPARE_SOON(module().vp(0x1235), quint16(0x3344));
        QCOMPARE(module().vp(0x1234), quint16(0x1122));
        COMPARE_SOON(view("receiveText"), QString("5aa50782123411223344\n5aa503824f4b"));
    }

    void registersAreWrittenAndReadByHand()
    {
        choose("Write the register");
        set("regPage", 2);
        set("regVpAddr", 0x10);
        type("ab", false);
        click("sendCmd");
        COMPARE_SOON(module().registerAt(2, 0x11), quint8('b'));
        finishExchange();
        choose("Read the register");
        set("regVpLen", 3);
        click("sendCmd");
        COMPARE_SOON(view("displayText"), QString("0x61 0x62 0x00"));
    }

    void freeFormInstructionGoesOutAsItStands()
    {
        choose("Since writing instruction");
        type("5AA5 04 83 0014 01");
        click("sendCmd");
        COMPARE_SOON(view("receiveText"), QString("5aa50483001401\n5aa506830014010000"));
        finishExchange();
        type("free", false);
        click("sendCmd");
        COMPARE_SOON(view("receiveText").endsWith("\n66726565"), true);
    }

    void curveReachesTheModule()
    {
        choose("Curve of the cache area");
        find<QCheckBox>("hexMode")->setChecked(true);
        find<QCheckBox>("channel0")->setChecked(true);
        find<QCheckBox>("channel3")->setChecked(true);
        // Only as many samples as every channel has go into the frame, however long one text is.
        find<QLineEdit>("ChannelEdit0")->setText("0001 0002 0003" + QString(800, '0'));
        find<QLineEdit>("ChannelEdit3")->setText("00 10 00 20");
        // Sent twice, so that old samples would show up in the second frame.
        for (int times = 1; times <= 2; ++times) {
            click("sendCmd");
            COMPARE_SOON(module().curve(3).size(), 2 * times);
        }
        QCOMPARE(module().curve(3), (QVector<quint16>{0x10, 0x20, 0x10, 0x20}));
        QCOMPARE(module().curve(0), (QVector<quint16>{1, 2, 1, 2}));
    }

    void dataThatDoNotFitAreRefused_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("data");
        QTest::addColumn<int>("address");
        QTest::newRow("odd bytes for words") << "Write the VP"
                                             << "AB" << 0;
        QTest::newRow("no hexadecimal") << "Write the VP"
                                        << "ABCG" << 0;
        QTest::newRow("more words than a frame holds") << "Write the VP" << QString(508, '1') << 0;
        QTest::newRow("beyond VP memory") << "Write the VP"
                                          << "11112222" << 0xFFFF;
        QTest::newRow("no hexadecimal registers") << "Write the register"
                                                  << "x" << 0;
        QTest::newRow("more registers than a frame holds")
            << "Write the register" << QString(506, '1') << 0;
        QTest::newRow("odd bytes for samples") << "Curve of the cache area"
                                               << "AB" << 0;
        QTest::newRow("more samples than a frame holds")
            << "Curve of the cache area" << QString(508, '1') << 0;
        QTest::newRow("free-form that is no hexadecimal") << "Since writing instruction"
                                                          << "0x12" << 0;
    }

    void dataThatDoNotFitAreRefused()
    {
        QFETCH(const QString, kind);
        QFETCH(const QString, data);
        QFETCH(const int, address);
        choose(kind);
        find<QCheckBox>("channel0")->setChecked(true);
        set("regVpAddr", address);
        type(data);
        click("sendCmd");
        QCOMPARE(m_boxes->texts, QStringList{"The data do not meet the requirements !"});
        QCOMPARE(m_boxes->titles, QStringList{"Warnning"});
        finishExchange();
        QCOMPARE(view("receiveText"), QString());
    }

    void commandKindsArrangeThePage()
    {
        find<QTabWidget>("tabWidget")->setCurrentIndex(2);
        const auto label = [this](const QString &name) { return find<QLabel>(name)->text(); };
        for (const char *name : {"label_26", "label_27", "label_16", "label", "label_2"})
            QVERIFY2(find<QLabel>(name)->isHidden(), name);
        const auto isShown = [this](const QString &name) {
            return find<QWidget>(name)->isVisible();
        };
        QCOMPARE(label("addrLabel"), QString("Reg 0x"));
        QCOMPARE(label("lenLabel"), QString("Reg Len 0x"));
        QCOMPARE(label("channelLabel0"), QString("Data"));
        QVERIFY(isShown("regPage") && isShown("regPageLabel"));
        QVERIFY(!isShown("ChannelEdit1") && !isShown("channel7"));
        choose("Curve of the cache area");
        QVERIFY(isShown("regPage") && isShown("regPageLabel") && isShown("regVpAddr"));
        choose("Read the VP");
        QCOMPARE(label("addrLabel"), QString("VP Addr 0x"));
        QCOMPARE(label("lenLabel"), QString("VP Len 0x"));
        QVERIFY(!isShown("regPage") && !isShown("regPageLabel"));
        choose("Curve of the cache area");
        QCOMPARE(label("channelLabel0"), QString("Channel0"));
        QVERIFY(isShown("ChannelEdit1") && isShown("channel7") && isShown("channelLabel7"));
        choose("Since writing instruction");
        QVERIFY(isShown("addrLabel") && isShown("regVpLen") &&
                find<QCheckBox>("channel0")->isEnabled());
        QCOMPARE(label("channelLabel0"), QString("Data"));
        QVERIFY(!isShown("ChannelEdit7"));
    }

    void readButtonsShowTheReplies()
    {
        module().setVp(0x14, 513);
        const auto press = [this](const QString &button, int address, int words) {
            click(button);
            return value("regVpAddr") == address && value("regVpLen") == words;
        };
        QVERIFY(press("readDeviceID", 0x00, 4));
        COMPARE_SOON(line("displayDeviceID"), QString("0123456789abcdef"));
        QVERIFY(press("readVersion", 0x0F, 1));
        COMPARE_SOON(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
        QVERIFY(press("picSetRead", 0x14, 1));
        COMPARE_SOON(value("picSetPage"), 513);
        QVERIFY(press("readVccVoltage", 0x30, 1));
        COMPARE_SOON(value("vccVoltage"), 2400);
        QVERIFY(press("readSdName", 0x7C, 4));
        COMPARE_SOON(line("sdDownloadName"), QString("ZOLT_SET"));
        QVERIFY(press("readLedConfig", 0x82, 2));
        COMPARE_SOON(value("normalLight_2"), 0x64);
        QCOMPARE(value("standbyLight_2"), 0x14);
        QCOMPARE(value("lightTime_2"), 0x3C);
        QCOMPARE(m_boxes->texts.join(";") + m_boxes->details.join(";"), QString());
    }

    void configurationIsReadFromItsSecondWord()
    {
        module().setVp(0x80, 0xFFFF);
        module().setVp(0x81, 0x0045);
        click("readConfig");
        COMPARE_SOON(checked("pageNumber128_2"), true);
        QVERIFY(checked("notLoad22File_2"));
        QVERIFY(checked("sdStatusClose_2"));
        QVERIFY(checked("touchVoiceClose_2"));
        QVERIFY(checked("touchLightOpen_2"));
        QVERIFY(checked("displayDirection270_2"));
        finishExchange();
        find<QRadioButton>("displayDirection180_2")->setChecked(true);
        click("writeConfig");
        COMPARE_SOON(module().vp(0x81), quint16(0x0006));
        QCOMPARE(module().vp(0x80), quint16(0));
    }

    void writeButtonsReachTheModule_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("frame");
        QTest::newRow("picture") << "picSetQuery"
                                 << "5aa5078200845a01000c";
        QTest::newRow("play") << "musicPlayPlay"
                              << "5aa5078200a002014000";
        QTest::newRow("stop") << "musicPlayStop"
                              << "5aa5078200a000000000";
        QTest::newRow("reset K7") << "resetK7"
                                  << "5aa50782000455aa5aa5";
        QTest::newRow("configuration") << "writeConfig"
                                       << "5aa50782008000000018";
        QTest::newRow("backlight") << "writeLedConfig"
                                   << "5aa507820082640a012c";
        QTest::newRow("flash to VP") << "readNorFlash"
                                     << "5aa50b8200085a01234580000010";
        QTest::newRow("VP to flash") << "writeNorFlash"
                                     << "5aa50b820008a501234580000010";
    }

    void writeButtonsReachTheModule()
    {
        QFETCH(const QString, button);
        QFETCH(const QString, frame);
        set("picSetPage", 12);
        set("musicPlayStart", 2);
        set("musicPlayCount", 1);
        set("musicPlayVolume", 64);
        set("normalLight_2", 100);
        set("standbyLight_2", 10);
        set("lightTime_2", 300);
        set("norFlashAddr", 0x012345);
        set("norVp", 0x8000);
        set("norLength", 0x10);
        click(button);
        COMPARE_SOON(view("receiveText"), frame + "\n5aa503824f4b");
        finishExchange();
        QCOMPARE(m_boxes->texts.join(";") + m_boxes->details.join(";"), QString());
    }

    void systemResetReachesTheModule()
    {
        click("resetSystem");
        COMPARE_SOON(module().restarts(), 1);
        COMPARE_SOON(view("receiveText"), QString("5aa5038f4f4b\n5aa503824f4b"));
    }

    void norFlashIsWrittenAndReadBack()
    {
        module().setVp(0x8000, 0x1111);
        module().setVp(0x8003, 0x4444);
        set("norFlashAddr", 0x010000);
        set("norVp", 0x8000);
        set("norLength", 4);
        click("writeNorFlash");
        finishExchange();
        set("norVp", 0x9000);
        click("readNorFlash");
        COMPARE_SOON(module().vp(0x9003), quint16(0x4444));
        QCOMPARE(module().vp(0x9000), quint16(0x1111));
    }

    void confirmedCrcAndHeaderHoldForTheNextFrame()
    {
        QTimer::singleShot(0, this, [] {
            auto *settings = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!settings)
                qFatal("no settings dialog");
            QCOMPARE(settings->windowTitle(), QString("Serial set"));
            settings->findChild<QCheckBox *>()->setChecked(true);
            settings->findChildren<QSpinBox *>().first()->setValue(0x12);
            for (auto *button : settings->findChildren<QPushButton *>())
                if (button->text() == "确定")
                    button->click();
        });
        click("serialSet");
        click("readVersion");
        COMPARE_SOON(view("receiveText"), QString("12a50683000f01ed90"));
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
        QCOMPARE(m_boxes->texts.join(";") + m_boxes->details.join(";"), QString());
        click("musicPlayStop");
        COMPARE_SOON(m_boxes->texts, QStringList{"Communication failure !"});
        finishExchange();
        QCOMPARE(m_boxes->texts.size(), 1);
    }

    void roughRepliesAreFound_data()
    {
        QTest::addColumn<bool>("noisy");
        QTest::addColumn<int>("split");
        QTest::newRow("noisy") << true << 0;
        QTest::newRow("split") << false << 1;
    }

    void roughRepliesAreFound()
    {
        k7::Behaviour rough;
        QFETCH(bool, noisy);
        rough.noisy = noisy;
        QFETCH(int, split);
        rough.split = split;
        rough.delay = 10;
        m_simulator->setBehaviour(rough);
        click("readDeviceID");
        COMPARE_SOON(line("displayDeviceID"), QString("0123456789abcdef"));
        finishExchange();
        click("resetK7");
        finishExchange();
        QCOMPARE(module().resets(), 1);
        QCOMPARE(m_boxes->texts.join(";") + m_boxes->details.join(";"), QString());
    }

    void pulledAdapterIsReportedOnceAndTheToolGoesOn()
    {
        k7::Behaviour unplugged;
        unplugged.hangUpAfter = 0;
        m_simulator->setBehaviour(unplugged);
        click("readVersion");
        COMPARE_SOON(m_boxes->texts, QStringList{"Communication failure !"});
        finishExchange();
        QCOMPARE(m_boxes->texts.size(), 1);

        m_simulator->setBehaviour({});
        QVERIFY(m_simulator->start());
        m_dialog->offerPorts({m_simulator->uartPath()});
        click("readVersion");
        COMPARE_SOON(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
    }

    void clearedLogStaysClear()
    {
        click("readVersion");
        COMPARE_SOON(view("receiveText").count('\n'), 1);
        click("clearReceiveLog");
        QCOMPARE(view("receiveText"), QString());
        finishExchange();
        QCOMPARE(view("receiveText"), QString());
        // The first line is shown at once, the reply waits for the next batch.
        click("readVersion");
        runEventLoop(25);
        click("clearReceiveLog");
        finishExchange();
        QCOMPARE(view("receiveText"), QString());
    }

    void escapeKeepsTheWindowOpen()
    {
        QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
        QVERIFY(m_dialog->isVisible());
        m_dialog->close();
        QVERIFY(!m_dialog->isVisible());
    }

private:
    bool checked(const QString &name) { return find<QRadioButton>(name)->isChecked(); }
    void choose(const QString &kind) { find<QComboBox>("serialCmd")->setCurrentText(kind); }
    void type(const QString &text, bool hex = true)
    {
        find<QCheckBox>("hexMode")->setChecked(hex);
        find<QLineEdit>("ChannelEdit0")->setText(text);
    }
    /// Waits until the exchange that runs has ended.
    void finishExchange()
    {
        // An exchange takes 100 ticks; there is nothing to see when one ends.
        runEventLoop(150);
    }
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"
