#include "common/program_folder.h"
#include "common/read_file.h"
#include "common/replace_file.h"
#include "common/tool_settings.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

/// The settings file as other programs and people see it.
class TestSettings : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void firstStartWritesTheDefaultResolutions()
    {
        QCOMPARE(ToolSettings(file()).loadResolutions(), QStringList());
        const QStringList resolutions = ToolSettings(file()).loadResolutions();
        QCOMPARE(resolutions.join(' '),
                 QString("320X240 240X320 480X272 272X480 640X480 480X640 800X480 480X800 800X600 "
                         "600X800 512X480 480X512 512X300 300X512 400X400 640X512 512X640 "
                         "1024X600 600X1024 1024X768 768X1024 1366X768 768X1366"));
        QCOMPARE(stored("Resolution/N"), QVariant("23"));
        QCOMPARE(stored("Resolution/R22"), QVariant("768X1366"));
    }

    void listedResolutionsAreRead()
    {
        const struct
        {
            QByteArray file;
            QStringList resolutions;
        } rows[] = {
            {"[Resolution]\nN=2\nR0=100X100\nR1=200X200\nR2=3X3\n", {"100X100", "200X200"}},
            {"[Resolution]\nN=3\nR1=200X200\n", {"", "200X200", ""}},
            {"[Resolution]\nN=many\nR0=100X100\n", {}},
            {"[Resolution]\nN=-5\n", {}},
            {"[Resolution]\nN=@Invalid()\n", {}},
            {QByteArray("\x00\xFF[\x01=\n\n]]==", 11), {}},
        };
        for (const auto &row : rows) {
            write(row.file);
            QCOMPARE(ToolSettings(file()).loadResolutions(), row.resolutions);
        }
        write("[Resolution]\nN=1001\n");
        QCOMPARE(ToolSettings(file()).loadResolutions().size(), 1000);
    }

    void startFoldersComeBack()
    {
        const QString ico = "/tmp/图标, 1/a.ICO";
        {
            ToolSettings settings(file());
            QCOMPARE(folders(settings), (QStringList{"", "", ""}));
            settings.rememberIcoPath(ico);
            settings.rememberFontFiles({"/a/1.bin", "/a/2.bin"});
            settings.rememberImagePath("/b.bmp");
            QCOMPARE(folders(settings), (QStringList{ico, "/a/1.bin", "/b.bmp"}));
        }
        // A list of several paths does not come back. That is wanted.
        QCOMPARE(folders(ToolSettings(file())), (QStringList{ico, "", "/b.bmp"}));
        QVERIFY(readFile(file())->contains("图标"));
        {
            ToolSettings settings(file());
            settings.rememberFontFiles({"/c.bin"});
            settings.rememberImageFiles({"/p/1.png", "/p/2.png"});
            QCOMPARE(folders(settings), (QStringList{ico, "/c.bin", "/p/1.png"}));
        }
        QCOMPARE(folders(ToolSettings(file())), (QStringList{ico, "/c.bin", ""}));
        QCOMPARE(stored("DefaultPath/icoDefaultPath"), QVariant(ico));
        QCOMPARE(stored("DefaultPath/fontDefaultPath"), QVariant("/c.bin"));
        QCOMPARE(stored("DefaultPath/imageDefaultPath"),
                 QVariant(QStringList{"/p/1.png", "/p/2.png"}));
    }

    void anyTextComesBackAndTheRestStays()
    {
        QRandomGenerator random(1);
        const QString alphabet = "ab19 ,;=\"\\@#[]%/\n\t\x01图";
        const QByteArray rest = "\n[Other]\n; by hand\nkey = 1, 2\n";
        for (int i = 0; i < 300; ++i) {
            QStringList values;
            for (int n = random.bounded(1, 4); n > 0; --n) {
                QString value;
                for (int length = random.bounded(6); length > 0; --length)
                    value += alphabet.at(random.bounded(alphabet.size()));
                values.append(value);
            }
            init(); // settings of one name share what was read
            write("[First]\n\n[Own]\nkey=old\n" + rest);
            ToolSettings(file()).set({{"Own/key", values}, {"Own/next", {"1"}}});
            QCOMPARE(stored("Own/key").toStringList(), values);
            QCOMPARE(stored("Own/next"), QVariant("1"));
            QVERIFY(readFile(file())->endsWith(rest));
        }
    }

    void editedFilesKeepTheirLineEndsAndRemarks()
    {
        const bool isWindows = QSysInfo::kernelType() == "winnt";
        const struct
        {
            QByteArray before; ///< what QSettings reads as a group with perhaps a key
            QByteArray after;
        } rows[] = {
            {"", isWindows ? "[Own]\r\nkey=new\r\nnext=1\r\n" : "[Own]\nkey=new\nnext=1\n"},
            {"[Own]\nkey=1, \"2;3\"\t ; why\n\n", "[Own]\nkey=new\t ; why\nnext=1\n\n"},
            {"[Own]\r\n;x\r\nkey=1", "[Own]\r\n;x\r\nkey=new\r\nnext=1\r\n"},
            {"[Own]\rkey=1;a\\\r", "[Own]\rkey=new;a\\\rnext=1\r"},
            {"[Own]\r\na=D:\\b\\\r\nkey=1\r\n",
             "[Own]\r\na=D:\\b\\\r\nkey=1\r\nkey=new\r\nnext=1\r\n"},
            {"[Own]\n\ra=b\\\n\rc=\n\r", "[Own]\n\ra=b\\\n\rc=\n\rkey=new\n\rnext=1\n\r"},
            {"[Own]\na=b\\\r", "[Own]\na=b\\\r\n\nkey=new\nnext=1\n"}, // nothing is held on to
        };
        for (const auto &row : rows) {
            init(); // settings of one name share what was read
            write(row.before);
            ToolSettings(file()).set({{"Own/key", {"new"}}, {"Own/next", {"1"}}});
            QCOMPARE(*readFile(file()), row.after);
            QCOMPARE(stored("Own/key"), QVariant("new"));
            QCOMPARE(stored("Own/next"), QVariant("1"));
        }
    }

    void whatCannotBeWrittenHoldsUntilTheEnd()
    {
        QVERIFY(QDir().mkdir(file())); // neither read nor written, whoever asks
        ToolSettings settings(file());
        QVERIFY(!settings.hasGroup("Own"));
        settings.set({{"Own/key", {"old"}}, {"Own/list", {"1", "2"}}});
        settings.set({{"Own/key", {"new, newer"}}});
        QVERIFY(settings.hasGroup("Own") && !settings.hasGroup("Ow"));
        QCOMPARE(settings.text("Own/key"), QString("new, newer"));
        QCOMPARE(settings.caption("Own/key"), QString("new, newer"));
        QCOMPARE(settings.text("Own/list"), QString());
        QVERIFY(QDir().rmdir(file()));
        settings.set({{"Own/last", {"3"}}});
        QCOMPARE(stored("Own/key"), QVariant("new, newer"));
        QCOMPARE(stored("Own/last"), QVariant("3"));
        write("[Own]\nkey=edited\n");
        settings.refresh();
        QCOMPARE(settings.text("Own/key"), QString("edited"));
    }

    void programFolderIsTheUsersOwnWhereTheExecutablesCannotBeWritten()
    {
        QStandardPaths::setTestModeEnabled(true);
        write("[Language]\nLanguage=French\nBoth=Yes, no\n");
        QCOMPARE(findProgramFolder(m_folder->path()).own, m_folder->path());
        // What stands beside the executable is read all the same, and is where the user's file
        // begins.
        const ProgramFolder folder{m_folder->path(), m_folder->filePath("own")};
        QVERIFY(QDir().mkpath(folder.own));
        QCOMPARE(folder.fileToRead("SystemConfig.ini"), file());
        const QString ownFile = folder.own + "/SystemConfig.ini";
        QCOMPARE(ToolSettings(ownFile + "/none", file()).caption("Language/Both"),
                 QString("Yes, no"));
        ToolSettings settings(ownFile, file());
        QCOMPARE(settings.text("Language/Language"), QString("French"));
        settings.rememberIcoPath("/tmp");
        QCOMPARE(folder.fileToRead("SystemConfig.ini"), ownFile);
        QCOMPARE(ToolSettings(ownFile, file()).icoFolder(), QString("/tmp"));
        QVERIFY(!stored("DefaultPath/icoDefaultPath").isValid());

        const QString own = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
        QDir(own).removeRecursively();
        QCOMPARE(findProgramFolder(m_folder->filePath("missing")).own, own);
        QVERIFY(QFileInfo(own).isWritable());
    }

private:
    QString file() const { return m_folder->filePath("SystemConfig.ini"); }
    void write(const QByteArray &content) const { QVERIFY(replaceFile(file(), content)); }
    QVariant stored(const QString &key) const
    {
        QSettings settings(file(), QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        return settings.value(key);
    }
    static QStringList folders(const ToolSettings &settings)
    {
        return {settings.icoFolder(), settings.fontFolder(), settings.imageFolder()};
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
