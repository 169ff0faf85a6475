#include "app/widget_file_dialogs.h"

#include <QFileDialog>
#include <QFileInfo>

QString WidgetFileDialogs::openFile(const QString &start, const QString &patterns)
{
    return QFileDialog::getOpenFileName(m_parent, QString(), start, dialogFilter(patterns));
}

QString WidgetFileDialogs::saveFile(const QString &start, const QString &patterns)
{
    // A file that was opened last is no name for a new one: only its folder counts.
    const QFileInfo place(start);
    QFileDialog dialog(m_parent, QString(), place.isFile() ? place.path() : start,
                       dialogFilter(patterns));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(patterns.section(';', 0, 0).section('.', -1));
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

QString WidgetFileDialogs::openFolder(const QString &caption, const QString &start)
{
    return QFileDialog::getExistingDirectory(m_parent, caption, start);
}

QStringList WidgetFileDialogs::openFiles(const QString &start, const QString &patterns)
{
    return QFileDialog::getOpenFileNames(m_parent, QString(), start, dialogFilter(patterns));
}
