#include "app/dialog.h"
#include "app/message_boxes.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QButtonGroup>
#include <QComboBox>
#include <QDir>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextBrowser>
#include <QtTest>

namespace {

QString settingsFile()
{
    return QCoreApplication::applicationDirPath() + "/SystemConfig.ini";
}

/// What `widget` shows as its caption, or the text of its tab.
QString captionOf(const QWidget *widget)
{
    const QWidget *stack = widget->parentWidget();
    if (const auto *tabs = stack ? qobject_cast<QTabWidget *>(stack->parentWidget()) : nullptr)
        return tabs->tabText(tabs->indexOf(const_cast<QWidget *>(widget)));
    if (const auto *group = qobject_cast<const QGroupBox *>(widget))
        return group->title();
    if (const auto *label = qobject_cast<const QLabel *>(widget))
        return label->text();
    if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
        return button->text();
    if (const auto *browser = qobject_cast<const QTextBrowser *>(widget))
        return browser->toPlainText();
    return {};
}

} // namespace

/// The real window and the settings file beside the executable.
class TestLanguage : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QSettings(settingsFile(), QSettings::IniFormat).clear();
        QFile::remove(settingsFile());
        QFile::remove(QCoreApplication::applicationDirPath() + "/config.cfg");
    }

    void cleanup() { m_dialog.reset(); }

    void everyCaptionHasBothTextsAndItsWidgets()
    {
        start();
        QCOMPARE(captions().size(), 149);
        QSet<QString> keys;
        QSet<QString> widgets;
        for (const Caption &caption : captions()) {
            QVERIFY2(qstrlen(caption.chinese) > 0 && qstrlen(caption.english) > 0, caption.key);
            keys.insert(caption.key);
            for (const QString &name : caption.widgetNames()) {
                QVERIFY2(m_dialog->findChildren<QWidget *>(name).size() == 1, qPrintable(name));
                widgets.insert(name);
            }
        }
        QCOMPARE(keys.size(), 149);
        QCOMPARE(widgets.size(), 150);
    }

    void knownTextsStandAsTheyAre_data()
    {
        QTest::addColumn<QString>("widget");
        QTest::addColumn<QString>("chinese"); // empty where it is free
        QTest::addColumn<QString>("english");
        const auto row = [](const char *key, const char *widget, const char *chinese,
                            const char *english) {
            QTest::newRow(key) << QString(widget) << QString(chinese) << QString(english);
        };
        row("ZeroFontTab", "ZeroFont", "0号字库生成工具", "Creat zero font library");
        row("systemLanguageLabel", "systemLanguageLabel", "系统语言", "System Language");
        row("serialDownload", "tab", "串口2通信", "Uart2 Communication");
        row("serialAssistant", "tab_4", "VORA串口助手", "VORA Serial Assistant");
        row("resetK7", "resetK7", "复位K7", "Reset K7");
        row("uart2Dwonload", "tab_9", "串口2通信", "Uart2 Communication");
        row("ed2Download", "tab_2", "ED2通信", "ED2 Communication");
        row("fontFileDownload", "tab_10", "", "Fonts And Bin File Download");
        row("imageDownload", "tab_11", "", "Image Download");
        row("ed2DownloadExplain", "ed2DownloadExplain", "当前下载方式为ED2，波特率必须是6250000",
            "The current download mode is ED2， and the baud rate must be 6250000");
        row("filiterBackColor", "filiterBackColor", "过滤背景色", "filiter background color");
        row("systemConfigTab", "tab_7", "系统参数配置", "System configuration");
        row("imageConversionTab", "tab_8", "", "Image conversion");
        row("nomalLightLabel", "nomalLightLabel", "正常亮度", "Normal");
        row("sdEncryption", "sdEncryption", "SD加密设置", "SD Card Encryption Settings");
        row("encryptionLock", "encryptionLock", "加密", "Encryption");
        row("openCfgFile", "openCfgFile", "打开配置文件", "Open configuration file");
        row("createCfgFile", "createCfgFile", "生成新文件", "Create new file");
        row("addCfgFile", "addCfgFile", "增加到旧文件", "Add to old file");
        row("imagesConversion", "imagesConversion", "图片转换", "Images Conversion");
        row("reNameImageConversion", "reNameImageConversion", "转换图片重新命名",
            "ReName Images Conversion");
        row("creatICOTab", "creatICOTab", "ICO管理", "ICO Manager");
        row("creatICO", "creatIco", "创建ICO", "ICO File Generator");
        row("PreviewOfICO", "tab_3", "", "Preview Of ICO File");
        row("creatIcoFile", "creatIcoFile", "创建ICO文件", "Generate ICO File");
        row("addIcoFile", "addIcoFile", "增加到ICO文件", "Add to ICO File");
        row("replaceIcoFile", "replaceIcoFile", "替换到ICO文件", "Replace to ICO File");
        row("OpenIcoFile", "OpenIcoFile", "打开ICO文件", "Open ICO File");
        row("crcCheck", "tab_5", "CRC校验", "CRC_Check");
        row("crcOpenFolder", "openFolder", "打开文件夹", "Open Folder");
        row("crcOpenFile", "openFile", "打开文件", "Open File");
        row("crcCompareCheck", "compareCheck", "对比校验", "Compare Check");
    }

    void knownTextsStandAsTheyAre()
    {
        start();
        QFETCH(const QString, widget);
        QFETCH(const QString, chinese);
        m_dialog->selectLanguage("English");
        QTEST(caption(widget), "english");
        QCOMPARE(stored(QString("English/") + QTest::currentDataTag()), caption(widget));
        m_dialog->selectLanguage("中文");
        if (!chinese.isEmpty())
            QCOMPARE(caption(widget), chinese);
    }

    void builtInCaptionsAreTheEnglishOnes()
    {
        start();
        for (const Caption &caption : captions())
            for (const QString &name : caption.widgetNames())
                QCOMPARE(name + ": " + this->caption(name),
                         name + ": " + QString::fromUtf8(caption.english));
    }

    void firstStartWritesEverythingAndChangesNothing()
    {
        start();
        QCOMPARE(find<QComboBox>("srceenSize")->count(), 23);
        QCOMPARE(m_dialog->language(), QString());
        m_dialog.reset();
        QCOMPARE(stored("Language/Language"), QString("English"));
        for (const Caption &caption : captions()) {
            QCOMPARE(stored(QString("Chinese/") + caption.key), QString::fromUtf8(caption.chinese));
            QCOMPARE(stored(QString("English/") + caption.key), QString::fromUtf8(caption.english));
        }
        QCOMPARE(stored("Resolution/N"), QString("23"));
        QCOMPARE(stored("English/ed2DownloadExplain"),
                 QString("The current download mode is ED2， and the baud rate must be 6250000"));
    }

    void eachKeyDressesExactlyItsWidgets()
    {
        start();
        m_dialog.reset();
        QMap<QString, QVariant> marked{{"Language/Language", "中文"}};
        for (const Caption &caption : captions())
            marked.insert(QString("Chinese/") + caption.key, QString("<%1>").arg(caption.key));
        edit(marked);
        start();
        QMap<QString, QString> expected;
        for (const Caption &caption : captions())
            for (const QString &name : caption.widgetNames())
                expected.insert(name, QString("<%1>").arg(caption.key));
        QMap<QString, QString> found;
        for (const QWidget *widget : m_dialog->findChildren<QWidget *>())
            if (captionOf(widget).startsWith('<'))
                found.insert(widget->objectName(), captionOf(widget));
        QCOMPARE(found, expected);
        QCOMPARE(caption("tab_5"), QString("<crcCheck>"));
        QCOMPARE(caption("openFolder"), QString("<crcOpenFolder>"));
        QCOMPARE(caption("tab_9"), QString("<uart2Dwonload>"));
    }

    void storedLanguageIsAppliedAtTheStart_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QString>("tab");
        QTest::newRow("Chinese") << "中文"
                                 << "0号字库生成工具";
        QTest::newRow("English") << "English"
                                 << "Creat zero font library";
        QTest::newRow("French") << "Français"
                                << "Creat zero font library";
    }

    void storedLanguageIsAppliedAtTheStart()
    {
        start();
        m_dialog.reset();
        QFETCH(const QString, language);
        edit({{"Language/Language", language}});
        start();
        QTEST(caption("ZeroFont"), "tab");
        QCOMPARE(m_dialog->language(), language);
        QCOMPARE(stored("Language/Language"), language);
        QCOMPARE(find<QComboBox>("systemLanguage")->currentText(), QString("English"));
    }

    void shownEntryCanBeChosenAgain()
    {
        start();
        m_dialog.reset();
        edit({{"Language/Language", "中文"}});
        start();
        auto *combo = find<QComboBox>("systemLanguage");
        m_dialog->show();
        QTest::keyClick(combo, Qt::Key_Space);
        QTest::keyClick(combo->view(), Qt::Key_Enter);
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
        QCOMPARE(m_dialog->language(), QString("English"));
    }

    void textsAreReadAtEverySwitch()
    {
        start();
        auto *combo = find<QComboBox>("systemLanguage");
        combo->setCurrentText("中文");
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        m_dialog.reset();
        QCOMPARE(stored("Language/Language"), QString("中文"));
        edit({{"English/resetK7", "Kick it"}});
        QSettings(settingsFile(), QSettings::IniFormat).remove("English/resetSystem");
        start();
        find<QComboBox>("systemLanguage")->setCurrentText("中文");
        find<QComboBox>("systemLanguage")->setCurrentText("English");
        QCOMPARE(caption("resetK7"), QString("Kick it"));
        QCOMPARE(caption("resetSystem"), QString());
    }

    void editsOfTheFileShowAtTheNextChoice()
    {
        start();
        m_dialog->selectLanguage("English");
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
        QCoreApplication::sendPostedEvents();
        QFile file(settingsFile());
        QTRY_VERIFY(file.size() > 5000);
        QVERIFY(file.open(QIODevice::ReadWrite));
        const QByteArray edited =
            file.readAll().replace("resetK7=Reset K7", "resetK7=Reset K7, now");
        file.seek(0);
        QCOMPARE(file.write(edited), edited.size());
        file.close();
        // The entry that is shown already, as a person chooses it.
        m_dialog->show();
        auto *combo = find<QComboBox>("systemLanguage");
        QTest::keyClick(combo, Qt::Key_Space);
        QTest::keyClick(combo->view(), Qt::Key_Enter);
        QCOMPARE(caption("resetK7"), QString("Reset K7, now"));
        // Without the file the window has its captions, and so has the next one.
        QVERIFY(file.remove());
        m_dialog->selectLanguage("中文");
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        start();
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        m_dialog->selectLanguage("English");
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
    }

    void selectorIgnoresOtherTexts()
    {
        start();
        m_dialog->selectLanguage("Français");
        QCOMPARE(m_dialog->language(), QString());
        m_dialog->selectLanguage("English");
        QCOMPARE(m_dialog->language(), QString("English"));
        m_dialog->selectLanguage("中文");
        QCOMPARE(find<QComboBox>("systemLanguage")->currentText(), QString("中文"));
        QCOMPARE(caption("tab_2"), QString("ED2通信"));
    }

    void unwritableSettingsFileIsNoHindrance()
    {
        // A folder in its place can neither be read nor written, whoever asks.
        QVERIFY(QDir().mkpath(settingsFile()));
        start();
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
        m_dialog->selectLanguage("中文");
        QCOMPARE(m_dialog->language(), QString("中文"));
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        QVERIFY(QDir().rmdir(settingsFile()));
    }

    void messagesFollowTheLanguage()
    {
        start();
        MessageBoxes boxes;
        m_dialog->selectLanguage("中文");
        m_dialog->offerPorts({"/dev/no-such-port"});
        find<QPushButton>("readVersion")->click();
        QTRY_COMPARE(boxes.texts, QStringList{"串口打开失败！"});
        m_dialog->selectLanguage("English");
        find<QPushButton>("readVersion")->click();
        QTRY_COMPARE(boxes.texts.last(), QString("Serial opening failed !"));
    }

    void pagesBeginInTheirStates()
    {
        start();
        for (const char *name : {"creatIcoFile", "addIcoFile", "replaceIcoFile"})
            QVERIFY2(!find(name)->isEnabled(), name);
        const auto *characters = find<QComboBox>("comboBox");
        QCOMPARE(characters->count(), 96);
        QCOMPARE(characters->itemText(0), QString(" "));
        QCOMPARE(characters->currentText(), QString("A"));
        QCOMPARE(find<QTableWidget>("displayPicture")->columnCount(), 10);
        QCOMPARE(find<QTableWidget>("ICOFileTable")->columnWidth(1), 400);
        QCOMPARE(find<QTableWidget>("fontPath")->columnWidth(1), 600);
        QCOMPARE(find<QTableWidget>("picturePath")->columnWidth(1), 600);
        const auto *crcTable = find<QTableWidget>("crcTableWidget");
        QCOMPARE(crcTable->columnWidth(0), 260);
        QCOMPARE(crcTable->columnWidth(3), 100);
        QCOMPARE(find<QComboBox>("K7UISize")->count(), 7);
        QCOMPARE(find<QSpinBox>("baudRateSet")->value(), 115200);
        QCOMPARE(find<QComboBox>("scaleMultiple")->currentText(), QString("100%"));
        QVERIFY(!find("tconSet")->isEnabled()); // K7UID1 has none
    }

    void radioButtonsBeginAsTheModuleDoes_data()
    {
        // In the order of their ids; the star marks the checked one.
        QTest::addColumn<QString>("buttons");
        for (const char *buttons :
             {"uartCalibration* rtcCalibration",
              "notAutoUp* autoUp",
              "pageNumber64* pageNumber128",
              "notLoad22File load22File*",
              "sdStatusClose sdStatusOpen*",
              "touchVoiceClose touchVoiceOpen*",
              "touchLightClose* touchLightOpen",
              "displayDirection0* displayDirection90 displayDirection180 displayDirection270",
              "pclkFallingEdge* pclkRisingEdge",
              "resistanceTouch capacitanceTouch*",
              "touchMinToXmax* touchXmaxToMin",
              "touchMinToYmax* touchYmaxToMin",
              "touchExchangeXY* touchExchangeYX",
              "sdEncryptionNotSet* encryptionLock encryptionUnlock",
              "buzzerSoundMusic* buzzerSoundBuzzer",
              "enableUartCrcClose* enableUartCrcOpen",
              "enableWatchDogClose* enableWatchDogOpen",
              "enableSynchronizationUpdateClose* enableSynchronizationUpdateOpen",
              "sdStatusClose_2 sdStatusOpen_2*",
              "touchVoiceClose_2 touchVoiceOpen_2*",
              "touchLightClose_2* touchLightOpen_2",
              "displayDirection0_2* displayDirection90_2 displayDirection180_2 "
              "displayDirection270_2",
              "renewalPageNow* renewalPageID"})
            QTest::newRow(buttons) << QString(buttons);
    }

    void radioButtonsBeginAsTheModuleDoes()
    {
        start();
        QFETCH(const QString, buttons);
        QString found;
        const QString first = buttons.section(' ', 0, 0).remove('*');
        const QButtonGroup *group = find<QRadioButton>(first)->group();
        QVERIFY(group);
        for (int id = 0; group->button(id); ++id)
            found += (id > 0 ? " " : "") + group->button(id)->objectName() +
                     (group->checkedId() == id ? "*" : "");
        QCOMPARE(found, buttons);
    }

    void listedResolutionsAreOffered()
    {
        edit({{"Resolution/N", 2}, {"Resolution/R0", "100X100"}, {"Resolution/R1", "200X200"}});
        start();
        for (const char *name : {"srceenSize", "pictureSrceen"}) {
            auto *combo = find<QComboBox>(name);
            QCOMPARE(combo->count(), 2);
            QCOMPARE(combo->itemText(0), QString("100X100"));
            QCOMPARE(combo->itemText(1), QString("200X200"));
        }
    }

    void resolutionTextIsShown()
    {
        start();
        m_dialog->setResolutionText("480X272");
        for (const char *name : {"srceenSize", "pictureSrceen"}) {
            auto *combo = find<QComboBox>(name);
            QCOMPARE(combo->currentText(), QString("480X272"));
            // The event loop's first pass shows it once more, and only then.
            combo->setCurrentText("800X480");
        }
        QTRY_COMPARE(find<QComboBox>("srceenSize")->currentText(), QString("480X272"));
        QCOMPARE(find<QComboBox>("pictureSrceen")->currentText(), QString("480X272"));
        find<QComboBox>("srceenSize")->setCurrentText("800X480");
        QTest::qWait(20);
        QCOMPARE(find<QComboBox>("srceenSize")->currentText(), QString("800X480"));
    }

    void initialTabIsRead_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<int>("tab");
        QTest::newRow("no file") << QByteArray() << 0;
        QTest::newRow("fourth") << QByteArray("[tabview]\ntabview=3\n") << 3;
        QTest::newRow("no number") << QByteArray("[tabview]\ntabview=three\n") << 0;
        QTest::newRow("no such tab") << QByteArray("[tabview]\ntabview=99\n") << 0;
        QTest::newRow("below zero") << QByteArray("[tabview]\ntabview=-1\n") << 0;
    }

    void initialTabIsRead()
    {
        QFETCH(const QByteArray, config);
        if (!config.isEmpty()) {
            QFile file(QCoreApplication::applicationDirPath() + "/config.cfg");
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(config);
        }
        start();
        QTEST(find<QTabWidget>("tabWidget")->currentIndex(), "tab");
    }

private:
    /// Starts the tool on what the settings file holds.
    void start()
    {
        m_dialog.reset();
        m_dialog = std::make_unique<Dialog>();
    }
    template<typename Widget = QWidget>
    Widget *find(const QString &name)
    {
        auto *widget = m_dialog->findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", qPrintable(name));
        return widget;
    }
    QString caption(const QString &name) { return captionOf(find(name)); }
    /// Changes the settings file as an editor would.
    void edit(const QMap<QString, QVariant> &values)
    {
        QSettings settings(settingsFile(), QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        for (auto it = values.begin(); it != values.end(); ++it)
            settings.setValue(it.key(), it.value());
    }
    QString stored(const QString &key)
    {
        QSettings settings(settingsFile(), QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        return settings.value(key).toString();
    }

    std::unique_ptr<Dialog> m_dialog;
};

QTEST_MAIN(TestLanguage)
#include "tst_language.moc"
