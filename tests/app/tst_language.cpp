#include "common/replace_file.h"
#include "support/window_test.h"

#include <QAbstractItemView>
#include <QGroupBox>
#include <QLabel>
#include <QTabWidget>
#include <QTextBrowser>
#include <QtTest>

namespace {

QString besideTheExecutable(const QString &name)
{
    return QCoreApplication::applicationDirPath() + '/' + name;
}

/// What `widget` shows as its caption, or the text of its tab.
QString captionOf(const QWidget *widget)
{
    const QWidget *stack = widget->parentWidget();
    if (const auto *tabs = stack ? qobject_cast<QTabWidget *>(stack->parentWidget()) : nullptr)
        return tabs->tabText(tabs->indexOf(const_cast<QWidget *>(widget)));
    if (const auto *browser = qobject_cast<const QTextBrowser *>(widget))
        return browser->toPlainText();
    return widget->property(qobject_cast<const QGroupBox *>(widget) ? "title" : "text").toString();
}

} // namespace

/// The real window and the settings file beside the executable.
class TestLanguage : public WindowTest
{
    Q_OBJECT

private slots:
    void firstStartWritesAllTextsAndChangesNothing()
    {
        QCOMPARE(m_dialog->language(), QString());
        QCOMPARE(find<QComboBox>("srceenSize")->count(), 23);
        QCOMPARE(stored("Resolution/N"), QVariant("23"));
        QCOMPARE(stored("Language/Language"), QVariant("English"));
        QSet<QString> keys;
        QSet<QString> widgets;
        for (const Caption &caption : captions()) {
            const QString chinese = QString::fromUtf8(caption.chinese);
            const QString english = QString::fromUtf8(caption.english);
            QVERIFY2(!chinese.isEmpty() && !english.isEmpty(), caption.key);
            QCOMPARE(stored(QString("Chinese/") + caption.key), QVariant(chinese));
            QCOMPARE(stored(QString("English/") + caption.key), QVariant(english));
            keys.insert(caption.key);
            for (const QString &name : caption.widgetNames()) {
                QVERIFY2(m_dialog->findChildren<QWidget *>(name).size() == 1, qPrintable(name));
                QCOMPARE(name + ": " + this->caption(name), name + ": " + english);
                widgets.insert(name);
            }
        }
        QCOMPARE(keys.size(), 149);
        QCOMPARE(widgets.size(), 150);
    }

    void oddTextsStandAsTheyAre()
    {
        const struct
        {
            const char *key, *widget, *chinese, *english;
        } rows[] = {
            {"ZeroFontTab", "ZeroFont", "0号字库生成工具", "Creat zero font library"},
            {"uart2Dwonload", "tab_9", "串口2通信", "Uart2 Communication"},
            {"ed2DownloadExplain", "ed2DownloadExplain", "当前下载方式为ED2，波特率必须是6250000",
             "The current download mode is ED2， and the baud rate must be 6250000"},
            {"filiterBackColor", "filiterBackColor", "过滤背景色", "filiter background color"},
            {"nomalLightLabel", "nomalLightLabel", "正常亮度", "Normal"},
            {"reNameImageConversion", "reNameImageConversion", "转换图片重新命名",
             "ReName Images Conversion"},
            {"crcCheck", "tab_5", "CRC校验", "CRC_Check"},
        };
        for (const auto &row : rows) {
            m_dialog->selectLanguage("English");
            QCOMPARE(caption(row.widget), QString(row.english));
            QCOMPARE(stored(QString("English/") + row.key), QVariant(row.english));
            m_dialog->selectLanguage("中文");
            QCOMPARE(caption(row.widget), QString(row.chinese));
        }
    }

    void eachKeyDressesExactlyItsWidgets()
    {
        QMap<QString, QVariant> marked{{"Language/Language", "中文"}};
        QMap<QString, QString> expected;
        for (const Caption &caption : captions()) {
            marked.insert(QString("Chinese/") + caption.key, QString("<%1>").arg(caption.key));
            for (const QString &name : caption.widgetNames())
                expected.insert(name, QString("<%1>").arg(caption.key));
        }
        restart(marked);
        QMap<QString, QString> found;
        for (const QWidget *widget : m_dialog->findChildren<QWidget *>())
            if (captionOf(widget).startsWith('<'))
                found.insert(widget->objectName(), captionOf(widget));
        QCOMPARE(found, expected);
    }

    void storedLanguageIsAppliedAtTheStart()
    {
        for (const auto &[language, tab] : {std::pair("English", "Creat zero font library"),
                                            {"Français", "Creat zero font library"},
                                            {"中文", "0号字库生成工具"}}) {
            restart({{"Language/Language", language}});
            QCOMPARE(caption("ZeroFont"), QString(tab));
            QCOMPARE(m_dialog->language(), QString(language));
            QCOMPARE(stored("Language/Language"), QVariant(language));
            // The box begins with its first entry in any language. That is wanted.
            QCOMPARE(find<QComboBox>("systemLanguage")->currentText(), QString("English"));
        }
        chooseTheShownLanguage();
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
        QCOMPARE(m_dialog->language(), QString("English"));
        select("systemLanguage", "中文");
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        QCOMPARE(stored("Language/Language"), QVariant("中文"));
    }

    void selectorIgnoresOtherTexts()
    {
        m_dialog->selectLanguage("Français");
        QCOMPARE(m_dialog->language(), QString());
        m_dialog->selectLanguage("中文");
        QCOMPARE(find<QComboBox>("systemLanguage")->currentText(), QString("中文"));
        QCOMPARE(caption("tab_2"), QString("ED2通信"));
    }

    void editsOfTheFileShowAtTheNextChoice()
    {
        const QString path = besideTheExecutable("SystemConfig.ini");
        QByteArray edited = content(path);
        edited.replace("resetK7=Reset K7", "resetK7=Reset K7, now");
        edited.replace("ZeroFontTab=Creat zero font library", "");
        QVERIFY(replaceFile(path, edited));
        // The entry that is shown already, as a person chooses it.
        chooseTheShownLanguage();
        QCOMPARE(caption("resetK7"), QString("Reset K7, now"));
        QCOMPARE(caption("ZeroFont"), QString());
        // Without the file the window has its captions, and so has the next one.
        QVERIFY(QFile::remove(path));
        m_dialog->selectLanguage("中文");
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        restart();
        QCOMPARE(caption("resetK7"), QString("复位K7"));
        m_dialog->selectLanguage("English");
        QCOMPARE(caption("resetK7"), QString("Reset K7"));
    }

    void unwritableSettingsFileIsNoHindrance()
    {
        // A folder in its place can neither be read nor written, whoever asks.
        const QString path = besideTheExecutable("SystemConfig.ini");
        QVERIFY(QFile::remove(path) && QDir().mkpath(path));
        restart();
        const QString built = caption("resetK7");
        m_dialog->selectLanguage("中文");
        QVERIFY(QDir().rmdir(path));
        QCOMPARE(built, QString("Reset K7"));
        QCOMPARE(m_dialog->language(), QString("中文"));
        QCOMPARE(caption("resetK7"), QString("复位K7"));
    }

    void listedResolutionsAreOfferedAndOneIsShown()
    {
        restart({{"Resolution/N", 3},
                 {"Resolution/R0", "100X100"},
                 {"Resolution/R1", "200X200"},
                 {"Resolution/R2", "300X300"}});
        m_dialog->setResolutionText("200X200");
        for (const char *name : {"srceenSize", "pictureSrceen"}) {
            auto *combo = find<QComboBox>(name);
            QCOMPARE(combo->count(), 3);
            QCOMPARE(combo->itemText(0), QString("100X100"));
            QCOMPARE(combo->currentText(), QString("200X200"));
            combo->setCurrentText("300X300");
        }
        // The event loop's first pass shows it once more, and only the first one.
        COMPARE_SOON(find<QComboBox>("srceenSize")->currentText(), QString("200X200"));
        QCOMPARE(find<QComboBox>("pictureSrceen")->currentText(), QString("200X200"));
        m_dialog->setResolutionText("100X100");
        select("srceenSize", "300X300");
        pass(20);
        QCOMPARE(find<QComboBox>("srceenSize")->currentText(), QString("300X300"));
    }

    void initialTabIsRead()
    {
        for (const auto &[stored, tab] :
             {std::pair("3", 3), {"three", 0}, {"99", 0}, {"-1", 0}, {"6", 6}}) {
            const QString path = besideTheExecutable("config.cfg");
            QVERIFY(replaceFile(path, QByteArray("[tabview]\ntabview=") + stored));
            restart();
            QVERIFY(QFile::remove(path));
            QCOMPARE(find<QTabWidget>("tabWidget")->currentIndex(), tab);
        }
    }

private:
    /// Starts the tool again, after `edits` of the settings file as of an editor.
    void restart(const QMap<QString, QVariant> &edits = {})
    {
        m_dialog.reset();
        {
            QSettings settings(besideTheExecutable("SystemConfig.ini"), QSettings::IniFormat);
            settings.setIniCodec("UTF-8");
            for (auto it = edits.begin(); it != edits.end(); ++it)
                settings.setValue(it.key(), it.value());
        }
        m_dialog = simulatedDialog(*m_simulator, *m_time);
        m_dialog->show();
    }
    void chooseTheShownLanguage()
    {
        auto *combo = find<QComboBox>("systemLanguage");
        QTest::keyClick(combo, Qt::Key_Space);
        QTest::keyClick(combo->view(), Qt::Key_Enter);
    }
    QString caption(const QString &name) { return captionOf(find<QWidget>(name)); }
};

QTEST_MAIN(TestLanguage)
#include "tst_language.moc"
