#include "app/widget_file_dialogs.h"

#include <QFileDialog>

QString WidgetFileDialogs::openFile(const QString &start, const QString &patterns)
{
    return QFileDialog::getOpenFileName(m_parent, QString(), start, dialogFilter(patterns));
}

QString WidgetFileDialogs::saveFile(const QString &start, const QString &patterns)
{
    QFileDialog dialog(m_parent, QString(), start, dialogFilter(patterns));
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
