// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_DBFCOPYOPTIONS_H
#define DBF_TRANSFORM_DBFCOPYOPTIONS_H

#include <dbf/format/dbfcodepage.h>

#include <functional>
#include <optional>

namespace dbf
{

/// What DbfTable::copyAndTransform() does beyond copying every record. Default-constructed,
/// nothing.
struct DbfCopyOptions {
    /// Called after each batch with the number of records of the source that are done and of all of
    /// them; stops the copy by returning false. May be empty.
    std::function<bool(int done, int total)> progress;

    /// Leaves out the records that are marked deleted. They are counted in a pass of its own before
    /// the target is opened, so that its header counts right from the first byte on; that pass
    /// calls progress(0, total) after each batch. The copy fails when their number changes
    /// meanwhile.
    bool skipDeleted = false;

    /// Keeps what the library itself does not model: the header's date and flags, the text of the
    /// back-link area, and, for columns that keep their type and length, bytes 18 to 31 of the
    /// field descriptor (flags, autoincrement). The places of the fields in bytes 12 to 15 are
    /// computed anew where the source's were right, else zero.
    bool keepMetadata = false;

    /// The code page byte of the new header; that of the source when unset.
    std::optional<DbfCodePage> codePage;

    /// Looks at every value that is converted, and stops the copy before the first record of which
    /// one would not mean the same in its new column: DbfTable::valueProblems() tells which, by the
    /// record's index in the source. New columns and records that are left out are not looked at.
    bool checkValues = false;
};

} // namespace dbf

#endif
