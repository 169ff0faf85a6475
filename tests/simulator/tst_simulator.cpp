#include "serial/qt_serial_link.h"
#include "simulator/direct_link.h"
#include "simulator/simulator.h"
#include "support/event_loop.h"

#include <QSignalSpy>

using k7::Behaviour;
using k7::Simulator;
using k7::Way;

namespace {

const QByteArray askVersion = QByteArray::fromHex("5AA50483000F01");
const QByteArray version = QByteArray::fromHex("5AA50683000F014521");
const QByteArray askPage = QByteArray::fromHex("5AA50483001401");
const QByteArray page = QByteArray::fromHex("5AA506830014010000");

/// The tool's end of a link, over either way.
struct Port
{
    Port(const Simulator &simulator, const QString &name, int rate, Way way)
    {
        if (way == Way::Terminals)
            link = std::make_unique<QtSerialLink>();
        else
            link = std::make_unique<k7::DirectLink>(simulator);
        QObject::connect(link.get(), &SerialLink::readyRead,
                         [this] { received += link->readAll(); });
        QObject::connect(link.get(), &SerialLink::lost, [this] { ++losses; });
        link->setPortName(name);
        link->setBaudRate(rate);
        isOpen = link->open();
    }

    std::unique_ptr<SerialLink> link;
    bool isOpen = false;
    QByteArray received;
    int losses = 0;
};

} // namespace

/// The simulated module as the tool reaches it, the same over both ways.
class SimulatorTest : public QObject
{
    Q_OBJECT

private:
    static void addWays()
    {
        QTest::addColumn<bool>("isDirect");
        if (const std::unique_ptr<k7::Wire> terminal{k7::makeTerminal(nullptr)})
            QTest::newRow("terminals") << false;
        QTest::newRow("in the process") << true;
    }
    void start()
    {
        QFETCH(const bool, isDirect);
        m_way = isDirect ? Way::InProcess : Way::Terminals;
        m_simulator = std::make_unique<Simulator>();
        m_lines.clear();
        connect(m_simulator.get(), &Simulator::traced,
                [this](const QString &line) { m_lines.append(line); });
        QVERIFY(m_simulator->start(m_way));
    }
    Port uart() { return {*m_simulator, m_simulator->uartPath(), 115200, m_way}; }
    Port ed2(int rate) { return {*m_simulator, m_simulator->ed2Path(), rate, m_way}; }

    Way m_way = Way::Terminals;
    std::unique_ptr<Simulator> m_simulator;
    QStringList m_lines;

private slots:
    void bothLinksAnswerAtTheirRateOnly_data() { addWays(); }
    void bothLinksAnswerAtTheirRateOnly()
    {
        start();
        Port port = uart();
        Port fast = ed2(115200);
        const QByteArray handshake = QByteArray::fromHex("5AA50480F35A07");
        fast.link->write(handshake);
        COMPARE_SOON(m_lines, QStringList{"ED2 hears garbage: 115200 bit/s instead of 6250000"});
        if (m_way == Way::InProcess) {   // where it has arrived behind this
            fast.link->write(handshake); // says so once
            QCoreApplication::processEvents();
        }
        fast.link->setBaudRate(6250000);
        fast.link->write(handshake);
        COMPARE_SOON(fast.received.toHex(), QByteArray("5aa503804f4b"));
        port.link->write(askVersion);
        COMPARE_SOON(port.received.toHex(), version.toHex());
        port.link->setBaudRate(128000);
        port.link->write(askVersion);
        COMPARE_SOON(m_lines.size(), 4);
        QCOMPARE(m_lines.last(), QString("UART2 hears garbage: 128000 bit/s instead of 115200"));
        QCOMPARE(port.received, version);
    }

    void everyByteValuePassesInOrder_data() { addWays(); }
    void everyByteValuePassesInOrder()
    {
        start();
        QByteArray block;
        for (int i = 0; i < k7::Flash::blockBytes; ++i)
            block.append(static_cast<char>(i + i / 256));
        Port fast = ed2(6250000);
        fast.link->write(QByteArray::fromHex("5AA50480F35A07") + block);
        COMPARE_SOON(m_simulator->module().flash().read(7 * block.size(), block.size()), block);
        // Far more replies in all than a terminal holds.
        Port port = uart();
        port.link->write(QByteArray::fromHex("5AA5048310007D").repeated(400) + askVersion);
        COMPARE_SOON(port.received.size(), 400 * 257 + version.size());
        QVERIFY(port.received.endsWith(version));
    }

    void portsAreFoundAndTakenOnce_data() { addWays(); }
    void portsAreFoundAndTakenOnce()
    {
        start();
        Port port = uart();
        QVERIFY(port.isOpen && !port.link->open() && port.link->isOpen());
        port.link->write(askVersion);
        port.link->close();
        port.link->write("lost");
        COMPARE_SOON(m_lines.size(), 1);
        QVERIFY(port.link->open());
        // What came while it was closed is forgotten; poll() needs no event of the link.
        port.link->write(askPage);
        runEventLoopUntil([this] { return m_lines.size() == 2; });
        for (int i = 0; i < 100000 && port.received.isEmpty(); ++i) {
            QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
            port.link->poll();
        }
        QCOMPARE(port.received.toHex(), page.toHex());
        const Port nowhere(*m_simulator, "nowhere", 115200, m_way);
        QVERIFY(!nowhere.isOpen && nowhere.link->openFailure() == OpenFailure::NoSuchPort);
        if (m_way == Way::InProcess) {
            const Port second = uart();
            QVERIFY(!second.isOpen && second.link->openFailure() == OpenFailure::InUse);
            QCOMPARE(m_simulator->uartPath() + m_simulator->ed2Path(), QString("SIM-UART2SIM-ED2"));
        }
    }

    void wiringMayBeBad_data() { addWays(); }
    void wiringMayBeBad()
    {
        start();
        Port port = uart();
        const Behaviour rows[] = {
            {{1}, 0, false, false, -1, false}, {{4}, 5, false, false, -1, false},
            {{}, 0, false, true, -1, false},   {{}, 0, true, false, -1, false},
            {{}, 0, false, false, -1, true},   {{0, 3, 5}, 0, false, false, -1, false},
        };
        for (const Behaviour &behaviour : rows) {
            m_simulator->setBehaviour(behaviour);
            m_lines.clear();
            port.received.clear();
            port.link->write(askVersion + askPage);
            COMPARE_SOON(m_lines.size(), 2);
            const bool isAnswered = !behaviour.silent;
            runEventLoopUntil([&] { return port.received.endsWith(page); },
                              isAnswered ? longestWait : 20);
            QCOMPARE(port.received.contains(version) && port.received.endsWith(page), isAnswered);
            const int noise = port.received.size() - version.size() - page.size();
            QCOMPARE(noise > 0, behaviour.noisy);
        }
    }

    void hangsUpAfterSoManyBytes_data() { addWays(); }
    void hangsUpAfterSoManyBytes()
    {
        const std::pair<int, int> rows[] = {{0, 0}, {6, 0}, {7, 1}, {13, 1}};
        for (const auto &[limit, understood] : rows) {
            start();
            Behaviour behaviour;
            behaviour.hangUpAfter = limit;
            m_simulator->setBehaviour(behaviour);
            QSignalSpy hungUp(m_simulator.get(), &Simulator::hungUp);
            Port port = uart();
            Port fast = ed2(6250000);
            port.link->write(askVersion + askPage);
            COMPARE_SOON(port.losses + fast.losses, 2);
            QCOMPARE(hungUp.size(), 1);
            QCOMPARE(m_lines.size(), understood);
            QVERIFY(!port.link->isOpen() && m_simulator->uartPath().isEmpty());
            // Plugged in again it remembers, but for the unfinished frame.
            m_simulator->setBehaviour(Behaviour());
            m_simulator->module().setVp(0x0014, 0x0102);
            QVERIFY(m_simulator->start(m_way));
            Port again = uart();
            again.link->write(askPage);
            COMPARE_SOON(again.received.toHex(), QByteArray("5aa506830014010102"));
        }
    }

    void bytesTakeTheirTimeOnTheLine()
    {
        k7::LineQueue line(115200); // 86 805 ns a byte
        line.send("abc", 1000);
        QCOMPARE(line.takeArrived(1000 + 86804), QByteArray());
        QCOMPARE(line.takeArrived(1000 + 2 * 86805), QByteArray("ab"));
        line.send("de", 1000 + 2 * 86805 + 5);
        QCOMPARE(line.takeArrived(1000 + 4 * 86805), QByteArray("cd"));
        QCOMPARE(line.takeArrived(1'000'000'000), QByteArray("e"));
        line.send("f", 2'000'000'000);
        QCOMPARE(line.takeArrived(2'000'000'001), QByteArray());
    }

    /// When the bytes of two replies of 100 bytes come, which the module sends 9 ms apart.
    void adapterHoldsRepliesBack()
    {
        struct Row
        {
            k7::Wiring wiring;
            int first, second, last, all; ///< bytes at 0, at 9 and until 15 ms, and at the end
        };
        const Row rows[] = {
            {{}, 100, 200, 200, 200},
            {{50}, 50, 150, 200, 200},    // 50 at 0, 2, 9 and 11 ms
            {{0, 16}, 62, 186, 186, 200}, // the timer of the last 14 ends at 25 ms
            {{0, 5}, 62, 162, 200, 200},  // that of the first 38 at 5 ms
            {{0, 0, 0, 1000}, 0, 0, 0, 0},
            {{0, 0, 0, 0, 1000}, 200, 400, 400, 400},
            {{0, 0, 0, 0, 0, 1000}, 100, 200, 200, 200},
        };
        for (const Row &row : rows) {
            k7::Adapter adapter(7);
            adapter.setWiring(row.wiring);
            QByteArray all;
            QVector<int> counts;
            for (const qint64 now : {0, 9, 15, 40}) {
                const qint64 time = (1000 + now) * 1'000'000;
                if (now == 0 || now == 9)
                    adapter.enqueue(QByteArray(100, 'a'), 0, time);
                for (QByteArray piece; !(piece = adapter.takeDue(time)).isEmpty();)
                    all += piece;
                counts.append(all.size());
            }
            QCOMPARE(counts, QVector<int>({row.first, row.second, row.last, row.all}));
            QCOMPARE(all.count('a'), row.wiring.flipped > 0 ? 198 : row.all);
        }
    }
};

QTEST_GUILESS_MAIN(SimulatorTest)
#include "tst_simulator.moc"
