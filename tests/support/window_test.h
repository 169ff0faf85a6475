#pragma once

#include "app/message_boxes.h"
#include "app/person.h"
#include "app/simulated_dialog.h"
#include "assistant/serial_set.h"
#include "support/event_loop.h"

#include <QFile>
#include <QImage>
#include <QMenu>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>

#include <memory>

/// Base of the tests that drive the real window against the simulated module: each test has a new
/// window.
class WindowTest : public QObject, public Person
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(openWindow()); }
    void cleanup() { closeWindow(); }

protected:
    QWidget &window() override { return *m_dialog; }
    /// Opens a window with default settings, on the ports of a new module. False when the system
    /// has no terminals for it.
    bool openWindow()
    {
        closeWindow();
        QFile::remove(QCoreApplication::applicationDirPath() + "/SystemConfig.ini");
        m_folder = std::make_unique<QTemporaryDir>();
        m_boxes = std::make_unique<MessageBoxes>();
        m_simulator = std::make_unique<k7::Simulator>();
        if (!m_simulator->start())
            return false;
        m_dialog = simulatedDialog(*m_simulator);
        useModule(*m_dialog, *m_simulator);
        m_dialog->show();
        return true;
    }
    /// Confirms 6250000 baud in the settings dialog of the ED2 link, as everybody must who wants to
    /// use it.
    void confirmEd2Rate() { confirm("serialSet_2"); }
    /// What the module is told when it starts.
    void useLayout(k7::Layout layout)
    {
        k7::ModuleSettings settings;
        settings.layout = layout;
        m_simulator->configure(settings);
    }
    void closeWindow()
    {
        m_dialog.reset();
        m_simulator.reset();
        m_boxes.reset();
    }

    /// Chooses a file that is there already: the dialog asks before it replaces it, and the person
    /// agrees.
    void chooseOverOldFile(const QString &button, const QString &path)
    {
        QTimer agree;
        connect(&agree, &QTimer::timeout, this, [] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (box && box->button(QMessageBox::Yes))
                box->button(QMessageBox::Yes)->click();
        });
        m_boxes->answers = false;
        agree.start(1);
        choose(button, {path});
        m_boxes->answers = true;
    }
    /// The path of a new file in a folder that goes with the window.
    QString write(const QString &name, const QByteArray &content)
    {
        const QString path = m_folder->filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    QString writePicture(const QString &name, const QImage &image)
    {
        const QString path = m_folder->filePath(name);
        if (!image.save(path))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    /// The same for a picture of one colour.
    QString picture(const QString &name, const QColor &color, int width = 4, int height = 2)
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(color);
        return writePicture(name, image);
    }
    /// A link to a file of the folder, where the system knows links to files; elsewhere none.
    void link(const QString &name, const QString &target)
    {
        const QString path = m_folder->filePath(name);
        QVERIFY(QFile::link(m_folder->filePath(target), path));
        if (!QFileInfo(path).isSymLink())
            QVERIFY(QFile::remove(path));
    }
    static QByteArray content(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }
    /// What the settings file has under `key`.
    static QVariant stored(const QString &key)
    {
        QSettings settings(QCoreApplication::applicationDirPath() + "/SystemConfig.ini",
                           QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        return settings.value(key);
    }
    void waitForBox()
    {
        runEventLoopUntil([this] { return !m_boxes->texts.isEmpty(); }, 20000);
    }
    /// Waits until the exchange that runs has ended: 100 ticks, and nothing to see at their end.
    static void finishExchange() { runEventLoop(150); }
    /// Opens the menu of the log and chooses `entry`.
    void chooseInLogMenu(const QString &entry)
    {
        QTimer::singleShot(20, this, [entry] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            for (QAction *action : menu->actions())
                if (action->text() == entry)
                    menu->setActiveAction(action);
            QCOMPARE(menu->activeAction() ? menu->activeAction()->text() : QString(), entry);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        emit find<QTextEdit>("receiveText")->customContextMenuRequested(QPoint(5, 5));
    }
    k7::Module &module() { return m_simulator->module(); }
    /// The texts of all boxes since the last call, once there is one.
    QStringList nextBoxes()
    {
        waitForBox();
        return std::exchange(m_boxes->texts, {});
    }
    /// Confirms `rate` for UART2, also one that the dialog does not offer.
    void chooseRate(int rate)
    {
        auto *set = m_dialog->findChildren<SerialSet *>().first();
        set->findChildren<QComboBox *>().last()->addItem(QString::number(rate));
        set->setBaudText(rate);
        QMetaObject::invokeMethod(set, "query_clicked");
    }
    /// Plugs the module in anew, for `bytes` bytes; then it hangs up. False when the system has no
    /// terminals for it.
    bool plugInFor(int bytes)
    {
        k7::Behaviour behaviour;
        behaviour.hangUpAfter = bytes;
        m_simulator->setBehaviour(behaviour);
        if (!m_simulator->start())
            return false;
        useModule(*m_dialog, *m_simulator);
        return true;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<k7::Simulator> m_simulator;
    std::unique_ptr<Dialog> m_dialog;
    std::unique_ptr<MessageBoxes> m_boxes;
};
