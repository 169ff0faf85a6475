#include "support/window_test.h"

#include <QClipboard>
#include <QDropEvent>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSpinBox>
#include <QTableWidget>
#include <QTextEdit>
#include <QtTest>

/// What the window does for its user beside its trade.
class TestComforts : public WindowTest
{
    Q_OBJECT

private slots:
    void droppedFilesTakeTheWayOfTheButton_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<int>("nameColumn");
        QTest::addColumn<QStringList>("ofFiles");  // of what the dropped files show
        QTest::addColumn<QStringList>("ofFolder"); // dropped afterwards; some lists take none
        const QStringList none;
        QTest::newRow("fonts") << "fontPath" << 0 << QStringList{"1", "2"} << QStringList{"1", "2"};
        QTest::newRow("pictures") << "picturePath" << 0 << QStringList{"3"} << QStringList{"3"};
        QTest::newRow("icons") << "ICOFileTable" << 0 << QStringList{"3"} << QStringList{"3"};
        QTest::newRow("conversion")
            << "pictureTable" << 0 << none << QStringList{"1", "2", "3", "4"};
        QTest::newRow("CRC") << "crcTableWidget" << 0 << QStringList{"1_a.bin_0", "2_b.ICO_0"}
                             << QStringList{"1_a.bin_0", "2_b.ICO_0"};
    }

    void droppedFilesTakeTheWayOfTheButton()
    {
        QFETCH(const QString, list);
        QFETCH(const int, nameColumn);
        const QStringList files{write("1_a.bin", QByteArray(5000, 'x')),
                                write("2_b.ICO", QByteArray(5000, 'x')),
                                m_folder->filePath("3_c.png"), write("4_d.txt", "x")};
        QVERIFY(QImage(4, 4, QImage::Format_RGB32).save(files.at(2)));
        QVERIFY(drop(list, files));
        QTEST(column(list, nameColumn), "ofFiles");
        QVERIFY(!drop(list, {}));
        QVERIFY(drop(list, {m_folder->path()}));
        QTEST(column(list, nameColumn), "ofFolder");
    }

    void logIsCopiedAndSaved()
    {
        readVersion();
        chooseInLogMenu("Copy all");
        QCOMPARE(QApplication::clipboard()->text(), QString("5aa50483000f01\n5aa50683000f014521"));
        const QString path = m_folder->filePath("log.txt");
        chooseInNextDialog({path});
        chooseInLogMenu("Save log…");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString saved = file.readAll();
        const QString time = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";
        QVERIFY2(QRegularExpression("^" + time + " > 5aa50483000f01\n" + time +
                                    " < 5aa50683000f014521\n$")
                     .match(saved)
                     .hasMatch(),
                 qPrintable(saved));
        // What was cleared is not saved.
        click("clearReceiveLog");
        m_dialog->selectLanguage("中文");
        const QString cleared = m_folder->filePath("cleared.txt");
        chooseInNextDialog({cleared});
        chooseInLogMenu("保存日志…");
        QVERIFY(QFile::exists(cleared));
        QCOMPARE(QFileInfo(cleared).size(), qint64{0});
    }

    void logThatCannotBeSavedIsReported()
    {
        chooseInNextDialog({m_folder->filePath("no/such/folder/log.txt")});
        chooseInLogMenu("Save log…");
        QCOMPARE(m_boxes->texts, QStringList{"The file could not be written !"});
    }

    void qtSpeaksTheLanguageOfTheWindow()
    {
        const auto cancel = [] {
            return QMessageBox(QMessageBox::NoIcon, "", "", QMessageBox::Cancel)
                .button(QMessageBox::Cancel)
                ->text()
                .remove('&');
        };
        QCOMPARE(cancel(), QString("Cancel"));
        m_dialog->selectLanguage("中文");
        QCOMPARE(cancel(), QString("取消"));
        m_dialog->selectLanguage("English");
        QCOMPARE(cancel(), QString("Cancel"));
    }

private:
    /// Whether the list takes what is dropped.
    bool drop(const QString &list, const QStringList &paths)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls.append(QUrl::fromLocalFile(path));
        data.setUrls(urls);
        QWidget *target = find<QTableWidget>(list)->viewport();
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(target, &enter);
        QDropEvent event(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
        runEventLoop(20);
        return enter.isAccepted();
    }
    QStringList column(const QString &list, int column)
    {
        auto *table = find<QTableWidget>(list);
        QStringList texts;
        for (int row = 0; row < table->rowCount(); ++row)
            texts.append(table->item(row, column)->text());
        return texts;
    }
    /// Opens the menu of the log and chooses the entry with `text`.
    void chooseInLogMenu(const QString &text)
    {
        QTimer::singleShot(20, this, [text] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            for (QAction *action : menu->actions())
                if (action->text() == text) {
                    menu->setActiveAction(action);
                    QTest::keyClick(menu, Qt::Key_Return);
                    return;
                }
            menu->close();
            QFAIL("no such entry");
        });
        emit find<QTextEdit>("receiveText")->customContextMenuRequested(QPoint(5, 5));
    }
    void readVersion()
    {
        click("readVersion");
        runEventLoopUntil(
            [this] { return find<QTextEdit>("receiveText")->toPlainText().contains("\n"); });
        runEventLoop(120);
    }
};

QTEST_MAIN(TestComforts)
#include "tst_comforts.moc"
