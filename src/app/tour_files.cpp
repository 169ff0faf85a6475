#include "app/tour_person.h"

#include "common/read_file.h"
#include "ico/ico_library.h"

#include <QComboBox>
#include <QTableWidget>

namespace {

bool configuration(TourPerson &person)
{
    person.select("K7UIModel", "K7UID2");
    person.set("baudRateSet", 9600);
    person.check("openBootSet", true);
    person.set("bootPage", 321);
    person.click("displayDirection270");
    const QString path = person.filePath("module.CFG");
    person.choose("createCfgFile", {path});
    const QByteArray file = readFile(path).value_or(QByteArray());
    // Layout, flags with the direction, divisor of the rate, start page.
    const bool isWritten = file.size() == 128 && file.left(4) == "K7D2" &&
                           file.mid(8, 3) == QByteArray::fromHex("3B0330") &&
                           file.mid(32, 3) == QByteArray::fromHex("5A0141");
    person.select("K7UIModel", "K7UID1");
    person.set("baudRateSet", 115200);
    person.check("openBootSet", false);
    person.click("displayDirection0");
    person.choose("openCfgFile", {path});
    return isWritten && person.find<QComboBox>("K7UIModel")->currentText() == "K7UID2" &&
           person.value("baudRateSet") == 9600 && person.isChecked("openBootSet") &&
           person.value("bootPage") == 321 && person.isChecked("displayDirection270");
}

bool iconLibrary(TourPerson &person)
{
    QStringList paths;
    for (int i = 0; i < 12; ++i)
        paths.append(person.write(QString("%1_icon.png").arg(10 * i),
                                  tourDrawing({40 + 4 * i, 40}, 30 * i)));
    person.choose("selectIcoFilePath", paths);
    const QString library = person.filePath("icons.ICO");
    person.choose("creatIcoFile", {library});
    QVector<IconRecord> icons;
    if (!icoLibrary::read(readFile(library).value_or(QByteArray()), icons) || icons.size() != 12)
        return false;
    for (int i = 0; i < icons.size(); ++i)
        if (icons.at(i).position != 10 * i ||
            icons.at(i).pixels() != naivePixels(tourDrawing({40 + 4 * i, 40}, 30 * i)))
            return false;
    return true;
}

bool iconPreview(TourPerson &person)
{
    person.choose("OpenIcoFile", {person.filePath("icons.ICO")});
    auto *table = person.find<QTableWidget>("displayPicture");
    return table->rowCount() == 4 && table->item(3, 1)->text() == "110:84*40" &&
           naivePixels(table->item(2, 1)->icon().pixmap(84, 40).toImage()) ==
               naivePixels(tourDrawing({84, 40}, 330));
}

bool conversion(TourPerson &person)
{
    const QTemporaryDir pictures;
    const QTemporaryDir converted;
    for (int i = 1; i <= 3; ++i)
        tourDrawing({200, 150}, 40 * i).save(pictures.filePath(QString("%1_page.png").arg(i)));
    person.choose("addPicture", {pictures.path()});
    person.select("pictureSrceen", "800X480");
    person.boxes().texts.clear();
    person.choose("reNameImageConversion", {converted.path()});
    if (person.boxes().texts != QStringList{"Image conversion complete !"})
        return false;
    for (int i = 1; i <= 3; ++i) {
        const QImage expected =
            tourDrawing({200, 150}, 40 * i)
                .scaled(800, 480, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        const QImage found(converted.filePath(QString("%1_%1_page.bmp").arg(i)));
        if (naivePixels(found) != naivePixels(expected))
            return false;
    }
    return true;
}

bool zeroFontFile(TourPerson &person)
{
    if (!person.pressAndRead("CreatZeroFont", "Creat finish！"))
        return false;
    const QByteArray font =
        readFile(person.dialog().folder() + "/0_ZOLT_ASC.HZK").value_or(QByteArray());
    // The letter A in the largest size: 64 pixels of 128 rows, and there is ink.
    const QByteArray letter = font.right(128 * 1024).mid('A' * 1024, 1024);
    return font.size() >= 3082752 && letter.count('\0') < 1024;
}

} // namespace

QVector<TourStop> fileStops()
{
    return {
        {"configuration", configuration, "file's bytes with the layout's, controls with the file",
         "tab_7", nullptr},
        {"icon library", iconLibrary, "icons of the file with pixels by definition", "creatIco",
         nullptr},
        {"icon preview", iconPreview, "what is shown with pixels by definition", "tab_3", nullptr},
        {"conversion", conversion, "BMP files with the scaled pictures", "tab_8", nullptr},
        {"zero font", zeroFontFile, "file's size with the format's, letter A with ink", "ZeroFont",
         nullptr},
    };
}
