// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "peers.h"

#include <ogrsf_frmts.h>

#include <stdexcept>

namespace bench
{

namespace
{

/// The characters of a text in UTF-8, which is what GDAL decodes to.
int characterCount(const char* text)
{
    int count = 0;
    for (; *text != '\0'; ++text)
        count += (*text & 0xC0) != 0x80 ? 1 : 0;
    return count;
}

double valueOf(const OGRFeature& feature, int column)
{
    if (!feature.IsFieldSetAndNotNull(column))
        return 0;
    switch (feature.GetFieldDefnRef(column)->GetType()) {
    case OFTInteger:
        return feature.GetFieldAsInteger(column);
    case OFTInteger64:
        return static_cast<double>(feature.GetFieldAsInteger64(column));
    case OFTReal:
        return feature.GetFieldAsDouble(column);
    case OFTDate: {
        int year = 0;
        int month = 0;
        int day = 0;
        int rest = 0;
        return feature.GetFieldAsDateTime(column, &year, &month, &day, &rest, &rest, &rest, &rest);
    }
    default: {
        const char* const text = feature.GetFieldAsString(column);
        return column == Active ? (text[0] == 'T' ? 1 : 0) : characterCount(text);
    }
    }
}

} // namespace

Sums gdalReadAll(const std::string& table)
{
    static const bool registered = (GDALAllRegister(), true);
    const GDALDatasetUniquePtr dataset(registered ? GDALDataset::Open(table.c_str(), GDAL_OF_VECTOR)
                                                  : nullptr);
    if (!dataset)
        throw std::runtime_error("GDAL does not open the table");
    Sums sums{};
    for (const OGRFeatureUniquePtr& feature : dataset->GetLayer(0))
        for (int column = 0; column < columnCount; ++column)
            sums[static_cast<size_t>(column)] += valueOf(*feature, column);
    return sums;
}

} // namespace bench
