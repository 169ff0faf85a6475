#include "cli/each_device.h"

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

/// One device and the process that works with it.
class Child
{
public:
    Child(const QString &device, const QStringList &arguments, Report &report)
        : m_device(device), m_report(report)
    {
        QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_process,
                         [this] { pass(QProcess::StandardOutput, stdout); });
        QObject::connect(&m_process, &QProcess::readyReadStandardError, &m_process,
                         [this] { pass(QProcess::StandardError, stderr); });
        m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }
    ~Child() { m_process.waitForFinished(-1); }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    const QString &device() const { return m_device; }
    bool hasEnded() const { return m_process.state() == QProcess::NotRunning; }
    void interrupt() { m_process.terminate(); }
    int code() const
    {
        const bool isNormal = m_process.error() == QProcess::UnknownError &&
                              m_process.exitStatus() == QProcess::NormalExit;
        return isNormal ? m_process.exitCode() : ExitCode::noAnswer;
    }

private:
    void pass(QProcess::ProcessChannel channel, std::FILE *out)
    {
        m_process.setReadChannel(channel);
        while (m_process.canReadLine()) {
            QByteArray line = m_process.readLine();
            line.chop(line.endsWith("\r\n") ? 2 : 1); // its end
            const QJsonDocument json =
                m_report.isJson() ? QJsonDocument::fromJson(line) : QJsonDocument();
            if (json.isObject()) {
                QJsonObject object = json.object();
                object.insert("device", m_device);
                m_report.result(object, {});
            } else {
                console::print(out, m_device + ": " + QString::fromLocal8Bit(line) + '\n');
            }
        }
    }

    const QString m_device;
    Report &m_report;
    QProcess m_process;
};

/// `arguments` with `device` as the device.
QStringList withDevice(QStringList arguments, const QString &device)
{
    for (int i = 0; i < arguments.size(); ++i) {
        if (arguments.at(i).startsWith("--device=")) {
            arguments[i] = "--device=" + device;
            return arguments;
        }
        if (arguments.at(i) == "--device" && i + 1 < arguments.size()) {
            arguments[i + 1] = device;
            return arguments;
        }
    }
    return QStringList{"--device", device} + arguments; // the environment named them
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

int runOnEachDevice(const QStringList &devices, const QStringList &arguments, Report &report)
{
    std::vector<std::unique_ptr<Child>> children;
    int width = 0;
    for (const QString &device : devices) {
        children.push_back(std::make_unique<Child>(device, withDevice(arguments, device), report));
        width = qMax(width, device.size());
    }
    bool isInterrupted = false;
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        if (!isInterrupted && interrupt::isPending()) {
            isInterrupted = true;
            for (const auto &child : children)
                child->interrupt();
        }
        if (std::all_of(children.begin(), children.end(),
                        [](const auto &child) { return child->hasEnded(); }))
            loop.quit();
    });
    look.start(20);
    loop.exec();

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
