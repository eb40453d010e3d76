// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DEVICEPRIMITIVES_P_H
#define DBF_TABLE_DEVICEPRIMITIVES_P_H

#include <dbf/table/dbftable.h>

namespace dbf
{

/// What the primitives of a table on its device do, and the codes that they throw, stands with
/// DbfTable's static members of the same names.
namespace primitives
{

QByteArray readData(QIODevice* device, int length);
QByteArray readTableDescriptorData(QIODevice* device);
QByteArray readSchemaData(QIODevice* device, const DbfTableDescriptor& descriptor);
void seekRecord(QIODevice* device, int index, const DbfTableDescriptor& descriptor, int offset);
QByteArray readRecordData(QIODevice* device, int index, const DbfTableDescriptor& descriptor);
QByteArray readRecordsData(QIODevice* device, int first, unsigned long count,
                           const DbfTableDescriptor& descriptor);
void writeData(QIODevice* device, const QByteArray& data, long long size);
void writeSchemaTerminator(QIODevice* device);
void writeEndMarker(QIODevice* device);
void updateRecordCount(QIODevice* device, unsigned int count);

} // namespace primitives

/// Reads up to \a length bytes at the current position into \a data with one read, and no more than
/// the device holds where it can tell. Returns the number read, -1 if the device refuses or claims
/// to have read more.
qint64 readUpTo(QIODevice* device, char* data, qint64 length);

/// Moves \a device to \a position. Returns false when it does not go there; a QBuffer goes to no
/// place behind its end, since it would grow.
bool seekTo(QIODevice* device, qint64 position);

/// Moves \a device to record slot \a index as DbfTable::seekRecord does, so that the next read of a
/// file sees it as it is then, not as it was when Qt read ahead. Throws ReadError, for a device in
/// text mode, too.
void seekForReading(QIODevice* device, int index, const DbfTableDescriptor& descriptor);

/// Returns the record count in the header on \a device, as it is at that moment. Throws ReadError.
quint32 readRecordCount(QIODevice* device);

/// Lets the next read of a file see it as it is then, not as it was when Qt read ahead.
void dropReadAhead(QIODevice* device);

/// Throws ReadError when records have no bytes at all and \a count of them is more than \a device
/// has bytes: nothing on the device then bounds how many a header can make a caller ask for.
void requirePlausibleCount(const QIODevice* device, qint64 count,
                           const DbfTableDescriptor& descriptor);

/// Throws ReadError when \a device, which may be null, would not give bytes as they are.
void requireExactReads(const QIODevice* device);

/// Throws WriteError when \a device would not put a record's bytes where a seek went, or not as
/// they are.
void requireExactWrites(const QIODevice* device);

/// Returns where \a device ends, in bytes, if it is a file; the highest number for every other one,
/// which is believed to have the slots that it lets itself be moved to.
qint64 endOfFile(QIODevice* device);

/// Returns \a mode as a device may be opened in again without losing what it holds.
QIODevice::OpenMode modeForReopening(QIODevice::OpenMode mode);

/// Whether \a device prints a warning when it is opened neither for reading nor for writing.
bool warnsWithoutAccess(QIODevice* device);

/// Hands on what a QFileDevice has gathered, so that a full disk shows while it can still be
/// reported. Throws WriteError.
void flushWrites(QIODevice* device);

/// Waits until a socket or process has passed on all that was written to it, so that its buffer
/// neither grows by the table's size nor is dropped with it. Throws WriteError.
void drainWrites(QIODevice* device);

/// Rids a QFileDevice of what it has gathered and could not write. It would otherwise write that
/// later, at whatever position it then stands. Only closing does it, which tries once more at the
/// right place; the file is opened again unless its path names another one by now. A QSaveFile is
/// kept from being committed.
void dropGatheredWrites(QIODevice* device);

/// Closes \a device, unless closing would harm: a QSaveFile, whose close() ends the process, waits
/// for its owner's commit(), and a QProcess, which would be killed, gets an end of input.
void closeDevice(QIODevice* device);

/// A new table while it is written onto a device that was opened for it: a QSaveFile is kept from
/// being committed unless finish() came to its end, however it is left.
class NewTableDevice
{
public:
    explicit NewTableDevice(QIODevice* device) : m_device(device) {}
    ~NewTableDevice();
    NewTableDevice(const NewTableDevice&) = delete;
    NewTableDevice& operator=(const NewTableDevice&) = delete;

    /// Writes everything that stands before the records: the header's bytes, the field descriptors,
    /// the terminator and \a backLink. Throws WriteError.
    void start(const QByteArray& header, const QByteArray& fields, const QByteArray& backLink);

    /// Writes the end marker, hands everything on, and closes the device. Throws WriteError.
    void finish();

private:
    QIODevice* m_device;
    bool m_finished = false;
};

} // namespace dbf

#endif
