#include "common/replace_file.h"
#include "common/tool_settings.h"
#include "ico/ico_library.h"
#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>

namespace {

/// Does `work` while no file grows beyond `bytes`, as on a full disk.
template<typename Work>
void onFullDisk(rlim_t bytes, const Work &work)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full{bytes, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    work();
    setrlimit(RLIMIT_FSIZE, &before);
}

} // namespace

/// Files that cannot be written: the old ones stay whole, and no half ones are left.
class TestFullDisk : public WindowTest
{
    Q_OBJECT

private slots:
    void filesAreReplacedWholeOrNotAtAll()
    {
        const QString old = write("old", "old content");
        onFullDisk(20, [&] {
            QVERIFY(!replaceFile(old, randomBytes(100)));
            QVERIFY(!overwriteStart(old, randomBytes(100)));
            QVERIFY(!replaceFile(m_folder->filePath("none"), randomBytes(100)));
        });
        QCOMPARE(content(old), QByteArray("old content"));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"old"});
        QVERIFY(!replaceFile(m_folder->filePath("no/such/folder"), "x"));
        QVERIFY(overwriteStart(old, "new"));
        QCOMPARE(content(old), QByteArray("new content"));
    }

    void whatThePagesWrite()
    {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QByteArray library = *icoLibrary::write({icon::fromImage(7, image)});
        const QString oldIcons = write("old.ICO", library);
        const QString oldConfig = write("old.CFG", QByteArray(100, 'x'));
        const QString oldFont = QCoreApplication::applicationDirPath() + "/0_ZOLT_ASC.HZK";
        QVERIFY(replaceFile(oldFont, "old font"));
        write("7_new.bmp", "old picture");
        const QStringList before = QDir(m_folder->path()).entryList(QDir::Files);
        click("readVersion");
        COMPARE_SOON(line("displayVersion"), QString("GUI:V4.5 OS:V2.1"));
        finishExchange();

        image.fill(Qt::blue);
        const QTemporaryDir pictures;
        const QString newPicture = pictures.filePath("7_new.png");
        QVERIFY(image.save(newPicture) && image.save(pictures.filePath("8.png")));
        choose("selectIcoFilePath", {newPicture});
        choose("addPicture", {pictures.path()});
        onFullDisk(10, [&] {
            choose("replaceIcoFile", {oldIcons});
            choose("creatIcoFile", {m_folder->filePath("new.ICO")});
            choose("createCfgFile", {oldConfig});
            choose("createCfgFile", {m_folder->filePath("new.CFG")});
            click("CreatZeroFont");
            chooseInNextDialog({m_folder->filePath("log.txt")});
            chooseInLogMenu("Save log…");
            choose("imagesConversion", {m_folder->path()});
        });
        QVERIFY(content(oldIcons) == library);
        QCOMPARE(content(oldConfig), QByteArray(100, 'x'));
        QCOMPARE(content(oldFont), QByteArray("old font"));
        QCOMPARE(content(m_folder->filePath("7_new.bmp")), QByteArray("old picture"));
        QVERIFY(QFile::remove(oldFont));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), before);
        QVERIFY(m_boxes->texts.takeAt(2).startsWith("old.CFG already exists."));
        // Some say that they have finished all the same. That is wanted.
        QCOMPARE(m_boxes->texts,
                 (QStringList{"Creat finish！", "Creat finish！", "Creat finish！",
                              "The file could not be written !", "Image conversion complete !"}));
    }

    void settings()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/SystemConfig.ini";
        ToolSettings settings(path);
        m_dialog->selectLanguage("English");
        const QByteArray before = content(path);
        QVERIFY(before.size() > 5000);
        onFullDisk(5000, [&] {
            m_dialog->selectLanguage("中文");
            QCOMPARE(find<QPushButton>("resetK7")->text(), QString("复位K7"));
            m_dialog.reset();
            settings.set({{"Language/Language", {"held"}}});
        });
        QCOMPARE(settings.text("Language/Language"), QString("held"));
        QCOMPARE(content(path), before);
    }
};

QTEST_MAIN(TestFullDisk)
#include "tst_full_disk.moc"
