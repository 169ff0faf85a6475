#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <ctime>

/// What the benchmarks share.
namespace measure {

inline void report(const char *name, double value, double goal)
{
    std::printf("%s %.3f %.3f\n", name, value, goal);
    std::fflush(stdout);
}

inline double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0.0 : values.at(values.size() / 2);
}

/// Seconds that `work` takes: the median of several runs.
template<typename Work>
double seconds(const Work &work, int runs = 5)
{
    QVector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.append(static_cast<double>(timer.nsecsElapsed()) * 1e-9);
    }
    return median(times);
}

/// Seconds of processor time that the calling thread has used.
inline double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The number that this program prints when it runs anew with `argument`: what depends on the state
/// of a process is measured in a process of its own.
inline double inNewProcess(const QString &argument)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(), {argument});
    process.waitForFinished(-1);
    return process.readAllStandardOutput().trimmed().toDouble();
}

} // namespace measure
