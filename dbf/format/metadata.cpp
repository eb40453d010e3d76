// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/format/layout_p.h>
#include <dbf/format/metadata_p.h>

#include <QtCore/QtEndian>

#include <algorithm>

namespace dbf::format
{

namespace
{

constexpr int descriptorAt(int column)
{
    return column * layout::fieldDescriptorSize;
}

bool hasRightPlaces(const QByteArray& source, const DbfSchema& schema)
{
    quint32 place = layout::deletionFlagSize;
    for (int column = 0; column < schema.columns.size(); ++column) {
        const int at = layout::headerSize + descriptorAt(column) + layout::fieldPlaceOffset;
        if (qFromLittleEndian<quint32>(source.constData() + at) != place)
            return false;
        place += schema.columns.at(column).descriptor.length;
    }
    return true;
}

} // namespace

void keepHeaderMetadata(const QByteArray& source, QByteArray& header)
{
    header.replace(layout::updateDateOffset, layout::updateDateSize,
                   source.mid(layout::updateDateOffset, layout::updateDateSize));
    header[layout::tableFlagsOffset] = source.at(layout::tableFlagsOffset);
}

void keepFieldMetadata(const QByteArray& source, const DbfSchema& sourceSchema,
                       const DbfSchema& schema, const QList<int>& sourceIndexes, QByteArray& block)
{
    const bool storesPlaces = hasRightPlaces(source, sourceSchema);
    quint32 place = layout::deletionFlagSize;
    for (int column = 0; column < schema.columns.size(); ++column) {
        const DbfFieldDescriptor& field = schema.columns.at(column).descriptor;
        if (storesPlaces)
            qToLittleEndian(place, block.data() + descriptorAt(column) + layout::fieldPlaceOffset);
        place += field.length;
        const int from = sourceIndexes.value(column, -1);
        const DbfFieldDescriptor before = sourceSchema.columns.value(from).descriptor;
        const bool isFromSource = from >= 0 && from < sourceSchema.columns.size();
        if (!isFromSource || before.type != field.type || before.length != field.length)
            continue;
        const int at = layout::headerSize + descriptorAt(from) + layout::fieldMetadataOffset;
        block.replace(descriptorAt(column) + layout::fieldMetadataOffset, layout::fieldMetadataSize,
                      source.mid(at, layout::fieldMetadataSize));
    }
}

QByteArray backLinkArea(const QByteArray& source)
{
    return source.right(layout::backLinkSize);
}

} // namespace dbf::format
