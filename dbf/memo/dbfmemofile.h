// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MEMO_DBFMEMOFILE_H
#define DBF_MEMO_DBFMEMOFILE_H

#include <dbf/dbfexport.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

class QIODevice;

namespace dbf
{

class DbfMemoConverter;

/// The file beside a table that holds its long texts, pictures and objects; for reading alone.
///
/// The table's version says how memos lie in it: 0x30, 0x31, 0x32 and 0xF5 have FPT files, 0x83,
/// 0x8B and 0xCB have DBT files of two kinds. Tables of other versions have none, and every read
/// fails.
///
/// A damaged file costs no more than its size: no length is believed beyond the end of the file,
/// and no search goes beyond it. A memo file and its device serve one thread at a time.
class DBFTABLE_EXPORT DbfMemoFile
{
public:
    /// Borrows \a device, which must outlive the memo file, seek, and tell its size. It is not
    /// touched before the first read, which opens it read-only unless it is open. With a null one,
    /// or a file without a name, every read fails. Close the device to have a file that was
    /// replaced opened again. \a tableVersion is DbfTableDescriptor::version.
    DbfMemoFile(QIODevice* device, quint8 tableVersion);

    DbfMemoFile(const DbfMemoFile&) = delete;
    DbfMemoFile& operator=(const DbfMemoFile&) = delete;

    /// Leaves the device as it is.
    ~DbfMemoFile();

    /// Returns the memo that begins at \a block, without its head or end marker, as it is on the
    /// device at that moment; the size of blocks is read once after each opening of the device.
    /// \a ok, unless null, tells whether it was read: a memo can be empty.
    ///
    /// Returns nothing and leaves a text in errorString() without a device or memo layout, when the
    /// device does not open, is in text mode or fails, and for damage: a block size of 0, a
    /// block within the header or beyond the end of the file, a head that is cut off or none, a
    /// length beyond the end of the file, no end marker. Memos of 1 GiB are too long, too. What a
    /// caller's own device throws passes through.
    QByteArray read(quint32 block, bool* ok = nullptr);

    /// Returns whether the last read gave text, not a picture, an object, or a failure.
    bool lastWasText() const;

    /// Returns one sentence for a person on the last read that failed, be it long ago; empty when
    /// none did since clearError().
    QString errorString() const;

    /// Empties errorString().
    void clearError();

    /// Returns the converter of the columns that point into this file. The memo file owns it.
    DbfMemoConverter* converter() const;

    /// Returns the path of the memo file of the table at \a tablePath, which need not exist: a file
    /// of the same name in the same folder, but for its suffix, which is fpt or dbt by
    /// \a tableVersion, in any case; of several, that in lower case, else that in upper case.
    /// Empty when there is none, and for versions without memo files.
    static QString pathBeside(const QString& tablePath, quint8 tableVersion);

private:
    friend class DbfMemoConverter;
    class Private;

    void refuse(const QString& reason);

    std::unique_ptr<Private> d;
};

} // namespace dbf

#endif
