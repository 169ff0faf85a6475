#include "cli/each_device.h"

#include "cli/child_process.h"
#include "cli/console.h"
#include "cli/interrupt.h"
#include "cli/report.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QProcess>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr qint64 muchInput = 64 * 1024; ///< that is kept for a device that takes less than comes

/// One device and the process that works with it.
class Child
{
public:
    Child(const QString &device, const QStringList &arguments, Report &report)
        : m_device(device), m_report(report)
    {
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process,
                         [this] { pass(QProcess::StandardOutput); });
        QObject::connect(&m_process, &QProcess::readyReadStandardError, &m_process,
                         [this] { pass(QProcess::StandardError); });
        // All of it, when it has ended.
        QObject::connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished),
                         &m_process, [this] {
                             pass(QProcess::StandardOutput);
                             pass(QProcess::StandardError);
                         });
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }
    ~Child() { m_process.waitForFinished(-1); }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    const QString &device() const { return m_device; }
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    void interrupt() { m_process.interrupt(); }
    /// Input that it has not taken yet.
    qint64 waitingInput() const { return hasEnded() ? 0 : m_process.bytesToWrite(); }
    void give(const QByteArray &input)
    {
        if (!hasEnded())
            m_process.write(input);
    }
    void endInput() { m_process.closeWriteChannel(); }
    int code() const
    {
        const bool isNormal = m_process.error() != QProcess::FailedToStart &&
                              m_process.exitStatus() == QProcess::NormalExit;
        return isNormal ? m_process.exitCode() : ExitCode::noAnswer;
    }

private:
    /// Its whole lines, and what is left when it has ended.
    void pass(QProcess::ProcessChannel channel)
    {
        m_process.setReadChannel(channel);
        while (m_process.canReadLine() || (hasEnded() && m_process.bytesAvailable() > 0)) {
            QByteArray line = m_process.readLine();
            for (const char end : {'\n', '\r'})
                if (line.endsWith(end))
                    line.chop(1);
            const QString text = QString::fromLocal8Bit(line);
            if (channel == QProcess::StandardError) {
                console::print(stderr, m_device + ": " + text + '\n');
                continue;
            }
            QJsonObject json = QJsonDocument::fromJson(line).object();
            if (json.isEmpty())
                json = {{"type", "note"}, {"text", text}};
            json.insert("device", m_device);
            m_report.result(json, m_device + ": " + text);
        }
    }

    const QString m_device;
    Report &m_report;
    ChildProcess m_process;
};

using Children = std::vector<std::unique_ptr<Child>>;

/// `arguments` with `value` for `option`.
QStringList withOption(QStringList arguments, const QString &option, const QString &value)
{
    for (int i = 0; i < arguments.size(); ++i) {
        if (arguments.at(i).startsWith(option + '=')) {
            arguments[i] = option + '=' + value;
            return arguments;
        }
        if (arguments.at(i) == option && i + 1 < arguments.size()) {
            arguments[i + 1] = value;
            return arguments;
        }
    }
    return QStringList{option, value} + arguments; // the environment named it
}

Children startAll(const SharedWork &work, Report &report)
{
    Children children;
    for (const QString &device : work.devices) {
        QStringList arguments = withOption(work.arguments, "--device", device);
        if (!work.logFile.isEmpty())
            arguments = withOption(arguments, "--log", work.logFile + '.' + device);
        children.push_back(std::make_unique<Child>(device, arguments, report));
        if (!work.readsInput)
            children.back()->endInput();
    }
    return children;
}

/// Hands on what there is of the standard input. False at its end.
bool passInput(const Children &children)
{
    const bool isWanted = std::all_of(children.begin(), children.end(), [](const auto &child) {
        return child->waitingInput() < muchInput;
    });
    if (!isWanted || !interrupt::hasInput(0))
        return true;
    const QByteArray input = console::readSome(0).value_or(QByteArray());
    for (const auto &child : children) {
        if (input.isEmpty())
            child->endInput();
        else
            child->give(input);
    }
    return !input.isEmpty();
}

const char *meaning(int code)
{
    switch (code) {
    case ExitCode::done:
        return "done";
    case ExitCode::differs:
        return "differs";
    case ExitCode::usage:
        return "usage";
    case ExitCode::badFile:
        return "a file is missing or damaged";
    case ExitCode::noPort:
        return "no port";
    case ExitCode::noAnswer:
        return "no answer";
    case ExitCode::stillDiffers:
        return "still differs";
    case ExitCode::interrupted:
        return "interrupted";
    default:
        return "failed";
    }
}

} // namespace

int runOnEachDevice(const SharedWork &work, Report &report)
{
    const Children children = startAll(work, report);
    bool readsInput = work.readsInput;
    bool isInterrupted = false;
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (!isInterrupted && interrupt::isPending()) {
            isInterrupted = true;
            for (const auto &child : children)
                child->interrupt();
        }
        readsInput = readsInput && passInput(children);
        if (std::all_of(children.begin(), children.end(),
                        [](const auto &child) { return child->hasEnded(); }))
            loop.quit();
    });
    look.start(20);
    loop.exec();

    int width = 0;
    for (const auto &child : children)
        width = qMax(width, child->device().size());
    int worst = ExitCode::done;
    for (const auto &child : children) {
        worst = qMax(worst, child->code());
        report.result({{"type", "device"},
                       {"device", child->device()},
                       {"code", child->code()},
                       {"meaning", meaning(child->code())}},
                      QString("%1  %2  %3")
                          .arg(child->device(), -width)
                          .arg(child->code(), 3)
                          .arg(meaning(child->code())));
    }
    return worst;
}
