#include "app/tour.h"

#include "app/choose_in_dialog.h"
#include "app/dialog.h"
#include "app/message_boxes.h"
#include "common/event_loop.h"
#include "common/picture.h"
#include "common/read_file.h"
#include "ico/ico_library.h"
#include "serial/serial_set.h"
#include "simulator/simulator.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextEdit>

namespace {

const QString downloaded = "The download is complete !";

QByteArray pattern(int bytes)
{
    QByteArray content(bytes, Qt::Uninitialized);
    for (int i = 0; i < bytes; ++i)
        content[i] = static_cast<char>(i * 31 + (i >> 8) * 7);
    return content;
}

QImage drawing(const QSize &size, int hue)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(image.rect(), QColor::fromHsv(hue, 120, 90));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor::fromHsv(hue, 200, 230));
    painter.drawEllipse(image.rect().adjusted(size.width() / 8, size.height() / 8,
                                              -size.width() / 8, -size.height() / 8));
    return image;
}

/// The person at the window, and what the tour has shown so far.
class Tour
{
public:
    Tour(Dialog &dialog, k7::Simulator &simulator, const QDir &folder,
         const std::function<void(const QString &)> &report)
        : m_dialog(dialog), m_simulator(simulator), m_folder(folder), m_report(report)
    {
    }

    bool run();

private:
    struct Step
    {
        const char *name;
        bool (Tour::*run)(); ///< whether the comparison held
        const char *compared;
        const char *page; ///< that is pictured, where one is
    };

    bool ports();
    bool version();
    bool vpWords();
    bool curve();
    bool fontFile();
    bool picture();
    bool crcs();
    bool bmpFile();
    bool jpgFile();
    bool icoFile();
    bool osFile();
    bool configuration();
    bool iconLibrary();
    bool iconPreview();
    bool conversion();
    bool zeroFont();

    template<typename Widget>
    Widget *find(const char *name)
    {
        return m_dialog.findChild<Widget *>(name);
    }
    void press(const char *name) { find<QAbstractButton>(name)->click(); }
    void set(const char *name, int value) { find<QSpinBox>(name)->setValue(value); }
    void select(const char *name, const QString &text)
    {
        find<QComboBox>(name)->setCurrentText(text);
    }
    void choose(const char *button, const QString &path)
    {
        chooseInNextDialog({path});
        press(button);
    }
    /// Presses `button` and waits for a box; whether it says `text`, and was the only one.
    bool pressAndRead(const char *button, const QString &text)
    {
        m_boxes.texts.clear();
        press(button);
        runEventLoopUntil([this] { return !m_boxes.texts.isEmpty(); }, 60000);
        return m_boxes.texts == QStringList{text};
    }
    /// Runs the tool until `isDone`, and until the exchange that brought it has ended.
    template<typename IsDone>
    bool waitUntil(IsDone isDone)
    {
        runEventLoopUntil(isDone);
        runEventLoop(120);
        return isDone();
    }
    QString write(const QString &name, const QByteArray &content)
    {
        const QString path = m_files.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return {};
        return path;
    }
    QString draw(const QString &name, const QSize &size, int hue)
    {
        const QString path = m_files.filePath(name);
        drawing(size, hue).save(path);
        return path;
    }
    void show(const char *page);
    k7::Module &module() { return m_simulator.module(); }

    Dialog &m_dialog;
    k7::Simulator &m_simulator;
    const QDir m_folder;
    const std::function<void(const QString &)> m_report;
    MessageBoxes m_boxes;
    QTemporaryDir m_files;
};

bool Tour::run()
{
    static constexpr Step steps[] = {
        {"ports", &Tour::ports, "both settings use the simulated module's ports", nullptr},
        {"version", &Tour::version, "version and device ID against the module's words", "tab_9"},
        {"VP memory", &Tour::vpWords, "four words written, and read back", nullptr},
        {"curve", &Tour::curve, "samples of two channels against the module's", "tab_4"},
        {"font over ED2", &Tour::fontFile, "300 000 bytes in two flash blocks", "tab_10"},
        {"picture over ED2", &Tour::picture, "480 x 272 pixels in the module", "tab_11"},
        {"CRC check", &Tour::crcs, "tool's and module's CRC of the downloaded file", "tab_5"},
        {"BMP over UART2", &Tour::bmpFile, "pixels in a picture page", nullptr},
        {"JPG over UART2", &Tour::jpgFile, "bytes in VP memory, and where they are shown", nullptr},
        {"icons over UART2", &Tour::icoFile, "40 000 bytes in the flash", nullptr},
        {"OS over UART2", &Tour::osFile, "bytes in VP memory, and the restart", nullptr},
        {"configuration", &Tour::configuration, "128 bytes written, and controls read back",
         "tab_7"},
        {"icon library", &Tour::iconLibrary, "pictures against the icons of the file", "creatIco"},
        {"icon preview", &Tour::iconPreview, "what is shown against the pictures", "tab_3"},
        {"conversion", &Tour::conversion, "BMP files against the pictures", "tab_8"},
        {"zero font", &Tour::zeroFont, "size of the file, and the letter A", "ZeroFont"},
    };

    if (!m_files.isValid() || !m_folder.mkpath("."))
        return false;
    bool allHeld = true;
    for (const Step &step : steps) {
        if (step.page)
            show(step.page);
        const bool held = (this->*step.run)();
        const bool isSaved =
            !step.page || m_dialog.grab().save(m_folder.filePath(QString(step.page) + ".png"));
        m_report(QString("%1  %2 %3")
                     .arg(held && isSaved ? "held  " : "FAILED",
                          QString(step.name).leftJustified(18), step.compared));
        allHeld = allHeld && held && isSaved;
    }
    return allHeld;
}

/// Opens all the tabs that lead to `page`.
void Tour::show(const char *page)
{
    for (auto *widget = find<QWidget>(page); widget; widget = widget->parentWidget())
        for (auto *tabs : m_dialog.findChildren<QTabWidget *>())
            if (tabs->indexOf(widget) >= 0)
                tabs->setCurrentWidget(widget);
}

bool Tour::ports()
{
    const QList<SerialSet *> sets = m_dialog.findChildren<SerialSet *>();
    return sets.size() == 2 && sets.at(0)->settings().portName == m_simulator.uartPath() &&
           sets.at(1)->settings().portName == m_simulator.ed2Path();
}

bool Tour::version()
{
    auto *shown = find<QLineEdit>("displayVersion");
    press("readVersion");
    const int version = module().vp(0x0F);
    const QString expected =
        QString::asprintf("GUI:V%x.%x OS:V%x.%x", version >> 12, version >> 8 & 0xF,
                          version >> 4 & 0xF, version & 0xF);
    if (!waitUntil([&] { return shown->text() == expected; }))
        return false;
    press("readDeviceID");
    const QString id = QString::asprintf("%04x%04x%04x%04x", module().vp(0), module().vp(1),
                                         module().vp(2), module().vp(3));
    return waitUntil([&] { return find<QLineEdit>("displayDeviceID")->text() == id; });
}

bool Tour::vpWords()
{
    const QByteArray words = "0123 4567 89ab cdef";
    select("serialCmd", "Write the VP");
    set("regVpAddr", 0x2000);
    find<QCheckBox>("hexMode")->setChecked(true);
    find<QLineEdit>("ChannelEdit0")->setText(words);
    press("sendCmd");
    if (!waitUntil([this] { return module().vp(0x2003) == 0xCDEF; }) ||
        module().vp(0x2000) != 0x0123)
        return false;
    select("serialCmd", "Read the VP");
    set("regVpLen", 4);
    press("sendCmd");
    return waitUntil([this] {
        return find<QTextEdit>("displayText")->toPlainText() == "0x0123 0x4567 0x89AB 0xCDEF";
    });
}

bool Tour::curve()
{
    select("serialCmd", "Curve of the cache area");
    find<QCheckBox>("channel0")->setChecked(true);
    find<QCheckBox>("channel1")->setChecked(true);
    find<QLineEdit>("ChannelEdit0")->setText("0001 0002 0003");
    find<QLineEdit>("ChannelEdit1")->setText("0100 0200 0300");
    press("sendCmd");
    return waitUntil([this] {
        return module().curve(0) == QVector<quint16>{1, 2, 3} &&
               module().curve(1) == QVector<quint16>{0x100, 0x200, 0x300};
    });
}

bool Tour::fontFile()
{
    const QByteArray content = pattern(300000);
    choose("chooseFontFile", write("32_text.dzk", content));
    return pressAndRead("downloadFont", downloaded) &&
           module().flash().read(32 * k7::Flash::blockBytes, content.size()) == content;
}

bool Tour::picture()
{
    select("srceenSize", "480X272");
    const QImage image = drawing({480, 272}, 200);
    choose("choosePictureFile", draw("5_start.png", image.size(), 200));
    return pressAndRead("downloadPicture", downloaded) &&
           module().pictures().value(5) == picture::toRgb565(image);
}

bool Tour::crcs()
{
    // The same bytes as those of the font, so that the module holds them.
    choose("openFile", write("32_text.bin", pattern(300000)));
    if (!pressAndRead("compareCheck", "Check finish !"))
        return false;
    auto *table = find<QTableWidget>("crcTableWidget");
    bool allEqual = table->rowCount() == 2;
    for (int row = 0; row < table->rowCount(); ++row)
        allEqual = allEqual && table->item(row, 3)->text() == "true";
    return allEqual;
}

bool Tour::bmpFile()
{
    const QImage image = drawing({60, 40}, 30);
    select("K7UIModel_2", "K7UID2");
    set("pageId", 12);
    choose("openBmpFile", draw("page.bmp", image.size(), 30));
    const QByteArray pixels = picture::toRgb565(image);
    return pressAndRead("downloadBmpFile", downloaded) &&
           module().pictures().value(12).left(pixels.size()) == pixels;
}

bool Tour::jpgFile()
{
    const QString path = draw("photo.jpg", {120, 80}, 90);
    const QByteArray jpeg = readFile(path).value_or(QByteArray());
    set("jpgPositionX", 100);
    set("jpgPositionY", 50);
    choose("openJpgFile", path);
    // An odd last byte is not sent.
    const int sent = jpeg.size() - jpeg.size() % 2;
    return pressAndRead("downloadJpgFile", downloaded) &&
           module().jpeg().content.left(sent) == jpeg.left(sent) && module().jpeg().first == 100 &&
           module().jpeg().second == 50;
}

bool Tour::icoFile()
{
    const QByteArray content = pattern(40000);
    choose("openIcpFile", write("40_icons.ICO", content));
    return pressAndRead("downloadIcoFile", downloaded) &&
           module().flash().read(40 * k7::Flash::blockBytes, content.size()) == content;
}

bool Tour::osFile()
{
    const QByteArray system = pattern(6000);
    const int restarts = module().restarts();
    choose("openOsFile", write("system.bin", QByteArray(4096, '\0') + system));
    m_boxes.texts.clear();
    // Each box that is closed starts the restart anew: in a hurry none comes to its end.
    m_boxes.setPause(200);
    press("downloadOsFile");
    waitUntil([&] { return module().restarts() > restarts && m_boxes.texts.size() == 4; });
    m_boxes.setPause(5);
    bool isWhole = module().restarts() > restarts && m_boxes.texts.value(0) == downloaded;
    for (int i = 0; i < system.size() / 2; ++i) {
        const int word =
            static_cast<quint8>(system.at(2 * i)) << 8 | static_cast<quint8>(system.at(2 * i + 1));
        isWhole = isWhole && module().vp(static_cast<quint16>(0x1000 + i)) == word;
    }
    return isWhole;
}

bool Tour::configuration()
{
    select("K7UIModel", "K7UID2");
    set("baudRateSet", 9600);
    find<QCheckBox>("openBootSet")->setChecked(true);
    set("bootPage", 321);
    press("displayDirection270");
    const QString path = m_files.filePath("module.CFG");
    choose("createCfgFile", path);
    const QByteArray file = readFile(path).value_or(QByteArray());
    // Layout, flags with the direction, divisor of the rate, start page.
    const bool isWritten = file.size() == 128 && file.left(4) == "K7D2" &&
                           file.mid(8, 3) == QByteArray::fromHex("3B0330") &&
                           file.mid(32, 3) == QByteArray::fromHex("5A0141");
    select("K7UIModel", "K7UID1");
    set("baudRateSet", 115200);
    find<QCheckBox>("openBootSet")->setChecked(false);
    press("displayDirection0");
    choose("openCfgFile", path);
    return isWritten && find<QComboBox>("K7UIModel")->currentText() == "K7UID2" &&
           find<QSpinBox>("baudRateSet")->value() == 9600 &&
           find<QCheckBox>("openBootSet")->isChecked() &&
           find<QSpinBox>("bootPage")->value() == 321 &&
           find<QAbstractButton>("displayDirection270")->isChecked();
}

bool Tour::iconLibrary()
{
    QStringList paths;
    for (int i = 0; i < 12; ++i)
        paths.append(draw(QString("%1_icon.png").arg(10 * i), {40 + 4 * i, 40}, 30 * i));
    chooseInNextDialog(paths);
    press("selectIcoFilePath");
    const QString library = m_files.filePath("icons.ICO");
    choose("creatIcoFile", library);
    QVector<IconRecord> icons;
    if (!icoLibrary::read(readFile(library).value_or(QByteArray()), icons) || icons.size() != 12)
        return false;
    for (int i = 0; i < icons.size(); ++i)
        if (icons.at(i).position != 10 * i ||
            icons.at(i).pixels() != picture::toRgb565(drawing({40 + 4 * i, 40}, 30 * i)))
            return false;
    return true;
}

bool Tour::iconPreview()
{
    choose("OpenIcoFile", m_files.filePath("icons.ICO"));
    auto *table = find<QTableWidget>("displayPicture");
    return table->rowCount() == 4 && table->item(3, 1)->text() == "110:84*40" &&
           picture::toRgb565(table->item(2, 1)->icon().pixmap(84, 40).toImage()) ==
               picture::toRgb565(drawing({84, 40}, 330));
}

bool Tour::conversion()
{
    const QTemporaryDir pictures;
    const QTemporaryDir converted;
    for (int i = 1; i <= 3; ++i)
        drawing({200, 150}, 40 * i).save(pictures.filePath(QString("%1_page.png").arg(i)));
    choose("addPicture", pictures.path());
    select("pictureSrceen", "800X480");
    m_boxes.texts.clear();
    choose("reNameImageConversion", converted.path());
    if (m_boxes.texts != QStringList{"Image conversion complete !"})
        return false;
    for (int i = 1; i <= 3; ++i) {
        const QImage expected =
            drawing({200, 150}, 40 * i)
                .scaled(800, 480, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        const QImage found(converted.filePath(QString("%1_%1_page.bmp").arg(i)));
        if (picture::toRgb565(found) != picture::toRgb565(expected))
            return false;
    }
    return true;
}

bool Tour::zeroFont()
{
    if (!pressAndRead("CreatZeroFont", "Creat finish！"))
        return false;
    const QByteArray font = readFile(m_dialog.folder() + "/0_ZOLT_ASC.HZK").value_or(QByteArray());
    // The letter A in the largest size: 64 pixels of 128 rows, and there is ink.
    const QByteArray letter = font.right(128 * 1024).mid('A' * 1024, 1024);
    return font.size() >= 3082752 && letter.count('\0') < 1024;
}

} // namespace

bool runTour(Dialog &dialog, k7::Simulator &simulator, const QDir &folder,
             const std::function<void(const QString &line)> &report)
{
    const QString before = dialog.language();
    dialog.applyLanguage(Language::english);
    const bool allHeld = Tour(dialog, simulator, folder, report).run();
    if (!before.isEmpty())
        dialog.applyLanguage(before);
    return allHeld;
}
