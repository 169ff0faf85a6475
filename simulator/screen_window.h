#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

namespace k7 {

class Simulator;

/// The screen of a simulated module: what the module shows, dimmed as its backlight is and turned
/// as its display direction says, over its version, its restarts and the last command.
///
/// Commands and clicks, which stand for touches, wake the backlight; without them it goes into
/// standby after the module's time. Nothing is painted or timed while the window is hidden.
class ScreenWindow : public QWidget
{
    Q_OBJECT

public:
    /// `simulator` outlives the window.
    explicit ScreenWindow(Simulator &simulator, QWidget *parent = nullptr);

    /// Screen and status; less where the desktop is smaller.
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void onScreenChanged();
    void onTraced(const QString &line);
    void wake();
    void refreshSoon();
    void refresh();
    /// As a part of 1.
    double light() const;
    /// Degrees clockwise.
    int direction() const;
    int statusHeight() const;
    QString statusText() const;

    Simulator &m_simulator;
    QImage m_image;
    bool m_isImageStale = true;
    bool m_isInStandby = false;
    int m_shownDirection = 0;
    QString m_lastCommand;
    QTimer m_refresh{this};
    QTimer m_standby{this};
};

} // namespace k7
