#include "simulator/screen_window.h"

#include "simulator/bytes.h"
#include "simulator/screen_picture.h"
#include "simulator/simulator.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScreen>

namespace k7 {

namespace {

/// Milliseconds between a change and its picture: commands come in bursts.
constexpr int refreshDelay = 20;
constexpr int statusMargin = 6;

} // namespace

ScreenWindow::ScreenWindow(Simulator &simulator, QWidget *parent)
    : QWidget(parent), m_simulator(simulator), m_shownDirection(direction())
{
    const QSize screen = simulator.module().settings().screen;
    setWindowTitle(QString("K7 module, %1 x %2").arg(screen.width()).arg(screen.height()));
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_refresh.setSingleShot(true);
    m_standby.setSingleShot(true);
    connect(&simulator, &Simulator::screenChanged, this, &ScreenWindow::onScreenChanged);
    connect(&simulator, &Simulator::traced, this, &ScreenWindow::onTraced);
    connect(&m_refresh, &QTimer::timeout, this, &ScreenWindow::refresh);
    connect(&m_standby, &QTimer::timeout, this, [this] {
        m_isInStandby = true;
        update();
    });
}

QSize ScreenWindow::sizeHint() const
{
    QSize size = m_simulator.module().settings().screen;
    if (direction() % 180 != 0)
        size.transpose();
    size.rheight() += statusHeight();
    return size.boundedTo(screen()->availableSize());
}

void ScreenWindow::onScreenChanged()
{
    m_isImageStale = true;
    refreshSoon();
}

void ScreenWindow::onTraced(const QString &line)
{
    m_lastCommand = line;
    wake();
    refreshSoon();
}

void ScreenWindow::wake()
{
    m_isInStandby = false;
    const int seconds = m_simulator.module().vp(lightTimeVp);
    if (isVisible() && seconds > 0)
        m_standby.start(1000 * seconds);
    else
        m_standby.stop();
}

void ScreenWindow::refreshSoon()
{
    if (isVisible() && !m_refresh.isActive())
        m_refresh.start(refreshDelay);
}

void ScreenWindow::refresh()
{
    if (direction() != m_shownDirection) {
        m_shownDirection = direction();
        resize(sizeHint());
    }
    if (m_isImageStale || light() < 1)
        update();
    else
        update(0, height() - statusHeight(), width(), statusHeight());
}

void ScreenWindow::showEvent(QShowEvent *)
{
    wake();
}

void ScreenWindow::hideEvent(QHideEvent *)
{
    m_refresh.stop();
    m_standby.stop();
}

void ScreenWindow::mousePressEvent(QMouseEvent *)
{
    wake();
    update();
}

double ScreenWindow::light() const
{
    const quint16 lights = m_simulator.module().vp(lightVp);
    return qMin<int>(m_isInStandby ? lowByte(lights) : highByte(lights), 100) / 100.0;
}

int ScreenWindow::direction() const
{
    return 90 * (m_simulator.module().vp(configVp) & 3);
}

int ScreenWindow::statusHeight() const
{
    return 2 * fontMetrics().height() + 2 * statusMargin;
}

QString ScreenWindow::statusText() const
{
    const Module &module = m_simulator.module();
    const int version = module.vp(0x0F);
    return QString::asprintf("GUI %x.%x   OS %x.%x   restarts: %d%s", version >> 12,
                             version >> 8 & 0xF, version >> 4 & 0xF, version & 0xF,
                             module.restarts(), m_isInStandby ? "   standby" : "");
}

void ScreenWindow::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const QRect status(0, height() - statusHeight(), width(), statusHeight());
    painter.fillRect(status, palette().window());
    painter.setPen(palette().windowText().color());
    const QRect text = status.adjusted(statusMargin, statusMargin, -statusMargin, -statusMargin);
    painter.drawText(text, Qt::AlignTop, statusText());
    painter.drawText(text, Qt::AlignBottom,
                     fontMetrics().elidedText(m_lastCommand, Qt::ElideRight, text.width()));
    const QRect area(0, 0, width(), status.top());
    if (!event->rect().intersects(area))
        return;

    if (m_isImageStale)
        m_image =
            screenPicture(m_simulator.module().state(), m_simulator.module().settings().screen);
    m_isImageStale = false;
    QSize turned = m_image.size();
    if (direction() % 180 != 0)
        turned.transpose();
    const double scale = qMin(1.0, qMin(static_cast<double>(area.width()) / turned.width(),
                                        static_cast<double>(area.height()) / turned.height()));
    if (scale < 1 || turned != area.size())
        painter.fillRect(area, Qt::darkGray);
    painter.setClipRect(area);
    // Whole pixels, so that what fits is copied as it is.
    painter.translate(area.width() / 2, area.height() / 2);
    painter.rotate(direction());
    painter.scale(scale, scale);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, scale < 1);
    const QRect target(QPoint(-m_image.width() / 2, -m_image.height() / 2), m_image.size());
    painter.drawImage(target.topLeft(), m_image);
    if (light() < 1)
        painter.fillRect(target, QColor::fromRgbF(0, 0, 0, 1 - light()));
}

} // namespace k7
