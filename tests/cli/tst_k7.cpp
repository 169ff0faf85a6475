#include "cli/cli.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"
#include "support/random_bytes.h"

#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

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

/// What a command prints, from a file that is its stdout or stderr.
class Printed
{
public:
    explicit Printed(const QString &path)
        : m_file(std::fopen(QFile::encodeName(path), "w+b"), std::fclose)
    {
    }

    std::FILE *file() const { return m_file.get(); }
    QString text() const
    {
        std::rewind(m_file.get());
        QByteArray bytes;
        for (int c; (c = std::fgetc(m_file.get())) != EOF;)
            bytes.append(static_cast<char>(c));
        return QString::fromUtf8(bytes);
    }

private:
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> m_file;
};

} // namespace

/// Commands on a module that is as slow as a real one, in a time that is theirs and the module's:
/// they take no longer than their work, and end the same however busy the computer is.
class K7Test : public QObject
{
    Q_OBJECT

private:
    static constexpr int blockBytes = 256 * 1024;

    /// Runs a command in the project's folder.
    Run run(const QStringList &arguments)
    {
        const Printed out(m_folder->filePath("out"));
        const Printed err(m_folder->filePath("err"));
        Cli cli({out.file(), err.file(), [this] { return links(); }});
        std::vector<std::string> words; // the last one first
        for (const QString &argument : arguments)
            words.insert(words.begin(), argument.toStdString());
        const auto refused = cli.read(words);
        const int code = refused ? *refused : cli.runCommand();
        return {code, out.text().split('\n', Qt::SkipEmptyParts), err.text()};
    }
    Links links()
    {
        Links links = k7::directLinks(*m_module);
        if (m_otherModule)
            links.ed2 = k7::directLinks(*m_otherModule).ed2;
        links.time = k7::timeOf(*m_time);
        return links;
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
    std::unique_ptr<k7::SharedTime> m_time;
    std::unique_ptr<k7::Simulator> m_module;
    std::unique_ptr<k7::Simulator> m_otherModule; ///< to which ED2 leads, if there is one

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_module.reset();
        m_otherModule.reset();
        m_time = std::make_unique<k7::SharedTime>(k7::SharedTime::Pace::OfTheLoop);
        m_module = std::make_unique<k7::Simulator>(k7::ModuleSettings(), m_time.get());
        setBehaviour(-1, false);
        QVERIFY(m_module->start(k7::Way::InProcess));
        for (const auto &[name, value] : {std::pair("XDG_CACHE_HOME", m_folder->filePath("cache")),
                                          {"XDG_CONFIG_HOME", m_folder->filePath("config")},
                                          {"K7_UART2", m_module->uartPath()},
                                          {"K7_ED2", m_module->ed2Path()}})
            qputenv(name, value.toLocal8Bit());
        write("project/k7.ini", "[project]\nsize=8x4\n[pictures]\n9=logo.png\n");
        write("project/7_ui.ICO", randomBytes(blockBytes + 4096));
        paint("project/1_a.bmp", Qt::red);
        paint("project/logo.png", Qt::blue);
        QVERIFY(QDir::setCurrent(m_folder->filePath("project")));
    }

    void cleanup() { QDir::setCurrent(QDir::rootPath()); } // so that the folder can go

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

    void numbersThatNoModuleHasAreLeftOut()
    {
        write("project/256_a.bin", randomBytes(4096));
        write("project/20261122003045_a.bin", randomBytes(4096));
        QCOMPARE(run({"sync", "--only", "2*"}).of("left out").size(), 2);
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

    void firstBlockShowsThatEd2LeadsToAnotherModule()
    {
        m_otherModule = std::make_unique<k7::Simulator>(k7::ModuleSettings(), m_time.get());
        QVERIFY(m_otherModule->start(k7::Way::InProcess));
        const Run sync = run({"sync"});
        QCOMPARE(sync.code, 6);
        QVERIFY2(sync.errors.contains("Do both ports lead"), qPrintable(sync.errors));
        QVERIFY(m_otherModule->module().flash().read(8 * blockBytes, 16) == QByteArray(16, '\xFF'));
    }

    void readsEndWithTheirReply()
    {
        for (const auto &[arguments, limit] :
             {std::pair(QStringList{"read", "vp", "0x1000", "2000"}, 500), {{"info"}, 200}}) {
            const qint64 start = m_time->milliseconds();
            QCOMPARE(run(arguments).code, 0);
            QVERIFY2(m_time->milliseconds() - start < limit,
                     qPrintable(QString::number(m_time->milliseconds() - start)));
        }
    }

    void lateAndLostAnswersAreAwaited()
    {
        k7::Behaviour behaviour;
        behaviour.realTime = true;
        behaviour.latency = 40;
        behaviour.jitter = 20;
        behaviour.lost = 20;
        m_module->setBehaviour(behaviour);
        const Run sync = run({"-v", "sync"});
        QVERIFY2(sync.code == 0, qPrintable(sync.errors));
        QVERIFY(run({"-v", "read", "vp", "0", "20000"}).errors.contains("sent again (1)"));
    }

    void portsAreFoundByTryingThem()
    {
        k7::ModuleSettings settings;
        settings.format.crcEnabled = true;
        settings.uartRate = 9600;
        m_module = std::make_unique<k7::Simulator>(settings, m_time.get());
        QCOMPARE(run({"find", "SIM-UART2"}).code, 4);
        QVERIFY(m_module->start(k7::Way::InProcess));
        const Run found = run({"find", "SIM-UART2"});
        QVERIFY2(found.code == 0 && found.errors.contains("115200 bit/s, CRC on"),
                 qPrintable(found.errors));
        QCOMPARE(found.lines.mid(1), (QStringList{"[SIM-UART2]", "uart2 = SIM-UART2@9600",
                                                  "header = 5AA5", "crc = true"}));
        QCOMPARE(run({"--header", "1234", "find", "SIM-UART2"}).code, 5);
        QCOMPARE(run({"find"}).code, 2);
    }

    void eachProjectOfARunHasItsOwnDevice()
    {
        write("project/strict/k7.ini", "[project]\nsize=8x4\nid=0000000000000002\n");
        write("project/strict/9_a.bin", randomBytes(4096));
        write("script", "page 1\nsync strict");
        const Run all = run({"run", "../script"});
        QVERIFY2(all.code == 4 && all.errors.contains("0000000000000002"), qPrintable(all.errors));
        QCOMPARE(module().picturePage(), 1);
        QVERIFY(module().flash().read(9 * blockBytes, 16) == QByteArray(16, '\xFF'));
    }

    void unpluggedModuleGetsTheRestTheSecondTime()
    {
        setBehaviour(blockBytes + 2000,
                     false); // in the second block, behind the check of all units
        Run sync = run({"sync"});
        QVERIFY2(sync.code == 5 && sync.errors.contains("went away"), qPrintable(sync.errors));
        QCOMPARE(sync.of("sent"), QStringList());
        setBehaviour(-1, false);
        QVERIFY(m_module->start(k7::Way::InProcess));
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
        write("project/script", script);
        const Run all = run({"--log", "log", "run", "script"});
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

    void curvesFillTheirFrames()
    {
        k7::ModuleSettings settings;
        settings.format.crcEnabled = true;
        m_module = std::make_unique<k7::Simulator>(settings, m_time.get());
        QVERIFY(m_module->start(k7::Way::InProcess));
        QStringList command{"--uart2", m_module->uartPath(), "--crc", "curve", "-c", "0"};
        for (int sample = 0; sample < 300; ++sample)
            command.append(QString::number(sample));
        QCOMPARE(run(command).code, 0);
        QCOMPARE(module().curve(0).size(), 300);
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
        write("project/20261122003045_backup.bin", randomBytes(4096));
        write("project/bad/k7.ini", "[project]\nrate=5\n");
        write("project/strict/k7.ini", "[project]\nid=0000000000000002\n");
        write("config/k7/devices.ini",
              "[other]\nid=0000000000000001\n[far]\nuart2=/dev/far\n"
              "[far.spare]\nuart2=/dev/spare\n[default]\nuart2=/dev/default\n"
              "[half]\nuart2=" +
                  m_module->uartPath().toUtf8() + '\n');
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
            {{"--latency", "16", "info"}, 2, "--simulate"},
            {{"--device", "bench", "info"}, 2, "bench"},
            {{"--device", "other,far", "--ed2", "x", "info"}, 2, "--ed2"},
            {{"--device", "far,far", "info"}, 2, "twice"},
            {{"--device", "other", "sync", "strict"}, 2, "2, and \"other\" has 0000000000000001"},
            {{"sync", "bad"}, 2, "rate"},
            {{"send", "logo.txt"}, 2, "logo.txt"},
            {{"send", "logo.png=256"}, 2, "the number 256"},
            {{"send", "20261122003045_backup.bin"}, 2, "the number 20261122003045"},
            {{"check", "20261122003045_backup.bin"}, 2, "the number 20261122003045"},
            {{"sync", "nowhere"}, 3, "nowhere"},
            {{"send", "8_no.png"}, 3, "not picture"},
            {{"store", "8_no.png", "--id", "5"}, 3, "no JPEG"},
            {{"show", "1_a.bmp", "--at", "0,0"}, 3, "no JPEG"},
            {{"curve", "-c", "0", "1", "-c", "0", "2"}, 2, "Give all samples of a channel"},
            {{"--wait", "nan", "info"}, 2, "--wait"},
            {{"read", "vp", "0", "--watch", "nan"}, 2, "--watch"},
            {{"send", "7_ui.ICO", "8_x.bin"}, 3, "both need flash block 8"},
            {{"--uart2", "/dev/none", "info"}, 4, "there is no port /dev/none"},
            {{"--ed2", m_module->uartPath(), "page"}, 4, "that of the other link"},
            {{"--device", "far", "info"}, 4, "there is no port /dev/far"},
            {{"--device", "far.spare", "info"}, 4, "there is no port /dev/spare"},
            {{"--device", "default", "info"}, 4, "there is no port /dev/default"},
            {{"--device", "half", "send", "8_x.bin"}, 4, "no port is named for ED2"},
            {{"--device", "other", "page", "7"}, 4, "0123456789abcdef"},
            {{"--uart2", m_module->uartPath() + "@9600", "info"}, 5, "9600 bit/s"},
            {{"--uart2", m_module->uartPath() + "@9600", "curve", "-c", "0", "1"}, 5, "no reply"},
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

    void absentPortIsWaitedFor()
    {
        m_module->hangUp();
        QCOMPARE(run({"page"}).code, 4);
        const qint64 start = m_time->milliseconds();
        connect(m_time.get(), &k7::SharedTime::passed, m_module.get(), [this, start] {
            if (m_time->milliseconds() == start + 1000)
                m_module->start(k7::Way::InProcess);
        });
        QCOMPARE(run({"page", "--wait", "0.5"}).code, 4);
        QCOMPARE(run({"page", "--wait", "5"}).lines, QStringList{"0"});
        // So is a module that is switched on late.
        k7::Behaviour behaviour;
        behaviour.silent = true;
        m_module->setBehaviour(behaviour);
        QCOMPARE(run({"page"}).code, 5);
        const qint64 on = m_time->milliseconds() + 4000;
        connect(m_time.get(), &k7::SharedTime::passed, m_module.get(), [this, on] {
            if (m_time->milliseconds() == on)
                setBehaviour(-1, false);
        });
        QCOMPARE(run({"page", "--wait", "10"}).lines, QStringList{"0"});
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
        write("script", script);
        QStringList lines = run({"--json", "-v", "run", "../script"}).lines;
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
                                  (kind.contains("null") && value.isNull()) ||
                                  (kind.startsWith("text") && value.isString()) ||
                                  (kind.startsWith("list") && value.isArray()) ||
                                  (kind.startsWith("truth") && value.isBool()) ||
                                  name == "format" || name == "type";
                QVERIFY2(fits, qPrintable(name + " of " + line));
            }
        }
        QVERIFY2(types.size() >= 12, qPrintable(QStringList(types.values()).join(' ')));
    }
};

QTEST_GUILESS_MAIN(K7Test)
#include "tst_k7.moc"
