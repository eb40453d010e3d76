// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbfbytearrayconverter.h>
#include <dbf/converters/dbfreadonlyconverter.h>
#include <dbf/format/dbflanguagedriver.h>
#include <dbf/format/dbfnullablecolumn.h>
#include <dbf/itemmodel/roworder_p.h>
#include <dbf/memo/dbfmemoconverter.h>
#include <dbf/memo/dbfmemofile.h>
#include <dbf/model/dbfvalueproblem.h>
#include <dbf/table/dbfrecordcursor.h>

#include <QtCore/QCache>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <limits>

namespace dbf
{

namespace
{

// What a view shows at a time fits into two pages.
constexpr int recordsPerPage = 128;
constexpr int cellsInMemory = 250'000;

/// The files of a model that opened them itself.
struct MemoBeside {
    MemoBeside(const QString& path, quint8 tableVersion)
        : file(DbfMemoFile::pathBeside(path, tableVersion))
        , memo(&file, tableVersion)
        , version(tableVersion)
    {
    }

    QFile file;
    DbfMemoFile memo;
    const quint8 version;
};

} // namespace

class DbfTableModel::Private
{
public:
    Private(DbfTableModel* owner, DbfTable&& shown) : q(owner), table(std::move(shown))
    {
        table.setCheckingValues(true);
        adopt();
    }

    void adopt();
    int rowCount() const { return rows ? static_cast<int>(rows->size()) : recordCount; }
    int recordAt(int row) const { return rows ? rows->at(static_cast<size_t>(row)) : row; }
    DbfRecord read(int record);
    bool isWritable() const
    {
        return table.isOpen() && table.device() && table.device()->isWritable();
    }
    bool isEditable(int column) const;
    bool isTruth(int column) const;
    bool edit(const QModelIndex& index, const QVariant& value, int role, QString& reason);
    bool editCell(const QModelIndex& index, const QVariant& value, QString& reason);
    bool arrange(const RowOrder& wanted);
    void take(std::optional<std::vector<int>> arranged);
    void appendRows(int count);
    void dropRows(int count);
    bool reopen(bool (*open)(DbfTable&));
    bool refuse(const QString& reason, const QModelIndex& index = {});
    bool refuseBusy() { return refuse(QStringLiteral("The table is being sorted or filtered")); }
    void noteError();

    DbfTableModel* const q;
    std::unique_ptr<MemoBeside> memo; // which the table's converters use
    DbfTable table;
    QIODevice::OpenMode mode = QIODevice::ReadOnly;
    int recordCount = 0;
    std::optional<std::vector<int>> rows; // unless every record is in its place
    RowOrder order;
    QCache<int, QVector<DbfRecord>> pages;
    std::function<bool(int, int)> progress;
    QString error;
    bool isBusy = false;
};

void DbfTableModel::Private::adopt()
{
    recordCount = table.isOpen() ? table.recordCount() : 0;
    if (table.isOpen())
        mode = table.device()->openMode();
    rows.reset();
    RowOrder own;
    own.hidesDeleted = order.hidesDeleted;
    order = own;
    pages.clear();
    const int cellsPerPage = recordsPerPage * std::max(1, int(table.schema().columns.size()));
    pages.setMaxCost(std::max(2, cellsInMemory / cellsPerPage));
}

/// Keeps the table's words and lets it go on.
void DbfTableModel::Private::noteError()
{
    if (!table.hasError())
        return;
    error = table.errorString();
    table.clearError();
}

bool DbfTableModel::Private::refuse(const QString& reason, const QModelIndex& index)
{
    error = reason;
    noteError();
    Q_EMIT q->refused(index, error);
    return false;
}

DbfRecord DbfTableModel::Private::read(int record)
{
    const int number = record / recordsPerPage;
    const int place = record % recordsPerPage;
    if (const QVector<DbfRecord>* page = pages.object(number))
        return page->value(place);
    // Shorter than others at the end of the table, and where the file ends before its time.
    QVector<DbfRecord> page;
    const int first = number * recordsPerPage;
    DbfRecordCursor cursor(table, first, std::min(recordsPerPage, recordCount - first));
    while (cursor.next())
        page.append(cursor.record());
    noteError();
    pages.insert(number, new QVector<DbfRecord>(page)); // NOLINT: which the cache owns
    return page.value(place);
}

bool DbfTableModel::Private::isEditable(int column) const
{
    const DbfFieldConverter* converter = table.schema().columns.at(column).converter;
    return isWritable() && converter && converter != DbfByteArrayConverter::instance() &&
           !dynamic_cast<const DbfReadOnlyConverter*>(converter);
}

bool DbfTableModel::Private::isTruth(int column) const
{
    const DbfColumn& shown = table.schema().columns.at(column);
    return shown.descriptor.type == DbfFieldType::Logical &&
           shown.converter != DbfByteArrayConverter::instance();
}

/// On failure \a reason is replaced where there is more to say.
bool DbfTableModel::Private::edit(const QModelIndex& index, const QVariant& value, int role,
                                  QString& reason)
{
    const int record = recordAt(index.row());
    pages.remove(record / recordsPerPage); // It is read again, as the file has it then.
    if (role == DeletedRole)
        return isWritable() && table.setRecordDeleted(record, value.toBool());
    if (!isEditable(index.column()))
        return false;
    if (role == Qt::CheckStateRole)
        return editCell(index, value.toInt() == Qt::Checked, reason);
    const bool isEmpty = value.toString().trimmed().isEmpty();
    return role == Qt::EditRole && editCell(index, isEmpty ? QVariant() : value, reason);
}

bool DbfTableModel::Private::editCell(const QModelIndex& index, const QVariant& value,
                                      QString& reason)
{
    DbfRecord edited = table.readRecord(recordAt(index.row()));
    if (edited.isTransient())
        return false;
    edited.values.replace(index.column(), value);
    if (table.updateValues(edited)) // which writes no other field
        return true;
    const QVector<DbfValueProblem> problems = table.valueProblems();
    if (!problems.isEmpty())
        reason = problems.first().text();
    return false;
}

/// Shows other records or in another order. The rows stay as they were where that fails.
bool DbfTableModel::Private::arrange(const RowOrder& wanted)
{
    if (isBusy)
        return refuseBusy();
    const QScopedValueRollback<bool> busy(isBusy, true);
    std::optional<std::vector<int>> arranged;
    if (!wanted.isIdentity() && table.isOpen()) {
        arranged = rowsInOrder(table, wanted, progress);
        if (!arranged)
            return refuse(QStringLiteral("It was stopped"));
    }
    const bool isSort =
        wanted.filterColumn == order.filterColumn && wanted.filterText == order.filterText &&
        wanted.hidesDeleted == order.hidesDeleted && wanted.comparison == order.comparison &&
        wanted.filterValue == order.filterValue &&
        rowCount() == (arranged ? static_cast<int>(arranged->size()) : recordCount);
    order = wanted;
    if (isSort) {
        take(std::move(arranged));
    } else {
        q->beginResetModel();
        rows = std::move(arranged);
        q->endResetModel();
    }
    return true;
}

/// Takes the rows in a new order; persistent indexes follow their records.
void DbfTableModel::Private::take(std::optional<std::vector<int>> arranged)
{
    Q_EMIT q->layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = q->persistentIndexList();
    std::vector<int> rowOf;
    if (!before.isEmpty() && arranged) {
        rowOf.assign(static_cast<size_t>(recordCount), -1);
        for (size_t row = 0; row < arranged->size(); ++row)
            rowOf[static_cast<size_t>(arranged->at(row))] = static_cast<int>(row);
    }
    QModelIndexList after;
    for (const QModelIndex& index : before) {
        const int record = recordAt(index.row());
        const int row = arranged ? rowOf[static_cast<size_t>(record)] : record;
        after.append(q->createIndex(row, index.column()));
    }
    rows = std::move(arranged);
    q->changePersistentIndexList(before, after);
    Q_EMIT q->layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

/// Shows \a count records behind those there were.
void DbfTableModel::Private::appendRows(int count)
{
    q->beginInsertRows({}, rowCount(), rowCount() + count - 1);
    pages.remove(recordCount / recordsPerPage); // It ended where the new records begin.
    for (int i = 0; rows && i < count; ++i)
        rows->push_back(recordCount + i);
    recordCount += count;
    q->endInsertRows();
}

/// Drops the rows of the records from \a count on.
void DbfTableModel::Private::dropRows(int count)
{
    if (!rows) {
        q->beginRemoveRows({}, count, recordCount - 1);
        recordCount = count;
        q->endRemoveRows();
        return;
    }
    q->beginResetModel();
    recordCount = count;
    rows->erase(
        std::remove_if(rows->begin(), rows->end(), [count](int record) { return record >= count; }),
        rows->end());
    q->endResetModel();
}

bool DbfTableModel::Private::reopen(bool (*open)(DbfTable&))
{
    const QScopedValueRollback<bool> busy(isBusy, true);
    q->beginResetModel();
    if (memo)
        memo->file.close(); // The next read opens the one that is there then.
    bool done = open(table);
    if (!done) {
        noteError();
        table.close();
    }
    adopt();
    if (done && order.hidesDeleted) {
        rows = rowsInOrder(table, order, {});
        done = rows.has_value();
        order.hidesDeleted = done;
        noteError();
    }
    q->endResetModel();
    return done;
}

DbfTableModel::DbfTableModel(DbfTable&& table, QObject* parent)
    : QAbstractTableModel(parent), d(std::make_unique<Private>(this, std::move(table)))
{
}

DbfTableModel::~DbfTableModel() = default;

std::unique_ptr<DbfTableModel> DbfTableModel::open(const QString& path, QString* errorString)
{
    std::unique_ptr<MemoBeside> memo;
    DbfTable table(new QFile(path)); // NOLINT: which the table deletes
    table.destroyDeviceAtExit(true);
    table.setAcceptedVersions(DbfTable::AllVersions);
    table.setCodecChoice(codecOfLanguageDriver);
    table.setConverterChoice(nullableConverter);
    const bool isWritable = QFileInfo(path).isWritable();
    const QIODevice::OpenMode mode = isWritable ? QIODevice::ReadWrite : QIODevice::ReadOnly;
    // A file that does not exist would be made.
    bool isOpen = table.open(QFileInfo::exists(path) ? mode : QIODevice::ReadOnly);
    if (isOpen) {
        memo = std::make_unique<MemoBeside>(path, table.descriptor().version);
        if (!memo->file.fileName().isEmpty()) {
            table.setConverterChoice([beside = memo.get()](const DbfFieldDescriptor& field,
                                                           const DbfTableDescriptor& header) {
                return nullableConverters(
                    header.version == beside->version ? &beside->memo : nullptr)(field, header);
            });
            isOpen = table.reopen();
        }
    }
    if (errorString)
        *errorString = table.errorString();
    if (!isOpen)
        return nullptr;
    auto model = std::make_unique<DbfTableModel>(std::move(table));
    model->d->memo = std::move(memo);
    return model;
}

const DbfTable& DbfTableModel::table() const
{
    return d->table;
}

QString DbfTableModel::errorString() const
{
    return d->error;
}

bool DbfTableModel::setTextCodec(QTextCodec* codec)
{
    if (d->isBusy)
        return d->refuseBusy();
    d->table.overrideTextCodec(codec);
    return d->reopen([](DbfTable& table) { return table.reopen(); });
}

int DbfTableModel::recordOfRow(int row) const
{
    return row >= 0 && row < d->rowCount() ? d->recordAt(row) : -1;
}

void DbfTableModel::setProgress(std::function<bool(int, int)> progress)
{
    if (!d->isBusy)
        d->progress = std::move(progress);
}

void DbfTableModel::sort(int column, Qt::SortOrder order)
{
    RowOrder wanted = d->order;
    wanted.sortColumn = column < columnCount() ? std::max(column, -1) : -1;
    wanted.order = order;
    d->arrange(wanted);
}

bool DbfTableModel::setFilter(const QString& text)
{
    RowOrder wanted = d->order;
    wanted.filterColumn = -1;
    wanted.filterText = text;
    return d->arrange(wanted);
}

bool DbfTableModel::setFilter(int column, Comparison comparison, const QVariant& value)
{
    if (column < 0 || column >= columnCount())
        return d->refuse(QStringLiteral("There is no such column"));
    RowOrder wanted = d->order;
    wanted.filterColumn = column;
    wanted.comparison = comparison;
    wanted.filterValue = value;
    wanted.filterText.clear();
    return d->arrange(wanted);
}

bool DbfTableModel::setShowingDeleted(bool showing)
{
    RowOrder wanted = d->order;
    wanted.hidesDeleted = !showing;
    return d->arrange(wanted);
}

bool DbfTableModel::isShowingDeleted() const
{
    return !d->order.hidesDeleted;
}

bool DbfTableModel::refresh()
{
    if (d->isBusy)
        return d->refuseBusy();
    if (d->table.refreshRecordCount() < 0)
        return d->refuse({});
    d->pages.clear();
    const int count = d->table.recordCount();
    if (count < d->recordCount)
        d->dropRows(count);
    const int kept = d->rowCount();
    if (kept > 0)
        Q_EMIT dataChanged(index(0, 0), index(kept - 1, columnCount() - 1));
    if (count > d->recordCount)
        d->appendRows(count - d->recordCount);
    return true;
}

bool DbfTableModel::actualize()
{
    if (d->isBusy)
        return d->refuseBusy();
    if (d->table.isOpen() && d->table.isActual())
        return refresh();
    if (d->table.isOpen())
        return d->reopen([](DbfTable& table) { return table.actualize(); });
    const QIODevice::OpenMode mode = d->mode;
    d->table.close();
    return d->table.device() && d->table.device()->open(mode | QIODevice::ExistingOnly) &&
           d->reopen([](DbfTable& table) { return table.open(QIODevice::ReadOnly); });
}

int DbfTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : d->rowCount();
}

int DbfTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : int(d->table.schema().columns.size());
}

QVariant DbfTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical && role == Qt::DisplayRole && section < d->rowCount())
        return recordOfRow(section) + 1;
    const bool isColumn = orientation == Qt::Horizontal && section >= 0 && section < columnCount();
    if (!isColumn || (role != Qt::DisplayRole && role != Qt::ToolTipRole))
        return QAbstractTableModel::headerData(section, orientation, role);
    const DbfFieldDescriptor& field = d->table.schema().columns.at(section).descriptor;
    if (role == Qt::DisplayRole)
        return field.name;
    QString size = QString::number(field.length);
    if (field.decimals > 0)
        size += QLatin1Char(',') + QString::number(field.decimals);
    return QStringLiteral("%1(%2)").arg(QLatin1Char(static_cast<char>(field.type))).arg(size);
}

Qt::ItemFlags DbfTableModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || !checkIndex(index) || !d->isEditable(index.column()))
        return flags;
    return flags | (d->isTruth(index.column()) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

QVariant DbfTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || !checkIndex(index))
        return {};
    const DbfFieldDescriptor& field = d->table.schema().columns.at(index.column()).descriptor;
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (isNumberField(field) ? Qt::AlignRight : Qt::AlignLeft));
    const int record = d->recordAt(index.row());
    if (role == RecordRole)
        return record;
    const bool isCheck = role == Qt::CheckStateRole;
    if ((isCheck && !d->isTruth(index.column())) ||
        (!isCheck && role != Qt::DisplayRole && role != Qt::EditRole && role != DeletedRole &&
         role != ValueRole))
        return {};
    const DbfRecord shown = d->read(record);
    if (shown.isTransient())
        return {};
    if (role == DeletedRole)
        return shown.isDeleted();
    QVariant cell = shown.values.at(index.column());
    if (role == Qt::EditRole || role == ValueRole)
        return cell;
    if (!isCheck)
        return d->isTruth(index.column()) ? QVariant() : cellText(cell, field);
    if (!cell.isValid())
        return int(Qt::PartiallyChecked);
    return int(cell.toBool() ? Qt::Checked : Qt::Unchecked);
}

bool DbfTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || !checkIndex(index))
        return false;
    if (d->isBusy)
        return d->refuseBusy();
    QString reason = QStringLiteral("It cannot be changed");
    if (!d->edit(index, value, role, reason))
        return d->refuse(reason, index);
    const int row = index.row();
    if (role == DeletedRole && d->order.hidesDeleted && d->rows && value.toBool()) {
        beginRemoveRows({}, row, row);
        d->rows->erase(d->rows->begin() + row);
        endRemoveRows();
        return true;
    }
    // The mark of a record shows in all of its cells.
    const bool isMark = role == DeletedRole;
    Q_EMIT dataChanged(isMark ? index.siblingAtColumn(0) : index,
                       isMark ? index.siblingAtColumn(columnCount() - 1) : index);
    return true;
}

bool DbfTableModel::insertRows(int row, int count, const QModelIndex& parent)
{
    if (d->isBusy)
        return d->refuseBusy();
    if (parent.isValid() || row != d->rowCount() || count < 1 || !d->isWritable() ||
        count > std::numeric_limits<int>::max() - d->recordCount)
        return d->refuse(QStringLiteral("No record can be added there"));
    // Records without values are blank in every column.
    if (!d->table.appendRecords(QVector<DbfRecord>(count)))
        return d->refuse(QStringLiteral("The records cannot be added"));
    d->appendRows(count);
    return true;
}

} // namespace dbf
