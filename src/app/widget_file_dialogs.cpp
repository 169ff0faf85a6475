#include "app/widget_file_dialogs.h"

#include <QFileDialog>

QString WidgetFileDialogs::openFile(const QString &start, const QString &patterns)
{
    return QFileDialog::getOpenFileName(m_parent, QString(), start, dialogFilter(patterns));
}

QStringList WidgetFileDialogs::openFiles(const QString &start, const QString &patterns)
{
    return QFileDialog::getOpenFileNames(m_parent, QString(), start, dialogFilter(patterns));
}
