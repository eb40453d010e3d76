// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ITEMMODEL_ROWORDER_P_H
#define DBF_ITEMMODEL_ROWORDER_P_H

#include <dbf/itemmodel/dbftablemodel.h>

#include <optional>
#include <vector>

namespace dbf
{

/// Which records are shown, and in which order.
struct RowOrder {
    int sortColumn = -1; ///< -1: the table's own order.
    Qt::SortOrder order = Qt::AscendingOrder;
    int filterColumn = -1; ///< -1: the text in any column.
    DbfTableModel::Comparison comparison = DbfTableModel::Comparison::Equal;
    QVariant filterValue;
    QString filterText;
    bool hidesDeleted = false;

    /// Whether every record is shown in its place.
    bool isIdentity() const
    {
        return sortColumn < 0 && filterColumn < 0 && filterText.isEmpty() && !hidesDeleted;
    }
};

/// Returns the indexes of the records in the order of their rows, by one pass over the table;
/// nothing when it cannot be read to its end (recorded in the table), or \a progress stops it.
std::optional<std::vector<int>> rowsInOrder(DbfTable& table, const RowOrder& order,
                                            const std::function<bool(int, int)>& progress);

/// Returns the text that a view shows for \a value.
QString cellText(const QVariant& value, const DbfFieldDescriptor& field);

/// Returns whether columns of that field hold numbers.
bool isNumberField(const DbfFieldDescriptor& field);

} // namespace dbf

#endif
