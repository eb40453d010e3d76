// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbffieldconverter.h>
#include <dbf/format/recordimage_p.h>
#include <dbf/model/dbfrecord.h>
#include <dbf/model/dbfrecordsizeoverflow.h>
#include <dbf/model/dbfschema.h>

#include <algorithm>

namespace dbf
{

QList<DbfRecordSizeOverflow> checkRecordSizeOverflow(const DbfRecord& record,
                                                     const DbfSchema& schema)
{
    QList<DbfRecordSizeOverflow> overflows;
    for (int i = 0; i < std::min(schema.columns.size(), record.values.size()); ++i) {
        const DbfColumn& column = schema.columns.at(i);
        const QByteArray bytes =
            converterOf(column)->toByteArray(record.values.at(i), schema, column.descriptor);
        if (bytes.size() > column.descriptor.length)
            overflows.append({i, bytes.size(), column.descriptor.length});
    }
    return overflows;
}

} // namespace dbf
