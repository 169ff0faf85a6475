#pragma once

#include <QAbstractButton>
#include <QMessageBox>
#include <QObject>
#include <QStringList>
#include <QTimer>

#include <QApplication>

/// Stands in for the person who reads the message boxes: notes each one and presses its button, and
/// agrees where it asks something.
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
            if (QAbstractButton *yes = box->button(QMessageBox::Yes))
                yes->click();
            else
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
