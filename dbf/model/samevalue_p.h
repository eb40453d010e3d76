// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_MODEL_SAMEVALUE_P_H
#define DBF_MODEL_SAMEVALUE_P_H

#include <QtCore/QDateTime>
#include <QtCore/QVariant>

#include <cmath>

namespace dbf
{

/// Whether two values are of one type and equal, so that one may stand for the other in a record: a
/// NaN is equal to itself, and times are what their clocks show, since a record keeps no zone.
inline bool isSameValue(const QVariant& a, const QVariant& b)
{
    const int type = a.userType();
    if (type != b.userType())
        return false;
    if (type == QMetaType::QDateTime)
        return a.toDateTime().date() == b.toDateTime().date() &&
               a.toDateTime().time() == b.toDateTime().time();
    if (type == QMetaType::Double || type == QMetaType::Float) {
        const double one = a.toDouble();
        const double other = b.toDouble();
        return one == other || (std::isnan(one) && std::isnan(other));
    }
    return a == b;
}

} // namespace dbf

#endif
