// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_DBFFIELDTYPE_H
#define DBF_MODEL_DBFFIELDTYPE_H

namespace dbf
{

/// The type letter of a field, exactly as the file stores it.
///
/// Any byte is a valid value: letters without a name here (`DbfFieldType('M')`) are kept as read
/// and written back unchanged, and their columns get the raw-bytes converter.
enum class DbfFieldType : unsigned char {
    Character = 'C', ///< Text in the table's code page.
    Date = 'D',      ///< A date as eight digits, year first.
    Float = 'F',     ///< A number as fixed-point text, exchanged as `double`.
    Logical = 'L',   ///< One letter: T or Y for true.
    Numeric = 'N',   ///< A number as text, exchanged as text unless another converter is set.
};

} // namespace dbf

#endif
