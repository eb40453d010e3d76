// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_COLUMNGUESS_H
#define TOOLS_COLUMNGUESS_H

#include <dbf/model/dbffielddescriptor.h>

class QTextCodec;

/// Finds, cell by cell, the field that holds all cells of a column as they are.
class ColumnGuess
{
public:
    /// Looks at one more cell; an empty one fits every field. \a codec is that of the table.
    void add(const QString& cell, QTextCodec* codec);

    /// Returns the field, named \a name: D for dates such as 2024-03-01, L for T, F, true and
    /// false, N for numbers that are not longer than 20 places and have no zeros in front, else C.
    dbf::DbfFieldDescriptor field(const QString& name) const;

private:
    void addNumber(const QString& cell);

    bool m_isEmpty = true;
    bool m_isDate = true;
    bool m_isLogical = true;
    bool m_isNumber = true;
    int m_bytes = 1;
    int m_whole = 1; ///< Places in front of the decimal point, the sign included.
    int m_decimals = 0;
};

#endif
