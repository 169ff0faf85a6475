#include "app/tour_person.h"

#include <QFile>
#include <QPainter>

void TourPerson::useLayout(const QString &layout)
{
    select("K7UIModel_2", layout);
    k7::ModuleSettings settings = module().settings();
    settings.layout = layout == "K7UID1"   ? k7::Layout::K7uid1
                      : layout == "K7UID2" ? k7::Layout::K7uid2
                                           : k7::Layout::K7uid3;
    m_simulator.configure(settings);
}

bool TourPerson::pressAndRead(const char *button, const QString &text)
{
    m_boxes.texts.clear();
    click(button);
    runEventLoopUntil([this] { return !m_boxes.texts.isEmpty(); });
    return m_boxes.texts == QStringList{text};
}

bool TourPerson::pressUntil(const char *button, const std::function<bool()> &isDone)
{
    click(button);
    runEventLoopUntil(isDone);
    pass(120);
    return isDone();
}

void TourPerson::pass(int milliseconds)
{
    const qint64 end = m_time.milliseconds() + milliseconds;
    runEventLoopUntil([&] { return m_time.milliseconds() >= end; });
}

bool TourPerson::crcHolds(const QString &path)
{
    choose("openFile", {path});
    if (!pressAndRead("compareCheck", "Check finish !"))
        return false;
    const QStringList results = column("crcTableWidget", 3);
    return !results.isEmpty() && results.count("true") == results.size();
}

QString TourPerson::write(const QString &name, const QByteArray &content)
{
    QFile file(filePath(name));
    const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    return isWritten ? filePath(name) : QString();
}

QString TourPerson::write(const QString &name, const QImage &image)
{
    return image.save(filePath(name)) ? filePath(name) : QString();
}

QByteArray tourPattern(int bytes)
{
    QByteArray content(bytes, Qt::Uninitialized);
    for (int i = 0; i < bytes; ++i)
        content[i] = static_cast<char>(i * 31 + (i >> 8) * 7 + (i >> 16) * 13);
    return content;
}

QImage tourDrawing(const QSize &size, int hue)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.fillRect(image.rect(), QColor::fromHsv(hue, 120, 90));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(QColor::fromHsv(hue, 200, 230));
    painter.drawEllipse(image.rect().adjusted(size.width() / 8, size.height() / 8,
                                              -size.width() / 8, -size.height() / 8));
    return image;
}

QByteArray naivePixels(const QImage &image)
{
    QByteArray pixels;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb color = image.pixel(x, y);
            const int word = qRed(color) / 8 * 2048 + qGreen(color) / 4 * 32 + qBlue(color) / 8;
            pixels.append(static_cast<char>(word / 256)).append(static_cast<char>(word % 256));
        }
    return pixels;
}
