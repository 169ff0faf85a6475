#include "common/read_file.h"
#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPainter>
#include <QProgressBar>
#include <QTableWidget>
#include <QtTest>

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

/// The module's pixels of `image` at `width` x `height`, by the definition.
QByteArray expectedPixels(const QImage &image, int width, int height)
{
    const QImage scaled =
        image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::FastTransformation);
    QByteArray bytes;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QColor color = scaled.pixelColor(x, y);
            const int word =
                (color.red() >> 3) << 11 | (color.green() >> 2) << 5 | color.blue() >> 3;
            bytes.append(static_cast<char>(word >> 8)).append(static_cast<char>(word & 0xFF));
        }
    }
    return bytes;
}

/// The simulated module has the device open once, the tool a second time.
bool isOpenInTheTool(const QString &device)
{
    int opens = 0;
    for (const QFileInfo &file : QDir("/proc/self/fd").entryInfoList(QDir::Files | QDir::System))
        opens += file.symLinkTarget() == device ? 1 : 0;
    return opens == 2;
}

/// The rate of a terminal in bit/s, also one that has no name of its own.
int rateOf(const QString &device)
{
    const int terminal = ::open(qPrintable(device), O_RDONLY | O_NOCTTY | O_NONBLOCK);
    termios2 settings{};
    ::ioctl(terminal, TCGETS2, &settings);
    ::close(terminal);
    return static_cast<int>(settings.c_ospeed);
}

void confirmSettings()
{
    for (auto *button : QApplication::activeModalWidget()->findChildren<QPushButton *>())
        if (button->text() == "确定")
            button->click();
}

} // namespace

/// Files and pictures on their way to the simulated module, through the real window.
class TestEd2Downloads : public WindowTest
{
    Q_OBJECT

private slots:
    void filesStandInTheirFlashBlocks()
    {
        const QByteArray large = randomBytes(2 * k7::Flash::blockBytes + 1);
        const QByteArray small = randomBytes(1000);
        choose("chooseFontFile", {write("32_large.dzk", large), write("7.empty.bin", ""),
                                  write("40_small.ICO", small)});
        QCOMPARE(cell("fontPath", 0, 0), QString("32"));
        QCOMPARE(cell("fontPath", 2, 1), m_folder->filePath("40_small.ICO"));
        click("downloadFont");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QVERIFY(block(32, large.size()) == large);
        QCOMPARE(block(34, 2), large.right(1) + '\xFF');
        QCOMPARE(block(40, small.size()), small);
        QCOMPARE(block(7, 4), QByteArray::fromHex("FFFFFFFF"));
        QCOMPARE(module().flash().writtenBlocks(), (QList<int>{7, 32, 33, 34, 40}));
        QCOMPARE(find<QProgressBar>("fontProgressBar")->value(), 100);
    }

    void positionsAreTakenFromTheTable()
    {
        choose("chooseFontFile", {write("1_a.bin", "aa"), write("b.bin", "bb")});
        QCOMPARE(cell("fontPath", 1, 0), QString());
        click("downloadFont");
        QCOMPARE(m_boxes->texts, QStringList{"The 1 row position is not number !"});
        m_boxes->texts.clear();
        // The low 8 bits count: 256 is block 0, -1 is block 255.
        find<QTableWidget>("fontPath")->item(0, 0)->setText("256");
        find<QTableWidget>("fontPath")->item(1, 0)->setText("-001");
        click("downloadFont");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QCOMPARE(block(0, 2), QByteArray("aa"));
        QCOMPARE(block(255, 2), QByteArray("bb"));
        // The number's plain text shows once the table is filled again.
        choose("chooseFontFile", {write("2_c.bin", "c")});
        QCOMPARE(cell("fontPath", 1, 0), QString("-1"));
    }

    void filesThatAreMissingAreSkipped()
    {
        const QString gone = write("1_gone.bin", "x");
        choose("chooseFontFile", {gone});
        QVERIFY(QFile::remove(gone));
        click("downloadFont");
        runEventLoop(50);
        QCOMPARE(m_boxes->texts, QStringList());
        QCOMPARE(module().flash().writtenBlocks(), QList<int>());
        choose("chooseFontFile", {write("2_here.bin", "y")});
        click("downloadFont");
        waitForBox();
        QCOMPARE(module().flash().writtenBlocks(), QList<int>{2});
    }

    void emptyListsAreRefused()
    {
        for (const char *button : {"downloadFont", "downloadPicture"}) {
            m_boxes->texts.clear();
            click(button);
            QCOMPARE(m_boxes->texts, QStringList{"Not select file !"});
        }
        m_dialog->selectLanguage("中文");
        m_boxes->texts.clear();
        click("downloadFont");
        QCOMPARE(m_boxes->texts, QStringList{"未选中文件 !"});
    }

    void rowsAreDeletedOneByOneAndAllAtOnce()
    {
        const QString first = write("1_a.bin", "a");
        choose("chooseFontFile", {first, write("2_b.bin", "b")});
        choose("chooseFontFile", {first});
        auto *table = find<QTableWidget>("fontPath");
        QCOMPARE(table->rowCount(), 3);
        click("deleteFontFile");
        QCOMPARE(table->rowCount(), 3);
        table->setCurrentCell(0, 1);
        click("deleteFontFile");
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(cell("fontPath", 0, 0), QString("2"));
        click("deleteFontAll");
        QCOMPARE(table->rowCount(), 0);
    }

    void configurationFilesJoinAndLeaveTheList()
    {
        m_dialog->setDefaultFolder("/project/ZOLT_SET");
        auto *table = find<QTableWidget>("fontPath");
        choose("chooseFontFile", {write("13_own.bin", "a")});
        find<QCheckBox>("touchConfig")->click();
        find<QCheckBox>("variableConfig")->click();
        QCOMPARE(table->rowCount(), 3);
        QCOMPARE(cell("fontPath", 1, 1), QString("/project/ZOLT_SET/13触控配置文件.bin"));
        QCOMPARE(cell("fontPath", 2, 0), QString("14"));
        // The first entry with the number goes, whoever added it.
        find<QCheckBox>("touchConfig")->click();
        QCOMPARE(table->rowCount(), 2);
        QCOMPARE(cell("fontPath", 0, 1), QString("/project/ZOLT_SET/13触控配置文件.bin"));
        find<QCheckBox>("variableConfig")->click();
        QCOMPARE(table->rowCount(), 1);
    }

    void silentModuleEndsTheDownload()
    {
        k7::Behaviour silent;
        silent.silent = true;
        m_simulator->setBehaviour(silent);
        m_boxes->answers = false;
        choose("chooseFontFile", {write("1_a.bin", randomBytes(300000))});
        click("downloadFont");
        // However long the box stays, nothing more goes out.
        QList<int> blocksMeanwhile;
        QTimer::singleShot(2500, this, [&] {
            QVERIFY(QApplication::activeModalWidget());
            blocksMeanwhile = module().flash().writtenBlocks();
            m_boxes->answers = true;
        });
        waitForBox();
        runEventLoop(50);
        QCOMPARE(m_boxes->texts, QStringList{failure});
        QCOMPARE(blocksMeanwhile, QList<int>{1});
        QCOMPARE(block(1, 1), QByteArray("\xFF"));
    }

    void pulledAdapterEndsTheDownload_data()
    {
        QTest::addColumn<int>("received"); // bytes of 300 000, before the module is gone
        for (int tenth = 0; tenth < 10; ++tenth)
            QTest::addRow("tenth %d", tenth) << 30000 * tenth;
    }

    void pulledAdapterEndsTheDownload()
    {
        QFETCH(const int, received);
        k7::Behaviour unplugged;
        unplugged.hangUpAfter = received;
        m_simulator->setBehaviour(unplugged);
        choose("chooseFontFile", {write("1_a.bin", randomBytes(300000))});
        click("downloadFont");
        waitForBox();
        runEventLoop(100);
        QCOMPARE(m_boxes->texts.size(), 1);
        QVERIFY((QStringList{failure, "Serial opening failed !"}).contains(m_boxes->texts.first()));
        QVERIFY(find<QProgressBar>("fontProgressBar")->value() < 100);
    }

    void stoppedDownloadStartsAgain()
    {
        const QByteArray content = randomBytes(k7::Flash::blockBytes + 5);
        choose("chooseFontFile", {write("8_a.bin", content)});
        click("downloadFont");
        runEventLoop(400);
        click("stopFont");
        runEventLoop(600);
        QCOMPARE(module().flash().writtenBlocks(), QList<int>{8});
        QCOMPARE(m_boxes->texts, QStringList());
        click("downloadFont");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QVERIFY(block(8, content.size()) == content);
    }

    void stopButtonsCloseTheUartPortAndLeaveTheFlag_data()
    {
        QTest::addColumn<QString>("page");
        QTest::newRow("fonts") << "Font";
        QTest::newRow("pictures") << "Picture";
    }

    void stopButtonsCloseTheUartPortAndLeaveTheFlag()
    {
        QFETCH(const QString, page);
        const QString uart = m_simulator->uartPath();
        const QString ed2 = m_simulator->ed2Path();
        choose("choose" + page + "File",
               {page == "Font" ? write("1_a.bin", "a") : picture("1.png", Qt::red)});
        click("download" + page);
        runEventLoop(60); // the handshake has been acknowledged
        click("stop" + page);
        QVERIFY(isOpenInTheTool(ed2));
        click("readVersion");
        runEventLoop(20);
        QVERIFY(isOpenInTheTool(uart));
        click("stop" + page);
        QVERIFY(!isOpenInTheTool(uart));
        QVERIFY(isOpenInTheTool(ed2));
        // The acknowledgement counts for the next write, and for that one only.
        k7::Behaviour silent;
        silent.silent = true;
        m_simulator->setBehaviour(silent);
        click("resetK7");
        runEventLoop(150);
        QCOMPARE(m_boxes->texts, QStringList());
        click("resetK7");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{failure});
    }

    void ed2RunsAtItsRateOnceThatIsConfirmed()
    {
        choose("chooseFontFile", {write("1_a.bin", "a")});
        for (const int rate : {115200, 6250000}) {
            click("downloadFont");
            runEventLoop(20);
            click("stopFont");
            QCOMPARE(rateOf(m_simulator->ed2Path()), rate);
            QTimer::singleShot(0, this, [] { confirmSettings(); });
            click("serialSet_2");
        }
    }

    void sizeChosenDuringADownloadIsForTheNext()
    {
        auto *sizes = find<QComboBox>("srceenSize");
        sizes->setCurrentText("480X272");
        choose("choosePictureFile", {picture("1.png", Qt::red)});
        click("downloadPicture");
        runEventLoop(800);
        sizes->setCurrentText("320X240"); // its pictures take 745 ms
        choose("choosePictureFile", {picture("2.png", Qt::blue)});
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
    }

    void dataAndRowsPartWhereAFileCannotBeOpened()
    {
        // A socket is a file that exists and cannot be opened, by nobody.
        const QString closed = m_folder->filePath("1_closed.png");
        const QByteArray path = QFile::encodeName(closed);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path, sizeof address.sun_path);
        const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
        QCOMPARE(::bind(socket, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
        choose("choosePictureFile", {closed});
        ::close(socket);
        click("downloadPicture");
        QCOMPARE(m_boxes->texts, QStringList{"Not select file !"});
        m_boxes->texts.clear();
        // What is too large keeps its place, as what is no picture does.
        QFile large(m_folder->filePath("3_large.png"));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(maxFileBytes + 1));
        choose("choosePictureFile", {picture("2.png", Qt::blue), large.fileName()});
        QCOMPARE(m_boxes->texts, QStringList{"The file is too large !"});
        m_boxes->texts.clear();
        click("downloadPicture");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QCOMPARE(module().pictures().keys(), (QList<int>{1, 2}));
        QCOMPARE(module().pictures().value(1).left(2), QByteArray::fromHex("001F"));
        QCOMPARE(module().pictures().value(2), QByteArray());
    }

    void picturesArriveAtTheScreenSize()
    {
        QImage image(64, 48, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setPen(Qt::NoPen);
        for (int i = 0; i < 16; ++i) {
            painter.setBrush(QColor(i * 16, 255 - i * 13, i * 7, i % 2 == 0 ? 255 : 90));
            painter.drawRect(i * 4, 2 * i, 20, 18);
        }
        painter.end();
        const QImage opaque = image.convertToFormat(QImage::Format_RGB888);
        QStringList paths;
        for (const auto &[name, picture] :
             {std::pair(QString("1_alpha.png"), image),
              {"2_opaque.png", opaque},
              {"3_photo.jpg", opaque},
              {"4_bitmap.bmp", opaque},
              {"5_palette.png", opaque.convertToFormat(QImage::Format_Indexed8)},
              {"6_mono.png", opaque.convertToFormat(QImage::Format_Mono)}}) {
            paths.append(m_folder->filePath(name));
            QVERIFY(picture.save(paths.last()));
        }
        // The smallest picture of its format: one red pixel.
        paths.append(
            write("7_red.gif", QByteArray::fromHex("474946383761010001008000 00FF0000 000000"
                                                   "2C000000000100010000 02024401003B")));
        auto *sizes = find<QComboBox>("srceenSize");
        sizes->addItem("100X50");
        sizes->setCurrentText("100X50");
        choose("choosePictureFile", paths);
        QCOMPARE(m_boxes->texts, QStringList());
        sizes->setCurrentText("320X240"); // too late for these
        click("downloadPicture");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        for (int i = 0; i < paths.size(); ++i)
            QCOMPARE(module().pictures().value(i + 1).toHex(),
                     expectedPixels(QImage(paths.at(i)), 100, 50).toHex());
        QCOMPARE(find<QProgressBar>("pictureProgressBar")->value(), 100);
    }

    void picturesThatAreNoneTakeTheirPlace()
    {
        choose("choosePictureFile", {write("9_text.png", "no picture")});
        QCOMPARE(m_boxes->texts, QStringList{"The file is not picture !"});
        m_boxes->texts.clear();
        click("downloadPicture");
        waitForBox();
        QCOMPARE(m_boxes->texts, QStringList{complete});
        QCOMPARE(module().pictures().value(9, "none"), QByteArray());
    }

    void screenSizesThatAreNoneAreRefused()
    {
        const QString path = m_folder->filePath("1.p.png");
        QVERIFY(QImage(2, 2, QImage::Format_RGB32).save(path));
        auto *sizes = find<QComboBox>("srceenSize");
        for (const char *size : {"480x272", "1X2X3", "0X5", "-4X-4", "60000X60000", "X"}) {
            m_boxes->texts.clear();
            sizes->addItem(size);
            sizes->setCurrentText(size);
            choose("choosePictureFile", {path});
            QCOMPARE(m_boxes->texts, QStringList{"The srceen size error !"});
        }
        QCOMPARE(find<QTableWidget>("picturePath")->rowCount(), 6);
    }

    void choicesAreRemembered()
    {
        const QStringList paths{write("1_a.bin", "a"), write("2_b.bin", "b")};
        choose("chooseFontFile", paths);
        choose("chooseFontFile", {});
        QCOMPARE(find<QTableWidget>("fontPath")->rowCount(), 2);
        m_dialog.reset();
        const QSettings settings(QCoreApplication::applicationDirPath() + "/SystemConfig.ini",
                                 QSettings::IniFormat);
        QCOMPARE(settings.value("DefaultPath/fontDefaultPath").toStringList(), paths);
    }

private:
    QString cell(const QString &table, int row, int column)
    {
        return find<QTableWidget>(table)->item(row, column)->text();
    }
    QByteArray block(int number, int bytes)
    {
        return module().flash().read(number * k7::Flash::blockBytes, bytes);
    }
};

QTEST_MAIN(TestEd2Downloads)
#include "tst_ed2_downloads.moc"
