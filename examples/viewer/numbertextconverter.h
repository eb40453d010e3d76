// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef VIEWER_NUMBERTEXTCONVERTER_H
#define VIEWER_NUMBERTEXTCONVERTER_H

#include <dbf/converters/dbfstringconverter.h>

/// A converter of this program's own: shows a number digit by digit as it stands in the table, and
/// a blank field as blank, not as 0; writes numbers as other programs do, right-justified with as
/// many decimals as the field has.
class NumberTextConverter : public dbf::DbfStringConverter
{
public:
    /// Returns spaces for what is no number and for what is too long.
    QByteArray toByteArray(const QVariant& value, const dbf::DbfSchema& schema,
                           const dbf::DbfFieldDescriptor& field) const override;
};

#endif
