// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "numbertextconverter.h"

#include <dbf/model/dbffielddescriptor.h>

#include <cmath>

namespace
{

/// A double is sure to keep this many digits; longer numbers stay as they were typed.
constexpr int safeDigits = 15;

} // namespace

QByteArray NumberTextConverter::toByteArray(const QVariant& value, const dbf::DbfSchema& /*schema*/,
                                            const dbf::DbfFieldDescriptor& field) const
{
    const QByteArray typed = value.toString().trimmed().toLatin1();
    bool isNumber = false;
    const double number = typed.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        return QByteArray(field.length, ' ');
    const QByteArray rounded = QByteArray::number(number, 'f', field.decimals);
    const QByteArray& digits = rounded.size() > safeDigits ? typed : rounded;
    return digits.size() > field.length ? QByteArray(field.length, ' ')
                                        : digits.rightJustified(field.length);
}
