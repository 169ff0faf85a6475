#include "common/read_file.h"
#include "support/row.h"
#include "support/window_test.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

const QString complete = "The download is complete !";
const QString failure = "Communication failure !";

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

} // namespace

/// What ED2 downloads leave open and set on the devices of the system, and do with its odder files.
class TestEd2System : public WindowTest
{
    Q_OBJECT

private slots:
    void init()
    {
        QVERIFY(openWindow(k7::Way::Terminals));
        confirmEd2Rate();
    }

    void stopButtonsCloseTheUartPortAndLeaveTheFlag()
    {
        const QString uart = m_simulator->uartPath();
        const QString ed2 = m_simulator->ed2Path();
        choose("chooseFontFile", {write("1_a.bin", "a")});
        choose("choosePictureFile", {picture("1.png", Qt::red)});
        for (const QString page : {"Font", "Picture"}) {
            const Row row(page);
            m_simulator->setBehaviour({});
            click("download" + page);
            pass(60); // the handshake has been acknowledged
            click("stop" + page);
            QVERIFY(isOpenInTheTool(ed2));
            pass(300); // the data would be on their way
            QCOMPARE(block(1, 1), QByteArray("\xFF"));
            QCOMPARE(module().pictures().value(1), QByteArray());
            click("readVersion");
            COMPARE_SOON(isOpenInTheTool(uart), true);
            click("stop" + page);
            QVERIFY(!isOpenInTheTool(uart));
            QVERIFY(isOpenInTheTool(ed2));
            // The acknowledgement counts for the next write, and for that one only.
            k7::Behaviour silent;
            silent.silent = true;
            m_simulator->setBehaviour(silent);
            click("resetK7");
            COMPARE_SOON(isOpenInTheTool(uart), true);
            COMPARE_SOON(isOpenInTheTool(uart), false);
            QCOMPARE(m_boxes->texts, QStringList());
            click("resetK7");
            QCOMPARE(nextBoxes(), QStringList{failure});
        }
        m_simulator->setBehaviour({});
        click("downloadFont");
        QCOMPARE(nextBoxes(), QStringList{complete});
        QCOMPARE(block(1, 1), QByteArray("a"));
    }

    void ed2IsHeardOnceItsRateIsConfirmed()
    {
        QVERIFY(openWindow(k7::Way::Terminals)); // nothing is confirmed in it
        choose("chooseFontFile", {write("1_a.bin", "a")});
        click("downloadFont");
        QCOMPARE(nextBoxes(), QStringList{failure});
        QCOMPARE(rateOf(m_simulator->ed2Path()), 115200);
        QCOMPARE(module().flash().writtenBlocks(), QList<int>());
        confirmEd2Rate();
        click("downloadFont");
        QCOMPARE(nextBoxes(), QStringList{complete});
        QCOMPARE(rateOf(m_simulator->ed2Path()), 6250000);
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
        find<QComboBox>("srceenSize")->addItem("4X2");
        select("srceenSize", "4X2");
        choose("choosePictureFile", {closed});
        ::close(socket);
        click("downloadPicture");
        QCOMPARE(nextBoxes(), QStringList{"Not select file !"});
        // What is too large keeps its place, as what is no picture does.
        QFile large(m_folder->filePath("3_large.png"));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(maxFileBytes + 1));
        choose("choosePictureFile",
               {picture("2.png", Qt::blue), large.fileName(), write("9_text.png", "no picture")});
        QCOMPARE(nextBoxes(),
                 QStringList({"The file is too large !", "The file is not picture !"}));
        click("downloadPicture");
        QCOMPARE(nextBoxes(), QStringList{complete});
        QCOMPARE(module().pictures(),
                 (QMap<int, QByteArray>{
                     {1, QByteArray::fromHex("001F").repeated(8)}, {2, {}}, {3, {}}}));
    }

private:
    QByteArray block(int number, int bytes)
    {
        return module().flash().read(number * k7::Flash::blockBytes, bytes);
    }
};

QTEST_MAIN(TestEd2System)
#include "tst_ed2_system.moc"
