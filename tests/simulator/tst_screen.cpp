#include "simulator/screen_window.h"
#include "simulator/simulator.h"
#include "support/event_loop.h"

#include <QBuffer>

using k7::Link;

/// What the window of a simulated module shows.
class ScreenTest : public QObject
{
    Q_OBJECT

private:
    void send(Link link, const QByteArray &bytes) { m_simulator->module().receive(link, bytes); }
    void sendHex(const char *digits) { send(Link::Uart2, QByteArray::fromHex(digits)); }
    QColor shown(int x, int y) { return m_window->grab().toImage().pixelColor(x, y); }

    std::unique_ptr<k7::Simulator> m_simulator;
    std::unique_ptr<k7::ScreenWindow> m_window;

private slots:
    /// A screen of 8 x 4 pixels: red, green and blue, the rest white.
    void init()
    {
        k7::ModuleSettings settings;
        settings.screen = {8, 4};
        m_simulator = std::make_unique<k7::Simulator>(settings);
        m_window = std::make_unique<k7::ScreenWindow>(*m_simulator);
        m_window->resize(8, m_window->sizeHint().height());
        m_window->show();
        send(Link::Ed2,
             QByteArray::fromHex("5AA50680F55A010007 F800 07E0 001F") + QByteArray(2 * 29, '\xFF'));
    }

    void chosenPageIsShownFromItsBytes()
    {
        QCOMPARE(shown(0, 0), QColor(Qt::black));
        sendHex("5AA507820084 5A010007");
        const QColor colors[] = {Qt::red, Qt::green, Qt::blue, Qt::white};
        for (int x = 0; x < 4; ++x)
            QCOMPARE(shown(x, 0), colors[x]);
        QCOMPARE(shown(7, 3), QColor(Qt::white));
        // Red 1 of 31 and green 1 of 63, blue 16 of 31.
        m_simulator->module().setPicture(7, QByteArray::fromHex("0830"));
        QCOMPARE(shown(0, 0), QColor(8, 4, 132));
        // Picture memory is newer than the choice of the page.
        sendHex("5AA5058280000FFF 5AA50B8200A2 5A80000078000000");
        QCOMPARE(shown(0, 0), QColor(8, 255, 255));
        sendHex("5AA507820084 5A010007");
        QCOMPARE(shown(0, 0), QColor(8, 4, 132));
    }

    void lightAndDirectionAreTheModules()
    {
        sendHex("5AA507820084 5A010007");
        sendHex("5AA507820082 32140000"); // half the light, and no standby
        QVERIFY(qAbs(shown(7, 3).red() - 128) < 3);
        sendHex("5AA507820080 00000002"); // upside down
        QVERIFY(shown(7, 3).red() > 120 && shown(7, 3).green() == 0);
        sendHex("5AA507820080 00000001"); // quarter turns are upright windows
        COMPARE_SOON(m_window->sizeHint().width(), 4);
        sendHex("5AA507820080 00000000");
        sendHex("5AA507820082 64000001"); // dark after a second
        COMPARE_SOON(shown(7, 3), QColor(Qt::black));
        QTest::mouseClick(m_window.get(), Qt::LeftButton);
        QCOMPARE(shown(7, 3), QColor(Qt::white));
    }

    void jpegsAreShownWhereTheyWereSent()
    {
        QImage image(2, 2, QImage::Format_RGB32);
        image.fill(Qt::black);
        QByteArray jpeg;
        QBuffer buffer(&jpeg);
        QVERIFY(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "JPG"));
        sendHex("5AA507820084 5A010007");
        for (int done = 0; done < jpeg.size(); done += 240) {
            const QByteArray chunk = jpeg.mid(done, 240).leftJustified(240, '\0');
            const int address = 0x8000 + done / 2;
            send(Link::Uart2, QByteArray::fromHex("5AA5F382") + char(address >> 8) +
                                  char(address & 0xFF) + chunk);
        }
        sendHex("5AA50B8200A6 5A01 8000 0005 0001");
        QCOMPARE(shown(5, 1), QColor(Qt::black));
        QCOMPARE(shown(4, 1), QColor(Qt::white));
        sendHex("5AA507820084 5A010007"); // the page alone again
        QCOMPARE(shown(5, 1), QColor(Qt::white));
        sendHex("5AA50B8200A6 5A02 8000 0007 0000");
        QCOMPARE(shown(0, 0), QColor(Qt::black));
        sendHex("5AA5058280001111 5AA50B8200A6 5A01 8000 0000 0000"); // no JPEG at all
        QCOMPARE(shown(7, 3), QColor(Qt::black));
    }

    void hiddenWindowsDoNothing()
    {
        m_window->hide();
        sendHex("5AA507820084 5A010007");
        for (const QTimer *timer : m_window->findChildren<QTimer *>())
            QVERIFY(!timer->isActive());
        m_window->show();
        QCOMPARE(shown(0, 0), QColor(Qt::red));
    }
};

QTEST_MAIN(ScreenTest)
#include "tst_screen.moc"
