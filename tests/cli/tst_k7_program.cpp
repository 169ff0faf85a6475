#include "simulator/simulator.h"
#include "support/program.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>

namespace {

struct Run
{
    int code;
    QStringList lines; // of the results
    QString errors;
};

} // namespace

/// What takes the program itself, as it is run from a shell: its ports, signals, input and
/// children.
class TestK7Program : public QObject
{
    Q_OBJECT

private:
    using WhileRunning = std::function<void(QProcess &)>;

    /// Calls `whenItSpeaks` once the program says something.
    Run run(const QStringList &arguments, const QByteArray &input = {},
            const WhileRunning &whenItSpeaks = {})
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"K7_UART2", "K7_ED2", "K7_DEVICE"})
            environment.remove(name);
        environment.insert(m_variables);
        environment.insert("XDG_CACHE_HOME", m_folder.filePath("cache"));
        environment.insert("XDG_CONFIG_HOME", m_folder.filePath("config"));
        QProcess program;
        program.setProcessEnvironment(environment);
        program.start(K7, arguments);
        program.write(input);
        if (whenItSpeaks) {
            runEventLoopUntil([&] { return program.bytesAvailable() > 0; });
            whenItSpeaks(program);
        } else {
            program.closeWriteChannel();
        }
        const int code = exitCodeOf(program);
        return {code, QString(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts),
                program.readAllStandardError()};
    }
    void write(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder.filePath(name);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QStringList onModule(const QStringList &arguments) const
    {
        return QStringList{"--uart2", m_module.uartPath()} + arguments;
    }

    QTemporaryDir m_folder;
    k7::Simulator m_module;
    QProcessEnvironment m_variables; ///< of the environment

private slots:
    void init()
    {
        m_variables.clear();
        QVERIFY(m_module.start());
    }

    void linesOfTheInputAreCommands()
    {
        const Run all = run(onModule({"run", "-"}), "# two\npage 5\n\npage\n");
        QVERIFY2(all.code == 0, qPrintable(all.errors));
        QCOMPARE(all.lines, QStringList{"5"});
    }

    void interruptionEndsTheProgram()
    {
        for (const auto &[signal, command] :
             {std::pair(SIGINT, QStringList{"read", "vp", "0", "--watch", "0.1"}),
              {SIGHUP, {"run", "-"}}}) {
            const Run watched =
                run(onModule(command), "read vp 0\n", [number = signal](QProcess &program) {
                    ::kill(static_cast<pid_t>(program.processId()), number);
                });
            QCOMPARE(watched.code, 130);
            QCOMPARE(watched.lines.first(), QString("0x0123"));
            QCOMPARE(watched.errors, QString("k7: interrupted\n"));
        }
    }

    void filesThatChangeAreSent()
    {
        const QString folder = m_folder.filePath("watched");
        write("watched/k7.ini", "[project]\nsize=8x4\n");
        write("watched/7_a.bin", QByteArray(4096, 'a'));
        write("watched/8_b.bin", QByteArray(4096, 'b'));
        QByteArray said;
        const Run watched =
            run({"--simulate", "sync", folder, "--watch"}, {}, [this, &said](QProcess &program) {
                const auto says = [&](const char *text, int times) {
                    runEventLoopUntil([&] {
                        return (said += program.readAllStandardOutput()).count(text) >= times;
                    });
                };
                says("2 sent, 0 unchanged", 1);
                write("watched/8_b.bin", QByteArray(4096, 'c'));
                says("1 sent, 0 unchanged", 1);
                write("watched/9_new.bin", QByteArray(8192, 'd'));
                says("1 sent, 0 unchanged", 2);
                ::kill(static_cast<pid_t>(program.processId()), SIGINT);
            });
        QCOMPARE(watched.code, 130);
        QCOMPARE(said.count("7_a.bin"), 2); // sent and verified
        QVERIFY(said.contains("verified       9_new.bin"));
    }

    /// As by `head`.
    void outputThatNobodyReadsEndsTheProgram()
    {
        QProcess shell;
        shell.start("sh", {"-c", R"(("$0" "$@"; echo $? >&2) | head -n 1)", K7, "--simulate",
                           "read", "vp", "0", "--watch", "0.1"});
        QCOMPARE(exitCodeOf(shell), 0);
        QCOMPARE(shell.readAllStandardError(), QByteArray("k7: interrupted\n130\n"));
    }

    /// One of two modules is silent: the other one is served, and the table tells.
    void devicesAreServedSideBySide()
    {
        k7::Simulator silent;
        k7::Behaviour behaviour;
        behaviour.silent = true;
        silent.setBehaviour(behaviour);
        QVERIFY(silent.start());
        write("config/k7/devices.ini",
              "[a]\nuart2=" + m_module.uartPath().toUtf8() +
                  "\nid=0123456789ABCDEF\n[b]\nuart2=" + silent.uartPath().toUtf8() + '\n');
        const Run both = run({"--device", "a,b", "page", "3"});
        QCOMPARE(both.code, 5);
        QCOMPARE(both.lines, QStringList({"a    0  done", "b    5  no answer"}));
        QVERIFY2(both.errors.startsWith("b: k7: no acknowledgement"), qPrintable(both.errors));
        QCOMPARE(m_module.module().picturePage(), 3);
        // Each reads the whole input, and ends with the program, also when that is killed.
        const QString log = m_folder.filePath("log");
        QCOMPARE(run({"--device", "a,b", "--log", log, "run", "-"}, "page\n").lines,
                 QStringList({"a: 3", "a    0  done", "b    5  no answer"}));
        QVERIFY(QFile::exists(log + ".a"));
        QString child;
        run({"--device", "a,b", "read", "vp", "0", "--watch", "100"}, {}, [&](QProcess &program) {
            QFile children(QString("/proc/%1/task/%1/children").arg(program.processId()));
            QVERIFY(children.open(QIODevice::ReadOnly));
            child = QString(children.readAll()).section(' ', 0, 0);
            program.kill();
        });
        QVERIFY(!child.isEmpty());
        const auto hasEnded = [&] { return !QFile::exists("/proc/" + child + "/exe"); };
        runEventLoopUntil(hasEnded);
        QVERIFY(hasEnded());
        m_variables.insert("K7_DEVICE", "a");
        QCOMPARE(run({"page"}).lines, QStringList{"3"});
    }

    void simulatedModuleNeedsNoPort()
    {
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(Qt::blue);
        QVERIFY(image.save(m_folder.filePath("3_logo.png")));
        const Run sync =
            run({"--simulate", "sync", m_folder.path(), "--only", "*.png", "--size", "8x4"});
        QVERIFY2(sync.code == 0, qPrintable(sync.errors));
        QCOMPARE(sync.lines.filter("verified").size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestK7Program)
#include "tst_k7_program.moc"
