// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldkind_p.h>
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
    for (int i = 0; i < saturated(std::min(schema.columns.size(), record.values.size())); ++i) {
        // Copies, since a converter may open the table anew that the schema belongs to.
        const DbfColumn column = schema.columns.at(i);
        const QVariant value = record.values.at(i);
        if (!isWritable(value, column))
            continue;
        const QByteArray bytes = converterOf(column)->toByteArray(value, schema, column.descriptor);
        if (bytes.size() > column.descriptor.length)
            overflows.append({i, saturated(bytes.size()), column.descriptor.length});
    }
    return overflows;
}

} // namespace dbf
