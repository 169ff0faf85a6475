#include "support/window_test.h"

#include <QClipboard>
#include <QDropEvent>
#include <QMimeData>
#include <QtTest>

/// What the window does for its user beside its trade.
class TestComforts : public WindowTest
{
    Q_OBJECT

private slots:
    void droppedFilesTakeTheWayOfTheButton()
    {
        const QString folder = m_folder->filePath("5_folder.bin");
        QVERIFY(QDir().mkdir(folder));
        const QStringList files{write("1_a.bin", QByteArray(5000, 'x')),
                                write("2_b.ICO", QByteArray(5000, 'x')),
                                picture("3_c.png", Qt::red), write("4_d.txt", "x"), folder};
        const struct
        {
            const char *list;
            QStringList ofFiles;  // what the list shows of the dropped files
            QStringList ofFolder; // dropped afterwards; some lists take none
        } rows[] = {
            {"fontPath", {"1", "2"}, {"1", "2"}},
            {"picturePath", {"3"}, {"3"}},
            {"ICOFileTable", {"3"}, {"3"}},
            {"pictureTable", {}, {"1", "2", "3", "4"}},
            {"crcTableWidget", {"1_a.bin_0", "2_b.ICO_0"}, {"1_a.bin_0", "2_b.ICO_0"}},
        };
        for (const auto &row : rows) {
            QVERIFY2(drop(row.list, files), row.list);
            QCOMPARE(column(row.list, 0), QStringList()); // where the drag began goes on first
            pass(20);
            QCOMPARE(column(row.list, 0), row.ofFiles);
            QVERIFY2(!drop(row.list, {"https://host/6_f.bin"}), row.list);
            QVERIFY2(drop(row.list, {m_folder->path()}), row.list);
            pass(20);
            QCOMPARE(column(row.list, 0), row.ofFolder);
        }
    }

    void dialogsShowTheFilesThatTheButtonTakes()
    {
        for (const auto &[button, filter] :
             {std::pair("chooseFontFile", "(*.ICO *.bin *.hzk *.dzk)"),
              {"choosePictureFile", "(*.bmp *.jpg *.jpeg *.png *.gif)"},
              {"openIcpFile", "(*.ICO *.bin *.hzk *.dzk *WAV)"}, // without its dot; wanted
              {"createCfgFile", "(*.CFG)"}}) {
            QStringList filters;
            QTimer::singleShot(50, this, [&filters] {
                auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
                filters = dialog->nameFilters();
                dialog->reject();
            });
            click(button);
            QCOMPARE(filters, QStringList{filter});
        }
    }

    void logIsCopiedAndSaved()
    {
        click("readVersion");
        COMPARE_SOON(view("receiveText"), QString("5aa50483000f01\n5aa50683000f014521"));
        finishExchange();
        chooseInLogMenu("Copy all");
        QCOMPARE(QApplication::clipboard()->text(), view("receiveText"));
        const QString path = m_folder->filePath("log.txt");
        chooseInNextDialog({path});
        chooseInLogMenu("Save log…");
        const QString time = "\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3}";
        QVERIFY2(QRegularExpression(
                     "^" + time + " > 5aa50483000f01  read VP 0x000F, 1 word \\(version\\)\n" +
                     time + " < 5aa50683000f014521  holds VP 0x000F, 1 word \\(version\\)\n$")
                     .match(content(path))
                     .hasMatch(),
                 content(path));
        // What was cleared is not saved.
        click("clearReceiveLog");
        m_dialog->selectLanguage("中文");
        chooseInNextDialog({m_folder->filePath("cleared.txt")});
        chooseInLogMenu("保存日志…");
        QCOMPARE(content(m_folder->filePath("cleared.txt")), QByteArray());
    }

    void qtSpeaksTheLanguageOfTheWindow()
    {
        for (const auto &[language, cancel] :
             {std::pair("English", "Cancel"), {"中文", "取消"}, {"English", "Cancel"}}) {
            m_dialog->selectLanguage(language);
            const QMessageBox box(QMessageBox::NoIcon, "", "", QMessageBox::Cancel);
            QCOMPARE(box.button(QMessageBox::Cancel)->text().remove('&'), QString(cancel));
        }
    }

private:
    /// Whether the list takes what is dropped.
    bool drop(const QString &list, const QStringList &paths)
    {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls.append(QUrl::fromUserInput(path));
        data.setUrls(urls);
        QWidget *target = find<QTableWidget>(list)->viewport();
        const QPoint place(5, 5);
        QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QDragMoveEvent move(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QDropEvent drop(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        for (QDropEvent *event :
             {static_cast<QDropEvent *>(&enter), static_cast<QDropEvent *>(&move), &drop}) {
            event->ignore();
            QApplication::sendEvent(target, event);
            if (!event->isAccepted())
                return false;
        }
        return true;
    }
};

QTEST_MAIN(TestComforts)
#include "tst_comforts.moc"
