#pragma once

#include <QMessageBox>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <QApplication>

/// Stands in for the person who reads the message boxes: notes each one and presses its button.
class MessageBoxes : public QObject
{
public:
    MessageBoxes()
    {
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !answers)
                return;
            texts.append(box->text());
            titles.append(box->windowTitle());
            details.append(box->informativeText());
            box->accept();
        });
        m_timer.start(5); // hardly at all
    }

    /// How long each box stays, at least.
    void setPause(int milliseconds) { m_timer.setInterval(milliseconds); }

    bool answers = true;
    QStringList texts;
    QStringList titles;
    QStringList details;

private:
    QTimer m_timer;
};
