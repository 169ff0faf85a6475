#include "crc/crc_page.h"

#include "ui_crc_page.h"

#include "common/file_dialogs.h"
#include "common/notices.h"
#include "common/read_file.h"
#include "crc/crc_comparison.h"
#include "engine/engine.h"
#include "widgets/drop_target.h"
#include "widgets/wait_cursor.h"

#include <QDir>

CrcPage::CrcPage(const PageContext &context, Engine &engine, CrcComparison &comparison,
                 QWidget *parent)
    : QWidget(parent)
    , m_context(context)
    , m_ui(std::make_unique<Ui::CrcPage>())
    , m_comparison(comparison)
{
    m_ui->setupUi(this);
    // Name, calculated CRC, read CRC, result.
    for (const auto &[column, width] : {std::pair(0, 260), {1, 100}, {2, 100}, {3, 100}})
        m_ui->crcTableWidget->setColumnWidth(column, width);

    new DropTarget(*m_ui->crcTableWidget, [this](const QStringList &paths) {
        if (QFileInfo(paths.first()).isDir())
            listFolder(paths.first());
        else
            list(paths);
    });

    connect(&engine, &Engine::progressed, this, [this](int type, int percent) {
        if (type == m_comparison.commandType())
            m_ui->crcCheckBar->setValue(percent);
    });
    connect(&engine, &Engine::ended, this, [this](int type) {
        if (type == m_comparison.commandType())
            showItems();
    });
}

CrcPage::~CrcPage() = default;

void CrcPage::on_openFolder_clicked()
{
    const QString path = m_context.fileDialogs.openFolder("请选择模板保存路径...", QString());
    if (!path.isEmpty())
        listFolder(path);
}

void CrcPage::listFolder(const QString &path)
{
    QStringList paths;
    for (const QFileInfo &file : QDir(path).entryInfoList(QDir::Files | QDir::NoSymLinks))
        paths.append(file.filePath());
    if (!paths.isEmpty())
        list(paths);
}

void CrcPage::on_openFile_clicked()
{
    const QString path = m_context.fileDialogs.openFile(QString(), "*.bin;*.bmp;*.ICO");
    if (!path.isEmpty())
        list({path});
}

void CrcPage::on_compareCheck_clicked()
{
    m_comparison.start();
}

void CrcPage::list(const QStringList &paths)
{
    m_comparison.setItems({});
    QVector<CrcCheckItem> items;
    for (const QString &path : paths) {
        if (!crcCheck::isChecked(path))
            continue;
        ReadFault fault = ReadFault::None;
        const crcCheck::Units units = [&path, &fault] {
            const WaitCursor busy;
            const auto content = readFile(path, &fault);
            return content ? crcCheck::unitsOf(QFileInfo(path).fileName(), *content)
                           : crcCheck::Units();
        }();
        if (const Text *message = messageOf(fault))
            m_context.notices.warn(*message);
        if (units.refusal)
            m_context.notices.warn(*units.refusal);
        items += units.items;
    }
    m_comparison.setItems(items);
    showItems();
}

void CrcPage::showItems()
{
    const QVector<CrcCheckItem> &items = m_comparison.items();
    m_ui->crcTableWidget->setRowCount(items.size());
    for (int row = 0; row < items.size(); ++row) {
        const CrcCheckItem &item = items.at(row);
        int column = 0;
        for (const QString &text :
             {item.name, item.calculatedCrc, item.readCrc, item.compareResult}) {
            auto *cell = new QTableWidgetItem(text);
            cell->setBackground(item.isIntact() ? Qt::white : Qt::red);
            cell->setForeground(Qt::black); // a dark desktop's own text would be white on white
            m_ui->crcTableWidget->setItem(row, column++, cell);
        }
    }
}
