#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// The simulator as it is started from a shell.
class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void badOptionsAreRefused_data();
    void badOptionsAreRefused();
    void dumpsItsMemoryWhenItIsTerminated();
    void unwritableDumpFails();
};

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
    while (output.count('\n') < 2 && program.waitForReadyRead())
        output += program.readAllStandardOutput();
    const bool isReady = output.startsWith("UART2 /dev/") && output.contains("\nED2 /dev/");
    program.terminate();
    const bool ended = program.waitForFinished() && program.exitStatus() == QProcess::NormalExit;
    return {isReady && ended ? program.exitCode() : -1, program.readAllStandardError()};
}

} // namespace

void ProgramTest::badOptionsAreRefused_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("named");
    QTest::newRow("no number") << QStringList({"--delay", "soon"}) << "--delay";
    QTest::newRow("negative") << QStringList({"--split=-1"}) << "--split";
    QTest::newRow("too large") << QStringList({"--hang-up-after", "2147483648"})
                               << "--hang-up-after";
    QTest::newRow("short header") << QStringList({"--header", "5AA"}) << "--header";
    QTest::newRow("header not hexadecimal") << QStringList({"--header", "0x5A"}) << "--header";
    QTest::newRow("empty folder") << QStringList({"--dump", ""}) << "--dump";
    QTest::newRow("unknown option") << QStringList({"--fast"}) << "fast";
    QTest::newRow("stray argument") << QStringList({"--crc", "COM1"}) << "COM1";
}

void ProgramTest::badOptionsAreRefused()
{
    QFETCH(QStringList, options);
    QFETCH(QString, named);
    QProcess program;
    program.start(K7_SIMULATOR, options);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 2);
    const QString errors = program.readAllStandardError();
    QVERIFY2(errors.startsWith("k7-simulator: ") && errors.contains(named), qPrintable(errors));
    QCOMPARE(program.readAllStandardOutput(), QByteArray());
}

void ProgramTest::dumpsItsMemoryWhenItIsTerminated()
{
    QTemporaryDir folder;
    const Result result = runUntilReady({"--dump", folder.path()});
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files, QDir::Name),
             QStringList({"registers.bin", "vp.bin"}));
}

void ProgramTest::unwritableDumpFails()
{
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir("vp.bin"));
    const Result result = runUntilReady({"--dump", folder.path()});
    QVERIFY2(result.errors.contains(folder.path()), qPrintable(result.errors));
    QCOMPARE(result.exitCode, 1);
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
