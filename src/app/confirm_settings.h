#pragma once

#include "assistant/serial_set.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTimer>

#include <functional>

/// Stands in for the person who does `edit` in the next settings dialog of a port, and confirms it.
inline void confirmNextSettings(const std::function<void(SerialSet &)> &edit = {})
{
    auto *look = new QTimer(qApp);
    QObject::connect(look, &QTimer::timeout, look, [look, edit] {
        auto *set = qobject_cast<SerialSet *>(QApplication::activeModalWidget());
        if (!set)
            return;
        look->stop();
        look->deleteLater();
        if (edit)
            edit(*set);
        auto *buttons = set->findChild<QDialogButtonBox *>();
        for (QAbstractButton *button : buttons->buttons())
            if (buttons->buttonRole(button) == QDialogButtonBox::AcceptRole)
                button->click();
    });
    look->start(5);
}
