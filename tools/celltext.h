// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef TOOLS_CELLTEXT_H
#define TOOLS_CELLTEXT_H

#include <dbf/dbf.h>

#include <QtCore/QByteArray>
#include <QtCore/QVector>

/// What the fields of a cursor's current record are as text in UTF-8.
class CellText
{
public:
    /// Borrows \a cursor, which goes over a table of \a schema.
    CellText(const dbf::DbfRecordCursor& cursor, const dbf::DbfSchema& schema);

    /// Appends the cell of \a column to \a text: nothing for a blank; numbers, and what is no value
    /// of the column's type, as they stand in the table; dates with their dashes; T or F.
    void append(int column, QByteArray& text) const;

    /// Appends the same as JSON: null for a blank and for what is no value, numbers and truth
    /// values as such, all else as a string.
    void appendJson(int column, QByteArray& json) const;

private:
    enum class Kind : quint8 { Text, Number, Date, Logical, Other };

    static Kind kindOf(const dbf::DbfFieldDescriptor& field);
    bool appendPlain(std::string_view bytes, QByteArray& text) const;
    void appendText(int column, QByteArray& text) const;
    void appendDate(int column, QByteArray& text) const;
    void appendLogical(int column, QByteArray& text) const;
    void appendNumberJson(int column, QByteArray& json) const;

    const dbf::DbfRecordCursor& m_cursor;
    QVector<Kind> m_kinds;
    bool m_isAsciiKept;
};

/// Returns \a json with each character in its strings that a terminal could obey as its number.
QString jsonSafe(const QString& json);

/// Appends \a text as a string of JSON, in which no character is one that a terminal obeys.
void appendJsonString(const QByteArray& text, QByteArray& json);

#endif
