// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "tablemodel.h"

#include "quickstart/tableprinter.h"

#include <algorithm>
#include <limits>
#include <memory>

using namespace dbf;

namespace
{

/// What a view shows at a time fits into two pages.
constexpr int recordsPerPage = 128;
constexpr int cellsInMemory = 250'000;

bool isRightAligned(const DbfFieldDescriptor& field)
{
    return QByteArrayLiteral("NFIYB").contains(static_cast<char>(field.type));
}

} // namespace

TableModel::TableModel(DbfTable&& table, QObject* parent)
    : QAbstractTableModel(parent), m_table(std::move(table))
{
    m_table.setCheckingValues(true);
    adoptStructure();
}

void TableModel::adoptStructure()
{
    m_rowCount = m_table.isOpen() ? m_table.recordCount() : 0;
    const int cellsPerPage = recordsPerPage * std::max(1, columnCount());
    m_pages.clear();
    m_pages.setMaxCost(std::max(2, cellsInMemory / cellsPerPage));
}

const DbfTable& TableModel::table() const
{
    return m_table;
}

bool TableModel::setTextCodec(QTextCodec* codec)
{
    beginResetModel();
    m_table.overrideTextCodec(codec);
    const bool isOpen = m_table.reopen(); // The names of the columns are text, too.
    adoptStructure();
    endResetModel();
    return isOpen;
}

int TableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rowCount;
}

int TableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_table.schema().columns.size());
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < m_table.schema().columns.size())
        return m_table.schema().columns.at(section).descriptor.name;
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || !isEditable(index.column()))
        return flags;
    return flags | (isTruth(index.column()) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

bool TableModel::isEditable(int column) const
{
    const DbfFieldConverter* converter = m_table.schema().columns.at(column).converter;
    return m_table.device()->isWritable() && converter != nullptr &&
           converter != DbfByteArrayConverter::instance();
}

bool TableModel::isTruth(int column) const
{
    const DbfColumn& shown = m_table.schema().columns.at(column);
    return shown.descriptor.type == DbfFieldType::Logical &&
           shown.converter != DbfByteArrayConverter::instance();
}

/// Returns a page of records, from the file unless it is in memory. The page is shorter than others
/// at the end of the table, and where the file ends before its time.
TableModel::Page* TableModel::page(int number) const
{
    if (Page* cached = m_pages.object(number))
        return cached;
    const int first = number * recordsPerPage;
    auto records = std::make_unique<Page>();
    DbfRecordCursor cursor(m_table, first, std::min(recordsPerPage, m_rowCount - first));
    while (cursor.next())
        records->append(cursor.record());
    Page* page = records.get();
    m_pages.insert(number, records.release());
    return page;
}

const DbfRecord* TableModel::record(int row) const
{
    const Page* const records = page(row / recordsPerPage);
    const int position = row % recordsPerPage;
    return position < records->size() ? &records->at(position) : nullptr;
}

QVariant TableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const DbfFieldDescriptor& field = m_table.schema().columns.at(index.column()).descriptor;
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (isRightAligned(field) ? Qt::AlignRight : Qt::AlignLeft));
    if (role != Qt::DisplayRole && role != Qt::EditRole && role != Qt::CheckStateRole &&
        role != DeletedRole)
        return {};

    const DbfRecord* shown = record(index.row());
    if (shown == nullptr)
        return {};
    if (role == DeletedRole)
        return shown->isDeleted();
    const QVariant cell = shown->values.at(index.column());
    if (role == Qt::EditRole)
        return cell;
    const bool isChecked = role == Qt::CheckStateRole;
    if (!isTruth(index.column()))
        return isChecked ? QVariant() : valueText(cell, field);
    if (!isChecked || !cell.isValid())
        return isChecked ? QVariant(Qt::PartiallyChecked) : QVariant();
    return cell.toBool() ? Qt::Checked : Qt::Unchecked;
}

bool TableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    if (!edit(index, value, role)) {
        emit refused(index);
        return false;
    }
    // The mark of a record shows in all of its cells.
    const bool isMark = role == DeletedRole;
    emit dataChanged(isMark ? index.siblingAtColumn(0) : index,
                     isMark ? index.siblingAtColumn(columnCount() - 1) : index);
    return true;
}

bool TableModel::edit(const QModelIndex& index, const QVariant& value, int role)
{
    if (!m_table.device()->isWritable())
        return false;
    m_pages.remove(index.row() / recordsPerPage); // It is read again, as the file has it then.
    if (role == DeletedRole)
        return m_table.setRecordDeleted(index.row(), value.toBool());
    if (!isEditable(index.column()))
        return false;
    if (role == Qt::CheckStateRole)
        return editCell(index, value.toInt() == Qt::Checked);
    const bool isEmpty = value.toString().trimmed().isEmpty();
    return role == Qt::EditRole && editCell(index, isEmpty ? QVariant() : value);
}

bool TableModel::editCell(const QModelIndex& index, const QVariant& value)
{
    DbfRecord edited = m_table.readRecord(index.row());
    if (edited.isTransient())
        return false;
    edited.values.replace(index.column(), value);
    return m_table.updateValues(edited); // which writes no other field
}

bool TableModel::insertRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row != m_rowCount || count < 1 ||
        count > std::numeric_limits<int>::max() - m_rowCount)
        return false;
    // Records without values are blank in every column.
    if (!m_table.appendRecords(QVector<DbfRecord>(count)))
        return false;

    beginInsertRows(parent, row, row + count - 1);
    m_pages.remove(row / recordsPerPage); // It ended where the new records begin.
    m_rowCount += count;
    endInsertRows();
    return true;
}
