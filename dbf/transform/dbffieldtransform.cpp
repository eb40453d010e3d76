// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/fieldkind_p.h>
#include <dbf/model/dbfschema.h>
#include <dbf/transform/dbffieldtransform.h>

#include <algorithm>
#include <limits>

namespace dbf
{

QByteArray transformField(const QByteArray& bytes, const DbfSchema& sourceSchema,
                          const DbfColumn& sourceColumn, const DbfSchema& targetSchema,
                          const DbfColumn& targetColumn)
{
    if (!targetColumn.needConvert(sourceColumn) && sourceSchema.codec == targetSchema.codec)
        return bytes;
    // Copies, since a converter may change the schema that the columns were taken from.
    const DbfColumn source = sourceColumn;
    const DbfColumn target = targetColumn;
    QVariant value = converterOf(source)->toVariant(bytes, sourceSchema, source.descriptor);
    converterOf(target)->convertVariant(value);
    return converterOf(target)->toByteArray(value, targetSchema, target.descriptor);
}

QByteArray resizeField(const QByteArray& bytes, int fromLength, int toLength)
{
    if (toLength < fromLength)
        return bytes.left(std::max(toLength, 0));
    const qint64 room = std::numeric_limits<int>::max() - qint64(bytes.size());
    const qint64 added = std::min(qint64(toLength) - fromLength, std::max<qint64>(room, 0));
    return bytes + QByteArray(static_cast<int>(added), ' ');
}

} // namespace dbf
