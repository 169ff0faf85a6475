#pragma once

#include "common/paced_trigger.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

/// The record of the UART2 link's traffic: one line of lower-case hexadecimal digits for every
/// frame sent and every read, in order. Views get the lines in batches, so that a steady stream
/// does not paint them for every read.
class TrafficLog : public QObject
{
    Q_OBJECT

public:
    /// Lines that are worth keeping: a day of traffic must not eat the machine.
    static constexpr int maxLines = 10000;
    static constexpr int batchInterval = 80; ///< milliseconds

    explicit TrafficLog(QObject *parent = nullptr);

    void add(const QByteArray &bytes);
    /// Forgets the lines that no view has seen yet.
    void clear();

signals:
    /// At most maxLines lines, oldest first.
    void linesReady(const QStringList &lines);

private:
    QStringList m_pending;
    PacedTrigger m_batch{batchInterval};
};
