// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DBFTABLE_H
#define DBF_TABLE_DBFTABLE_H

#include <dbf/dbfexport.h>
#include <dbf/format/dbfcodepage.h>
#include <dbf/format/dbftabledescriptor.h>
#include <dbf/model/dbffielddescriptor.h>
#include <dbf/model/dbfrecord.h>
#include <dbf/model/dbfschema.h>

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <QtCore/QVector>

#include <functional>
#include <memory>

class QTextCodec;

namespace dbf
{

class DbfFieldConverter;
struct DbfCopyOptions;
struct DbfSchemaTransform;
struct DbfValueProblem;

/// A table on a device: opens it, reads, rewrites and appends its records, creates it anew, and
/// copies it into another device with its columns changed.
///
/// Records are numbered from 0. Operations that fail return false, an empty vector, a transient
/// blank record, or true (isRecordDeleted()), and record a code in the table, which lastError()
/// shows. The code is sticky: nothing clears it, and open(), reopen() and actualize() refuse to run
/// while there is one; a caller recovers by making a new table on the device. Only
/// copyAndTransform() records nothing. Exceptions of a caller's own converter or device, and those
/// of failed memory allocation, pass through.
///
/// The static functions are the pieces the operations are made of: pure functions on the bytes of
/// the format, and primitives on a device. They report failure by throwing a DbfTableError; a
/// device that is null or not open counts as one that reads or writes nothing.
///
/// **Converters and callbacks** of a caller's own (converters, codecs, a copy's progress, a device)
/// may use the table that calls them in every way but these: they must not destroy, move or swap
/// it, nor destroy its device. What was begun holds on to what it needs:
/// - a reading operation and a cursor go on with the columns, converters and codec they began with;
/// - a record that is being written goes to the slot it was meant for, wherever the device stands
///   then; an append takes the slot behind what was appended meanwhile. When the table was opened
///   anew or closed meanwhile, the write is refused with WriteError and nothing of it is written. A
///   bulk append is refused, too, when other records were appended after its first block;
/// - a copy stops, as after a failure, once the table was opened anew.
///
/// **A device of a caller's own** is read and written through QIODevice's public functions alone.
/// The library expects that isSequential() tells whether it can seek; that pos() is where the next
/// byte is read or written; that size() is the number of bytes it holds, or 0 or less when it
/// cannot tell: reads of more than 16 KiB are cut to what size() leaves, so a size that is too
/// small loses records; and that read() fills what it is given wherever it can, since a read that
/// brings fewer bytes than were asked for is a failure, and so is one that claims more. It is
/// believed to have the slots that it lets itself be moved to.
///
/// A table and its device serve one thread at a time. Tables on separate devices are independent.
class DBFTABLE_EXPORT DbfTable
{
public:
    /// Why an operation failed.
    enum DBFTABLE_EXPORT DbfTableError : quint8 {
        NoError = 0,                 ///< Nothing recorded.
        OpenError = 1,               ///< No device, or the device did not open.
        ReadError = 2,               ///< A read came short, or a record slot is out of reach.
        WriteError = 3,              ///< A write came short, or the image to write is too short.
        UnsupportedVersionError = 5, ///< The version byte is not one that the library reads.
        HeaderTooLongError = 7, ///< Header or record length would not fit the 16 bits they have.
    };

    /// @name The table object
    /// @{

    /// Takes over \a device, which may be null, with the function that releases it. The device is
    /// neither opened nor read.
    explicit DbfTable(std::unique_ptr<QIODevice, void (*)(QIODevice*)> device);

    /// Borrows \a device, which may be null and must outlive the table unless
    /// destroyDeviceAtExit() says otherwise.
    explicit DbfTable(QIODevice* device);

    /// Takes everything over; \a other is left without device and columns, and isOpen() as it was.
    DbfTable(DbfTable&& other) noexcept;

    /// Exchanges the two tables: \a other gets this table's former device and releases it when it
    /// is destroyed itself.
    DbfTable& operator=(DbfTable&& other) noexcept;

    DbfTable(const DbfTable&) = delete;
    DbfTable& operator=(const DbfTable&) = delete;

    /// Releases the device through its release function, without closing it first.
    ~DbfTable();

    /// Exchanges everything the two tables hold.
    DBFTABLE_EXPORT friend void swap(DbfTable& a, DbfTable& b) noexcept;

    /// Chooses whether the table deletes its device when it is destroyed, in place of whatever
    /// release function it had.
    void destroyDeviceAtExit(bool destroy);

    /// Closes the device, if there is one; header and schema stay in memory. A QSaveFile is left to
    /// its owner's commit(), since its close() ends the process.
    void close();

    /// Returns the table's structure: empty until the first open(), rebuilt by every one.
    const DbfSchema& schema() const;

    /// Returns the header as of the last open(), with the records appended since counted.
    const DbfTableDescriptor& descriptor() const;

    /// Returns the code recorded last, NoError if none was.
    DbfTableError lastError() const;

    /// Returns whether an error is recorded.
    bool hasError() const;

    /// Returns whether the last open() succeeded and close() was not called since.
    bool isOpen() const;

    /// Returns the device, null if there is none. It stays the table's.
    QIODevice* device() const;

    /// Returns the number of records, those marked deleted included, as of the last open() and
    /// with those appended since; 2147483647 when there are more.
    int recordCount() const;

    /// Returns how many records the device can hold by its size, those beyond recordCount()
    /// included, for callers whose tables may lie about their count. 0 where that cannot be told:
    /// without a device or open table, on a sequential device, and for records without bytes. In
    /// records of one byte the end marker counts as one.
    qint64 wholeRecords() const;

    /// Imposes \a codec (not owned) on text and names, now and in later open() calls. Null lets the
    /// next open() choose by the header's code page. Reaches the next operation, not one under way;
    /// a cursor is one operation.
    void overrideTextCodec(QTextCodec* codec);

    /// Installs \a converter (not owned) on column \a column (0 to the column count minus 1; other
    /// values change nothing). Every later open(), reopen() or refreshing actualize() puts those of
    /// setConverterChoice(), or the default converters, back.
    void setFieldConverter(int column, DbfFieldConverter* converter);

    /// Chooses the converter of a column, which is not owned, by its field and the table's header.
    using ConverterChoice = std::function<DbfFieldConverter*(const DbfFieldDescriptor& field,
                                                             const DbfTableDescriptor& table)>;

    /// Lets every later open(), reopen() and refreshing actualize() install the converters that
    /// \a choice returns; where it returns null, and when it is empty, the default ones. What it
    /// throws passes through, the table being as after a failed open(). Moves and swaps take it
    /// along; a table that was moved from has none.
    void setConverterChoice(ConverterChoice choice);

    /// Chooses a table's codec, which is not owned, by its header.
    using CodecChoice = std::function<QTextCodec*(const DbfTableDescriptor& table)>;

    /// Lets every later open(), reopen() and refreshing actualize() ask \a choice for the codec of
    /// text and names, unless overrideTextCodec() imposed one; where it returns null, the codec is
    /// that of codecByCodePage(). Empty: a codec, once chosen, stays. What it throws passes
    /// through, the table being as after a failed open(). Moves and swaps take it along.
    void setCodecChoice(CodecChoice choice);

    /// Which version bytes open() accepts.
    enum AcceptedVersions : quint8 {
        DefaultVersions, ///< Those of supportVersion(): 0x02 to 0x07, 0x30 and 0x31.
        AllVersions, ///< Those of the same layout, too: 0x32, 0x43, 0x63, 0x83, 0x8B, 0xCB, 0xF5,
                     ///< 0xFB.
    };

    /// Chooses which tables every later open(), reopen() and refreshing actualize() accepts. With
    /// AllVersions, tables whose version byte lies are told from others, too: version 0x04 with
    /// descriptors of 48 bytes, and 0x02 with a header of 8. DefaultVersions in a new table; moves
    /// and swaps take it along.
    void setAcceptedVersions(AcceptedVersions versions);

    /// Returns which tables are accepted.
    AcceptedVersions acceptedVersions() const;

    /// Chooses whether updateRecord(), updateValues(), appendRecord() and appendRecords() look at
    /// the values first (see checkValues()) and refuse a record with problems: false is returned,
    /// nothing recorded, nothing written. updateValues() looks at the values that differ from
    /// the stored ones alone. Off in a new table; moves and swaps take it along.
    void setCheckingValues(bool checking);

    /// Returns whether values are looked at before they are written.
    bool isCheckingValues() const;

    /// Returns the problems that the last of these writes, or the last copy with
    /// DbfCopyOptions::checkValues, was refused for, those of the first 100 records that have any.
    /// Empty when it was not refused for them; each of these operations empties it when it begins.
    QVector<DbfValueProblem> valueProblems() const;

    /// Records \a code in place of any earlier one. Always returns false.
    bool error(DbfTableError code);

    /// Returns, as one sentence for a person, what the recorded code is about: what failed, on
    /// which record (counted from 1), and what the device said. While no code is recorded, why the
    /// last copyAndTransform() failed, and empty when it did not fail or was stopped.
    QString errorString() const;

    /// Forgets code and text, for callers who want to go on.
    void clearError();

    /// @}
    /// @name Opening and refreshing
    /// @{

    /// Opens the device in \a mode unless it is open already, and reads header and columns from its
    /// current position. Chooses the codec by the header's code page unless there is one, and gives
    /// every column the converter of setConverterChoice() or its default one. Reads no record.
    ///
    /// Returns false, touching nothing, while an error is recorded. Records OpenError without a
    /// device or when it does not open, ReadError when header or columns are cut short, the header
    /// length is impossible or the device is in text mode, UnsupportedVersionError. After a failure
    /// isOpen(), the columns and (unless only the columns could not be read) descriptor() are as
    /// before; the device stays open.
    bool open(QIODevice::OpenMode mode);

    /// Closes the table and opens it again in the device's current mode, less what would empty a
    /// file or refuse one that exists. Records as open() does, OpenError when the device is not
    /// open, and ReadError when it is open for writing alone, as that would empty it. While an
    /// error is recorded the table ends up closed and false is returned.
    bool reopen();

    /// Returns false when the device is a file and its path now shows a file of another size or
    /// modification time than the open one, that is, when the file was replaced. Every other case,
    /// a vanished file included, counts as actual. A file changed in place through its own path
    /// counts as actual, too. Records nothing.
    bool isActual() const;

    /// Reopens the table unless it is actual; true when there was nothing to do.
    bool actualize();

    /// Reads the record count in the header again, and nothing else, without reopening: converters,
    /// codec and cursors stay. Returns the number of records added since, 0 when there are fewer
    /// now (recordCount() follows down). A count above wholeRecords(), as while another program is
    /// writing, takes only the records that are whole; where wholeRecords() is not known it is
    /// believed. Returns -1 and records ReadError when the count cannot be read or the device is in
    /// text mode; the count is then as before. A record being written while the count changes is
    /// refused as after an opening.
    int refreshRecordCount();

    /// @}
    /// @name Reading records
    /// @{

    /// Returns record \a index (0 to recordCount() - 1), as it is on the device at that moment.
    /// Records ReadError and returns a transient blank record when the index is out of range, the
    /// device is in text mode, or the image cannot be read whole, as behind the last record, where
    /// normally the end marker alone stands.
    DbfRecord readRecord(int index);

    /// Returns \a count records from \a first on, read with one seek and one read. All or nothing:
    /// records ReadError and returns an empty vector when \a first is out of range, \a count is
    /// negative, the range is longer than 2147483647 bytes, or the device does not hold all of it
    /// or is in text mode. With a \a count of 0 nothing is read, and \a first alone can be wrong.
    ///
    /// Values take more room than their bytes: each at least sizeof(QVariant), even those of
    /// columns of length 0, of which a record of one byte can have 2046. Reading a big table in
    /// ranges of some hundred records, or with a DbfRecordCursor, needs little room, and is faster.
    QVector<DbfRecord> readRecords(int first, int count);

    /// Returns whether record \a index is marked deleted. Records ReadError and returns true when
    /// the flag cannot be read.
    bool isRecordDeleted(int index);

    /// Returns a record of that index (transient if negative) with an invalid QVariant for every
    /// column. Touches no device.
    DbfRecord blankRecord(int index) const;

    /// @}
    /// @name Writing records
    /// @{

    /// Writes \a record over the row that its index names, deleted flag included. Returns false
    /// without recording anything or touching the device for a transient record and for an index
    /// of recordCount() or more. Records ReadError when the slot cannot be reached or begins behind
    /// the end of a file, WriteError when the image is shorter than the record length, the device
    /// is in append or text mode, or a converter has opened the table anew or closed it (nothing is
    /// written in all these cases), or when the device does not take the image whole. The header is
    /// not touched. Where a file ends is asked once after each opening; own appends move it.
    bool updateRecord(const DbfRecord& record);

    /// Writes into the row that the index of \a record names only what changed: reads the old image
    /// (one seek, one read), and writes the new one whole (one seek, one write), or nothing when
    /// nothing changed. A field keeps its bytes when its value is of the same type as, and equal
    /// to, what the column's converter reads from them (NaN is equal to NaN; values that Qt cannot
    /// compare are equal when they would be written alike), and when the record has no value for
    /// it. So reading any record and writing it back changes no byte. The deletion flag keeps its
    /// byte unless isDeleted() differs from what it means; bytes behind the last column are kept.
    ///
    /// Returns false and records as updateRecord() does; ReadError, too, when the old image cannot
    /// be read whole, and WriteError when a converter gives other than the length of a field that
    /// changed (nothing is written then). What a converter writes into the same row meanwhile is
    /// kept where this record changes nothing.
    bool updateValues(const DbfRecord& record);

    /// Writes the deletion flag of record \a index alone, 0x2A or 0x20: one seek, one write of a
    /// byte. Returns false without recording anything or touching the device for an index out of
    /// range, and records as updateRecord() does otherwise.
    bool setRecordDeleted(int index, bool deleted);

    /// Writes \a record after the last one (its own index is ignored), then the end marker, then
    /// the new count into the header. Records ReadError when the slot cannot be reached or begins
    /// behind the end of a file, or the table has more records than an index can number, WriteError
    /// as updateRecord() does, and when the end marker is not taken. The count, in memory and in
    /// the file, then stays as it was. A failed write of the count goes unnoticed.
    bool appendRecord(const DbfRecord& record);

    /// Appends all of \a records as appendRecord() would one by one, much faster: one seek, the
    /// images in blocks of some 64 KiB, one end marker, one count. All or nothing: after a failure,
    /// recorded as by appendRecord(), the count is as it was, in memory and in the file, and the
    /// end marker stands again where it stood if the device still takes writes. An empty vector
    /// does nothing and returns true.
    bool appendRecords(const QVector<DbfRecord>& records);

    /// @}
    /// @name Creating and copying
    /// @{

    /// Opens the device write-only and writes an empty table of \a schema onto it, then closes it
    /// (a QSaveFile stays open for its owner's commit()). A file is emptied by that; a QBuffer
    /// keeps what it held behind the bytes written. The table object itself stays as it was: open()
    /// the new table to use it.
    ///
    /// Records OpenError without a device or when it does not open, HeaderTooLongError for more
    /// than 2046 columns or records longer than 65535 bytes, WriteError when the device does not
    /// take everything. After a failure the device stays open, and a QSaveFile cannot be committed
    /// any more. Runs even while an error is recorded.
    ///
    /// A socket or pipe is waited for until it has passed everything on; a QProcess gets an end of
    /// input and is left to end by itself, one that has ended before is a WriteError.
    bool create(const DbfSchema& schema);

    /// Does the same and writes \a codePage as the code page byte. While the schema's codec is
    /// null, names are written in the codecByLanguageDriver() of that byte.
    bool create(const DbfSchema& schema, DbfCodePage codePage);

    /// Writes a copy of the whole table, its columns changed by \a transform, onto \a device (not
    /// owned, closed when the call begins): opens it write-only, writes in sequence without a seek,
    /// and closes it (a QSaveFile stays open for its owner's commit()). Records marked deleted are
    /// copied, too. The copy keeps version, code page byte and record count.
    ///
    /// Returns false and records nothing when the table is not open or has no device, its record
    /// length is 0, it has more than 2147483647 records, its device is in text mode, \a device is
    /// null or names the table's own file or buffer (under whatever name or link; a QSaveFile may
    /// name it, which restructures a file in place), the table is opened anew meanwhile, or
    /// anything fails on the way; the target then stays open with what was written so far, and a
    /// QSaveFile cannot be committed any more, nor after an exception. A socket, pipe or QProcess
    /// is treated as by create(), and waited for after each batch. Throws std::out_of_range at the
    /// first record when a source index of the transform is neither -1 nor a column of this table,
    /// or a target column has no entry in it.
    [[nodiscard]] bool copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform);

    /// Does the same and calls \a progress, unless it is empty, after each batch of some 8 MiB, the
    /// last one included, with the number of records done and of all records; once, with 0 and 0,
    /// for a table without records. When \a progress returns false, the copy stops there as after a
    /// failure: false is returned and the target stays open, unfinished.
    [[nodiscard]] bool copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                        const std::function<bool(int done, int total)>& progress);

    /// Does the same with \a options. Returns false, too, when the pass that counts fails or is
    /// stopped, before \a device is opened, and when another number of records is kept than was
    /// counted.
    [[nodiscard]] bool copyAndTransform(QIODevice* device, const DbfSchemaTransform& transform,
                                        const DbfCopyOptions& options);

    /// @}
    /// @name The header
    /// @{

    /// Parses the first 32 bytes of \a header. Throws ReadError when there are fewer, and
    /// UnsupportedVersionError. Nothing else is validated.
    static DbfTableDescriptor parseTableDescriptor(const QByteArray& header);

    /// Returns the 32 header bytes of \a descriptor; all bytes without a field in it are zero,
    /// those of the date included.
    static QByteArray serializeTableDescriptor(const DbfTableDescriptor& descriptor);

    /// Returns whether tables of that version byte are read: 0x02 to 0x07, 0x30 and 0x31.
    static bool supportVersion(char version);

    /// Returns whether the file has a 263-byte back-link area before its records: versions 0x30 and
    /// 0x31.
    static bool hasDbc(const DbfTableDescriptor& descriptor);

    /// Returns the length in bytes of the field descriptor block, its terminator excluded; negative
    /// when the header length is impossible.
    static int schemaLength(const DbfTableDescriptor& descriptor);

    /// Returns the file offset of record \a index in bytes. The index is not checked.
    static qint64 recordOffset(int index, const DbfTableDescriptor& descriptor);

    /// Returns the bytes of one record: the deletion flag and all fields.
    static int calcRecordLength(const DbfSchema& schema);

    /// Returns the bytes of the field descriptor block with its terminator.
    static int calcSchemaLength(const DbfSchema& schema);

    /// Returns the header length of a plain table, without back-link area. Throws
    /// HeaderTooLongError for more than 2046 columns.
    static int headerLength(const DbfSchema& schema);

    /// Returns the header of a new, empty table of version 0x03. Throws HeaderTooLongError for more
    /// than 2046 columns or a record length above 65535.
    static DbfTableDescriptor emptyTableDescriptor(DbfCodePage codePage, const DbfSchema& schema);

    /// Returns the header of a copy of \a source with the columns of \a schema: version, code page
    /// and count are kept, and so is the back-link area of versions 0x30 and 0x31. Throws
    /// HeaderTooLongError when header or record length do not fit 16 bits.
    static DbfTableDescriptor transformDescriptor(const DbfTableDescriptor& source,
                                                  const DbfSchema& schema);

    /// @}
    /// @name Field descriptors
    /// @{

    /// Parses the 32-byte field descriptor at \a record, its name decoded with \a codec (null as in
    /// DbfSchema::setCodec) and trimmed.
    static DbfFieldDescriptor parseFieldDescriptor(const char* record, QTextCodec* codec);

    /// Parses the field descriptors in \a block, as many as schemaLength() of \a descriptor tells;
    /// none when that is negative. Throws ReadError when the block is shorter.
    static QVector<DbfFieldDescriptor> parseFieldDescriptors(const QByteArray& block,
                                                             const DbfTableDescriptor& descriptor,
                                                             QTextCodec* codec);

    /// Returns the 32 bytes of \a field, the first 10 bytes of its name in \a codec (null as in
    /// DbfSchema::setCodec) included.
    static QByteArray serializeFieldDescriptor(const DbfFieldDescriptor& field, QTextCodec* codec);

    /// Returns the field descriptor block of \a schema, 32 bytes per column, without terminator.
    static QByteArray serializeSchema(const DbfSchema& schema);

    /// @}
    /// @name Code pages
    /// @{

    /// Returns Qt's codec (not owned) for a header's code page byte: DOS Cyrillic for 0x66, Windows
    /// Cyrillic for 0xC9 and 0x00, KOI8-R for everything else. Null when Qt lacks it.
    static QTextCodec* codecByCodePage(DbfCodePage codePage);

    /// Returns the code page byte that a new table of \a codec gets: that of the two Cyrillic
    /// codecs, under whatever name Qt knows them, else NotSet. \a codec may be null.
    static DbfCodePage codePageByCodec(QTextCodec* codec);

    /// Returns the IANA MIBenum of the character set that the language driver id \a id (a header's
    /// code page byte) stands for, 0 for ids without one. QTextCodec::codecForMib finds its codec.
    static int languageIdToMIB(int id);

    /// Returns the codec (not owned) that other programs mean by the language driver id \a id (a
    /// header's code page byte): that of languageIdToMIB() but for 0x1D (DOS 850), 0x65 (DOS
    /// Cyrillic), 0x6A and 0x86 (DOS Greek, code page 737), 0x7D, 0x7E and 0xCC (Windows 1255, 1256
    /// and 1257), 0x96 to 0x98 (Macintosh Cyrillic, Central European, Greek). Null for 0x68, 0x69,
    /// ids outside 0 to 255 and all others without a codec.
    static QTextCodec* codecByLanguageDriver(int id);

    /// Returns the codec (not owned) that \a label names in one of the spellings of `.cpg` files
    /// and settings: `1251`, `CP1251`, `windows-1251`, `ANSI 1251`, `OEM 866`, `88591`, `ISO
    /// 8859-1`, `UTF-8`, `65001`, `Big5`, `ANSI936`, in any case, with spaces, byte order mark and
    /// line ends. Null for every other.
    static QTextCodec* codecByLabel(const QByteArray& label);

    /// Returns the byte by which other programs know \a codec (0x65 for DOS Cyrillic, 0x03 for
    /// Windows 1252): the one whose codecByLanguageDriver() it is. NotSet when no byte means it.
    /// Sets \a ok, unless it is null, to whether one does.
    static DbfCodePage languageDriverByCodec(QTextCodec* codec, bool* ok = nullptr);

    /// @}
    /// @name Record images
    /// @{

    /// Parses a record image: the record of index \a index, marked deleted when the first byte is
    /// 0x2A, with one value per column of \a schema. Of an image that ends early, the converters
    /// get short or empty slices.
    static DbfRecord parseRecord(const QByteArray& image, int index, const DbfSchema& schema);

    /// Returns the image of \a record: the deletion flag and what the column's converters make of
    /// the values, neither padded nor cut. Its length is the record length only when every
    /// converter gives its field's length. Columns without a value get their blank image; values
    /// beyond the last column are ignored.
    static QByteArray serializeRecord(const DbfRecord& record, const DbfTableDescriptor& descriptor,
                                      const DbfSchema& schema);

    /// Returns the record image \a record of a table of \a sourceSchema rewritten by \a transform,
    /// deletion flag kept: blank images for new columns, the result of transformField() for the
    /// others. Throws std::out_of_range for a source index that is neither -1 nor a column of
    /// \a sourceSchema, and for a column without entry in the transform's map.
    static QByteArray transformRecord(const QByteArray& record, const DbfSchema& sourceSchema,
                                      const DbfSchemaTransform& transform);

    /// @}
    /// @name Device primitives
    /// @{

    /// Returns exactly \a length bytes read from the current position with one read. Throws
    /// ReadError when the device gives fewer, and for a negative length.
    static QByteArray readData(QIODevice* device, int length);

    /// Returns the 32 header bytes, read from the current position. Throws ReadError.
    static QByteArray readTableDescriptorData(QIODevice* device);

    /// Returns the field descriptor block, read from the current position. Throws ReadError, before
    /// reading anything when the header length is impossible.
    static QByteArray readSchemaData(QIODevice* device, const DbfTableDescriptor& descriptor);

    /// Moves the device to \a offset bytes behind the start of record slot \a index, 0 to the
    /// record count, both included. Throws ReadError for other indexes and when the device does not
    /// seek.
    static void seekRecord(QIODevice* device, int index, const DbfTableDescriptor& descriptor,
                           int offset);

    /// Returns the image of record \a index. Throws ReadError.
    static QByteArray readRecordData(QIODevice* device, int index,
                                     const DbfTableDescriptor& descriptor);

    /// Returns the images of \a count records from \a first on, read with one seek and one read.
    /// Throws ReadError, before allocating anything when they are longer than 2147483647 bytes.
    static QByteArray readRecordsData(QIODevice* device, int first, unsigned long count,
                                      const DbfTableDescriptor& descriptor);

    /// Writes the first \a size bytes of \a data at the current position with one write. Throws
    /// WriteError when \a data is shorter, then without touching the device, and when the device
    /// does not take them all.
    static void writeData(QIODevice* device, const QByteArray& data, long long size);

    /// Writes the byte 0x0D that ends the field descriptors. Throws WriteError.
    static void writeSchemaTerminator(QIODevice* device);

    /// Writes the byte 0x1A that ends the records. Throws WriteError.
    static void writeEndMarker(QIODevice* device);

    /// Writes \a count into the header. A failure goes unnoticed; when the device does not seek to
    /// the header, nothing is written.
    static void updateRecordCount(QIODevice* device, unsigned int count);

    /// @}

private:
    class Private;
    friend class DbfRecordCursor;

    std::unique_ptr<QIODevice, void (*)(QIODevice*)> m_device;
    DbfTableDescriptor m_descriptor;
    DbfTableError m_lastError = NoError;
    bool m_opened = false;
    DbfSchema m_schema;
    std::unique_ptr<Private> d; // what is kept between operations
};

/// Exchanges everything the two tables hold: device and release function, header, schema, recorded
/// error and open state.
DBFTABLE_EXPORT void swap(DbfTable& a, DbfTable& b) noexcept;

} // namespace dbf

#endif
