#include "common/event_loop.h"
#include "simulator/simulator.h"
#include "support/random_bytes.h"

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <memory>

namespace {

/// How a run of the program ended, and what it said.
struct Run
{
    int code;
    QStringList lines; // of the results
    QString errors;

    /// The results that begin with `status`, as people read it.
    QStringList of(const QString &status) const
    {
        QStringList found;
        for (const QString &line : lines)
            if (line.startsWith(status + ' '))
                found.append(line.mid(status.size()).trimmed());
        return found;
    }
};

} // namespace

/// The program as it is run from a shell, on a module that is as slow as a real one.
class K7Test : public QObject
{
    Q_OBJECT

private:
    static constexpr int blockBytes = 256 * 1024;

    QProcessEnvironment environment() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("XDG_CACHE_HOME", m_folder->filePath("cache"));
        environment.insert("XDG_CONFIG_HOME", m_folder->filePath("config"));
        environment.insert("K7_UART2", m_module->uartPath());
        environment.insert("K7_ED2", m_module->ed2Path());
        return environment;
    }
    /// Runs the program in the project's folder; `whileRunning` is called once it says something.
    Run run(const QStringList &arguments, const QByteArray &input = {},
            const std::function<void(QProcess &)> &whenItSpeaks = {})
    {
        QProcess program;
        program.setProcessEnvironment(environment());
        program.setWorkingDirectory(m_folder->filePath("project"));
        program.start(K7, arguments);
        program.write(input);
        program.closeWriteChannel();
        if (whenItSpeaks) {
            runEventLoopUntil([&] { return program.bytesAvailable() > 0; });
            whenItSpeaks(program);
        }
        runEventLoopUntil([&] { return program.state() == QProcess::NotRunning; }, 60000);
        const QString output = QString::fromUtf8(program.readAllStandardOutput());
        const bool isNormal = program.exitStatus() == QProcess::NormalExit;
        return {isNormal ? program.exitCode() : -1, output.split('\n', Qt::SkipEmptyParts),
                QString::fromUtf8(program.readAllStandardError())};
    }
    void write(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder->filePath(name);
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    void paint(const QString &name, const QColor &color)
    {
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(color);
        QVERIFY(image.save(m_folder->filePath(name)));
    }
    k7::Module &module() { return m_module->module(); }
    void setBehaviour(int hangUpAfter, bool isProtected)
    {
        k7::Behaviour behaviour;
        behaviour.realTime = true;
        behaviour.hangUpAfter = hangUpAfter;
        behaviour.flashProtected = isProtected;
        m_module->setBehaviour(behaviour);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<k7::Simulator> m_module;

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_module = std::make_unique<k7::Simulator>();
        setBehaviour(-1, false);
        QVERIFY(m_module->start());
        write("project/k7.ini", "[project]\nsize=8x4\n[pictures]\n9=logo.png\n");
        write("project/7_ui.ICO", randomBytes(blockBytes + 4096));
        paint("project/1_a.bmp", Qt::red);
        paint("project/logo.png", Qt::blue);
    }

    void syncSendsOnlyWhatDiffers()
    {
        Run sync = run({"sync"});
        QVERIFY2(sync.code == 0, qPrintable(sync.errors));
        QCOMPARE(sync.of("sent"),
                 QStringList({"7_ui.ICO: flash blocks 7, 8 differed", "1_a.bmp: picture 1 differed",
                              "logo.png: picture 9 differed"}));
        QCOMPARE(sync.of("verified").size(), 3);
        const QByteArray flash = randomBytes(blockBytes + 4096);
        QVERIFY(module().flash().read(7 * blockBytes, flash.size()) == flash);
        QCOMPARE(module().pictures().value(1), QByteArray::fromHex("F800").repeated(8 * 4));

        // One changed picture: two lines, all else unchanged.
        paint("project/1_a.bmp", Qt::green);
        QCOMPARE(run({"sync", "--dry-run"}).code, 1);
        sync = run({"sync"});
        QCOMPARE(sync.code, 0);
        QCOMPARE(sync.of("sent"), QStringList{"1_a.bmp: picture 1 differed"});
        QCOMPARE(sync.of("verified"), QStringList{"1_a.bmp: the module holds it"});
        QCOMPARE(sync.of("unchanged").size(), 2);
        QCOMPARE(module().pictures().value(1), QByteArray::fromHex("07E0").repeated(8 * 4));

        // A byte of the flash flips: that block, not the others.
        module().setFlash(8 * blockBytes + 5,
                          QByteArray(1, static_cast<char>(~flash.at(blockBytes + 5))));
        QCOMPARE(run({"check", "7_ui.ICO"}).code, 1);
        sync = run({"sync"});
        QCOMPARE(sync.code, 0);
        QCOMPARE(sync.of("sent"), QStringList{"7_ui.ICO: flash block 8 differed"});
        QVERIFY(module().flash().read(7 * blockBytes, flash.size()) == flash);
        QCOMPARE(run({"sync", "--dry-run"}).code, 0);
        QCOMPARE(run({"sync", "--dry-run", "--only", "*.png"}).lines.size(), 2);
    }

    void flashThatKeepsNothingIsTold()
    {
        setBehaviour(-1, true);
        const Run sync = run({"sync", "--only", "*.ICO"});
        QCOMPARE(sync.code, 6);
        QCOMPARE(sync.of("sent again").size(), 1);
        QVERIFY2(sync.errors.contains("7_ui.ICO (flash blocks 7, 8)"), qPrintable(sync.errors));
        QCOMPARE(run({"--json", "sync", "--no-verify", "--only", "*.ICO"}).code, 0);
    }

    void unpluggedModuleGetsTheRestTheSecondTime()
    {
        setBehaviour(blockBytes + 2000,
                     false); // in the second block, behind the check of all units
        Run sync = run({"sync"});
        QVERIFY2(sync.code == 5 && sync.errors.contains("went away"), qPrintable(sync.errors));
        QCOMPARE(sync.of("sent"), QStringList());
        setBehaviour(-1, false);
        QVERIFY(m_module->start());
        sync = run({"sync"});
        QVERIFY2(sync.code == 0, qPrintable(sync.errors));
        QCOMPARE(sync.of("sent").first(), QString("7_ui.ICO: flash block 8 differed"));
        QCOMPARE(run({"sync", "-n"}).code, 0);
    }

    /// What no check covers is sent unless the file is as it was, and nobody else was there.
    void uncoveredBytesAreSentWhenNothingSpeaksForThem()
    {
        write("project/13_touch.bin", randomBytes(4096 + 300));
        const QStringList command{"sync", "--only", "13*"};
        QCOMPARE(run(command).of("verified"),
                 QStringList{"13_touch.bin: but for its last 300 bytes, which no check covers"});
        QCOMPARE(run(command).of("unchanged").size(), 1);
        QFile file(m_folder->filePath("project/13_touch.bin"));
        QVERIFY(file.open(QIODevice::ReadWrite) &&
                file.setFileTime(QDateTime::currentDateTime().addSecs(5),
                                 QFileDevice::FileModificationTime));
        const QStringList tail{"13_touch.bin: for its last 300 bytes, which no check covers"};
        QCOMPARE(run(command).of("sent"), tail);
        QCOMPARE(run(command).of("sent"), QStringList());
        // A file of another project was there meanwhile, the same but for its end, and unchecked.
        write("other/13_touch.bin", randomBytes(4096 + 300).left(4096 + 200));
        QCOMPARE(run({"sync", "../other", "--no-verify"}).of("sent").size(), 1);
        QCOMPARE(run(command).of("sent"), tail);
        module().setFlash(13 * blockBytes, QByteArray(blockBytes, '\xFF'));
        QCOMPARE(run(command).of("sent"),
                 QStringList{"13_touch.bin: flash block 13 differed, and for its last 300 bytes, "
                             "which no check covers"});
    }

    void filesGoOverEitherLink()
    {
        const QByteArray content = randomBytes(5000);
        write("project/20_a.bin", content);
        // 40 chunks of 128 bytes and more, a chunk about every 19 ms.
        Run sent = run({"send", "20_a.bin", "--link", "uart2"});
        QVERIFY2(sent.code == 0, qPrintable(sent.errors));
        QCOMPARE(module().flash().read(20 * blockBytes, content.size()), content);
        QCOMPARE(run({"send", "logo.png=3", "--size", "2x2"}).code, 0);
        QCOMPARE(module().pictures().value(3), QByteArray::fromHex("001F").repeated(4));
        sent = run({"send", "logo.png", "--link", "uart2", "--all"});
        QCOMPARE(sent.of("not verifiable"), QStringList{"logo.png: no check covers it"});
        QCOMPARE(module().pictureMemory(), QByteArray::fromHex("001F").repeated(8));
        write("project/ZOLTOS.bin", randomBytes(4096 + 600));
        QCOMPARE(run({"send", "ZOLTOS.bin"}).of("verified").size(), 1);
        QCOMPARE(module().restarts(), 1);
    }

    void commandsReachTheModule()
    {
        struct Row
        {
            QString command;
            QString output;
        };
        const Row rows[] = {
            {"write vp 0x100 1 0x0203 --confirm", ""},
            {"read vp 0x100 2", "0x0001 0x0203"},
            {"read vp 0x101 --dec", "515"},
            {"write reg 2 010 255", ""},
            {"read reg 2 10", "0xFF"},
            {"read vp 0x7C 4 --text", "ZOLT_SET"},
            {"page 5", ""},
            {"page", "5"},
            {"backlight 80 10 30", ""},
            {"backlight", "80 10 30"},
            {"play 2 1 64", ""},
            {"curve -c 0 1 2 3 -c 7 4 5 6", ""},
            {"nor from-vp 0x20000 0x100 2", ""},
            {"reset module", ""},
            {"raw 5AA504 83000F01", "5A A5 06 83 00 0F 01 45 21"},
            {"reset system", ""},
        };
        QByteArray script = "# all on one connection\n\n";
        QStringList expected;
        for (const Row &row : rows) {
            script += row.command.toUtf8() + '\n';
            if (!row.output.isEmpty())
                expected.append(row.output);
        }
        const Run all = run({"--log", "log", "run", "-"}, script);
        QVERIFY2(all.code == 0, qPrintable(all.errors));
        QFile log(m_folder->filePath("project/log"));
        QVERIFY(log.open(QIODevice::ReadOnly) &&
                log.readAll().contains(" UART2 > 5A A5 04 83 00 14 01\n"));
        QCOMPARE(all.lines, expected);
        QCOMPARE(module().music().position, 2);
        QCOMPARE(module().curve(7), QVector<quint16>({4, 5, 6}));
        QCOMPARE(module().flash().read(0x40000, 4), QByteArray::fromHex("00010203"));
        QCOMPARE(module().resets(), 1);
        QCOMPARE(module().restarts(), 1);
    }

    void jpegFilesAreShownAndStored()
    {
        paint("project/p.jpg", Qt::yellow);
        QCOMPARE(run({"show", "p.jpg", "--at", "10,20"}).code, 0);
        QCOMPARE(module().jpeg().second, 20);
        QCOMPARE(run({"store", "p.jpg", "--id", "300"}).code, 0);
        QVERIFY(module().state().storedJpegs.contains(300));
    }

    void failuresHaveTheirCodes()
    {
        write("project/8_no.png", "no picture");
        write("project/8_x.bin", randomBytes(4096));
        write("project/bad/k7.ini", "[project]\nrate=5\n");
        write("config/k7/devices.ini", "[other]\nid=0000000000000001\n");
        struct Row
        {
            QStringList arguments;
            int code;
            QString cause;
        };
        const Row rows[] = {
            {{}, 2, "a command is missing"},
            {{"fly"}, 2, "fly"},
            {{"page", "65536"}, 2, "65536"},
            {{"read", "vp", "0xFFFF", "2"}, 2, "the memory ends"},
            {{"--uart2", "x@230400", "info"}, 2, "x@230400"},
            {{"--header", "5A", "info"}, 2, "5A"},
            {{"--device", "bench", "info"}, 2, "bench"},
            {{"sync", "bad"}, 2, "rate"},
            {{"send", "logo.txt"}, 2, "logo.txt"},
            {{"send", "logo.png=256"}, 2, "the number 256"},
            {{"sync", "nowhere"}, 3, "nowhere"},
            {{"send", "8_no.png"}, 3, "not picture"},
            {{"send", "7_ui.ICO", "8_x.bin"}, 3, "both need flash block 8"},
            {{"--uart2", "/dev/none", "info"}, 4, "there is no port /dev/none"},
            {{"--device", "other", "page", "7"}, 4, "0123456789abcdef"},
            {{"--uart2", m_module->uartPath() + "@9600", "info"}, 5, "9600 bit/s"},
            {{"--header", "1234", "page", "7"}, 5, "12 34 07 82 00 84 5A 01 00 07"},
        };
        for (const Row &row : rows) {
            const Run failed = run(row.arguments);
            QVERIFY2(failed.code == row.code && failed.errors.contains(row.cause),
                     qPrintable(row.arguments.join(' ') + ": " + QString::number(failed.code) +
                                ' ' + failed.errors));
            QCOMPARE(failed.lines, QStringList());
        }
        QCOMPARE(module().picturePage(), 0);
    }

    void interruptionEndsTheProgram()
    {
        const Run watched = run({"read", "vp", "0", "--watch", "0.1"}, {}, [](QProcess &program) {
            ::kill(static_cast<pid_t>(program.processId()), SIGINT);
        });
        QCOMPARE(watched.code, 130);
        QVERIFY(watched.lines.first() == "0x0123" && watched.errors == "k7: interrupted\n");
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
              "[a]\nuart2=" + m_module->uartPath().toUtf8() +
                  "\nid=0123456789ABCDEF\n[b]\nuart2=" + silent.uartPath().toUtf8() + '\n');
        QProcessEnvironment bare = environment();
        const auto served = [&](const QStringList &arguments) {
            QProcess program;
            bare.remove("K7_UART2"); // it would count more than devices.ini
            program.setProcessEnvironment(bare);
            program.start(K7, arguments);
            runEventLoopUntil([&] { return program.state() == QProcess::NotRunning; }, 20000);
            return Run{program.exitCode(),
                       QString(program.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts),
                       program.readAllStandardError()};
        };
        const Run both = served({"--device", "a,b", "page", "3"});
        QCOMPARE(both.code, 5);
        QCOMPARE(both.lines, QStringList({"a    0  done", "b    5  no answer"}));
        QVERIFY2(both.errors.startsWith("b: k7: no acknowledgement"), qPrintable(both.errors));
        QCOMPARE(module().picturePage(), 3);
        bare.insert("K7_DEVICE", "a");
        QCOMPARE(served({"page"}).lines, QStringList{"3"});
    }

    /// Every object is one that the documentation describes, member for member.
    void jsonIsAsDocumented()
    {
        QFile documentation(K7_DOCUMENTATION);
        QVERIFY(documentation.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(documentation.readAll());
        const QJsonObject schema =
            QJsonDocument::fromJson(text.section("```json\n", 1, 1).section("```", 0, 0).toUtf8())
                .object();
        QVERIFY(!schema.isEmpty());
        QByteArray script = "info\npage 1\npage\nbacklight\nread vp 0\nread reg 1 2\nraw 00\n"
                            "write vp 0 1\nwrite reg 1 2 3\ncurve -c 0 1\nsync --dry-run";
        QStringList lines = run({"--json", "-v", "run", "-"}, script).lines;
        lines += run({"--json", "check", "."}).lines + run({"--json", "page", "x"}).lines +
                 run({"--json", "ports"}).lines + run({"--json", "completion", "zsh"}).lines;
        QSet<QString> types;
        for (const QString &line : qAsConst(lines)) {
            const QJsonObject object = QJsonDocument::fromJson(line.toUtf8()).object();
            const QString type = object.value("type").toString();
            types.insert(type);
            QCOMPARE(object.value("format").toInt(), 1);
            const QJsonObject members = schema.value(type).toObject();
            QVERIFY2(!members.isEmpty(), qPrintable(line));
            for (const QString &name : object.keys()) {
                const QString kind = members.value(name).toString();
                const QJsonValue value = object.value(name);
                const bool fits = (kind.startsWith("number") && value.isDouble()) ||
                                  (kind.startsWith("text") && value.isString()) ||
                                  (kind.startsWith("list") && value.isArray()) ||
                                  (kind.startsWith("truth") && value.isBool()) ||
                                  name == "format" || name == "type";
                QVERIFY2(fits, qPrintable(name + " of " + line));
            }
        }
        QVERIFY2(types.size() >= 12, qPrintable(QStringList(types.values()).join(' ')));
    }

    void absentPortIsWaitedFor()
    {
        const QString port = m_folder->filePath("port");
        QTimer::singleShot(300, this, [&] { QFile::link(m_module->uartPath(), port); });
        QCOMPARE(run({"--uart2", port, "--wait", "10", "page"}).lines, QStringList{"0"});
    }

    void simulatedModuleNeedsNoPort()
    {
        const Run sync = run({"--simulate", "sync", "--only", "*.png"});
        QVERIFY2(sync.code == 0, qPrintable(sync.errors));
        QCOMPARE(sync.of("verified").size(), 1);
    }
};

QTEST_GUILESS_MAIN(K7Test)
#include "tst_k7.moc"
