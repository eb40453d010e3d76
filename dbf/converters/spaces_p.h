// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_SPACES_P_H
#define DBF_CONVERTERS_SPACES_P_H

#include <QtCore/QtAlgorithms>
#include <QtCore/QtEndian>

#include <cstddef>

namespace dbf
{

// Fields are padded with runs of spaces, which are passed eight at a time.
constexpr quint64 eightSpaces = Q_UINT64_C(0x2020202020202020);
constexpr std::ptrdiff_t wordSize = 8;
constexpr int bitsPerByte = 8;

/// Returns where the spaces at \a begin end, up to seven of the last ones left standing.
inline const char* withoutLeadingSpaces(const char* begin, const char* end)
{
    while (end - begin >= wordSize) {
        const quint64 others = qFromLittleEndian<quint64>(begin) ^ eightSpaces;
        if (others != 0)
            return begin + qCountTrailingZeroBits(others) / bitsPerByte;
        begin += wordSize;
    }
    return begin;
}

} // namespace dbf

#endif
