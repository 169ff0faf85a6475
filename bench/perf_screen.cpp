// The screen of the simulated module, full HD, its page changing ten times a second, against a bare
// widget that paints the same images.

#include "bench/measure.h"
#include "simulator/screen_picture.h"
#include "simulator/screen_window.h"
#include "simulator/simulator.h"

#include <QApplication>
#include <QEventLoop>
#include <QPainter>

#include <functional>

namespace {

constexpr QSize fullHd{1920, 1080};
constexpr int changes = 30;
constexpr int interval = 100; // milliseconds

/// What the screen window is compared with.
class BareWidget : public QWidget
{
public:
    QImage image;

protected:
    void paintEvent(QPaintEvent *) override { QPainter(this).drawImage(0, 0, image); }
};

QByteArray stripes(int phase)
{
    QByteArray pixels(2 * fullHd.width() * fullHd.height(), Qt::Uninitialized);
    for (int i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<char>(i / 64 + 40 * phase);
    return pixels;
}

/// The part of a core that is used while `change` is called ten times a second.
double load(const std::function<void(int)> &change)
{
    QEventLoop loop;
    QTimer timer;
    int count = 0;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
        if (count == changes)
            loop.quit();
        else
            change(count++);
    });
    timer.start(interval);
    const double before = measure::threadSeconds();
    loop.exec();
    return (measure::threadSeconds() - before) * 1000 / (changes * interval);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QByteArray pages[] = {stripes(0), stripes(1)};
    const QImage images[] = {k7::unpackPixels(pages[0], fullHd),
                             k7::unpackPixels(pages[1], fullHd)};

    BareWidget bare;
    bare.resize(fullHd);
    bare.show();
    const double bareLoad = load([&](int i) {
        bare.image = images[i % 2];
        bare.update();
    });
    bare.hide();

    k7::ModuleSettings settings;
    settings.screen = fullHd;
    k7::Simulator simulator(settings);
    k7::ScreenWindow window(simulator);
    window.resize(fullHd.width(), fullHd.height() + 40);
    window.show();
    const double screenLoad = load([&](int i) { simulator.module().setPicture(0, pages[i % 2]); });

    measure::report("PERF_SCREEN", screenLoad, 0.25);
    measure::report("PERF_SCREEN_BARE", bareLoad, 0.25);
    return 0;
}
