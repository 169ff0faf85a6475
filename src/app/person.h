#pragma once

#include "app/choose_in_dialog.h"
#include "app/confirm_settings.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTextEdit>

/// A person's hands and eyes at the window, for the tour and the tests. Widgets go by their names;
/// one that is not there ends the program.
class Person
{
public:
    /// The dialogs are Qt's own from now on: those of the system are out of reach.
    Person() { QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs); }
    virtual ~Person() = default;
    virtual QWidget &window() = 0;

    template<typename Widget>
    Widget *find(const QString &name)
    {
        auto *widget = window().findChild<Widget *>(name);
        if (!widget)
            qFatal("no widget %s", qPrintable(name));
        return widget;
    }

    void click(const QString &button) { find<QAbstractButton>(button)->click(); }
    bool isChecked(const QString &button) { return find<QAbstractButton>(button)->isChecked(); }
    void check(const QString &button, bool isOn)
    {
        if (isChecked(button) != isOn)
            click(button);
    }
    void set(const QString &spinBox, int value) { find<QSpinBox>(spinBox)->setValue(value); }
    int value(const QString &spinBox) { return find<QSpinBox>(spinBox)->value(); }
    void select(const QString &combo, const QString &text)
    {
        find<QComboBox>(combo)->setCurrentText(text);
    }
    void type(const QString &edit, const QString &text) { find<QLineEdit>(edit)->setText(text); }
    QString line(const QString &edit) { return find<QLineEdit>(edit)->text(); }
    QString view(const QString &edit) { return find<QTextEdit>(edit)->toPlainText(); }
    /// The texts of `column` from the top.
    QStringList column(const QString &table, int column)
    {
        auto *widget = find<QTableWidget>(table);
        QStringList texts;
        for (int row = 0; row < widget->rowCount(); ++row)
            texts.append(widget->item(row, column)->text());
        return texts;
    }

    /// Opens all the tabs that lead to `page`.
    void show(const QString &page)
    {
        for (auto *widget = find<QWidget>(page); widget; widget = widget->parentWidget())
            for (auto *tabs : window().findChildren<QTabWidget *>())
                if (tabs->indexOf(widget) >= 0)
                    tabs->setCurrentWidget(widget);
    }
    /// Presses `button` and chooses `paths` in the file dialog that it opens; none cancels it.
    void choose(const QString &button, const QStringList &paths)
    {
        chooseInNextDialog(paths);
        click(button);
    }
    /// Presses `button`, does `edit` in the settings dialog that it opens, and confirms it.
    void confirm(const QString &button, const std::function<void(SerialSet &)> &edit = {})
    {
        confirmNextSettings(edit);
        click(button);
    }
};
