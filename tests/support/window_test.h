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
/// window. Their time is that of the event loop, so that a download of a minute takes no longer
/// than its work, and ends the same however busy the computer is.
class WindowTest : public QObject, public Person
{
    Q_OBJECT

private slots:
    void init() { QVERIFY(openWindow()); }
    void cleanup() { closeWindow(); }

protected:
    QWidget &window() override { return *m_dialog; }
    /// Opens a window with default settings, on the ports of a new module, as `way` tells. False
    /// when the system has no terminals for it.
    bool openWindow(k7::Way way = k7::Way::InProcess)
    {
        closeWindow();
        QFile::remove(QCoreApplication::applicationDirPath() + "/SystemConfig.ini");
        m_folder = std::make_unique<QTemporaryDir>();
        m_time = std::make_unique<k7::SharedTime>(way == k7::Way::InProcess
                                                      ? k7::SharedTime::Pace::OfTheLoop
                                                      : k7::SharedTime::Pace::OfTheSystem);
        m_simulator = std::make_unique<k7::Simulator>(k7::ModuleSettings(), m_time.get());
        if (!m_simulator->start(way))
            return false;
        m_dialog = simulatedDialog(*m_simulator, *m_time);
        m_boxes = std::make_unique<MessageBoxes>(k7::timeOf(*m_time));
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
        m_time.reset();
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
    /// As the function of that name, but `isDone` is asked after each step of the time of window
    /// and module, so that nothing is overlooked on a busy computer.
    template<typename IsDone>
    void runEventLoopUntil(IsDone isDone)
    {
        if (isDone())
            return;
        QEventLoop loop;
        QTimer::singleShot(longestWait, &loop, &QEventLoop::quit);
        connect(m_time.get(), &k7::SharedTime::passed, &loop, [&] {
            if (isDone())
                loop.quit();
        });
        loop.exec();
    }
    void waitForBox()
    {
        runEventLoopUntil([this] { return !m_boxes->texts.isEmpty(); });
    }
    /// Lets the time of window and module pass.
    void pass(int milliseconds)
    {
        const qint64 end = m_time->milliseconds() + milliseconds;
        runEventLoopUntil([&] { return m_time->milliseconds() >= end; });
    }
    /// Waits until the exchange that runs has ended: 100 ticks, and nothing to see at their end.
    void finishExchange() { pass(150); }
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
    /// Plugs the module in anew, for `bytes` bytes; then it hangs up.
    bool plugInFor(int bytes)
    {
        k7::Behaviour behaviour;
        behaviour.hangUpAfter = bytes;
        m_simulator->setBehaviour(behaviour);
        if (!m_simulator->start(k7::Way::InProcess))
            return false;
        useModule(*m_dialog, *m_simulator);
        return true;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<k7::SharedTime> m_time;
    std::unique_ptr<k7::Simulator> m_simulator;
    std::unique_ptr<Dialog> m_dialog;
    std::unique_ptr<MessageBoxes> m_boxes;
};
