// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_FIELDTEXT_P_H
#define DBF_CONVERTERS_FIELDTEXT_P_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <string_view>

namespace dbf
{

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
    const int start = bytes.size();
    bytes.resize(start + size);
    return bytes.data() + start;
}

/// Returns a variant that holds \a text, without touching its reference count.
inline QVariant textVariant(QString&& text)
{
    QVariant value{QString()};
    static_cast<QString*>(value.data())->swap(text);
    return value;
}

/// Returns whether the first of \a bytes says true.
inline bool readLogical(std::string_view bytes)
{
    constexpr char caseBit = 0x20;
    const char letter = bytes.empty() ? '\0' : static_cast<char>(bytes.front() & ~caseBit);
    return letter == 'T' || letter == 'Y';
}

/// Returns the letter that stores \a value.
inline char logicalLetter(bool value)
{
    return value ? 'T' : 'F';
}

} // namespace dbf

#endif
