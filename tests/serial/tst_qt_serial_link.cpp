#include "serial/qt_serial_link.h"
#include "simulator/pseudo_terminal.h"
#include "support/event_loop.h"

#include <QProcess>
#include <QSignalSpy>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>

class TestQtSerialLink : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_terminal = std::make_unique<k7::PseudoTerminal>();
        QVERIFY(m_terminal->open());
        m_link = std::make_unique<QtSerialLink>();
        m_link->setPortName(m_terminal->path());
        m_link->setBaudRate(6250000);
        m_received.clear();
        connect(m_link.get(), &SerialLink::readyRead, this,
                [this] { m_received += m_link->readAll(); });
    }

    void cleanup()
    {
        m_link.reset();
        m_terminal.reset();
    }

    void bytesGoBothWays()
    {
        QByteArray sent;
        connect(m_terminal.get(), &k7::PseudoTerminal::received, this,
                [&sent](const QByteArray &bytes) { sent += bytes; });
        QVERIFY(m_link->open());
        QCOMPARE(m_link->findChild<QSerialPort *>()->stopBits(), QSerialPort::OneStop);
        QByteArray all;
        for (int i = 0; i < 70000; ++i)
            all.append(static_cast<char>(i));
        m_link->write(all);
        QCOMPARE(m_link->bytesToSend(), qint64{all.size()});
        COMPARE_SOON(sent.size(), all.size());
        QCOMPARE(sent, all);
        COMPARE_SOON(m_link->bytesToSend(), qint64{0});

        m_terminal->write(all);
        COMPARE_SOON(m_received.size(), all.size());
        QCOMPARE(m_received, all);
    }

    void portsThatCannotBeOpenedAreReported()
    {
        QTemporaryFile file;
        QVERIFY(file.open());
        for (const auto &[name, cause] : {std::pair(QString("Refresh"), OpenFailure::NoSuchPort),
                                          {file.fileName(), OpenFailure::NotASerialPort}}) {
            m_link->setPortName(name);
            QVERIFY(!m_link->open());
            QVERIFY(!m_link->isOpen());
            QCOMPARE(m_link->openFailure(), cause);
        }
        m_link->setPortName(m_terminal->path());
        QVERIFY(m_link->open());
        QVERIFY(!m_link->open());
        QVERIFY(m_link->isOpen());
    }

    void bytesFromBeforeTheOpenAreForgotten()
    {
        QSignalSpy received(m_terminal.get(), &k7::PseudoTerminal::received);
        m_terminal->write("late reply");
        m_link->write("lost");
        QVERIFY(m_link->open());
        m_terminal->write("new");
        COMPARE_SOON(m_received, QByteArray("new"));
        m_link->write("kept");
        m_link->close();
        COMPARE_SOON(received.count(), 1);
        QCOMPARE(received.first().first().toByteArray(), QByteArray("kept"));
        // A frame goes out when the link is abandoned, too.
        QVERIFY(m_link->open());
        m_link->write("next");
        m_link->abandon();
        QVERIFY(!m_link->isOpen());
        COMPARE_SOON(received.count(), 2);
        QCOMPARE(received.last().first().toByteArray(), QByteArray("next"));
    }

    void pollReadsWithoutTheEventLoop()
    {
        QVERIFY(m_link->open());
        m_link->poll();
        QVERIFY(m_received.isEmpty());
        m_terminal->write("reply");
        m_link->poll();
        QCOMPARE(m_received, QByteArray("reply"));
    }

    void refusedRateIsNotPassedOver()
    {
        QSignalSpy lost(m_link.get(), &SerialLink::lost);
        QVERIFY(m_link->open());
        m_link->setBaudRate(-1);
        QVERIFY(!m_link->isOpen());
        COMPARE_SOON(lost.count(), 1);
        QVERIFY(!m_link->open());
        m_link->setBaudRate(9600);
        QVERIFY(m_link->open());
    }

    void portOfTheOtherLinkIsNamed()
    {
        const QTemporaryDir folder;
        const QString alias = folder.filePath("by-id");
        QVERIFY(QFile::link(m_terminal->path(), alias));
        for (const auto &[name, otherName] : {std::pair(m_terminal->path(), m_terminal->path()),
                                              {m_terminal->path(), alias},
                                              {alias, m_terminal->path()}}) {
            QtSerialLink other;
            other.setPortName(otherName);
            m_link->setPortName(name);
            QVERIFY(m_link->open());
            m_link->setPortName("elsewhere"); // the open device stays
            QVERIFY(!other.open());
            QCOMPARE(other.openFailure(), OpenFailure::InUse);
            other.setPeer(*m_link);
            QVERIFY(!other.open());
            QCOMPARE(other.openFailure(), OpenFailure::OurOwn);
            m_link->close();
            QVERIFY(other.open());
        }
    }

    void portThatAProgramLockedIsLeftAlone()
    {
        QProcess program;
        program.start("flock", {m_terminal->path(), "cat"});
        program.write("locked");
        QVERIFY(program.waitForReadyRead());
        QVERIFY(!m_link->open());
        QVERIFY(!m_link->isOpen());
        QCOMPARE(m_link->openFailure(), OpenFailure::InUse);
        const QString holder = QString("flock (%1)").arg(program.processId());
        QVERIFY2(m_link->holders().contains(holder), qPrintable(m_link->holders().join(' ')));
        program.closeWriteChannel();
        QVERIFY(program.waitForFinished());
        QVERIFY(m_link->open());
    }

    void vanishedDeviceIsReportedOnceAndClosed()
    {
        // The system may give the name of the terminal to somebody else at once; a link of ours
        // goes.
        const QTemporaryDir folder;
        const QString name = folder.filePath("port");
        QVERIFY(QFile::link(m_terminal->path(), name));
        m_link->setPortName(name);
        QSignalSpy lost(m_link.get(), &SerialLink::lost);
        QVERIFY(m_link->open());
        m_terminal->hangUp();
        m_link->poll();
        QCOMPARE(lost.count(), 0); // whoever hears it may show a box, so not within poll()
        COMPARE_SOON(lost.count(), 1);
        QVERIFY(!m_link->isOpen());
        runEventLoop(20);
        QCOMPARE(lost.count(), 1);
        QVERIFY(QFile::remove(name));
        QVERIFY(!m_link->open());
        QCOMPARE(m_link->openFailure(), OpenFailure::NoSuchPort);
        // Another device that gets the name is taken for it.
        QVERIFY(m_terminal->open());
        QVERIFY(QFile::link(m_terminal->path(), name));
        QVERIFY(m_link->open());
        m_terminal->write("back");
        COMPARE_SOON(m_received, QByteArray("back"));
    }

    void readThatFindsNothingIsNoLoss()
    {
        QSignalSpy lost(m_link.get(), &SerialLink::lost);
        QVERIFY(m_link->open());
        QSocketNotifier *reading = nullptr;
        for (auto *notifier : m_link->findChildren<QSocketNotifier *>())
            if (notifier->type() == QSocketNotifier::Read)
                reading = notifier;
        QVERIFY(reading);
        for (const int error : {EAGAIN, EIO, EBADF, 0}) {
            // As the event loop does when poll() has emptied the port in between.
            QEvent activation(QEvent::SockAct);
            errno = error;
            QCoreApplication::sendEvent(reading, &activation);
            m_received.clear();
            m_terminal->write("still here");
            COMPARE_SOON(m_received, QByteArray("still here"));
        }
        QVERIFY(m_link->isOpen());
        QCOMPARE(lost.count(), 0);
    }

private:
    std::unique_ptr<k7::PseudoTerminal> m_terminal;
    std::unique_ptr<QtSerialLink> m_link;
    QByteArray m_received;
};

QTEST_GUILESS_MAIN(TestQtSerialLink)
#include "tst_qt_serial_link.moc"
