// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef QUICKSTART_UTF8STREAM_H
#define QUICKSTART_UTF8STREAM_H

#include <QtCore/QTextStream>

#include <type_traits>
#include <utility>

template <typename Stream, typename = void>
inline constexpr bool hasCodec = false;

template <typename Stream>
inline constexpr bool
    hasCodec<Stream, std::void_t<decltype(std::declval<Stream&>().setCodec("UTF-8"))>> = true;

/// Makes \a stream one in UTF-8, which Qt 6 has it be from the start.
template <typename Stream>
void useUtf8(Stream& stream)
{
    if constexpr (hasCodec<Stream>)
        stream.setCodec("UTF-8");
}

#endif
