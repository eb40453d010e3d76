// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_DATETEXT_P_H
#define DBF_ENCODING_DATETEXT_P_H

#include <QtCore/QByteArray>
#include <QtCore/QDate>

#include <string_view>

class QVariant;

namespace dbf
{

constexpr int dateSize = 8; // bytes: yyyyMMdd

/// Returns the date in the first eight bytes, year first, or an invalid one. A part counts as 0
/// when QByteArray::toInt does not read it.
QDate readDate(std::string_view bytes);

/// Writes a field of \a width bytes that holds \a date as yyyyMMdd, left-justified with spaces or
/// cut; all spaces for an invalid one.
void writeDateField(const QDate& date, char* field, int width);

/// Must come before \a value is turned into text. If it is a date, makes ready what Qt needs for
/// that: Qt does so on first use, but not safely for threads that come to it at once.
void prepareDateText(const QVariant& value);

} // namespace dbf

#endif
