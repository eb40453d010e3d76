// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/model/dbfrecord.h>

#include <cstdlib>
#include <limits>
#include <utility>

namespace dbf
{

DbfRecord::DbfRecord(int index, QVector<QVariant> fieldValues)
    : values(std::move(fieldValues))
    , m_number(index < 0 || index == std::numeric_limits<int>::max() ? 0 : index + 1)
{
}

int DbfRecord::index() const
{
    return std::abs(m_number) - 1;
}

bool DbfRecord::isTransient() const
{
    return m_number == 0;
}

bool DbfRecord::isDeleted() const
{
    return m_number < 0;
}

void DbfRecord::setDeleted(bool deleted)
{
    if (isDeleted() != deleted)
        m_number = -m_number;
}

} // namespace dbf
