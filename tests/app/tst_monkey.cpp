#include "support/random_bytes.h"
#include "support/window_test.h"

#include <QAbstractSlider>
#include <QTabWidget>
#include <QtTest>

/// Somebody who presses everything, in no order. The seed is printed; VORAII_MONKEY_SEED repeats
/// it, VORAII_MONKEY_ACTS lets it go on for longer.
class TestMonkey : public WindowTest
{
    Q_OBJECT

private slots:
    void windowOutlivesAnything()
    {
        bool isGiven = false;
        uint seed = qgetenv("VORAII_MONKEY_SEED").toUInt(&isGiven);
        if (!isGiven)
            seed = QRandomGenerator::global()->generate();
        const int acts = qMax(1000, qgetenv("VORAII_MONKEY_ACTS").toInt());
        qInfo("VORAII_MONKEY_SEED=%u", seed);
        m_random.seed(seed);
        confirmEd2Rate();

        for (const char *name : {"1_a.bin", "2_b.ICO", "3_c.CFG", "4.txt", "ZOLTOS.bin", "5.jpg"})
            m_paths.append(write(name, "K7D1" + randomBytes(m_random.bounded(20000))));
        for (const char *name : {"6_e.png", "7.bmp", "8_f.jpeg"})
            m_paths.append(picture(name, Qt::blue, m_random.bounded(1, 300), 20));
        m_paths.append({m_folder->path(), m_folder->filePath("new"), "/no/such/folder/file"});

        // The settings dialogs are only confirmed or cancelled, so that the ports stay the
        // module's.
        for (auto *widget : m_dialog->findChildren<QWidget *>())
            if (widget->window() == m_dialog.get())
                m_controls.append(widget);
        QTimer person;
        connect(&person, &QTimer::timeout, this, &TestMonkey::answer);
        person.start(m_time->turn());
        for (int i = 0; i < acts; ++i) {
            act();
            pass(m_random.bounded(12));
        }
        person.stop();
        // It still does what it is for, with a module whose replies do not queue for seconds.
        m_simulator->setBehaviour({});
        click("stopFont");
        m_simulator->hangUp();
        QVERIFY(m_simulator->start(k7::Way::InProcess));
        useModule(*m_dialog, *m_simulator);
        pass(300);
        find<QLineEdit>("displayVersion")->clear();
        const auto isRead = [this] { return line("displayVersion").startsWith("GUI:V"); };
        // What still runs, such as a reset behind the box of an OS download, may take the first
        // ones.
        for (int attempt = 0; attempt < 10 && !isRead(); ++attempt) {
            click("readVersion");
            pass(1000);
        }
        runEventLoopUntil(isRead);
        QVERIFY2(isRead(), qPrintable(m_done.join('\n')));
    }

private:
    void act()
    {
        QWidget *widget = m_controls.at(m_random.bounded(m_controls.size()));
        if (!widget->isEnabled() || widget->objectName().startsWith("qt_"))
            return;
        m_done.append(widget->objectName());
        if (m_done.size() > 30)
            m_done.removeFirst();
        if (auto *button = qobject_cast<QAbstractButton *>(widget))
            button->click();
        else if (auto *combo = qobject_cast<QComboBox *>(widget))
            combo->setCurrentIndex(m_random.bounded(-1, combo->count()));
        else if (auto *spin = qobject_cast<QSpinBox *>(widget))
            spin->setValue(m_random.bounded(2) == 0 ? m_random.bounded(300)
                                                    : static_cast<int>(m_random.generate()));
        else if (auto *slider = qobject_cast<QAbstractSlider *>(widget))
            slider->setValue(m_random.bounded(3000));
        else if (auto *edit = qobject_cast<QLineEdit *>(widget))
            edit->setText(anyText());
        else if (auto *tabs = qobject_cast<QTabWidget *>(widget))
            tabs->setCurrentIndex(m_random.bounded(tabs->count()));
        else if (auto *table = qobject_cast<QTableWidget *>(widget)) {
            table->setCurrentCell(m_random.bounded(-1, table->rowCount() + 1), 0);
            if (auto *item = table->currentItem(); item && m_random.bounded(3) == 0)
                item->setText(anyText());
        }
        k7::Behaviour behaviour;
        behaviour.silent = m_random.bounded(8) == 0;
        behaviour.noisy = m_random.bounded(4) == 0;
        behaviour.split = m_random.bounded(4);
        m_simulator->setBehaviour(behaviour);
    }

    void answer()
    {
        if (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog || qobject_cast<QMessageBox *>(dialog))
            return; // boxes have a person of their own
        const bool isAccepted = m_random.bounded(3) > 0;
        if (qobject_cast<QFileDialog *>(dialog) && isAccepted)
            dialog->findChild<QLineEdit *>("fileNameEdit")->setText(anyPath());
        if (isAccepted)
            QMetaObject::invokeMethod(dialog, "accept");
        else
            dialog->reject();
    }

    QString anyPath() { return m_paths.at(m_random.bounded(m_paths.size())); }
    QString anyText()
    {
        static const QString texts[] = {"",          "12 34", "GG",         "中文",
                                        "0001 0002", "-1",    "99999999999"};
        return m_random.bounded(2) == 0
                   ? texts[m_random.bounded(static_cast<int>(std::size(texts)))]
                   : QString::fromLatin1(randomBytes(m_random.bounded(60)).toHex());
    }

    QRandomGenerator m_random;
    QStringList m_paths;
    QVector<QWidget *> m_controls;
    QStringList m_done; ///< the last things, for whoever looks for a fault
};

QTEST_MAIN(TestMonkey)
#include "tst_monkey.moc"
