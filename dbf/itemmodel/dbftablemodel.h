// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ITEMMODEL_DBFTABLEMODEL_H
#define DBF_ITEMMODEL_DBFTABLEMODEL_H

#include <dbf/dbfexport.h>
#include <dbf/table/dbftable.h>

#include <QtCore/QAbstractTableModel>

#include <functional>
#include <memory>

namespace dbf
{

/// Shows the records of a table to Qt's item views, sorted and filtered, and lets them be edited.
///
/// Records are read in pages when one of their cells is looked at, and the pages looked at last are
/// kept. A table in its own order takes the same memory whatever its size; one that is sorted,
/// filtered or without its deleted records takes four bytes a row.
///
/// Edits go to the table at once and write their own cell alone. What the field would not keep is
/// refused: errorString() and refused() say why. An edited or appended row stays where it is until
/// sort() or setFilter() is called again.
///
/// While a sort or filter is under way (its progress function is running, or a slot of the signals
/// that end it), the model can be read, and every call that would change it is refused. It must not
/// be destroyed then. The model serves the thread it lives in.
class DBFTABLE_EXPORT DbfTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// What data() knows beside Qt's own roles.
    enum Role {
        DeletedRole = Qt::UserRole, ///< Whether the record is marked deleted; can be set.
        ValueRole,                  ///< The value as the column's converter reads it.
        RecordRole,                 ///< The index of the record in the table.
    };

    /// How a filter compares a cell with its value.
    enum class Comparison : quint8 {
        Equal,    ///< The same; with an invalid value: blank.
        NotEqual, ///< Every other cell.
        Less,     ///< Before the value, as all that follow, never of a blank cell.
        AtMost,   ///< Not behind the value.
        Greater,  ///< Behind the value.
        AtLeast,  ///< Not before the value.
        Contains, ///< The cell's text contains that of the value, in any case.
    };

    /// Takes over \a table, which is open (else the model is empty), and lets it check values. They
    /// go through the table's converters: give it the nullable set before it is opened, or blank
    /// numbers show as 0.
    explicit DbfTableModel(DbfTable&& table, QObject* parent = nullptr);
    ~DbfTableModel() override;

    /// Opens the table in the file \a path with the nullable set, by every version and code page,
    /// and with its memo file where there is one; for writing if the file allows it. The model owns
    /// the files. Returns null when it does not open, and \a errorString, unless null, says why.
    static std::unique_ptr<DbfTableModel> open(const QString& path, QString* errorString = nullptr);

    /// Returns the table. It is the model's.
    const DbfTable& table() const;

    /// Returns why the last operation failed, as one sentence for a person; empty when none did.
    /// Records that cannot be read count as one.
    QString errorString() const;

    /// Reads text and field names in \a codec (not owned) from now on, in the table's own order and
    /// without a filter. Null: the codec stays. Returns false when the table cannot be read again;
    /// the model is empty then.
    bool setTextCodec(QTextCodec* codec);

    /// Returns the index of the record that row \a row shows, -1 for a row out of range.
    int recordOfRow(int row) const;

    /// Chooses the function that long sorts and filters call with the number of records done and of
    /// all of them; when it returns false they stop and the rows stay as they were.
    void setProgress(std::function<bool(int done, int total)> progress);

    /// Puts the rows into the order of \a column, blanks last and equal ones in the table's order;
    /// into the table's own order for a column out of range. Reads that column in one pass. Text is
    /// compared as the locale does, or as numbers where all of it is numbers. Persistent indexes
    /// follow their records. When the table cannot be read or progress stops it, the rows stay as
    /// they were and refused() is emitted.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// Shows the rows that contain \a text in one of their cells, in any case; all of them when it
    /// is empty. The order stays. Resets the model. Returns false when the table cannot be read or
    /// progress stops it; the rows stay as they were.
    bool setFilter(const QString& text);

    /// Shows the rows whose cell in \a column compares so with \a value. As above; false, too, for
    /// a column out of range.
    bool setFilter(int column, Comparison comparison, const QVariant& value);

    /// Chooses whether records that are marked deleted are shown, as they are in a new model.
    /// Resets the model. While they are hidden a row goes when it is marked. Returns false as
    /// setFilter() does.
    bool setShowingDeleted(bool showing);

    /// Returns whether records that are marked deleted are shown.
    bool isShowingDeleted() const;

    /// Reads the record count and the records anew. Those added since become the last rows,
    /// whatever the filter; rows of records that are gone go. Returns false when the count cannot
    /// be read.
    bool refresh();

    /// Opens the table anew, in its own order and without a filter, when its file was replaced;
    /// else as refresh(). Returns false, leaving the model empty, when the new file does not open;
    /// call it again later.
    bool actualize();

    /// Returns the number of rows, 0 below an item.
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;

    /// Returns the number of columns, 0 below an item.
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;

    /// Returns a column's name, its type and width as tool tip, or the number of a row's record,
    /// counted from 1.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Returns what can be done with a cell: truth values are checked, others edited.
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Returns what a cell holds: its text, its value (Qt::EditRole), the mark of a truth value,
    /// its alignment. Cells of records that cannot be read are empty.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Writes a cell (Qt::EditRole, Qt::CheckStateRole) or the mark of its record (DeletedRole).
    /// Empty text stands for no value.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Appends \a count blank records; \a row must be rowCount().
    bool insertRows(int row, int count, const QModelIndex& parent = QModelIndex()) override;

Q_SIGNALS:
    /// Says that the cell at \a index did not take a value, or, with an invalid index, that a sort,
    /// filter or append did not happen, and why.
    void refused(const QModelIndex& index, const QString& reason);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace dbf

#endif
