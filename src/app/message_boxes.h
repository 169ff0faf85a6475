#pragma once

#include "engine/time_source.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

/// Stands in for the person who reads the message boxes: notes each one and presses its button, and
/// agrees where it asks something.
class MessageBoxes : public QObject
{
public:
    explicit MessageBoxes(const TimeSource &time = {}) : m_now(time.now)
    {
        QObject::connect(&m_timer, &QTimer::timeout, this, &MessageBoxes::look);
        m_timer.start(time.turn);
    }

    /// How long each box stays.
    void setPause(int milliseconds) { m_pause = qint64{milliseconds} * 1'000'000; }

    bool answers = true;
    QStringList texts;
    QStringList titles;
    QStringList details;

private:
    void look()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (box != m_box) {
            m_box = box;
            m_shownAt = m_now();
        }
        if (!box || !answers || m_now() - m_shownAt < m_pause)
            return;
        texts.append(box->text());
        titles.append(box->windowTitle());
        details.append(box->informativeText());
        if (QAbstractButton *yes = box->button(QMessageBox::Yes))
            yes->click();
        else
            box->accept();
    }

    const std::function<qint64()> m_now;
    qint64 m_pause = 5'000'000; // hardly at all
    QPointer<QMessageBox> m_box;
    qint64 m_shownAt = 0;
    QTimer m_timer;
};
