// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DBFTABLE_P_H
#define DBF_TABLE_DBFTABLE_P_H

#include <dbf/encoding/bytes_p.h>
#include <dbf/format/recordlayout_p.h>
#include <dbf/model/dbfvalueproblem.h>
#include <dbf/table/dbftable.h>
#include <dbf/table/deviceprimitives_p.h>
#include <dbf/table/errortext_p.h>
#include <dbf/table/plainfile_p.h>

#include <memory>
#include <optional>
#include <utility>

namespace dbf
{

/// What a table keeps between operations beside its described state, and what its operations are
/// made of.
class DbfTable::Private
{
public:
    class Standing;
    class ChangedFields;
    class ImageWriter;
    class Copy;

    /// Returns the table's own; a table that was moved from gets a new one.
    static Private& of(DbfTable& table);

    /// Runs \a operation and turns the code that it throws, if any, into the recorded one. Returns
    /// whether it threw none.
    template <typename Operation, typename Describe>
    static bool recordingErrors(DbfTable& table, Operation operation, Describe describe)
    {
        of(table).reason.clear();
        try {
            operation();
            return true;
        } catch (DbfTableError code) {
            table.error(code);
            of(table).errorText = describe(code);
            return false;
        }
    }

    /// Says why records from \a first on could not be read or written.
    static QString unreadable(const DbfTable& table, qint64 first, qint64 count);
    static QString unwritable(const DbfTable& table, qint64 first, qint64 count);

    /// Records that \a count records from \a first on could not be read. Always returns false.
    static bool readingFailed(DbfTable& table, qint64 first, qint64 count);

    /// Throws WriteError, with its reason, when \a image is no whole record.
    static void requireWholeImage(DbfTable& table, const QByteArray& image);

    /// Runs \a operation, which writes to the table's device and flushes it. When the device fails
    /// at that, nothing is left behind for it to write later.
    template <typename Operation>
    static void writingWhole(DbfTable& table, Operation operation)
    {
        try {
            operation();
        } catch (...) {
            Private& kept = of(table);
            if (kept.reason.isEmpty())
                kept.reason = errortext::ofFailedWrite(table.device());
            dropGatheredWrites(table.device());
            throw;
        }
    }

    /// Hands the layout of the table's schema to \a operation, the one of the last operation if it
    /// still fits. It is away from the table meanwhile: a caller's converter may come back to the
    /// table, and must neither share it nor delete it.
    template <typename Operation>
    static void usingLayout(DbfTable& table, Operation operation)
    {
        std::unique_ptr<RecordLayout> layout = std::move(of(table).keptLayout);
        if (!layout || !layout->isMadeFor(table.m_schema))
            layout = std::make_unique<RecordLayout>(table.m_schema);
        operation(*layout);
        of(table).keptLayout = std::move(layout);
    }

    /// Says why a table, of whose header \a header was read, could not be opened.
    static QString unopenable(const DbfTable& table, const DbfTableDescriptor& header,
                              DbfTableError code);

    /// Throws UnsupportedVersionError when \a header is of no table that is accepted. \a fields are
    /// what stands behind it, null before it was read.
    static void requireAccepted(const DbfTable& table, const DbfTableDescriptor& header,
                                const QByteArray& fields);

    /// Returns the codec of a table that is being opened.
    static QTextCodec* chooseCodec(DbfTable& table, const DbfTableDescriptor& header);

    /// Gives the columns of \a schema the converters that the caller chose.
    static void chooseConverters(DbfTable& table, const DbfTableDescriptor& header,
                                 DbfSchema& schema);

    template <typename Operation>
    static bool writingChecked(DbfTable& table, const QVector<DbfRecord>& records, qint64 first,
                               Operation operation);

    /// Throws WriteError for that reason.
    [[noreturn]] static void refuse(DbfTable& table, const QString& reason);

    /// Records OpenError with what the device says. Always returns false.
    static bool openingFailed(DbfTable& table);

    /// Forgets the problems of the last write and, when values are checked, collects those of
    /// \a records. Returns whether there are any. Throws WriteError when a converter opened the
    /// table anew or closed it meanwhile.
    static bool hasProblems(DbfTable& table, const QVector<DbfRecord>& records);

    /// Reads the first \a length bytes of slot \a index as they are in the file at that moment.
    /// Returns false, with no call made that a device of a caller's own sees, if the table's device
    /// is no plain file or does not have them.
    static bool readPlainly(DbfTable& table, int index, char* data, ContainerSize length);

    /// Returns the image of record \a index as it is at that moment. Throws ReadError.
    static QByteArray readImage(DbfTable& table, int index);

    /// Appends the \a count records of \a images, of which \a first is the first one's index.
    static void parse(RecordLayout& layout, std::string_view images, int count, qint64 first,
                      QVector<DbfRecord>& records);

    /// Appends \a count records from \a first on of a plain file, piece by piece. Returns false,
    /// with no call made that a device of a caller's own sees, where there are not so many, or a
    /// converter or codec of a caller's own could come between the pieces.
    static bool readPieces(DbfTable& table, int first, int count, QVector<DbfRecord>& records);

    /// Writes the first \a size of \a bytes where the device stands. Throws WriteError.
    static void write(DbfTable& table, const QByteArray& bytes, ContainerSize size);

    /// Writes \a image, a whole record, and the end marker. Throws WriteError.
    static void writeLastImage(DbfTable& table, const QByteArray& image);

    /// Positions the device on slot \a index, 0 to the record count. Throws ReadError when it
    /// cannot be reached, or begins behind the end of a file: a write would leave a hole there,
    /// which reads as records.
    static void seekSlot(DbfTable& table, int index);

    /// Writes the first \a size of \a bytes where the device stands, within a record. Throws
    /// WriteError.
    static void overwrite(DbfTable& table, const QByteArray& bytes, int size);

    /// Positions the device on the slot behind the last record, once \a count slots can still be
    /// numbered and the device writes what it is given. Throws ReadError and WriteError.
    static void seekSlotForAppending(DbfTable& table, qint64 count);

    /// Writes the images of \a records from the slot on where the device stands.
    static void writeImages(DbfTable& table, const QVector<DbfRecord>& records);

    /// Hands on \a count new records with the end marker behind them, then writes the count.
    static void finishAppending(DbfTable& table, qint64 count);

    /// Writes the count into the header of a plain file. Returns false where that is not possible.
    static bool writeCountPlainly(DbfTable& table);

    /// Puts the end marker back that a bulk append has overwritten, if one is missing.
    static void restoreEndMarker(DbfTable& table);

    /// Whether a copy of \a table onto \a target can begin.
    static bool canCopy(const DbfTable& table, const QIODevice* target);

    /// Says why it cannot.
    static QString whyNoCopy(const DbfTable& table, const QIODevice* target);

    ConverterChoice converterChoice;
    CodecChoice codecChoice;
    AcceptedVersions acceptedVersions = DefaultVersions;
    bool isCodecImposed = false;
    QString errorText;     ///< Of the recorded code.
    QString copyErrorText; ///< Of the last copy, which records no code.
    QString reason; ///< Why the operation under way fails, where it says more than the device.
    bool isCheckingValues = false;
    QVector<DbfValueProblem> valueProblems;
    std::unique_ptr<RecordLayout> keptLayout;
    PlainFile plainFile;           ///< The device, as long as it is one.
    QByteArray piece;              ///< What it is read into, kept since giving it back costs more.
    quint64 openings = 0;          ///< Successful ones.
    quint64 changes = 0;           ///< How often a header was read or the table closed.
    quint64 appends = 0;           ///< How often records were written behind the last one.
    quint64 updates = 0;           ///< How often bytes of a record were written over others.
    std::optional<qint64> fileEnd; ///< In bytes, once the first write has asked for it.
    std::optional<qint64> missingEndMarker; ///< Where it was overwritten and must stand again.
};

} // namespace dbf

#endif
