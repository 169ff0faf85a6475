#pragma once

#include "common/file_dialogs.h"

class QWidget;

/// Asks for files in dialogs above `parent`.
class WidgetFileDialogs final : public FileDialogs
{
public:
    explicit WidgetFileDialogs(QWidget *parent) : m_parent(parent) {}

    QString openFile(const QString &start, const QString &patterns) override;
    QString saveFile(const QString &start, const QString &patterns) override;
    QString openFolder(const QString &caption, const QString &start) override;
    QStringList openFiles(const QString &start, const QString &patterns) override;

private:
    QWidget *m_parent;
};
