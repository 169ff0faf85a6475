#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

/// Turns any number of requests into one signal per `interval`: the first request fires on the next
/// pass of the event loop, later ones not before the interval since the last firing is over.
class PacedTrigger : public QObject
{
    Q_OBJECT

public:
    /// `interval` in milliseconds; 0 fires once per pass of the event loop.
    explicit PacedTrigger(int interval, QObject *parent = nullptr);

    void request();
    void cancel() { m_timer.stop(); }

signals:
    void fired();

private:
    int m_interval;
    QTimer m_timer;
    QElapsedTimer m_sinceFired;
};
