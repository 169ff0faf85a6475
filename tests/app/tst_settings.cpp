#include "common/program_folder.h"
#include "common/tool_settings.h"

#include <QTemporaryDir>
#include <QtTest>

/// The settings file as other programs and people see it.
class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void firstStartWritesTheDefaultResolutions()
    {
        {
            ToolSettings settings(file());
            QCOMPARE(settings.loadResolutions(), QStringList());
            QVERIFY(settings.icoFolder().isEmpty());
        }
        QCOMPARE(stored("Resolution/N").toInt(), 23);
        QCOMPARE(stored("Resolution/R0").toString(), QString("320X240"));
        QCOMPARE(stored("Resolution/R14").toString(), QString("400X400"));
        QCOMPARE(stored("Resolution/R22").toString(), QString("768X1366"));
        QVERIFY(!stored("Resolution/R23").isValid());
        QCOMPARE(ToolSettings(file()).loadResolutions().size(), 23);
    }

    void listedResolutionsAreRead_data()
    {
        QTest::addColumn<QByteArray>("section");
        QTest::addColumn<QStringList>("resolutions");
        QTest::newRow("two") << QByteArray("N=2\nR0=100X100\nR1=200X200\nR2=300X300\n")
                             << QStringList{"100X100", "200X200"};
        QTest::newRow("more promised than listed")
            << QByteArray("N=3\nR1=200X200\n") << QStringList{"", "200X200", ""};
        QTest::newRow("no number") << QByteArray("N=many\nR0=100X100\n") << QStringList();
        QTest::newRow("below zero") << QByteArray("N=-5\n") << QStringList();
    }

    void listedResolutionsAreRead()
    {
        QFETCH(const QByteArray, section);
        write("[Resolution]\n" + section);
        QTEST(ToolSettings(file()).loadResolutions(), "resolutions");
    }

    void startFoldersComeBack()
    {
        {
            ToolSettings settings(file());
            settings.rememberIcoPath("/tmp/图标, 1/a.ICO");
            settings.rememberImagePath("/tmp/b.bmp");
            QCOMPARE(settings.icoFolder(), QString("/tmp/图标, 1/a.ICO"));
        }
        const ToolSettings again(file());
        QCOMPARE(again.icoFolder(), QString("/tmp/图标, 1/a.ICO"));
        QCOMPARE(again.imageFolder(), QString("/tmp/b.bmp"));
        QFile content(file());
        QVERIFY(content.open(QIODevice::ReadOnly));
        QVERIFY(content.readAll().contains("图标"));
    }

    void listsComeBackOnlyWhenTheyHoldOnePath()
    {
        {
            ToolSettings settings(file());
            settings.rememberFontFiles({"/a/1.bin", "/a/2.bin"});
            settings.rememberImageFiles({"/p/1.png"});
            QCOMPARE(settings.fontFolder(), QString("/a/1.bin"));
        }
        QCOMPARE(stored("DefaultPath/fontDefaultPath").toStringList(),
                 (QStringList{"/a/1.bin", "/a/2.bin"}));
        const ToolSettings again(file());
        QCOMPARE(again.fontFolder(), QString());
        QCOMPARE(again.imageFolder(), QString("/p/1.png"));
    }

    void unreadableFilesAreFilesWithoutKeys_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("binary") << QByteArray("\x00\xFF[\x01=\n\n]]==", 11);
        QTest::newRow("no number of entries") << QByteArray("[Resolution]\nN=@Invalid()\n");
    }

    void unreadableFilesAreFilesWithoutKeys()
    {
        QFETCH(const QByteArray, content);
        write(content);
        ToolSettings settings(file());
        QCOMPARE(settings.loadResolutions(), QStringList());
        QCOMPARE(settings.fontFolder(), QString());
        QCOMPARE(settings.text("Resolution/R0"), QString("320X240"));
    }

    void programFolderIsTheUsersOwnWhereTheExecutablesCannotBeWritten()
    {
        QStandardPaths::setTestModeEnabled(true);
        write("[Language]\nLanguage=French\n");
        QCOMPARE(findProgramFolder(m_folder->path()).own, m_folder->path());
        // What stands beside the executable is read all the same, and is where the user's file
        // begins.
        const ProgramFolder folder{m_folder->path(), m_folder->filePath("own")};
        QVERIFY(QDir().mkpath(folder.own));
        QCOMPARE(folder.fileToRead("SystemConfig.ini"), file());
        const QString ownFile = folder.own + "/SystemConfig.ini";
        ToolSettings(ownFile, file()).rememberIcoPath("/tmp");
        QCOMPARE(folder.fileToRead("SystemConfig.ini"), ownFile);
        QCOMPARE(ToolSettings(ownFile, file()).text("Language/Language"), QString("French"));
        QVERIFY(!stored("DefaultPath/icoDefaultPath").isValid());

        const QString own = findProgramFolder(m_folder->filePath("missing")).own;
        QCOMPARE(own, QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation));
        QVERIFY(QFileInfo(own).isWritable());
    }

private:
    QString file() const { return m_folder->filePath("SystemConfig.ini"); }
    void write(const QByteArray &content) const
    {
        QFile target(file());
        QVERIFY(target.open(QIODevice::WriteOnly));
        target.write(content);
    }
    QVariant stored(const QString &key) const
    {
        return QSettings(file(), QSettings::IniFormat).value(key);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
