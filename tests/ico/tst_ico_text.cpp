#include "ico/ico_library.h"
#include "ico/ico_text.h"
#include "support/random_bytes.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

using Files = QMap<QString, QByteArray>;

Files filesOf(const icoText::Parts &parts)
{
    Files files;
    for (const icoText::Picture &picture : parts.pictures)
        files[picture.name] = icoText::pngOf(picture.icon);
    if (!parts.rest.isEmpty())
        files[icoText::restName] = parts.rest;
    return files;
}

icoText::Library made(const QByteArray &text, const Files &files = {})
{
    return icoText::toLibrary(text, [&files](const QString &name) { return files.value(name); });
}

QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

} // namespace

/// The text form of icon libraries.
class TestIcoText : public QObject
{
    Q_OBJECT

private slots:
    void nothingIsLost()
    {
        QRandomGenerator random(1);
        constexpr int indexBytes = icoLibrary::indexBytes;
        int checked = 0;
        for (int round = 0; round < 60; ++round) {
            // Icons anywhere, in the index too, over each other, with any key colour and no sides.
            QByteArray library(indexBytes, '\0');
            library += randomBytes(random.bounded(2000));
            if (round % 2 == 0)
                library[random.bounded(indexBytes)] = '\x77';
            for (int i = random.bounded(20); i > 0; --i) {
                IconRecord icon;
                const int width = random.bounded(12);
                const int height = random.bounded(12);
                icon.entry = icon::entryOf(width, height, randomBytes(2));
                const int last = (library.size() - 2 * width * height) / 2;
                const int first = random.bounded(4) == 0 ? 0 : qMin(last, indexBytes / 2);
                const int address = first + (last > first ? random.bounded(last - first + 1) : 0);
                if (2 * (address + width * height) <= library.size())
                    library.replace(8 * random.bounded(32768), 8,
                                    icoLibrary::entryAt(icon, static_cast<quint32>(address)));
            }
            QVector<IconRecord> records;
            if (!icoLibrary::read(library, records))
                continue; // an entry fell on the pixels of another, and is none
            const icoText::Parts parts = icoText::fromLibrary(library);
            QCOMPARE(parts.fault, QString());
            const icoText::Library again = made(parts.text, filesOf(parts));
            QCOMPARE(again.fault, QString());
            QVERIFY2(again.bytes == library, parts.text);
            QCOMPARE(again.icons, records.size());
            ++checked;
        }
        QVERIFY(checked > 40);
    }

    void textsAreShortWhereTheWindowWroteTheLibrary()
    {
        // Not even an order needs words: it is that of the pixels.
        const auto library = icoLibrary::write(
            {icon::fromImage(9, picture(1023, 2)), icon::fromImage(3, picture(2, 300))});
        const icoText::Parts parts = icoText::fromLibrary(*library);
        QCOMPARE(parts.text, QByteArray("; K7 icon library\n\n[Library]\n"
                                        "\n[9]\npicture=00009.png\n\n[3]\npicture=00003.png\n"));
        QVERIFY(parts.rest.isEmpty());
        QVERIFY(made(parts.text, filesOf(parts)).bytes == *library);
    }

    void sharedPixelsAreOnePicture()
    {
        auto library = *icoLibrary::write({icon::fromImage(1, picture(3, 3))});
        library.replace(8 * 7, 8, library.mid(8, 8));
        const icoText::Parts parts = icoText::fromLibrary(library);
        QCOMPARE(parts.pictures.size(), 1);
        QVERIFY(made(parts.text, filesOf(parts)).bytes == library);
    }

    void hostileLibrariesAreRefused()
    {
        // Every position has a large picture of its own: 32768 overlap in 4 MB.
        QByteArray library;
        for (int position = 0; position < 32768; ++position)
            library += QByteArray::fromHex("FFFFF002") +
                       QByteArray::fromHex(QByteArray::number(0x10000 + position, 16).mid(1)) +
                       "KC";
        library += QByteArray(2 * (1023 * 1023 + 32768), 'x');
        QVERIFY(icoText::fromLibrary(library).fault.contains("overlap"));
        QVERIFY(icoText::fromLibrary(library.left(262143)).fault.contains("no icon library"));
    }

    void mistakesAreNamed()
    {
        const Files files{{"a.png", icoText::pngOf(icon::fromImage(0, picture(2, 2)))},
                          {"large.png",
                           [] {
                               QByteArray png;
                               QBuffer buffer(&png);
                               buffer.open(QIODevice::WriteOnly);
                               picture(1024, 1).save(&buffer, "PNG");
                               return png;
                           }()},
                          {"text.png", "no picture"}};
        const struct
        {
            const char *text;
            const char *fault;
        } cases[] = {
            {"[1]\npicture=b.png", "line 2, [1]: b.png cannot be read"},
            {"[1]\npicture=text.png", "line 2, [1]: text.png is no picture that can be used"},
            {"[1]\npicture=large.png", "line 2, [1]: large.png is larger than 1023 x 1023"},
            {"[32768]\npicture=a.png",
             "line 2, [32768]: it is neither Library nor an icon, 0 to 32767"},
            {"[1]\nsize=0x0\n[2]\nsize=0x0\n[1]\nsize=0x0",
             "line 6, [1]: the icon stands there twice"},
            {"[1]\nsize=1x1",
             "line 2, [1]: size is not that of an icon without pixels, such as 0x5"},
            {"[1]\naddress=5", "line 2, [1]: it needs either a picture or a size"},
            {"[1]\nsize=0x0\nkeyColor=12345", "line 2, [1]: keyColor is not 4 hexadecimal digits"},
            {"[1]\nsize=0x0\nkeyColor=+F00", "line 2, [1]: keyColor is not 4 hexadecimal digits"},
            {"[Library]\n[1]", "line 2, [1]: it has no key"},
            {"[1]\npicture=a.png\naddress=010",
             "pixels, or the rest, lie on the index where the text has no icon"},
            {"[2]\npicture=a.png\naddress=8",
             "line 2, [2]: the icon would not be read as it is here; pixels lie on other pixels or "
             "on the index, or its size is 0x0"},
            {"[1]\nsize=0x0\naddress=0x10000000", "line 2, [1]: address is not 0 to 0xFFFFFFF"},
            {"[1]\nsize=0x0\nname=x",
             "line 2, [1]: name is no key; known are picture, size, keyColor, address"},
            {"[1]\nsize=0x0\nsize=0x0", "line 3: size stands there twice"},
            {"[Library]\nbytes=262143", "line 2, [Library]: bytes is not 262144 to 1073741824"},
            {"[Library]\nrest=rest.bin", "line 2, [Library]: rest.bin cannot be read"},
            {"[Library]\nbytes=262150\n[1]\npicture=a.png",
             "the icons and the rest take 262152 bytes"},
        };
        for (const auto &c : cases)
            QCOMPARE(made(c.text, files).fault, QString(c.fault));
        QCOMPARE(made("").bytes, QByteArray(262144, '\0'));
    }
};

QTEST_GUILESS_MAIN(TestIcoText)
#include "tst_ico_text.moc"
