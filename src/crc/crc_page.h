#pragma once

#include "common/page_context.h"

#include <QWidget>

#include <memory>

class CrcComparison;
class Engine;

namespace Ui {
class CrcPage;
}

/// The CRC check: compares files with what the module holds.
class CrcPage : public QWidget
{
    Q_OBJECT

public:
    CrcPage(const PageContext &context, Engine &engine, CrcComparison &comparison,
            QWidget *parent = nullptr);
    ~CrcPage() override;

private slots:
    void on_openFolder_clicked();
    void on_openFile_clicked();
    void on_compareCheck_clicked();

private:
    /// Lists the units of `paths` in place of what was listed before.
    void list(const QStringList &paths);
    void listFolder(const QString &path);
    void showItems();

    const PageContext m_context;
    std::unique_ptr<Ui::CrcPage> m_ui;
    CrcComparison &m_comparison;
};
