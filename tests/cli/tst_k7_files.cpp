#include "config/cfg_image.h"
#include "font/zero_font.h"
#include "ico/ico_library.h"
#include "serial/modbus_crc16.h"
#include "support/program.h"
#include "support/random_bytes.h"

#include <QFontDatabase>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run
{
    int code;
    QString output;
    QString errors;

    QVector<QJsonObject> objects() const
    {
        QVector<QJsonObject> objects;
        for (const QString &line : output.split('\n', Qt::SkipEmptyParts))
            objects.append(QJsonDocument::fromJson(line.toUtf8()).object());
        return objects;
    }
};

/// The CRC as the module shows it, computed as that of frames is.
QString crcOf(const QByteArray &bytes)
{
    const quint16 crc = ModbusCrc16::of(bytes);
    return QString::number((crc & 0xFF) << 8 | crc >> 8, 16).toUpper();
}

QImage picture(int width, int height, const QColor &color = Qt::red)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    image.setPixelColor(width - 1, height - 1, Qt::green);
    return image;
}

/// What a program printed, with the same line ends on all systems.
QString linesOf(QByteArray printed)
{
    return QString::fromUtf8(printed.replace("\r\n", "\n"));
}

} // namespace

/// What the program does with files, run as in a container: without a display and without a locale.
class TestK7Files : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
    }

    void crcListsWhatTheModuleStores()
    {
        const QByteArray flash = randomBytes(0x40000 + 0x1000 + 5);
        write("5_font.bin", flash);
        write("ZOLTOS.bin", randomBytes(0x1004));
        write("note.txt", "x");
        write("small/3_s.BIN", "x");
        QVERIFY(picture(3, 2).save(path("12_p.bmp")));
        const QString first = crcOf(flash.left(0x40000));
        const QString second = crcOf(flash.mid(0x40000, 0x1000));
        const QString system = crcOf(randomBytes(0x1004).mid(0x1000));
        const QString pixels = crcOf(QByteArray::fromHex("F800F800F800F800F80007E0"));

        const Run text = run({"crc", "."});
        QCOMPARE(text.code, 0);
        QCOMPARE(text.output, QString("%1  12_p.bmp\n%2  5_font.bin_0\n%3  5_font.bin_1\n%4  "
                                      "ZOLTOS.bin\n")
                                  .arg(pixels, 4)
                                  .arg(first, 4)
                                  .arg(second, 4)
                                  .arg(system, 4));
        QCOMPARE(text.errors, QString("5_font.bin: the last 5 bytes are in no unit\n"));

        const auto json = run({"--json", "crc", "5_font.bin"}).objects();
        QCOMPARE(json.size(), 3);
        QCOMPARE(json.at(1), (QJsonObject{{"format", 1},
                                          {"type", "unit"},
                                          {"file", "5_font.bin"},
                                          {"unit", "5_font.bin_1"},
                                          {"crc", second},
                                          {"block", 6},
                                          {"pages", 1}}));
        QCOMPARE(json.at(2).value("bytes").toInt(), 5);
        QCOMPARE(run({"crc", "small"}).errors,
                 QString("small/3_s.BIN: the last 1 bytes are in no unit\n"));
    }

    void crcGoesOnBehindABadFile()
    {
        write("9_a.bmp", "no picture");
        write("1_b.bin", QByteArray(0x1000, 'x'));
        const Run all = run({"crc", "missing.bin", "9_a.bmp", "note.txt", "1_b.bin"});
        QCOMPARE(all.code, 3);
        QVERIFY(all.output.endsWith(crcOf(QByteArray(0x1000, 'x')) + "  1_b.bin_0\n"));
        for (const char *cause :
             {"missing.bin cannot be read", "9_a.bmp is no picture", "note.txt cannot be read"})
            QVERIFY2(all.errors.contains(cause), qPrintable(all.errors));
    }

    void onlyPlainFilesAreReadAndWhole()
    {
        if (QSysInfo::kernelType() != "linux")
            QSKIP("such files are known to Linux only");
        // Fewer bytes come of this one than it has, as from a disk that breaks off.
        const QString shorter = "/sys/devices/system/cpu/online";
        QStringList files;
        if (QFileInfo(shorter).size() > 100 && QFile::link(shorter, path("1_short.bin")))
            files.append("1_short.bin");
        if (QProcess::execute("mkfifo", {path("1_pipe.bin")}) == 0)
            files.append("1_pipe.bin");
        QVERIFY(!files.isEmpty());
        for (const QString &file : files)
            for (const QStringList &command :
                 {QStringList{"crc"}, {"make", "cfg", "-o", "a.CFG"}, {"--simulate", "send"}}) {
                const Run refused = run(command + QStringList{file});
                QCOMPARE(refused.code, 3);
                QVERIFY2(refused.errors.contains("cannot be read"), qPrintable(refused.errors));
            }
        QVERIFY(!QFile::exists(path("a.CFG")));
    }

    void librariesGoToPicturesAndBack()
    {
        QVERIFY(QDir().mkpath(path("p")));
        QVERIFY(picture(30, 20).save(path("p/5_a.png")));
        QVERIFY(picture(300, 2, Qt::blue).save(path("p/2_b.bmp")));
        QCOMPARE(run({"make", "ico", "p", "-o", "a.ICO"}).code, 0);
        QByteArray library = *icoLibrary::write(
            {icon::fromImage(2, picture(300, 2, Qt::blue)), icon::fromImage(5, picture(30, 20))});
        QVERIFY(read("a.ICO") == library);
        // Another key colour, an icon with the pixels of another, and bytes that no icon uses.
        library.replace(2 * 8 + 6, 2, "KC");
        library.replace(9 * 8, 8, library.mid(5 * 8, 8));
        library[8 * 100 + 7] = 1;
        library += "tail";
        write("a.ICO", library);
        QCOMPARE(run({"show-file", "a.ICO", "-o", "shown"}).code, 0);
        for (const char *from : {"shown", "shown/library.ini"}) {
            QCOMPARE(run({"make", "ico", from, "-o", "b.ICO"}).code, 0);
            QVERIFY(read("b.ICO") == library);
        }
        // The text alone is printed, too.
        QCOMPARE(run({"show-file", "a.ICO"}).output.toUtf8(), read("shown/library.ini"));
    }

    void iconsAreAddedAndReplaced()
    {
        QVERIFY(picture(3, 3, Qt::blue).save(path("5_new.png")));
        const QByteArray old = *icoLibrary::write({icon::fromImage(5, picture(2, 2))});
        const QByteArray replaced =
            *icoLibrary::write({icon::fromImage(5, picture(3, 3, Qt::blue))});
        for (const auto &[how, expected] :
             {std::pair(QString("--add"), old), {"--replace", replaced}}) {
            write("lib.ICO", old);
            QCOMPARE(run({"make", "ico", "5_new.png", how, "-o", "lib.ICO"}).code, 0);
            QVERIFY2(read("lib.ICO") == expected, qPrintable(how));
        }
        QCOMPARE(run({"make", "ico", "5_new.png", "--add", "--replace", "-o", "lib.ICO"}).code, 2);
        QCOMPARE(run({"make", "ico", "5_new.png", "--add", "-o", "none.ICO"}).code, 3);
    }

    void nothingIsMadeOfDamagedPictures()
    {
        write("p/1_a.png", "no picture");
        write("p/readme.txt", "x");
        QVERIFY(picture(1, 1).save(path("p/2_good.png")));
        QVERIFY(picture(1, 1).save(path("40000_b.png")));
        for (const QStringList &pictures :
             {QStringList{"p"}, {"40000_b.png"}, {"missing.png"}, {"p/readme.txt"}})
            QCOMPARE(run(QStringList{"make", "ico"} + pictures + QStringList{"-o", "x.ICO"}).code,
                     3);
        QVERIFY(!QFile::exists(path("x.ICO")));
        QCOMPARE(run({"make", "bmp", "p", "--size", "4x4", "-o", "out"}).code, 3);
    }

    void picturesGetTheSizeOfTheScreen()
    {
        write("p/readme.txt", "x");
        QVERIFY(picture(4, 2).save(path("p/logo.final.png")));
        QVERIFY(picture(2, 2, Qt::blue).save(path("p/7_b.gif.png")));
        const Run made = run({"make", "bmp", "p", "--size", "8x6", "-o", "out/new"});
        QCOMPARE(made.code, 0);
        QCOMPARE(made.errors, QString("p/readme.txt is no picture and is left out\n"));
        QCOMPARE(made.output, QString("out/new/7_b.bmp\nout/new/logo.bmp\n"));
        QCOMPARE(QImage(path("out/new/logo.bmp")),
                 picture(4, 2).scaled(8, 6, Qt::IgnoreAspectRatio, Qt::FastTransformation));
        QCOMPARE(run({"make", "bmp", "p", "--numbered", "--size", "8X6", "-o", "out"}).output,
                 QString("out/7_7_b.bmp\nout/8_logo.bmp\n"));
        QVERIFY(picture(2, 2).save(path("Logo.png"))); // one file on a memory card
        QCOMPARE(run({"make", "bmp", "p", "Logo.png", "--size", "8x6", "-o", "out"}).code, 2);
        QCOMPARE(run({"make", "bmp", "p", "--size", "8", "-o", "out"}).code, 2);
    }

    void fontsAreThoseOfTheWindow()
    {
        GlyphStyle style;
        style.font = QFont("DejaVu Sans", 8);
        const auto make = [&style] { return zeroFont::make(style, [](int) {}); };
        QCOMPARE(run({"-q", "make", "font", "DejaVu Sans", "-o", "f.HZK"}).code, 0);
        QVERIFY(read("f.HZK") == make());
        style.font = QFontDatabase().font("DejaVu Sans", "Bold", 8);
        style.horScale = 2;
        style.verShift = -9;
        QCOMPARE(run({"make", "font", "DejaVu Sans", "--style", "Bold", "--hor-scale", "2",
                      "--ver-shift", "-9", "-o", "f.HZK"})
                     .code,
                 0);
        QVERIFY(read("f.HZK") == make());
        const Run missing = run({"make", "font", "No Such Font", "-o", "g.HZK"});
        QCOMPARE(missing.code, 3);
        QVERIFY(missing.errors.startsWith("k7: there is no font family No Such Font\n"));
        QCOMPARE(run({"make", "font", "DejaVu Sans", "--style", "None", "-o", "g.HZK"}).code, 3);
        QVERIFY(!QFile::exists(path("g.HZK")));
    }

    void configurationsGoToTextAndBack()
    {
        QByteArray image = "K7D2" + randomBytes(196);
        write("a.CFG", image);
        QCOMPARE(run({"show-file", "a.CFG", "-o", "shown"}).code, 0);
        QCOMPARE(run({"make", "cfg", "shown/a.ini", "-o", "b.CFG"}).code, 0);
        QVERIFY(read("b.CFG") == image);
        write("one.ini", "[Backlight]\nnormal=77\n");
        QCOMPARE(run({"make", "cfg", "one.ini", "--base", "a.CFG", "-o", "b.CFG"}).code, 0);
        QVERIFY(read("b.CFG") == image.replace(12, 1, "M"));
        const Run alone = run({"make", "cfg", "one.ini", "-o", "c.CFG"});
        QCOMPARE(alone.code, 3);
        QVERIFY(alone.errors.startsWith("k7: one.ini: Module/"));
        QCOMPARE(run({"make", "cfg", "one.ini", "--base", "one.ini", "-o", "c.CFG"}).code, 3);
        QVERIFY(!QFile::exists(path("c.CFG")));
        write("d.CFG", "no");
        QCOMPARE(run({"show-file", "d.CFG"}).code, 3);
        QCOMPARE(run({"show-file", "one.ini"}).code, 2);
        const auto json = run({"--json", "show-file", "a.CFG"}).objects();
        QCOMPARE(json.at(0).value("groups").toObject().value("Module").toObject().value("layout"),
                 QJsonValue("K7UID2"));
    }

    void unwritableFilesAreTold()
    {
        write("one.ini", "[Module]\nlayout=K7UID1\nbaudRate=9600\n");
        const auto told =
            run({"--json", "make", "cfg", "one.ini", "-o", "no/folder.CFG"}).objects();
        QCOMPARE(told.at(0).value("type"), QJsonValue("error"));
        QCOMPARE(told.at(0).value("code"), QJsonValue(3));
    }

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void write(const QString &name, const QByteArray &content)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    QByteArray read(const QString &name)
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void prepare(QProcess &program)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "LANG", "LC_ALL"})
            environment.remove(name);
        program.setProcessEnvironment(environment);
        program.setWorkingDirectory(m_folder->path());
    }
    Run run(const QStringList &arguments)
    {
        QProcess program;
        prepare(program);
        program.start(K7, arguments);
        const int code = exitCodeOf(program);
        return {code, linesOf(program.readAllStandardOutput()),
                linesOf(program.readAllStandardError())};
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_MAIN(TestK7Files)
#include "tst_k7_files.moc"
