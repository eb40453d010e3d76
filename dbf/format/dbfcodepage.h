// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_DBFCODEPAGE_H
#define DBF_FORMAT_DBFCODEPAGE_H

namespace dbf
{

/// The code page byte of a table's header (the language driver id), as stored.
///
/// A header may hold any byte; the values named here are those that the library writes.
enum class DbfCodePage : unsigned char {
    NotSet = 0x00,      ///< None recorded; read as Windows Cyrillic.
    IBM866 = 0x66,      ///< DOS Cyrillic.
    Windows1251 = 0xC9, ///< Windows Cyrillic.
};

} // namespace dbf

#endif
