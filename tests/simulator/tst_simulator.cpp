#include "simulator/simulator.h"

#include <QSignalSpy>
#include <QtTest>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

using k7::Behaviour;
using k7::ReplyQueue;
using k7::Simulator;

namespace {

const QByteArray askVersion = QByteArray::fromHex("5AA50483000F01");
const QByteArray version = QByteArray::fromHex("5AA50683000F014521");
const QByteArray askPage = QByteArray::fromHex("5AA50483001401");
const QByteArray page = QByteArray::fromHex("5AA506830014010000");

/// The tool's side of a terminal, without any settings of its own.
class Port
{
public:
    explicit Port(const QString &path)
        : m_descriptor(::open(qPrintable(path), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    ~Port()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Q_DISABLE_COPY(Port)

    bool write(const QByteArray &bytes)
    {
        return ::write(m_descriptor, bytes.constData(), static_cast<size_t>(bytes.size())) ==
               bytes.size();
    }
    /// All that has come since the port was opened.
    QByteArray received()
    {
        char buffer[4096];
        ssize_t count;
        while ((count = ::read(m_descriptor, buffer, sizeof buffer)) > 0)
            m_received.append(buffer, static_cast<int>(count));
        m_isGone = m_isGone || count == 0 || (errno != EAGAIN && errno != EINTR);
        return m_received;
    }
    /// Whether reading has shown that there is no device any more.
    bool isGone()
    {
        received();
        return m_isGone;
    }

private:
    const int m_descriptor;
    QByteArray m_received;
    bool m_isGone = false;
};

} // namespace

class SimulatorTest : public QObject
{
    Q_OBJECT

private slots:
    void bothLinksAnswer();
    void everyByteValuePassesTheTerminal();
    void portCanBeOpenedAgain();
    void repliesThatNobodyReadsAreKeptInOrder();
    void repliesComeInOrder_data();
    void repliesComeInOrder();
    void noiseGoesBeforeEachReply();
    void silentModuleObeysWithoutReply();
    void bothDevicesDisappearOnHangUp();
    void hangsUpAfterSoManyBytes_data();
    void hangsUpAfterSoManyBytes();
    void pluggedInAgainItKeepsItsMemory();
    void queueCutsRepliesIntoPieces_data();
    void queueCutsRepliesIntoPieces();
    void clearedQueueSendsNothing();
};

void SimulatorTest::bothLinksAnswer()
{
    Simulator simulator;
    QSignalSpy traced(&simulator, &Simulator::traced);
    QVERIFY(simulator.start());
    QVERIFY(simulator.uartPath() != simulator.ed2Path());
    Port uart(simulator.uartPath());
    Port ed2(simulator.ed2Path());
    QVERIFY(uart.write(askVersion));
    QTRY_COMPARE(uart.received().toHex(), version.toHex());
    QVERIFY(ed2.write(QByteArray::fromHex("5AA50480F35A07")));
    QTRY_COMPARE(ed2.received().toHex(), QByteArray("5aa503804f4b"));
    QCOMPARE(traced.size(), 2);
    QCOMPARE(traced.at(0).at(0).toString(), QString("UART2 read VP 0x000F, 1 word"));
    QCOMPARE(traced.at(1).at(0).toString(), QString("ED2 write control 0xF3, 2 bytes"));
}

void SimulatorTest::everyByteValuePassesTheTerminal()
{
    QByteArray allBytes;
    for (int value = 0; value < 256; ++value)
        allBytes.append(static_cast<char>(value));
    k7::PseudoTerminal terminal;
    QByteArray received;
    connect(&terminal, &k7::PseudoTerminal::received,
            [&received](const QByteArray &bytes) { received += bytes; });
    QVERIFY(terminal.open());
    QVERIFY(!terminal.open());
    Port port(terminal.path());
    QVERIFY(port.write(allBytes));
    QTRY_COMPARE(received.toHex(), allBytes.toHex());
    terminal.write(allBytes);
    QTRY_COMPARE(port.received().toHex(), allBytes.toHex());
}

void SimulatorTest::portCanBeOpenedAgain()
{
    Simulator simulator;
    QVERIFY(simulator.start());
    for (int i = 0; i < 3; ++i) {
        Port uart(simulator.uartPath());
        QVERIFY(uart.write(askVersion));
        QTRY_COMPARE(uart.received().toHex(), version.toHex());
    }
}

void SimulatorTest::repliesThatNobodyReadsAreKeptInOrder()
{
    constexpr int questions = 400;
    Simulator simulator;
    simulator.module().setVp(0x1000, 0xABCD);
    QSignalSpy traced(&simulator, &Simulator::traced);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    // 125 words each, far more in all than a terminal holds.
    QVERIFY(uart.write(QByteArray::fromHex("5AA5048310007D").repeated(questions)));
    QTRY_COMPARE(traced.size(), questions);
    QVERIFY(uart.write(askVersion));
    QTRY_COMPARE(traced.size(), questions + 1);
    const QByteArray reply = QByteArray::fromHex("5AA5FE8310007DABCD") + QByteArray(248, '\0');
    QTRY_COMPARE(uart.received().size(), questions * reply.size() + version.size());
    QCOMPARE(uart.received(), reply.repeated(questions) + version);
}

void SimulatorTest::repliesComeInOrder_data()
{
    QTest::addColumn<int>("delay");
    QTest::addColumn<int>("split");
    QTest::newRow("at once") << 0 << 0;
    QTest::newRow("late") << 20 << 0;
    QTest::newRow("byte by byte") << 0 << 1;
    QTest::newRow("late, in pieces") << 5 << 4;
}

void SimulatorTest::repliesComeInOrder()
{
    QFETCH(int, delay);
    QFETCH(int, split);
    Simulator simulator;
    Behaviour behaviour;
    behaviour.delay = delay;
    behaviour.split = split;
    simulator.setBehaviour(behaviour);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    QElapsedTimer clock;
    clock.start();
    QVERIFY(uart.write(askVersion + askPage));
    QVERIFY(uart.write(askVersion));
    QTRY_COMPARE(uart.received().toHex(), (version + page + version).toHex());
    QVERIFY(clock.elapsed() >= 3 * delay);
}

void SimulatorTest::noiseGoesBeforeEachReply()
{
    Simulator simulator;
    Behaviour behaviour;
    behaviour.noisy = true;
    simulator.setBehaviour(behaviour);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    QVERIFY(uart.write(askVersion + askPage));
    QTRY_VERIFY(uart.received().endsWith(page));
    const int first = uart.received().indexOf(version);
    const int second = uart.received().indexOf(page);
    const QByteArray noise = uart.received().left(first);
    QVERIFY(!noise.isEmpty());
    QVERIFY(second > first + version.size());
    for (const char forbidden : {'\x5A', 'O', 'K'})
        QVERIFY(!noise.contains(forbidden));
}

void SimulatorTest::silentModuleObeysWithoutReply()
{
    Simulator simulator;
    QSignalSpy traced(&simulator, &Simulator::traced);
    Behaviour behaviour;
    behaviour.silent = true;
    simulator.setBehaviour(behaviour);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    QVERIFY(uart.write(QByteArray::fromHex("5AA507820084 5A010003")));
    QTRY_COMPARE(traced.size(), 1);
    QCOMPARE(simulator.module().picturePage(), 3);

    // Replies keep their order, so a first one would come before this one.
    simulator.setBehaviour(Behaviour());
    QVERIFY(uart.write(askVersion));
    QTRY_COMPARE(uart.received().toHex(), version.toHex());
}

void SimulatorTest::bothDevicesDisappearOnHangUp()
{
    Simulator simulator;
    QSignalSpy hungUp(&simulator, &Simulator::hungUp);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    Port ed2(simulator.ed2Path());
    QVERIFY(!uart.isGone());
    simulator.hangUp();
    QCOMPARE(hungUp.size(), 1);
    QCOMPARE(simulator.uartPath(), QString());
    QVERIFY(uart.isGone());
    QVERIFY(ed2.isGone());
}

void SimulatorTest::hangsUpAfterSoManyBytes_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<int>("understood");
    QTest::newRow("the first byte") << 0 << 0;
    QTest::newRow("within a frame") << 6 << 0;
    QTest::newRow("at its end") << 7 << 1;
    QTest::newRow("within the second") << 13 << 1;
}

void SimulatorTest::hangsUpAfterSoManyBytes()
{
    QFETCH(int, limit);
    QFETCH(int, understood);
    Simulator simulator;
    QSignalSpy traced(&simulator, &Simulator::traced);
    QSignalSpy hungUp(&simulator, &Simulator::hungUp);
    Behaviour behaviour;
    behaviour.hangUpAfter = limit;
    simulator.setBehaviour(behaviour);
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    Port ed2(simulator.ed2Path());
    QVERIFY(uart.write(askVersion + askPage));
    QTRY_VERIFY(uart.isGone());
    QVERIFY(ed2.isGone());
    QCOMPARE(hungUp.size(), 1);
    QCOMPARE(traced.size(), understood);
    QCOMPARE(uart.received(), QByteArray());
}

void SimulatorTest::pluggedInAgainItKeepsItsMemory()
{
    Simulator simulator;
    QVERIFY(simulator.start());
    simulator.module().setVp(0x0014, 0x0102);
    {
        Port uart(simulator.uartPath());
        QVERIFY(uart.write(askPage.left(5)));
        Behaviour behaviour;
        behaviour.hangUpAfter = 5;
        simulator.setBehaviour(behaviour);
        QTRY_VERIFY(uart.isGone());
    }
    simulator.setBehaviour(Behaviour());
    QVERIFY(simulator.start());
    Port uart(simulator.uartPath());
    QVERIFY(uart.write(askPage));
    QTRY_COMPARE(uart.received().toHex(), QByteArray("5aa506830014010102"));
}

void SimulatorTest::queueCutsRepliesIntoPieces_data()
{
    QTest::addColumn<int>("split");
    QTest::addColumn<QByteArrayList>("pieces");
    QTest::newRow("whole") << 0 << QByteArrayList({"abcdefg", "hi"});
    QTest::newRow("negative is whole") << -1 << QByteArrayList({"abcdefg", "hi"});
    QTest::newRow("single bytes") << 1
                                  << QByteArrayList({"a", "b", "c", "d", "e", "f", "g", "h", "i"});
    QTest::newRow("with a rest") << 3 << QByteArrayList({"abc", "def", "g", "hi"});
    QTest::newRow("longer than any") << INT_MAX << QByteArrayList({"abcdefg", "hi"});
}

void SimulatorTest::queueCutsRepliesIntoPieces()
{
    QFETCH(int, split);
    QFETCH(QByteArrayList, pieces);
    ReplyQueue queue;
    QByteArrayList sent;
    connect(&queue, &ReplyQueue::due, [&sent](const QByteArray &piece) { sent.append(piece); });
    queue.enqueue("abcdefg", 0, split);
    queue.enqueue(QByteArray(), 0, split);
    queue.enqueue("hi", -1, split);
    QCOMPARE(sent.size(), 0);
    QTRY_COMPARE(sent, pieces);
}

void SimulatorTest::clearedQueueSendsNothing()
{
    ReplyQueue queue;
    QByteArrayList sent;
    connect(&queue, &ReplyQueue::due, [&sent](const QByteArray &piece) { sent.append(piece); });
    queue.enqueue("dropped", 0, 1);
    queue.clear();
    queue.enqueue("sent", 0, 0);
    QTRY_COMPARE(sent, QByteArrayList({"sent"}));
}

QTEST_GUILESS_MAIN(SimulatorTest)
#include "tst_simulator.moc"
