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
    if (type == QMetaType::QDateTime) {
        const auto* const one = static_cast<const QDateTime*>(a.constData());
        const auto* const other = static_cast<const QDateTime*>(b.constData());
        return one->date() == other->date() && one->time() == other->time();
    }
    if (type == QMetaType::Double || type == QMetaType::Float) {
        const double one = a.toDouble();
        return one == b.toDouble() || (std::isnan(one) && std::isnan(b.toDouble()));
    }
    return a == b;
}

} // namespace dbf

#endif
