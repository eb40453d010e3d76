// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TABLE_DEVICEIDENTITY_P_H
#define DBF_TABLE_DEVICEIDENTITY_P_H

#include <QtCore/QFileDevice>

#include <sys/types.h>

#include <optional>

namespace dbf
{

/// What makes a file that file. Names do not: it has many spellings, symbolic and hard links.
struct FileIdentity {
    dev_t device;
    ino_t inode;

    bool operator==(const FileIdentity& other) const
    {
        return device == other.device && inode == other.inode;
    }
    bool operator!=(const FileIdentity& other) const { return !(*this == other); }
};

/// Returns the identity of the file that \a file has open, or that its name leads to while it is
/// closed; nothing when there is none.
std::optional<FileIdentity> identityOfFile(const QFileDevice& file);

/// Returns whether writing \a target destroys what \a source reads: both are one device, one buffer
/// or one file. A QSaveFile replaces its file only in the end, and does not, unless it would write
/// in place.
bool wouldOverwrite(const QIODevice* target, const QIODevice* source);

} // namespace dbf

#endif
