// What the visible log costs while replies stream in.

#include "app/dialog.h"
#include "bench/measure.h"

#include <QApplication>
#include <QPushButton>
#include <QTabWidget>
#include <QTextEdit>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

/// A pseudo-terminal on which replies of 9 bytes arrive, `bytesPerSecond` in all, from a thread
/// whose processor time is not the tool's.
class Stream
{
public:
    explicit Stream(int bytesPerSecond) : m_master(::posix_openpt(O_RDWR | O_NOCTTY))
    {
        ::grantpt(m_master);
        ::unlockpt(m_master);
        m_thread = std::thread([this, bytesPerSecond] { run(bytesPerSecond); });
    }
    ~Stream()
    {
        m_stopped = true;
        m_thread.join();
        ::close(m_master);
    }

    QString path() const { return QString::fromLocal8Bit(::ptsname(m_master)); }
    /// To be called once the tool has the port open: before that, the terminal would echo.
    void start() { m_started = true; }
    /// Bytes that the tool was behind at most.
    qint64 backlog() const { return m_backlog; }

private:
    void run(int bytesPerSecond)
    {
        const QByteArray reply = QByteArray::fromHex("5AA506830014010007");
        while (!m_started && !m_stopped)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const auto start = std::chrono::steady_clock::now();
        qint64 written = 0;
        while (!m_stopped) {
            std::this_thread::sleep_for(std::chrono::microseconds(800));
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            const qint64 behind = static_cast<qint64>(elapsed.count() * bytesPerSecond) - written;
            m_backlog = qMax<qint64>(m_backlog, behind);
            // Blocks while the tool does not read.
            const QByteArray bytes = reply.repeated(static_cast<int>(behind) / reply.size());
            written += qMax<ssize_t>(
                0, ::write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())));
        }
    }

    int m_master;
    std::atomic<bool> m_started{false};
    std::atomic<bool> m_stopped{false};
    std::atomic<qint64> m_backlog{0};
    std::thread m_thread;
};

void measureRate(const char *name, int bytesPerSecond, double goal)
{
    Stream stream(bytesPerSecond);
    Dialog dialog;
    dialog.offerPorts({stream.path()});
    dialog.findChild<QTabWidget *>("tabWidget")->setCurrentIndex(2);
    dialog.show();

    // Asking again before the exchange ends keeps the port open.
    QTimer asker;
    auto *button = dialog.findChild<QPushButton *>("readVersion");
    QObject::connect(&asker, &QTimer::timeout, button, &QPushButton::click);
    asker.start(80);
    button->click();

    double before = 0;
    double seconds = 0;
    constexpr int duration = 8000;
    QTimer::singleShot(2000, [&before] { before = measure::threadSeconds(); });
    QTimer::singleShot(2000 + duration, [&] {
        seconds = measure::threadSeconds() - before;
        QCoreApplication::quit();
    });
    QTimer::singleShot(500, [&stream] { stream.start(); });
    QApplication::exec();
    measure::report(name, seconds * 1000 / duration, goal);
    std::printf("# at most %lld bytes behind, %d lines shown\n",
                static_cast<long long>(stream.backlog()),
                dialog.findChild<QTextEdit *>("receiveText")->document()->blockCount());
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setStyle("Fusion");
    measureRate("PERF_LOG_115200", 11500, 0.09);
    measureRate("PERF_LOG_6250000", 625000, 0.45);
    return 0;
}
