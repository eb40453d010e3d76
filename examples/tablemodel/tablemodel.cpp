// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "tablemodel.h"

#include "quickstart/tableprinter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

using namespace dbf;

namespace
{

/// What a view shows at a time fits into two pages.
constexpr int recordsPerPage = 128;
constexpr int cellsInMemory = 250'000;

/// The types of which a field of spaces means that there is no value.
bool isText(const DbfFieldDescriptor& field)
{
    return QByteArrayLiteral("CDFLN").contains(static_cast<char>(field.type));
}

bool isNumberText(const DbfFieldDescriptor& field)
{
    return field.type == DbfFieldType::Numeric || field.type == DbfFieldType::Float;
}

bool isRightAligned(const DbfFieldDescriptor& field)
{
    return QByteArrayLiteral("NFIYB").contains(static_cast<char>(field.type));
}

/// Returns whether \a stored, read back from the field, is what was \a wanted there, but for
/// decimals that the field does not have and for spaces around a text.
bool isSame(const QVariant& stored, const QVariant& wanted, const DbfFieldDescriptor& field)
{
    if (!isNumberText(field))
        return stored == wanted || stored.toString() == wanted.toString().trimmed();
    bool isNumber = false;
    const double number = wanted.toDouble(&isNumber);
    const double rounding = 0.500001 * std::pow(10.0, -field.decimals);
    return isNumber && std::abs(stored.toDouble() - number) <= rounding;
}

QByteArray blankBytes(const DbfColumn& column)
{
    const DbfFieldDescriptor& field = column.descriptor;
    return isText(field) ? QByteArray(field.length, ' ') : column.blankValueOfThisType();
}

} // namespace

TableModel::TableModel(DbfTable&& table, QObject* parent)
    : QAbstractTableModel(parent), m_table(std::move(table)), m_schema(m_table.schema())
{
    adoptStructure();
}

/// Rewriting a record through its converters could change cells that nobody edited, such as a blank
/// number that reads as 0. So the table gets and gives bytes, and only the model converts.
void TableModel::adoptStructure()
{
    for (int i = 0; i < m_schema.columns.size(); ++i)
        m_table.setFieldConverter(i, DbfByteArrayConverter::instance());
    m_rowCount = m_table.isOpen() ? m_table.recordCount() : 0;
    const int cellsPerPage =
        recordsPerPage * std::max(1, static_cast<int>(m_schema.columns.size()));
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
    const QVector<DbfColumn> before = m_schema.columns;
    m_table.overrideTextCodec(codec);
    const bool isOpen = m_table.reopen(); // The names of the columns are text, too.
    m_schema = m_table.schema();
    for (int i = 0; i < std::min(before.size(), m_schema.columns.size()); ++i)
        m_schema.columns[i].setConverter(before.at(i).converter);
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
    return parent.isValid() ? 0 : static_cast<int>(m_schema.columns.size());
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 &&
        section < m_schema.columns.size())
        return m_schema.columns.at(section).descriptor.name;
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags TableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || !isEditable(index.column()))
        return flags;
    const bool isLogical =
        m_schema.columns.at(index.column()).descriptor.type == DbfFieldType::Logical;
    return flags | (isLogical ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

bool TableModel::isEditable(int column) const
{
    const DbfFieldConverter* converter = m_schema.columns.at(column).converter;
    return m_table.device()->isWritable() && converter != nullptr &&
           converter != DbfByteArrayConverter::instance() &&
           converter != DbfLargeIntConverter::instance();
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

QVariant TableModel::value(const DbfRecord& record, int column) const
{
    const QByteArray bytes = record.values.at(column).toByteArray();
    const DbfColumn& shown = m_schema.columns.at(column);
    return shown.converter == nullptr
               ? bytes
               : shown.converter->toVariant(bytes, m_schema, shown.descriptor);
}

QVariant TableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const DbfFieldDescriptor& field = m_schema.columns.at(index.column()).descriptor;
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
    QVariant cell = value(*shown, index.column());
    if (role == Qt::EditRole)
        return cell;
    const bool isChecked = role == Qt::CheckStateRole;
    if (cell.userType() != QMetaType::Bool)
        return isChecked ? QVariant() : valueText(cell, field);
    return isChecked ? QVariant(cell.toBool() ? Qt::Checked : Qt::Unchecked) : QVariant();
}

/// Returns the bytes to store for \a value, nothing when the column cannot hold it. Converters cut
/// in silence what is too long, so the bytes are read back and compared.
std::optional<QByteArray> TableModel::fieldBytes(QVariant value, const DbfColumn& column) const
{
    const DbfFieldDescriptor& field = column.descriptor;
    if (isText(field) && value.toString().trimmed().isEmpty())
        return blankBytes(column);
    if (!column.converter->convertVariant(value))
        return std::nullopt;
    const QByteArray bytes = column.converter->toByteArray(value, m_schema, field);
    const QVariant stored = column.converter->toVariant(bytes, m_schema, field);
    if (bytes.size() != field.length || !isSame(stored, value, field))
        return std::nullopt;
    return bytes;
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
    const DbfRecord* stored = record(index.row());
    if (stored == nullptr || !m_table.device()->isWritable())
        return false;
    DbfRecord edited = *stored;
    if (role == DeletedRole) {
        edited.setDeleted(value.toBool());
        return write(edited);
    }
    if ((role != Qt::EditRole && role != Qt::CheckStateRole) || !isEditable(index.column()))
        return false;
    const QVariant wanted = role == Qt::CheckStateRole ? value.toInt() == Qt::Checked : value;
    const auto bytes = fieldBytes(wanted, m_schema.columns.at(index.column()));
    if (!bytes)
        return false;
    edited.values.replace(index.column(), *bytes);
    return write(edited);
}

bool TableModel::write(const DbfRecord& record)
{
    const int number = record.index() / recordsPerPage;
    if (!m_table.updateRecord(record)) {
        m_pages.remove(number); // What stands in the file now is not known here.
        return false;
    }
    page(number)->replace(record.index() % recordsPerPage, record);
    return true;
}

bool TableModel::insertRows(int row, int count, const QModelIndex& parent)
{
    if (parent.isValid() || row != m_rowCount || count < 1 ||
        count > std::numeric_limits<int>::max() - m_rowCount)
        return false;
    DbfRecord blank;
    for (const DbfColumn& column : m_schema.columns)
        blank.values.append(blankBytes(column));
    if (!m_table.appendRecords(QVector<DbfRecord>(count, blank)))
        return false;

    beginInsertRows(parent, row, row + count - 1);
    m_pages.remove(row / recordsPerPage); // It ended where the new records begin.
    m_rowCount += count;
    endInsertRows();
    return true;
}
