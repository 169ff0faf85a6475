#include "simulator/pseudo_terminal.h"
#include "support/event_loop.h"
#include "support/program.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Result
{
    int exitCode;
    QString errors;
};

/// Starts the program, terminates it once both terminals are there, and waits for its end.
Result runUntilReady(const QStringList &options)
{
    QProcess program;
    program.start(K7_SIMULATOR, options);
    QByteArray output;
    runEventLoopUntil([&] {
        output += program.readAllStandardOutput();
        return output.count('\n') >= 2 || program.state() == QProcess::NotRunning;
    });
    const bool isReady = output.startsWith("UART2 /dev/") && output.contains("\nED2 /dev/");
    program.terminate();
    const int code = exitCodeOf(program);
    return {isReady ? code : -1, program.readAllStandardError()};
}

} // namespace

/// The simulator as it is started from a shell.
class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void badOptionsAreRefused()
    {
        const std::pair<QStringList, QString> rows[] = {
            {{"--delay", "soon"}, "--delay"},
            {{"--split=-1"}, "--split"},
            {{"--hang-up-after", "2147483648"}, "--hang-up-after"},
            {{"--header", "5AA"}, "--header"},
            {{"--header", "0x5A"}, "--header"},
            {{"--layout", "K7UID4"}, "--layout"},
            {{"--uart-rate", "0"}, "--uart-rate"},
            {{"--screen", "0x272"}, "--screen"},
            {{"--dump", ""}, "--dump"},
            {{"--fast"}, "fast"},
            {{"--crc", "COM1"}, "COM1"},
        };
        for (const auto &[options, named] : rows) {
            QProcess program;
            program.start(K7_SIMULATOR, options);
            QCOMPARE(exitCodeOf(program), 2);
            const QStringList lines = QString(program.readAllStandardError()).split('\n');
            const QString error = lines.value(lines.size() - 2);
            QVERIFY2(error.startsWith("k7-simulator: ") && error.contains(named),
                     qPrintable(error));
            QCOMPARE(program.readAllStandardOutput(), QByteArray());
        }
    }

    void answersOnASerialPort()
    {
        k7::PseudoTerminal tool; // what the port is connected with
        QVERIFY(tool.open());
        QByteArray received;
        connect(&tool, &k7::Wire::received, this,
                [&received](const QByteArray &bytes) { received += bytes; });
        QProcess program;
        program.start(K7_SIMULATOR, {"--uart-port", tool.path(), "--uart-rate", "9600"});
        runEventLoopUntil([&] { return program.canReadLine(); });
        QCOMPARE(program.readLine(), "UART2 " + tool.path().toLatin1() + '\n');
        tool.write(QByteArray::fromHex("5AA50483000F01"));
        COMPARE_SOON(received.toHex(), QByteArray("5aa50683000f014521"));
        tool.hangUp();
        QCOMPARE(exitCodeOf(program), 0);
        program.start(K7_SIMULATOR, {"--ed2-port", "/dev/no-such-port"});
        QCOMPARE(exitCodeOf(program), 1);
        QCOMPARE(program.readAllStandardError(),
                 QByteArray("k7-simulator: cannot open /dev/no-such-port\n"));
    }

    void dumpsItsMemoryWhenItIsTerminated()
    {
        QTemporaryDir folder;
        const QStringList options{"--screen", "480x272", "--dump", folder.path()};
        QCOMPARE(runUntilReady(options).exitCode, 0);
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files, QDir::Name),
                 QStringList({"registers.bin", "vp.bin"}));
        QVERIFY(QFile::remove(folder.filePath("vp.bin")) && QDir(folder.path()).mkdir("vp.bin"));
        const Result failed = runUntilReady(options);
        QVERIFY2(failed.errors.contains(folder.path()), qPrintable(failed.errors));
        QCOMPARE(failed.exitCode, 1);
    }
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
