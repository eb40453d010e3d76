// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DBFRECORDCURSOR_H
#define DBF_TABLE_DBFRECORDCURSOR_H

#include <dbf/dbfexport.h>
#include <dbf/model/dbfrecord.h>

#include <QtCore/QStringView>
#include <QtCore/QVariant>

#include <memory>
#include <string_view>

namespace dbf
{

class DbfTable;

/// Reads the records of a table one after another without making a DbfRecord of each: the fastest
/// way through a whole table, and the way to read only some columns.
///
///     dbf::DbfRecordCursor cursor(table);
///     while (cursor.next())
///         sum += cursor.value(2).toDouble();
///     if (cursor.hasError())
///         ...
///
/// The cursor borrows the table, which must stay alive and in place (neither moved nor swapped),
/// and shares its device: it seeks before each of its reads, so other operations may come between.
/// It reads ahead, a block of whole records at a time, with one seek and one read each.
///
/// Columns, converters, codec and range are those of the table when the cursor is made:
/// - records appended later are not visited;
/// - records updated later are seen as they are on the device when their block is read, so an
///   update of the current record or one shortly behind it may go unseen;
/// - a converter or codec that the table gets later does not reach the cursor;
/// - a converter that is called by the cursor may use it, next() included: the bytes that it was
///   handed stay as they are until it returns, and record() gives the record that it began with. It
///   must not destroy the cursor, nor assign to it;
/// - after reopen() the cursor goes on when the table still has the same layout, and ends with
///   ReadError when it has another; after close() it ends with ReadError at its next block.
///
/// A cursor and its table serve one thread at a time.
class DBFTABLE_EXPORT DbfRecordCursor
{
public:
    /// Makes a cursor before record \a first (0 to recordCount()) that goes to the last record the
    /// table has now. Reads nothing yet.
    explicit DbfRecordCursor(DbfTable& table, int first = 0);

    /// Makes a cursor before record \a first that goes over \a count records. As in
    /// DbfTable::readRecords, \a count is not limited to the records that exist: where the device
    /// ends earlier, the cursor ends with an error. Reads nothing yet.
    DbfRecordCursor(DbfTable& table, int first, int count);

    /// Takes over the state of \a other, which may then only be assigned to or destroyed.
    DbfRecordCursor(DbfRecordCursor&& other) noexcept;

    /// Takes over the state of \a other, which may then only be assigned to or destroyed.
    DbfRecordCursor& operator=(DbfRecordCursor&& other) noexcept;

    DbfRecordCursor(const DbfRecordCursor&) = delete;
    DbfRecordCursor& operator=(const DbfRecordCursor&) = delete;

    ~DbfRecordCursor();

    /// Moves to the next record. Returns false when there is none left or it cannot be read.
    ///
    /// In the second case hasError() becomes true and ReadError is recorded in the table: when the
    /// range is impossible (a first index outside 0 to the record count, a negative count), when
    /// the device cannot be positioned, and when it ends too early, though not before each record
    /// that is whole on it was visited.
    bool next();

    /// Chooses whether next() passes over the records that are marked deleted, from the next call
    /// on. Off in a new cursor.
    void setSkipDeleted(bool skip);

    /// A cursor on its way through a range-based for loop:
    ///
    ///     for (const dbf::DbfRecordCursor& record : cursor)
    ///         sum += record.value(2).toDouble();
    ///
    /// It ends where next() does, so hasError() is asked for behind the loop.
    class Iterator
    {
    public:
        struct End { ///< The end of every cursor.
        };
        explicit Iterator(DbfRecordCursor* cursor) : m_cursor(cursor), m_hasRecord(cursor->next())
        {
        } ///< Moves \a cursor to its next record.
        const DbfRecordCursor& operator*() const { return *m_cursor; } ///< The cursor itself.
        Iterator& operator++()
        {
            m_hasRecord = m_cursor->next();
            return *this;
        }                                                          ///< Moves it on.
        bool operator!=(End /*end*/) const { return m_hasRecord; } ///< Whether it moved.

    private:
        DbfRecordCursor* m_cursor;
        bool m_hasRecord;
    };

    /// Moves to the next record, for a range-based for loop over the records that are left.
    Iterator begin() { return Iterator(this); }
    Iterator::End end() const { return {}; } ///< Where such a loop ends.

    /// Returns the current record's index, -1 before the first next() and after the last.
    int index() const;

    /// Returns whether the current record is marked deleted; false without a current record.
    bool isDeleted() const;

    /// Returns the bytes of the current record in column \a column, as stored: a view that is valid
    /// until the next next(). Short or empty where the record image ends early; empty without a
    /// current record and for a column out of range.
    std::string_view bytes(int column) const;

    /// Returns what the column's converter reads in those bytes; an invalid QVariant without a
    /// current record and for a column out of range. Lets through what a caller's converter throws.
    QVariant value(int column) const;

    /// Returns those bytes decoded and trimmed as DbfStringConverter does, whatever converter the
    /// column has: a view that is valid until the next text() or next(). Empty without a current
    /// record and for a column out of range.
    QStringView text(int column) const;

    /// Returns the current record with all its values; a transient record with an invalid QVariant
    /// per column without one. Lets through what a caller's converter throws.
    DbfRecord record() const;

    /// Returns whether the cursor ended with an error of its own.
    bool hasError() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace dbf

#endif
