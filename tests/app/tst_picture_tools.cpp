#include "font/zero_font.h"
#include "support/window_test.h"

#include <QFontDialog>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QScrollBar>
#include <QTabWidget>
#include <QtTest>

/// The picture list with its preview and conversion, and the zero font, in the real window.
class TestPictureTools : public WindowTest
{
    Q_OBJECT

private slots:
    void foldersAreListed()
    {
        picture("10.png", Qt::red);
        picture("3b.png", Qt::red);
        write("a.txt", "listed all the same");
        QVERIFY(QDir(m_folder->path()).mkdir("folder"));
        link("link.png", "10.png");
        listFolder();
        QCOMPARE(names(), QStringList({"10.png", "3b.png", "a.txt"}));
        QCOMPARE(column("pictureTable", 0), QStringList({"10", "3", "4"}));
        QCOMPARE(currentRow(), 0);
        choose("addPicture", {});
        QCOMPARE(names().size(), 3);
        choose("addPicture", {m_folder->filePath("folder")});
        QCOMPARE(names().size(), 0);
        m_dialog.reset();
        QCOMPARE(stored("DefaultPath/imageDefaultPath").toString(), m_folder->filePath("folder"));
    }

    void rowsAreMovedDeletedAndSorted()
    {
        for (const char *name : {"1_b.png", "2_a.png", "3_c.png"})
            picture(name, Qt::red);
        listFolder();
        click("upPicture");
        QCOMPARE(currentRow(), 0);
        clickRow(2);
        click("downPicture");
        click("upPicture");
        QCOMPARE(currentRow(), 1);
        QCOMPARE(names(), QStringList({"1_b.png", "3_c.png", "2_a.png"}));
        clickHeader(1);
        QCOMPARE(names(), QStringList({"1_b.png", "2_a.png", "3_c.png"}));
        clickHeader(0);
        QCOMPARE(names(), QStringList({"1_b.png", "3_c.png", "2_a.png"}));
        clickRow(0);
        click("deletePicture");
        QCOMPARE(names(), QStringList({"3_c.png", "2_a.png"}));
        click("deleteAllPicture");
        QCOMPARE(names(), QStringList());
        click("deletePicture");
        choose("imagesConversion", {m_folder->path()});
        QCOMPARE(m_boxes->texts, QStringList());
    }

    void currentPictureIsShown()
    {
        picture("1.png", Qt::red);
        picture("2.png", Qt::blue);
        write("3.png", "no picture");
        find<QComboBox>("pictureSrceen")->addItems({"1000X300", "nonsense", "0X0"});
        select("pictureSrceen", "1000X300");
        listFolder();
        QCOMPARE(shown(0, 0), qRgb(255, 0, 0));
        QCOMPARE(shown(0, 299), qRgb(255, 0, 0));
        QCOMPARE(shown(0, 300), qRgb(128, 128, 128));
        const QSize label = find<QLabel>("pictureLabel")->size();
        QCOMPARE(scroll("pictureHorizontal")->maximum(), 1000 - label.width());
        QCOMPARE(scroll("pictureVertical")->maximum(), 0);
        clickRow(1);
        QCOMPARE(shown(0, 0), qRgb(0, 0, 255));
        // What cannot be decoded shows nothing.
        auto *table = find<QTableWidget>("pictureTable");
        table->setCurrentCell(2, 0);
        QVERIFY(isNothingShown());
        // The preview follows the current row, whatever moves it or the pictures under it.
        table->setCurrentCell(1, 0);
        QCOMPARE(shown(0, 0), qRgb(0, 0, 255));
        click("deletePicture");
        QVERIFY(isNothingShown());
        click("upPicture");
        table->setCurrentCell(1, 0);
        QCOMPARE(shown(0, 0), qRgb(255, 0, 0));
        clickHeader(1);
        QVERIFY(isNothingShown());
        clickRow(0);
        select("scaleMultiple", "400%");
        QCOMPARE(scroll("pictureVertical")->maximum(), 1200 - label.height());
        scroll("pictureVertical")->setValue(9999);
        QCOMPARE(scroll("pictureVertical")->value(), 1200 - label.height());
        select("scaleMultiple", "10%");
        QCOMPARE(scroll("pictureVertical")->value(), 0);
        QCOMPARE(shown(99, 29), qRgb(255, 0, 0));
        QCOMPARE(shown(100, 29), qRgb(128, 128, 128));
        // A size that is none shows nothing of the picture, a text without an X changes nothing.
        select("pictureSrceen", "nonsense");
        QCOMPARE(shown(99, 29), qRgb(255, 0, 0));
        select("pictureSrceen", "0X0");
        QCOMPARE(shown(0, 0), qRgb(128, 128, 128));
    }

    void slidersMoveThePicture()
    {
        QImage quarters(2, 2, QImage::Format_RGB32);
        quarters.fill(Qt::red);
        quarters.setPixelColor(1, 0, Qt::green);
        quarters.setPixelColor(0, 1, Qt::blue);
        writePicture("1.png", quarters);
        picture("2.png", Qt::yellow);
        listFolder();
        select("pictureSrceen", "1024X768");
        select("scaleMultiple", "200%");
        QCOMPARE(shown(0, 0), qRgb(255, 0, 0));
        scroll("pictureHorizontal")->setValue(1024);
        QCOMPARE(shown(0, 0), qRgb(0, 255, 0));
        scroll("pictureHorizontal")->setValue(1023);
        QCOMPARE(shown(0, 0), qRgb(255, 0, 0));
        scroll("pictureVertical")->setValue(768);
        QCOMPARE(shown(0, 0), qRgb(0, 0, 255));
        click("deletePicture");
        QCOMPARE(shown(0, 0), qRgb(255, 255, 0));
    }

    void changedPicturesAreShownAnew()
    {
        picture("1.png", Qt::red);
        listFolder();
        picture("1.png", Qt::green);
        QFile file(m_folder->filePath("1.png"));
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(5),
                                 QFileDevice::FileModificationTime));
        clickRow(0);
        QCOMPARE(shown(0, 0), qRgb(0, 255, 0));
    }

    void picturesAreConverted()
    {
        picture("4_logo.final.png", Qt::red);
        picture("b.jpg", Qt::blue);
        write("c.png", "no picture");
        listFolder();
        const QTemporaryDir out;
        choose("imagesConversion", {});
        QCOMPARE(m_boxes->texts, QStringList());
        choose("imagesConversion", {out.path()});
        QCOMPARE(m_boxes->texts, QStringList{"Image conversion complete !"});
        QCOMPARE(QDir(out.path()).entryList(QDir::Files), QStringList({"4_logo.bmp", "b.bmp"}));
        // The size that the combo shows from the start.
        QCOMPARE(QImage(out.filePath("b.bmp")).size(), QSize(480, 272));
        select("pictureSrceen", "320X240");
        m_dialog->selectLanguage("中文");
        choose("reNameImageConversion", {out.path()});
        QCOMPARE(m_boxes->texts.last(), QString("图片转换完成！"));
        QCOMPARE(QImage(out.filePath("4_4_logo.bmp")).size(), QSize(320, 240));
        QCOMPARE(QImage(out.filePath("5_b.bmp")).size(), QSize(320, 240));
    }

    void zeroFontIsWritten()
    {
        const QString path = QCoreApplication::applicationDirPath() + "/0_ZOLT_ASC.HZK";
        QFile::remove(path);
        QVector<int> progress;
        connect(find<QProgressBar>("progressBar"), &QProgressBar::valueChanged, this,
                [&progress](int percent) { progress.append(percent); });
        set("horScale", -3);
        click("CreatZeroFont");
        QCOMPARE(m_boxes->texts, QStringList{"Creat finish！"});
        QCOMPARE(progress.last(), 100);
        QCOMPARE(progress.size(), 60); // 0 stood there already
        GlyphStyle style;
        style.font = QFont("宋体", 8);
        style.horScale = -3;
        QVERIFY(content(path) == zeroFont::make(style, [](int) {}));
        QVERIFY(QFile::remove(path));
    }

    void zeroFontFollowsItsSettings()
    {
        runEventLoopUntil([this] { return !shownBy("fontDisplay").isNull(); });
        GlyphStyle style;
        style.font = QFont("宋体", 8);
        const auto expected = [&style](const QString &text) {
            return QPixmap::fromImage(zeroFont::preview(text, style)).toImage();
        };
        QVERIFY(shownBy("fontDisplay") == expected("A"));
        select("comboBox", "g");
        QVERIFY(shownBy("fontDisplay") == expected("g"));
        for (const auto &[box, value] : {std::pair("horScale", &GlyphStyle::horScale),
                                         {"verScale", &GlyphStyle::verScale},
                                         {"horShift", &GlyphStyle::horShift},
                                         {"verShift", &GlyphStyle::verShift}}) {
            style.*value += 3;
            set(box, style.*value);
            QVERIFY2(shownBy("fontDisplay") == expected("g"), box);
        }
        const auto answer = [](auto choose) {
            QTimer::singleShot(50, [choose] {
                auto *dialog = qobject_cast<QFontDialog *>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                QCOMPARE(dialog->windowTitle(), QString("自定义文字属性"));
                choose(dialog);
            });
        };
        answer([](QFontDialog *dialog) { dialog->reject(); });
        click("selectFont");
        QCOMPARE(find<QLabel>("label_font")->text(), QString("Font Name: 宋体"));
        answer([&style](QFontDialog *dialog) {
            dialog->setCurrentFont(QFont("DejaVu Serif", 20));
            style.font = dialog->currentFont();
            dialog->accept();
        });
        click("selectFont");
        QCOMPARE(find<QLabel>("label_font")->text(), QString("Font Name: DejaVu Serif"));
        QVERIFY(shownBy("fontDisplay") == expected("g"));
    }

private:
    QStringList names() { return column("pictureTable", 1); }
    void clickRow(int row)
    {
        auto *table = find<QTableWidget>("pictureTable");
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier,
                          table->visualItemRect(table->item(row, 1)).center());
    }
    void clickHeader(int section)
    {
        auto *header = find<QTableWidget>("pictureTable")->horizontalHeader();
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(header->sectionViewportPosition(section) + 5, 5));
    }
    QImage shownBy(const QString &label)
    {
        return find<QLabel>(label)->pixmap(Qt::ReturnByValue).toImage();
    }
    QRgb shown(int x, int y) { return shownBy("pictureLabel").pixel(x, y); }
    bool isNothingShown() { return shownBy("pictureLabel").isNull(); }
    QScrollBar *scroll(const QString &name) { return find<QScrollBar>(name); }
    int currentRow() { return find<QTableWidget>("pictureTable")->currentRow(); }
    void listFolder()
    {
        find<QTabWidget>("tabWidget")->setCurrentIndex(5);
        choose("addPicture", {m_folder->path()});
    }
};

QTEST_MAIN(TestPictureTools)
#include "tst_picture_tools.moc"
