// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TESTS_BYTES_H
#define DBF_TESTS_BYTES_H

#include <dbf/table/dbftable.h>

#include <QtCore/QByteArray>

#include <vector>

/// Returns the bytes written in hex; spaces between them show the layout.
inline QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

/// Bytes in a block of exactly their size, so that reading past them is seen by the sanitizers and
/// no NUL follows them. overwrite() shows who kept a view where a copy was due.
class ExactBytes
{
public:
    explicit ExactBytes(const QByteArray& bytes) : m_bytes(bytes.cbegin(), bytes.cend()) {}

    QByteArray view() const
    {
        return QByteArray::fromRawData(m_bytes.data(), static_cast<int>(m_bytes.size()));
    }

    void overwrite() { m_bytes.assign(m_bytes.size(), '#'); }

private:
    std::vector<char> m_bytes;
};

/// Returns the code that the operation throws, NoError when it comes to its end.
template <typename Operation>
dbf::DbfTable::DbfTableError thrownBy(Operation operation)
{
    try {
        operation();
    } catch (dbf::DbfTable::DbfTableError code) {
        return code;
    }
    return dbf::DbfTable::NoError;
}

#endif
