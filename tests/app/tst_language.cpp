#include "app/dialog.h"
#include "common/program_folder.h"
#include "support/message_boxes.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QButtonGroup>
#include <QComboBox>
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
    return programFolder() + "/SystemConfig.ini";
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
    void init();
    void cleanup();
    void everyCaptionHasBothTextsAndItsWidgets();
    void builtInCaptionsAreTheEnglishOnes();
    void firstStartWritesEverythingAndChangesNothing();
    void eachKeyDressesExactlyItsWidgets();
    void storedLanguageIsAppliedAtTheStart_data();
    void storedLanguageIsAppliedAtTheStart();
    void shownEntryCanBeChosenAgain();
    void textsAreReadAtEverySwitch();
    void selectorIgnoresOtherTexts();
    void messagesFollowTheLanguage();
    void pagesBeginInTheirStates();
    void radioButtonsBeginAsTheModuleDoes_data();
    void radioButtonsBeginAsTheModuleDoes();
    void listedResolutionsAreOffered();
    void resolutionTextIsShown();
    void initialTabIsRead_data();
    void initialTabIsRead();

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

void TestLanguage::init()
{
    QSettings(settingsFile(), QSettings::IniFormat).clear();
    QFile::remove(settingsFile());
    QFile::remove(programFolder() + "/config.cfg");
}

void TestLanguage::cleanup()
{
    m_dialog.reset();
}

void TestLanguage::everyCaptionHasBothTextsAndItsWidgets()
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

void TestLanguage::builtInCaptionsAreTheEnglishOnes()
{
    start();
    for (const Caption &caption : captions())
        for (const QString &name : caption.widgetNames())
            QCOMPARE(name + ": " + this->caption(name),
                     name + ": " + QString::fromUtf8(caption.english));
}

void TestLanguage::firstStartWritesEverythingAndChangesNothing()
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

void TestLanguage::eachKeyDressesExactlyItsWidgets()
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

void TestLanguage::storedLanguageIsAppliedAtTheStart_data()
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

void TestLanguage::storedLanguageIsAppliedAtTheStart()
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

void TestLanguage::shownEntryCanBeChosenAgain()
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

void TestLanguage::textsAreReadAtEverySwitch()
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

void TestLanguage::selectorIgnoresOtherTexts()
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

void TestLanguage::messagesFollowTheLanguage()
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

void TestLanguage::pagesBeginInTheirStates()
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
}

void TestLanguage::radioButtonsBeginAsTheModuleDoes_data()
{
    QTest::addColumn<QString>("checked");
    for (const char *name :
         {"uartCalibration",     "notAutoUp",           "pageNumber64",
          "load22File",          "sdStatusOpen",        "touchVoiceOpen",
          "touchLightClose",     "displayDirection0",   "pclkFallingEdge",
          "capacitanceTouch",    "touchMinToXmax",      "touchMinToYmax",
          "touchExchangeXY",     "sdEncryptionNotSet",  "buzzerSoundMusic",
          "enableUartCrcClose",  "enableWatchDogClose", "enableSynchronizationUpdateClose",
          "sdStatusOpen_2",      "touchVoiceOpen_2",    "touchLightClose_2",
          "displayDirection0_2", "renewalPageNow"})
        QTest::newRow(name) << QString(name);
}

void TestLanguage::radioButtonsBeginAsTheModuleDoes()
{
    start();
    QFETCH(const QString, checked);
    const auto *button = find<QRadioButton>(checked);
    QVERIFY(button->isChecked());
    for (const auto *other : button->parentWidget()->findChildren<QRadioButton *>(
             QString(), Qt::FindDirectChildrenOnly))
        if (button->group() && other->group() == button->group())
            QCOMPARE(other->isChecked(), other == button);
}

void TestLanguage::listedResolutionsAreOffered()
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

void TestLanguage::resolutionTextIsShown()
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

void TestLanguage::initialTabIsRead_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<int>("tab");
    QTest::newRow("no file") << QByteArray() << 0;
    QTest::newRow("fourth") << QByteArray("[tabview]\ntabview=3\n") << 3;
    QTest::newRow("no number") << QByteArray("[tabview]\ntabview=three\n") << 0;
    QTest::newRow("no such tab") << QByteArray("[tabview]\ntabview=99\n") << 0;
    QTest::newRow("below zero") << QByteArray("[tabview]\ntabview=-1\n") << 0;
}

void TestLanguage::initialTabIsRead()
{
    QFETCH(const QByteArray, config);
    if (!config.isEmpty()) {
        QFile file(programFolder() + "/config.cfg");
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(config);
    }
    start();
    QTEST(find<QTabWidget>("tabWidget")->currentIndex(), "tab");
}

QTEST_MAIN(TestLanguage)
#include "tst_language.moc"
