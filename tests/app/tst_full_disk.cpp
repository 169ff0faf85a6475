#include "common/replace_file.h"
#include "ico/ico_library.h"
#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QLineEdit>
#include <QTableWidget>
#include <QTextEdit>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

namespace {

/// As long as it lives no file grows beyond `bytes`, as on a full disk.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FullDisk(const FullDisk &) = delete;
    FullDisk &operator=(const FullDisk &) = delete;

private:
    rlimit m_before{};
};

} // namespace

/// Files that cannot be written: the old ones stay whole, and no half ones are left.
class TestFullDisk : public WindowTest
{
    Q_OBJECT

private slots:
    void filesAreReplacedWholeOrNotAtAll()
    {
        const QString old = write("old", "old content");
        const QString none = m_folder->filePath("none");
        {
            const FullDisk disk(20);
            QVERIFY(!replaceFile(old, randomBytes(100)));
            QVERIFY(!overwriteStart(old, randomBytes(100)));
            QVERIFY(!replaceFile(none, randomBytes(100)));
        }
        QCOMPARE(content(old), QByteArray("old content"));
        QVERIFY(!QFile::exists(none));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"old"});
        QVERIFY(!replaceFile(m_folder->filePath("no/such/folder"), "x"));
        QVERIFY(overwriteStart(old, "new"));
        QCOMPARE(content(old), QByteArray("new content"));
    }

    void iconLibraries()
    {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(Qt::red);
        const QByteArray library = *icoLibrary::write({icon::fromImage(7, image)});
        const QString path = write("old.ICO", library);
        image.fill(Qt::blue);
        QVERIFY(image.save(m_folder->filePath("7_new.png")));
        choose("selectIcoFilePath", {m_folder->filePath("7_new.png")});
        {
            const FullDisk disk(100000);
            choose("replaceIcoFile", {path});
            choose("creatIcoFile", {m_folder->filePath("new.ICO")});
        }
        QVERIFY(content(path) == library);
        QVERIFY(!QFile::exists(m_folder->filePath("new.ICO")));
        QCOMPARE(m_boxes->texts, QStringList({"Creat finish！", "Creat finish！"}));
    }

    void convertedPictures()
    {
        QImage image(40, 40, QImage::Format_RGB32);
        image.fill(Qt::red);
        QVERIFY(image.save(m_folder->filePath("a.png")));
        QVERIFY(image.save(m_folder->filePath("b.png")));
        const QTemporaryDir out;
        QFile old(out.filePath("a.bmp"));
        QVERIFY(old.open(QIODevice::WriteOnly));
        old.write("old picture");
        old.close();
        choose("addPicture", {m_folder->path()});
        {
            const FullDisk disk(10000);
            choose("imagesConversion", {out.path()});
        }
        QCOMPARE(m_boxes->texts, QStringList{"Image conversion complete !"});
        QCOMPARE(content(out.filePath("a.bmp")), QByteArray("old picture"));
        QCOMPARE(QDir(out.path()).entryList(QDir::Files), QStringList{"a.bmp"});
    }

    void configurations()
    {
        const QString path = write("old.CFG", QByteArray(100, 'x'));
        {
            const FullDisk disk(50);
            chooseOverOldFile("createCfgFile", path);
            choose("createCfgFile", {m_folder->filePath("new.CFG")});
        }
        QCOMPARE(content(path), QByteArray(100, 'x'));
        QVERIFY(!QFile::exists(m_folder->filePath("new.CFG")));
    }

    void zeroFonts()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/0_ZOLT_ASC.HZK";
        QVERIFY(replaceFile(path, "old font"));
        {
            const FullDisk disk(1000000);
            click("CreatZeroFont");
        }
        QCOMPARE(content(path), QByteArray("old font"));
        QVERIFY(QFile::remove(path));
    }

    void logs()
    {
        click("readVersion");
        runEventLoopUntil([this] { return !find<QLineEdit>("displayVersion")->text().isEmpty(); });
        runEventLoop(120);
        const QString path = m_folder->filePath("log.txt");
        {
            const FullDisk disk(10);
            chooseInNextDialog({path});
            QTimer::singleShot(20, this, [] {
                QWidget *menu = QApplication::activePopupWidget();
                QVERIFY(menu);
                QTest::keyClick(menu, Qt::Key_Up);
                QTest::keyClick(menu, Qt::Key_Return);
            });
            emit find<QTextEdit>("receiveText")->customContextMenuRequested(QPoint(5, 5));
        }
        QVERIFY(!QFile::exists(path));
        QCOMPARE(m_boxes->texts, QStringList{"The file could not be written !"});
    }

    void settings()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/SystemConfig.ini";
        m_dialog->selectLanguage("English");
        const QByteArray before = content(path);
        QVERIFY(before.size() > 5000);
        {
            const FullDisk disk(5000);
            m_dialog->selectLanguage("中文");
            QCOMPARE(find<QPushButton>("resetK7")->text(), QString("复位K7"));
            m_dialog.reset();
        }
        QCOMPARE(content(path), before);
    }

private:
    void chooseOverOldFile(const QString &button, const QString &path)
    {
        // The dialog asks before it replaces a file; the person agrees.
        QTimer agree;
        connect(&agree, &QTimer::timeout, this, [] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box && box->button(QMessageBox::Yes))
                box->button(QMessageBox::Yes)->click();
        });
        agree.start(1);
        choose(button, {path});
    }
};

QTEST_MAIN(TestFullDisk)
#include "tst_full_disk.moc"
