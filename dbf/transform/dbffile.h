// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_DBFFILE_H
#define DBF_TRANSFORM_DBFFILE_H

#include <dbf/dbfexport.h>
#include <dbf/table/dbftable.h>
#include <dbf/transform/dbfschematransform.h>

#include <QtCore/QString>

#include <functional>
#include <optional>

namespace dbf
{

/// How packFile() and restructureFile() treat a table.
struct DbfFileOptions {
    /// Which tables are accepted.
    DbfTable::AcceptedVersions acceptedVersions = DbfTable::AllVersions;

    /// The converters of the columns; empty: nullableConverter().
    DbfTable::ConverterChoice converterChoice;

    /// The codec of text and names; empty: DbfTable::codecByLanguageDriver() of the header's byte.
    DbfTable::CodecChoice codecChoice;

    /// As DbfCopyOptions::codePage; packFile() leaves the byte alone.
    std::optional<DbfCodePage> codePage;

    /// As DbfCopyOptions::progress.
    std::function<bool(int done, int total)> progress;

    /// As DbfCopyOptions::checkValues, but on.
    bool checkValues = true;

    /// Whether a table is taken whose header says that an index file belongs to it (bit 0 of byte
    /// 28). That file's record numbers and keys are wrong afterwards, so the bit is cleared.
    bool ignoreIndexes = false;
};

/// Rewrites the table file at \a path without the records that are marked deleted. What stands
/// before the records is kept byte for byte but for the count (and DbfFileOptions::ignoreIndexes).
///
/// All or nothing: the new file takes the place of the old one once it is whole on the disk. After
/// a failure, when progress says stop, and when progress throws, which passes through, the old one
/// is untouched and nothing is left beside it. Returns whether the file was rewritten; \a
/// errorString, unless it is null, is set to one sentence for a person, empty on success and when
/// stopped.
///
/// Permissions are kept and symbolic links are followed to the end. Another hard link keeps the old
/// bytes; owner and access lists may change. Memo files are left alone, and pointers into them stay
/// valid.
DBFTABLE_EXPORT bool packFile(const QString& path, const DbfFileOptions& options = {},
                              QString* errorString = nullptr);

/// Rewrites the table file at \a path with the columns that \a edit makes of the identity of its
/// own, its metadata kept (DbfCopyOptions::keepMetadata). All or nothing, and in all else, as
/// packFile(); what \a edit throws passes through, too.
DBFTABLE_EXPORT bool restructureFile(const QString& path,
                                     const std::function<void(DbfSchemaTransform& transform)>& edit,
                                     const DbfFileOptions& options = {},
                                     QString* errorString = nullptr);

} // namespace dbf

#endif
