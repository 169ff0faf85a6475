// The time of `k7 sync` for one changed picture and one changed flash block, against that of the
// whole project, on a module that is as slow as a real one. It takes some three minutes.

#include "bench/measure.h"
#include "simulator/simulator.h"

#include <QEventLoop>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

constexpr int pictures = 100;
constexpr int flashFiles = 4;
constexpr int flashFileBytes = 5 * 1024 * 1024;

void paint(const QTemporaryDir &folder, int number, int seed)
{
    QImage image(480, 272, QImage::Format_RGB32);
    image.fill(QColor::fromHsv(seed * 3 % 360, 200, 100 + number));
    image.save(folder.filePath(QString("%1_p.bmp").arg(number)));
}

void writeFlash(const QTemporaryDir &folder, int number, char changed)
{
    QByteArray bytes(flashFileBytes, '\0');
    QRandomGenerator random(static_cast<quint32>(number));
    for (char &byte : bytes)
        byte = static_cast<char>(random.bounded(256));
    bytes[flashFileBytes / 2] = changed;
    QFile file(folder.filePath(QString("%1_f.bin").arg(20 + 30 * number)));
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

double syncSeconds(const k7::Simulator &module, const QTemporaryDir &folder)
{
    QElapsedTimer time;
    time.start();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QEventLoop loop;
    QObject::connect(&program, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &loop,
                     &QEventLoop::quit);
    program.start(K7, {"--uart2", module.uartPath(), "--ed2", module.ed2Path(), "--progress",
                       "none", "sync", folder.path(), "--size", "480x272"});
    loop.exec();
    if (program.exitCode() != 0)
        qFatal("k7 sync ended with %d", program.exitCode());
    return static_cast<double>(time.elapsed()) / 1000;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    k7::Simulator module;
    k7::Behaviour behaviour;
    behaviour.realTime = true;
    module.setBehaviour(behaviour);
    module.start();
    const QTemporaryDir folder;
    for (int number = 0; number < pictures; ++number)
        paint(folder, number, number);
    for (int number = 0; number < flashFiles; ++number)
        writeFlash(folder, number, 0);
    const double full = syncSeconds(module, folder);
    paint(folder, 50, 7);
    writeFlash(folder, 2, 1);
    const double changed = syncSeconds(module, folder);
    std::fprintf(stderr, "full %.1f s, changed %.1f s\n", full, changed);
    measure::report("PERF_SYNC", changed / full, 0.06);
    return 0;
}
