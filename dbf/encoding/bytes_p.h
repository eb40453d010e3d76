// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_BYTES_P_H
#define DBF_ENCODING_BYTES_P_H

#include <QtCore/QByteArray>
#include <QtCore/QtAlgorithms>
#include <QtCore/QtEndian>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string_view>

namespace dbf
{

/// What sizes of Qt's containers are: 32 or 64 bits, by its version.
using ContainerSize = QByteArray::size_type;

/// Returns \a size as an int, the largest one for what is larger. Nothing of that size fits a
/// table.
inline int saturated(qint64 size)
{
    return static_cast<int>(std::min<qint64>(size, std::numeric_limits<int>::max()));
}

/// Returns a view of \a bytes.
inline std::string_view viewOf(const QByteArray& bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

/// Returns an empty array with room for \a size bytes.
inline QByteArray emptyWithRoom(int size)
{
    QByteArray bytes;
    bytes.reserve(size);
    return bytes;
}

/// Makes \a bytes longer by \a size and returns where the new ones are, which have any value.
inline char* extend(QByteArray& bytes, int size)
{
    const ContainerSize start = bytes.size();
    bytes.resize(start + size);
    return bytes.data() + start;
}

/// Returns what a text field holds in \a bytes: it ends at its first zero byte.
inline std::string_view untilZero(std::string_view bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

inline bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}

constexpr std::array<qint64, 16> makePowersOfTen()
{
    std::array<qint64, 16> powers{1};
    for (size_t i = 1; i < powers.size(); ++i)
        powers[i] = powers[i - 1] * 10;
    return powers;
}

inline constexpr std::array<qint64, 16> powersOfTen = makePowersOfTen();

// Bytes are looked at eight at a time where that pays.
constexpr quint64 eightSpaces = Q_UINT64_C(0x2020202020202020);
constexpr std::ptrdiff_t wordSize = 8;
constexpr int bitsPerByte = 8;

} // namespace dbf

#endif
