#pragma once

#include <QVector>

#include <optional>

class Notices;
class QTableWidget;
struct DownloadList;

/// The table of a download page: positions in column 0, which the user can edit, paths in column 1.
namespace downloadTable {

void show(QTableWidget &table, const DownloadList &list);

/// The row of the current item, if that is selected.
std::optional<int> selectedRow(const QTableWidget &table);

/// The positions that the table holds, as numbers; their plain decimal text goes into `list`. A
/// position that is no number is reported, and there is no result.
std::optional<QVector<int>> positions(const QTableWidget &table, DownloadList &list,
                                      Notices &notices);

} // namespace downloadTable
