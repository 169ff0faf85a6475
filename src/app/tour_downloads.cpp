#include "app/tour_person.h"

#include "common/read_file.h"

#include <QTableWidget>

namespace {

const QString downloaded = "The download is complete !";
constexpr int blockBytes = k7::Flash::blockBytes;

bool flashHolds(TourPerson &person, int block, const QByteArray &content)
{
    return person.module().flash().read(block * blockBytes, content.size()) == content;
}

bool showPage(TourPerson &person, int page)
{
    person.set("picSetPage", page);
    if (!person.pressUntil("picSetQuery", [&] { return person.module().picturePage() == page; }))
        return false;
    person.set("picSetPage", 0);
    return person.pressUntil("picSetRead", [&] { return person.value("picSetPage") == page; });
}

bool fontFile(TourPerson &person)
{
    const QByteArray content = tourPattern(300000);
    const QString path = person.write("32_text.bin", content);
    person.choose("chooseFontFile", {path});
    return person.pressAndRead("downloadFont", downloaded) && flashHolds(person, 32, content) &&
           person.crcHolds(path);
}

bool configFiles(TourPerson &person)
{
    const QByteArray touch = tourPattern(5000);
    const QByteArray variables = tourPattern(9000);
    const QString touchPath = person.write("13触控配置文件.bin", touch);
    const QString variablePath = person.write("14变量配置文件.bin", variables);
    person.dialog().setDefaultFolder(person.folder());
    person.click("deleteFontAll");
    person.check("touchConfig", true);
    person.check("variableConfig", true);
    const bool isSent = person.pressAndRead("downloadFont", downloaded);
    person.check("touchConfig", false);
    person.check("variableConfig", false);
    return isSent && person.find<QTableWidget>("fontPath")->rowCount() == 0 &&
           flashHolds(person, 13, touch) && flashHolds(person, 14, variables) &&
           person.crcHolds(touchPath) && person.crcHolds(variablePath);
}

/// Starts a download of two blocks, stops it while the first one is on its way, and waits for
/// longer than the second one would take to follow.
bool stopped(TourPerson &person, const char *start, const char *stop)
{
    person.boxes().texts.clear();
    person.click(start);
    person.pass(400);
    person.click(stop);
    person.pass(800);
    return person.boxes().texts.isEmpty();
}

bool stopFont(TourPerson &person)
{
    const QByteArray content = tourPattern(blockBytes + 5000);
    const QString path = person.write("60_stopped.bin", content);
    person.choose("chooseFontFile", {path});
    return stopped(person, "downloadFont", "stopFont") &&
           flashHolds(person, 60, content.left(blockBytes)) &&
           !person.module().flash().writtenBlocks().contains(61) &&
           person.pressAndRead("downloadFont", downloaded) && flashHolds(person, 60, content) &&
           person.crcHolds(path);
}

bool picture(TourPerson &person)
{
    person.select("srceenSize", "480X272");
    const QImage image = tourDrawing({480, 272}, 200);
    const QString path = person.write("5_start.bmp", image);
    person.choose("choosePictureFile", {path});
    return person.pressAndRead("downloadPicture", downloaded) &&
           person.module().pictures().value(5) == naivePixels(image) && person.crcHolds(path) &&
           showPage(person, 5);
}

bool stopPicture(TourPerson &person)
{
    const QImage image = tourDrawing({480, 272}, 280);
    person.click("deletePictureAll");
    person.choose("choosePictureFile",
                  {person.write("20_a.bmp", image), person.write("21_b.bmp", image)});
    const bool isStopped = stopped(person, "downloadPicture", "stopPicture");
    person.click("deletePictureAll");
    return isStopped && person.module().pictures().value(20) == naivePixels(image) &&
           !person.module().pictures().contains(21);
}

bool pagedBmp(TourPerson &person)
{
    const QImage image = tourDrawing({480, 30}, 30);
    person.useLayout("K7UID2");
    person.set("pageId", 300);
    const QString path = person.write("300_page.bmp", image);
    person.choose("openBmpFile", {path});
    const QByteArray pixels = naivePixels(image);
    return person.pressAndRead("downloadBmpFile", downloaded) &&
           person.module().pictures().value(300).left(pixels.size()) == pixels &&
           person.crcHolds(path) && showPage(person, 300);
}

bool linearBmp(TourPerson &person)
{
    const QImage image = tourDrawing({480, 20}, 330);
    person.useLayout("K7UID1");
    const QString path = person.write("301_memory.bmp", image);
    person.choose("openBmpFile", {path});
    return person.pressAndRead("downloadBmpFile", downloaded) &&
           person.module().pictureMemory() == naivePixels(image) && person.crcHolds(path);
}

/// Downloads the JPEG file; whether the module holds its bytes, but for an odd last one.
bool sendJpeg(TourPerson &person)
{
    const QString path = person.write("photo.jpg", tourDrawing({120, 80}, 90));
    const QByteArray jpeg = readFile(path).value_or(QByteArray());
    person.choose("openJpgFile", {path});
    return person.pressAndRead("downloadJpgFile", downloaded) &&
           person.module().jpeg().content == jpeg.chopped(jpeg.size() % 2);
}

bool shownJpeg(TourPerson &person)
{
    person.click("renewalPageNow");
    person.set("jpgPositionX", 200);
    person.set("jpgPositionY", 150);
    return showPage(person, 5) && sendJpeg(person) && !person.module().jpeg().isStored &&
           person.module().jpeg().first == 200 && person.module().jpeg().second == 150;
}

bool storedJpeg(TourPerson &person)
{
    person.click("renewalPageID");
    person.set("jpgPositionID", 77);
    return sendJpeg(person) && person.module().jpeg().isStored &&
           person.module().jpeg().first == 77 && showPage(person, 77);
}

bool icons(TourPerson &person, const char *layout, int block, int bytes)
{
    person.useLayout(layout);
    const QByteArray content = tourPattern(bytes);
    const QString path = person.write(QString("%1_icons.ICO").arg(block), content);
    person.choose("openIcpFile", {path});
    return person.pressAndRead("downloadIcoFile", downloaded) &&
           flashHolds(person, block, content) && person.crcHolds(path);
}

bool icons1(TourPerson &person)
{
    return icons(person, "K7UID1", 40, 40000);
}

bool icons3(TourPerson &person)
{
    return icons(person, "K7UID3", 41, 20000);
}

bool osFile(TourPerson &person)
{
    const QByteArray system = tourPattern(6001);
    const int restarts = person.module().restarts();
    const QString path = person.write("ZOLTOS.bin", QByteArray(4096, '\0') + system);
    person.choose("openOsFile", {path});
    person.boxes().texts.clear();
    // Each box that is closed starts the restart anew: in a hurry none comes to its end.
    person.boxes().setPause(200);
    const bool isRestarted = person.pressUntil("downloadOsFile", [&] {
        return person.module().restarts() > restarts && person.boxes().texts.size() == 4;
    });
    person.boxes().setPause(5);
    bool isWhole = isRestarted && person.boxes().texts.value(0) == downloaded;
    for (int i = 0; i < system.size(); ++i) {
        const int word = person.module().vp(static_cast<quint16>(0x1000 + i / 2));
        isWhole =
            isWhole && (i % 2 == 0 ? word >> 8 : word & 0xFF) == static_cast<quint8>(system.at(i));
    }
    return isWhole && person.crcHolds(path);
}

} // namespace

QVector<TourStop> downloadStops()
{
    return {
        {"font over ED2", fontFile, "two flash blocks with 300 000 bytes of the file; CRC check",
         "tab_10", nullptr},
        {"touch, variables", configFiles, "flash blocks 13 and 14 with the two files; CRC checks",
         nullptr, nullptr},
        {"stop font", stopFont, "first of two flash blocks with the file, no second; then all; CRC",
         nullptr, nullptr},
        {"picture over ED2", picture,
         "module's picture with pixels by definition; CRC; page number", "tab_11",
         "screen_picture"},
        {"stop picture", stopPicture, "first picture with pixels by definition; no second one",
         nullptr, nullptr},
        {"BMP, K7UID2", pagedBmp, "module's page with pixels by definition; CRC; page number",
         nullptr, "screen_bmp_page"},
        {"BMP, K7UID1", linearBmp, "picture memory with pixels by definition; CRC check", nullptr,
         "screen_bmp_memory"},
        {"JPEG now", shownJpeg, "staged bytes with the file's, position with the controls", nullptr,
         "screen_jpeg_now"},
        {"JPEG under ID", storedJpeg, "staged bytes with the file's, ID with the control", nullptr,
         "screen_jpeg_id"},
        {"icons, K7UID1", icons1, "flash with 40 000 bytes of the file; CRC check", "tab_9",
         nullptr},
        {"icons, K7UID3", icons3, "flash with 20 000 bytes of the file; CRC check", nullptr,
         nullptr},
        {"OS over UART2", osFile, "VP words with the file's bytes; restarts; CRC check", "tab_5",
         nullptr},
    };
}
