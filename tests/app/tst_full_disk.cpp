#include "common/read_file.h"
#include "common/replace_file.h"
#include "common/tool_settings.h"
#include "download/jpeg_file.h"
#include "ico/ico_library.h"
#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QtTest>

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr off_t readableBytes = 5000;
ino_t brokenFile = 0; ///< breaks off behind `readableBytes`

/// Does `work` while the disk under the file at `path` breaks off in the middle.
template<typename Work>
void onBrokenDisk(const QString &path, const Work &work)
{
    struct stat state = {};
    stat(QFile::encodeName(path), &state);
    brokenFile = state.st_ino;
    work();
    brokenFile = 0;
}

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

/// The system's own read() for all of this program, on a disk that may be broken.
extern "C" ssize_t read(int descriptor, void *buffer, size_t bytes)
{
    struct stat state = {};
    if (brokenFile == 0 || fstat(descriptor, &state) != 0 || state.st_ino != brokenFile)
        return syscall(SYS_read, descriptor, buffer, bytes);
    const off_t left = readableBytes - lseek(descriptor, 0, SEEK_CUR);
    if (left > 0)
        return syscall(SYS_read, descriptor, buffer, qMin(bytes, static_cast<size_t>(left)));
    errno = EIO;
    return -1;
}

/// Files that cannot be written: the old ones stay whole, and no half ones are left. Files that
/// break off while they are read: nothing of them is used.
class TestFullDisk : public WindowTest
{
    Q_OBJECT

private slots:
    void filesAreReplacedWholeOrNotAtAll()
    {
        const QString old = write("old", "old content");
        onFullDisk(20, [&] {
            QVERIFY(!replaceFile(old, randomBytes(100)));
            QCOMPARE(overwriteStart(old, randomBytes(100)), Overwritten::NotWritten);
            QVERIFY(!replaceFile(m_folder->filePath("none"), randomBytes(100)));
        });
        QCOMPARE(content(old), QByteArray("old content"));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList{"old"});
        QVERIFY(!replaceFile(m_folder->filePath("no/such/folder"), "x"));
        QCOMPARE(overwriteStart(old, "new"), Overwritten::Done);
        QCOMPARE(content(old), QByteArray("new content"));
        QCOMPARE(overwriteStart(m_folder->path(), "new"), Overwritten::NotWritten);
        // A pipe keeps whoever opens it waiting, and is not replaced by a file.
        const QString pipe = m_folder->filePath("pipe");
        QCOMPARE(mkfifo(QFile::encodeName(pipe), 0600), 0);
        ReadFault fault = ReadFault::None;
        QVERIFY(!readFile(pipe, &fault) && fault == ReadFault::Unopened);
        QCOMPARE(overwriteStart(pipe, "new"), Overwritten::NotWritten);
        QVERIFY(!QFileInfo(pipe).isFile());
        // These do not tell how large they are, and the second one breaks off at its start.
        QVERIFY(readFile("/proc/self/status")->contains("tst_full_disk"));
        QVERIFY(!readFile("/proc/self/mem"));
    }

    void whatBreaksOffIsNotUsed()
    {
        const QString path = write("1_os.bin", randomBytes(20000));
        choose("chooseFontFile", {path});
        onBrokenDisk(path, [&] {
            for (const char *button : {"openOsFile", "openIcpFile", "openBmpFile", "openJpgFile",
                                       "choosePictureFile", "openCfgFile", "openFile"}) {
                choose(button, {path});
                QCOMPARE(nextBoxes(), QStringList{texts::fileNotRead.in(true)});
            }
            click("downloadFont");
        });
        for (const char *button : {"downloadOsFile", "downloadIcoFile", "downloadJpgFile"})
            click(button);
        QCOMPARE(nextBoxes(), (QStringList{texts::fileNotRead.in(true), "Unselected OS file !",
                                           "Not select file !", "Not select file !"}));
        QCOMPARE(column("crcTableWidget", 0), QStringList());
    }

    void whatCannotBeKeptIsNotTouched()
    {
        const QByteArray old = randomBytes(20000);
        const QString folder = QCoreApplication::applicationDirPath();
        const QString settings = folder + "/SystemConfig.ini";
        const QByteArray oldSettings = content(settings);
        QVERIFY(oldSettings.size() > readableBytes);
        onBrokenDisk(settings, [&] { choose("openIcpFile", {write("9.ICO", old)}); });
        QVERIFY(content(settings) == oldSettings);
        const QString config = write("old.CFG", old);
        onBrokenDisk(config, [&] { choose("createCfgFile", {config}); });
        QVERIFY(content(config) == old);
        const QString font = folder + "/0_ZOLT_ASC.HZK";
        QVERIFY(replaceFile(font, old));
        onBrokenDisk(font, [&] { click("CreatZeroFont"); });
        QVERIFY(content(font) == old && QFile::remove(font));
        QVERIFY(m_boxes->texts.takeFirst().startsWith("old.CFG already exists."));
        const QString notKept = texts::oldFileNotKept.in(true);
        QCOMPARE(m_boxes->texts, (QStringList{notKept, notKept, "Creat finish！"}));
    }

    void jpegsAreCompressedWithoutADisk()
    {
        QImage noise(300, 300, QImage::Format_RGB32);
        const QByteArray bytes = randomBytes(static_cast<int>(noise.sizeInBytes()));
        std::copy(bytes.begin(), bytes.end(), noise.bits());
        const QByteArray large = content(writePicture("large.png", noise));
        Jpeg jpeg;
        onFullDisk(1000, [&] { jpeg = jpegWithin(large, 0xFFFF); });
        QVERIFY(jpeg.bytes.endsWith("\xFF\xD9") && !jpeg.refusal);
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
};

QTEST_MAIN(TestFullDisk)
#include "tst_full_disk.moc"
