// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DBFTABLE_P_H
#define DBF_TABLE_DBFTABLE_P_H

#include <dbf/format/recordimage_p.h>
#include <dbf/table/dbftable.h>

#include <utility>

namespace dbf
{

/// Runs \a operation and turns the code that it throws, if any, into the recorded one. Returns
/// whether it threw none.
template <typename Operation>
bool DbfTable::recordingErrors(Operation operation)
{
    try {
        operation();
        return true;
    } catch (DbfTableError code) {
        return error(code);
    }
}

/// Hands the RecordImageCodec of the table's schema to \a operation, the one of the last operation
/// if it still fits. It is away from the table meanwhile: a caller's converter may come back to the
/// table, and must neither share it nor delete it.
template <typename Operation>
void DbfTable::usingImageCodec(Operation operation)
{
    std::unique_ptr<RecordImageCodec> codec = std::move(m_imageCodec);
    if (!codec || !codec->isMadeFor(m_schema))
        codec = std::make_unique<RecordImageCodec>(m_schema);
    operation(*codec);
    m_imageCodec = std::move(codec);
}

/// Reads up to \a length bytes at the current position into \a data with one read, and no more than
/// the device holds where it can tell. Returns the number read, -1 if the device refuses.
qint64 readUpTo(QIODevice* device, char* data, qint64 length);

/// Returns how many of \a length bytes the device can still hold behind its position: all of them
/// where it cannot tell, and where they are too few to be worth the question.
qint64 obtainable(QIODevice* device, qint64 length);

/// Throws ReadError when records have no bytes at all and \a count of them is more than \a device
/// has bytes: nothing on the device then bounds how many a header can make a caller ask for.
void requirePlausibleCount(const QIODevice* device, qint64 count,
                           const DbfTableDescriptor& descriptor);

/// Throws WriteError when \a device would not put a record's bytes where a seek went, or not as
/// they are.
void requireExactWrites(const QIODevice* device);

/// Hands on what a QFileDevice has gathered, so that a full disk shows while it can still be
/// reported. Throws WriteError.
void flushWrites(QIODevice* device);

/// Rids a QFileDevice of what it has gathered and could not write. It would otherwise write that
/// later, at whatever position it then stands. Only closing does it, which tries once more at the
/// right place; the file is opened again unless its path names another one by now. A QSaveFile is
/// kept from being committed.
void dropGatheredWrites(QIODevice* device);

/// Closes \a device, unless it is a QSaveFile: that ends the process when it is closed, and waits
/// for its owner's commit().
void closeDevice(QIODevice* device);

/// Writes everything that stands before the records: header, field descriptors, terminator and,
/// where the version has one, an empty back-link area. Throws WriteError.
void writeTableStart(QIODevice* device, const DbfTableDescriptor& descriptor,
                     const DbfSchema& schema);

} // namespace dbf

#endif
