// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_BINARYNUMBER_P_H
#define DBF_ENCODING_BINARYNUMBER_P_H

#include <dbf/encoding/qt5values_p.h>

#include <QtCore/QByteArray>
#include <QtCore/QVariant>
#include <QtCore/QtEndian>

#include <cstring>
#include <optional>
#include <string_view>

namespace dbf
{

/// Reads a little-endian number from the start of \a bytes, or gives nothing when they are too few.
template <typename Number>
std::optional<Number> readBinary(std::string_view bytes)
{
    if (bytes.size() < sizeof(Number))
        return std::nullopt;
    return qFromLittleEndian<Number>(bytes.data());
}

/// Returns \a number little-endian.
template <typename Number>
QByteArray binaryBytes(Number number)
{
    QByteArray bytes(sizeof(Number), Qt::Uninitialized);
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// Returns \a value as a number of type \a Number: itself if it holds one, else what a copy of it
/// converts to, 0 when it does not convert.
template <typename Number>
Number floatingValue(const QVariant& value)
{
    constexpr int type = qMetaTypeId<Number>();
    if (value.userType() == type)
        return *static_cast<const Number*>(value.constData());
    QVariant copy = value;
    return qt5::convert(copy, type) ? *static_cast<const Number*>(copy.constData()) : Number(0);
}

} // namespace dbf

#endif
