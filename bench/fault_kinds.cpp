#include "bench/fault_kinds.h"

#include "simulator/bytes.h"

#include <QFile>
#include <QImage>
#include <QMap>

namespace faultMatrix {

QByteArray Source::bytes(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(static_cast<char>(random.upTo(255)));
    return bytes;
}

QString Source::write(const QString &name, const QByteArray &content) const
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

QByteArray Source::paint(const QString &name, const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    QByteArray pixels;
    for (int i = 0; i < size.width() * size.height(); ++i) {
        const bool isLast = i == size.width() * size.height() - 1;
        const int red = isLast ? 31 : random.upTo(31);
        const int green = isLast ? 63 : random.upTo(63);
        const int blue = isLast ? 31 : random.upTo(31);
        image.setPixel(i % size.width(), i / size.width(), qRgb(red << 3, green << 2, blue << 3));
        k7::appendWord(pixels, static_cast<quint16>(red << 11 | green << 5 | blue));
    }
    if (!image.save(folder.filePath(name)))
        qFatal("cannot paint %s", qPrintable(name));
    return pixels;
}

namespace {

constexpr int blockBytes = k7::Flash::blockBytes;
constexpr int pageBytes = 4096; // what a check covers at a time
const QSize screen(24, 16);

QString numbered(const QString &path, int number)
{
    return QString("%1=%2").arg(path).arg(number);
}

QString sizeText(const QSize &size)
{
    return QString("%1x%2").arg(size.width()).arg(size.height());
}

int missingBlocks(const k7::Module &module, int number, const QByteArray &content)
{
    int missing = 0;
    for (int from = 0; from < content.size(); from += blockBytes) {
        const QByteArray block = content.mid(from, blockBytes);
        missing += module.flash().read(number * blockBytes + from, block.size()) != block ? 1 : 0;
    }
    return missing;
}

Task flash(Source &source)
{
    const int size = source.isLarge ? 2 * blockBytes + pageBytes : 1 + source.random.upTo(12000);
    const QByteArray content = source.bytes(size);
    const int number = source.random.upTo(250);
    return {{"send", numbered(source.write("f.bin", content), number)},
            [&module = source.module, number, content](const QString &) {
                return missingBlocks(module, number, content);
            }};
}

Task icon(Source &source)
{
    const QByteArray content = source.bytes(1 + source.random.upTo(source.isLarge ? 60000 : 20000));
    const int number = source.random.upTo(250);
    return {{"send", numbered(source.write("i.bin", content), number), "--as", "icon"},
            [&module = source.module, number, content](const QString &) {
                return missingBlocks(module, number, content);
            }};
}

Task pictures(Source &source)
{
    Task task{{"send", "--size", sizeText(screen)}, {}};
    QMap<int, QByteArray> wanted;
    for (int i = 0; i < (source.isLarge ? 3 : 1); ++i) {
        const QString name = QString("%1.bmp").arg(i);
        const int number = 3 * source.random.upTo(80) + i;
        wanted.insert(number, source.paint(name, screen));
        task.arguments.append(numbered(source.folder.filePath(name), number));
    }
    task.missing = [&module = source.module, wanted](const QString &) {
        int missing = 0;
        for (auto picture = wanted.begin(); picture != wanted.end(); ++picture)
            missing += module.pictures().value(picture.key()) != picture.value() ? 1 : 0;
        return missing;
    };
    return task;
}

Task bmp(Source &source)
{
    const QSize size{1 + source.random.upTo(99), 1 + source.random.upTo(59)}; // in this order
    const QByteArray pixels = source.paint("p.bmp", size);
    const int number = source.random.upTo(999);
    return {{"send", numbered(source.folder.filePath("p.bmp"), number), "--as", "bmp"},
            [&module = source.module, number, pixels](const QString &) {
                const bool isPaged = module.settings().layout == k7::Layout::K7uid2;
                const QByteArray held =
                    isPaged ? module.pictures().value(number) : module.pictureMemory();
                return held.left(pixels.size()) != pixels ? 1 : 0;
            }};
}

Task jpeg(Source &source)
{
    // Whole words, behind what JPEG files begin with.
    const QByteArray content = "\xFF\xD8\xFF" + source.bytes(1 + 2 * source.random.upTo(2000));
    const QString path = source.write("j.jpg", content);
    const bool isStored = source.isLarge || source.random.happens(500);
    const int first = source.random.upTo(0xFFFF);
    const int second = isStored ? 0 : source.random.upTo(0xFFFF);
    const QStringList arguments =
        isStored ? QStringList{"store", path, "--id", QString::number(first)}
                 : QStringList{"show", path, "--at", QString("%1,%2").arg(first).arg(second)};
    return {arguments,
            [&module = source.module, content, isStored, first, second](const QString &) {
                const k7::ShownJpeg &held = module.jpeg();
                const bool isThere = held.content.left(content.size()) == content &&
                                     held.isStored == isStored && held.first == first &&
                                     (isStored || held.second == second);
                return isThere ? 0 : 1;
            }};
}

Task os(Source &source)
{
    constexpr int bootBytes = 4096;
    const QByteArray content = source.bytes(bootBytes + 1 + source.random.upTo(4000));
    return {{"send", source.write("ZOLTOS.bin", content)},
            [&module = source.module, content](const QString &) {
                bool isThere = module.restarts() > 0;
                for (int i = bootBytes; i < content.size(); i += 2)
                    isThere =
                        isThere && module.vp(static_cast<quint16>(0x1000 + (i - bootBytes) / 2)) ==
                                       k7::wordAt(content, i);
                return isThere ? 0 : 1;
            }};
}

/// A folder with two flash files and two pictures, each of which the module may hold already, all
/// but a byte.
Task project(Source &source, const QString &command)
{
    const int number = source.random.upTo(200);
    const QByteArray files[] = {
        source.bytes(source.isLarge ? blockBytes + pageBytes : 2 * pageBytes),
        source.bytes(pageBytes)};
    QByteArray pixels[2];
    for (int i = 0; i < 2; ++i) {
        source.write(QString("%1_f.bin").arg(number + 3 * i), files[i]);
        pixels[i] = source.paint(QString("%1_p.bmp").arg(i), screen);
        if (source.random.happens(500)) {
            source.module.setFlash((number + 3 * i) * blockBytes, files[i]);
            source.module.setPicture(i, pixels[i]);
        }
        if (source.random.happens(250))
            source.module.setFlash((number + 3 * i) * blockBytes + 5, source.bytes(1));
    }
    return {{command, source.folder.path(), "--size", sizeText(screen)},
            [&module = source.module, number, first = files[0], second = files[1],
             firstPicture = pixels[0], secondPicture = pixels[1]](const QString &) {
                return missingBlocks(module, number, first) +
                       missingBlocks(module, number + 3, second) +
                       (module.pictures().value(0) != firstPicture ? 1 : 0) +
                       (module.pictures().value(1) != secondPicture ? 1 : 0);
            }};
}

Task sync(Source &source)
{
    return project(source, "sync");
}

Task check(Source &source)
{
    return project(source, "check");
}

/// Where words and registers start nothing.
struct Place
{
    QStringList kind; ///< "vp", or "reg" and a page
    bool isRegister;
    int page;
    int address;
    int count;

    explicit Place(k7::Random &random)
        : isRegister(random.happens(500))
        , page(1 + random.upTo(6))
        , address(isRegister ? random.upTo(100) : 0x2000 + random.upTo(0x4000))
        , count(1 + random.upTo(random.happens(700) ? 7 : 149))
    {
        kind = isRegister ? QStringList{"reg", QString::number(page)} : QStringList{"vp"};
        kind.append(QString::number(address));
    }
    int held(const k7::Module &module, int index) const
    {
        return isRegister ? module.registerAt(page, address + index)
                          : module.vp(static_cast<quint16>(address + index));
    }
};

Task read(Source &source)
{
    const Place place(source.random);
    for (int i = 0; i < place.count; ++i) {
        source.module.setVp(static_cast<quint16>(place.address + i),
                            static_cast<quint16>(source.random.upTo(0xFFFF)));
        if (place.isRegister)
            source.module.storeRegisters(place.page, place.address + i, source.bytes(1));
    }
    return {QStringList{"read"} + place.kind + QStringList{QString::number(place.count), "--dec"},
            [&module = source.module, place](const QString &printed) {
                QStringList held;
                for (int i = 0; i < place.count; ++i)
                    held.append(QString::number(place.held(module, i)));
                return printed.simplified() == held.join(' ') ? 0 : 1;
            }};
}

Task write(Source &source)
{
    const Place place(source.random);
    QVector<int> values;
    Task task{QStringList{"write"} + place.kind, {}};
    for (int i = 0; i < place.count; ++i) {
        values.append(source.random.upTo(place.isRegister ? 0xFF : 0xFFFF));
        task.arguments.append(QString::number(values.last()));
    }
    task.arguments.append("--confirm");
    task.missing = [&module = source.module, place, values](const QString &) {
        int missing = 0;
        for (int i = 0; i < place.count; ++i)
            missing += place.held(module, i) != values.at(i) ? 1 : 0;
        return missing;
    };
    return task;
}

} // namespace

const QVector<Kind> kinds{
    {"flash", flash, k7::Layout::K7uid1, true},
    {"flash K7UID3", flash, k7::Layout::K7uid3, false},
    {"pictures", pictures, k7::Layout::K7uid2, true},
    {"bmp linear", bmp, k7::Layout::K7uid1, true},
    {"bmp paged", bmp, k7::Layout::K7uid2, true},
    {"jpeg", jpeg, k7::Layout::K7uid1, true},
    {"jpeg K7UID3", jpeg, k7::Layout::K7uid3, true},
    {"icon units", icon, k7::Layout::K7uid1, true},
    {"icon blocks", icon, k7::Layout::K7uid2, true},
    {"os", os, k7::Layout::K7uid1, true},
    {"sync", sync, k7::Layout::K7uid1, true},
    {"check", check, k7::Layout::K7uid2, false},
    {"read", read, k7::Layout::K7uid1, false},
    {"write", write, k7::Layout::K7uid3, false},
};

} // namespace faultMatrix
