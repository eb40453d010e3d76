// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/itemmodel/roworder_p.h>
#include <dbf/table/dbfrecordcursor.h>

#include <QtCore/QCollator>
#include <QtCore/QDateTime>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace dbf
{

namespace
{

constexpr int recordsPerReport = 32768;

bool isText(const QVariant& value)
{
    return int(value.userType()) == QMetaType::QString;
}

std::optional<long double> ifAny(bool isAny, long double number)
{
    return isAny ? std::optional(number) : std::nullopt;
}

/// What a cell is compared by unless it is text; nothing for a blank one and one that is no number.
/// A long double keeps every integer of 64 bits.
std::optional<long double> numberOf(const QVariant& value)
{
    switch (int(value.userType())) {
    case QMetaType::QDate:
        return ifAny(value.toDate().isValid(), value.toDate().toJulianDay());
    case QMetaType::QDateTime:
        return ifAny(value.toDateTime().isValid(), value.toDateTime().toMSecsSinceEpoch());
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Bool:
        return value.toLongLong();
    default:
        bool isNumber = false;
        const double number = value.toDouble(&isNumber);
        return ifAny(isNumber && !std::isnan(number), number);
    }
}

bool isBlank(const QVariant& value)
{
    if (!isText(value))
        return value.isNull();
    const QString text = value.toString();
    return QStringView(text).trimmed().isEmpty();
}

/// The value of a filter as a cell of the type of \a cell would have it.
QVariant likeCell(const QVariant& value, const QVariant& cell)
{
    switch (int(cell.userType())) {
    case QMetaType::QDate:
        return value.toDate();
    case QMetaType::QDateTime:
        return value.toDateTime();
    case QMetaType::Bool:
        return value.toBool();
    default:
        return value;
    }
}

/// Whether a comparison by size holds for two values of which the first is less (\a sign below 0),
/// equal, or greater.
bool holds(DbfTableModel::Comparison comparison, int sign)
{
    using Comparison = DbfTableModel::Comparison;
    if (comparison == Comparison::Equal || comparison == Comparison::NotEqual)
        return (sign == 0) == (comparison == Comparison::Equal);
    if (sign == 0)
        return comparison == Comparison::AtMost || comparison == Comparison::AtLeast;
    const bool wantsLess = comparison == Comparison::Less || comparison == Comparison::AtMost;
    return wantsLess == (sign < 0);
}

bool matches(const QVariant& cell, DbfTableModel::Comparison comparison, const QVariant& value,
             const DbfFieldDescriptor& field)
{
    if (comparison == DbfTableModel::Comparison::Contains)
        return cellText(cell, field).contains(value.toString(), Qt::CaseInsensitive);
    const bool isUnequal = comparison == DbfTableModel::Comparison::NotEqual;
    if (isBlank(cell) || isBlank(value)) {
        const bool isEqual = isBlank(cell) == isBlank(value);
        return isEqual ? comparison == DbfTableModel::Comparison::Equal : isUnequal;
    }
    if (isText(cell) && !isNumberField(field))
        return holds(comparison,
                     QString::compare(cell.toString(), value.toString(), Qt::CaseInsensitive));
    const auto left = numberOf(cell);
    const auto right = numberOf(likeCell(value, cell));
    if (!left || !right)
        return isUnequal;
    return holds(comparison, int(*left > *right) - int(*left < *right));
}

bool isShown(const DbfRecordCursor& cursor, const RowOrder& order,
             const QVector<DbfColumn>& columns)
{
    if (order.hidesDeleted && cursor.isDeleted())
        return false;
    if (order.filterColumn >= 0)
        return matches(cursor.value(order.filterColumn), order.comparison, order.filterValue,
                       columns.at(order.filterColumn).descriptor);
    if (order.filterText.isEmpty())
        return true;
    for (int i = 0; i < columns.size(); ++i) {
        if (cellText(cursor.value(i), columns.at(i).descriptor)
                .contains(order.filterText, Qt::CaseInsensitive))
            return true;
    }
    return false;
}

/// What the rows are sorted by: text by the keys of the locale, everything else by number.
class SortKeys
{
public:
    explicit SortKeys(const DbfFieldDescriptor& field) : m_isNumberField(isNumberField(field))
    {
        m_collator.setCaseSensitivity(Qt::CaseInsensitive);
    }

    void add(int record, const QVariant& value)
    {
        const bool isTextCell = isText(value) && !m_isNumberField;
        const auto number = m_isNumeric || !isTextCell ? numberOf(value) : std::nullopt;
        if (isBlank(value) || (!isTextCell && !number)) {
            m_blanks.push_back(record);
            return;
        }
        m_isNumeric = m_isNumeric && number;
        m_records.push_back(record);
        m_numbers.push_back(number.value_or(0));
        if (isTextCell)
            m_texts.push_back(m_collator.sortKey(value.toString()));
    }

    std::vector<int> sorted(Qt::SortOrder order) const
    {
        std::vector<int> places(m_records.size());
        std::iota(places.begin(), places.end(), 0);
        if (m_isNumeric)
            sortBy(places, m_numbers, order);
        else
            sortBy(places, m_texts, order);
        std::vector<int> rows;
        rows.reserve(m_records.size() + m_blanks.size());
        for (const int place : places)
            rows.push_back(m_records[static_cast<size_t>(place)]);
        rows.insert(rows.end(), m_blanks.begin(), m_blanks.end());
        return rows;
    }

private:
    template <typename Key>
    static void sortBy(std::vector<int>& places, const std::vector<Key>& keys, Qt::SortOrder order)
    {
        const bool isAscending = order == Qt::AscendingOrder;
        std::stable_sort(places.begin(), places.end(), [&keys, isAscending](int a, int b) {
            const Key& left = keys[static_cast<size_t>(isAscending ? a : b)];
            return left < keys[static_cast<size_t>(isAscending ? b : a)];
        });
    }

    QCollator m_collator;
    const bool m_isNumberField;
    bool m_isNumeric = true; // as long as every cell is a number, be it in text
    std::vector<int> m_records;
    std::vector<int> m_blanks;
    std::vector<long double> m_numbers;
    std::vector<QCollatorSortKey> m_texts;
};

} // namespace

bool isNumberField(const DbfFieldDescriptor& field)
{
    return QByteArrayLiteral("NFIYB").contains(static_cast<char>(field.type));
}

QString cellText(const QVariant& value, const DbfFieldDescriptor& field)
{
    switch (int(value.userType())) {
    case QMetaType::Double:
        return field.type == DbfFieldType::Numeric || field.type == DbfFieldType::Float
                   ? QString::number(value.toDouble(), 'f', field.decimals)
                   : QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    default:
        return value.toString();
    }
}

std::optional<std::vector<int>> rowsInOrder(DbfTable& table, const RowOrder& order,
                                            const std::function<bool(int, int)>& progress)
{
    const QVector<DbfColumn> columns = table.schema().columns;
    const bool isSorted = order.sortColumn >= 0;
    SortKeys keys(isSorted ? columns.at(order.sortColumn).descriptor : DbfFieldDescriptor());
    const int total = table.recordCount();
    std::vector<int> rows;
    DbfRecordCursor cursor(table);
    while (cursor.next()) {
        const int record = cursor.index();
        if (progress && record % recordsPerReport == 0 && !progress(record, total))
            return std::nullopt;
        if (!isShown(cursor, order, columns))
            continue;
        if (isSorted)
            keys.add(record, cursor.value(order.sortColumn));
        else
            rows.push_back(record);
    }
    if (cursor.hasError())
        return std::nullopt;
    return isSorted ? keys.sorted(order.order) : rows;
}

} // namespace dbf
