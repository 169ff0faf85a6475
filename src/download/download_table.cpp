#include "download/download_table.h"

#include "common/notices.h"
#include "download/download_list.h"

#include <QTableWidget>

namespace downloadTable {

void show(QTableWidget &table, const DownloadList &list)
{
    table.setRowCount(list.paths.size());
    for (int row = 0; row < list.paths.size(); ++row) {
        table.setItem(row, 0, new QTableWidgetItem(list.positions.at(row)));
        table.setItem(row, 1, new QTableWidgetItem(list.paths.at(row)));
    }
}

std::optional<int> selectedRow(const QTableWidget &table)
{
    const QTableWidgetItem *item = table.currentItem();
    return item && item->isSelected() ? std::optional(item->row()) : std::nullopt;
}

std::optional<QVector<int>> positions(const QTableWidget &table, DownloadList &list,
                                      Notices &notices)
{
    QVector<int> numbers;
    for (int row = 0; row < list.paths.size(); ++row) {
        const QTableWidgetItem *item = table.item(row, 0);
        bool isNumber = false;
        const int number = item ? item->text().toInt(&isNumber, 10) : 0;
        if (!isNumber) {
            // Rows count from 0 in this message.
            notices.warn(texts::rowIsNotNumber, nullptr, QString::number(row));
            return std::nullopt;
        }
        list.positions[row] = QString::number(number);
        numbers.append(number);
    }
    return numbers;
}

} // namespace downloadTable
