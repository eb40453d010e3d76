// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_NULLABLERULES_P_H
#define DBF_CONVERTERS_NULLABLERULES_P_H

#include <dbf/converters/dbfnullableboolconverter.h>
#include <dbf/converters/dbfnullablecurrencyconverter.h>
#include <dbf/converters/dbfnullabledateconverter.h>
#include <dbf/converters/dbfnullabledatetimeconverter.h>
#include <dbf/converters/dbfnullablenumberconverter.h>
#include <dbf/converters/dbfnullablestringconverter.h>

#include <string_view>

namespace dbf
{

struct FieldContext;

// The rules of the fields in which blank means "no value"; their members are those of the other
// rules.

/// What all of them have in common: exactly as many bytes as the field has.
struct NullableRule {
    static int size(int length) { return length; }
    static QByteArray blank(int length) { return QByteArray(length, ' '); }
};

struct NullableTextRule : NullableRule {
    using Converter = DbfNullableStringConverter;
    static constexpr bool isText = true;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
};

struct NullableNumberRule : NullableRule {
    using Converter = DbfNullableNumberConverter;
    static constexpr bool isText = false;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
};

struct NullableLogicalRule : NullableRule {
    using Converter = DbfNullableBoolConverter;
    static constexpr bool isText = false;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
    static QByteArray blank(int length);
};

struct NullableDateRule : NullableRule {
    using Converter = DbfNullableDateConverter;
    static constexpr bool isText = false;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
};

struct NullableDateTimeRule : NullableRule {
    using Converter = DbfNullableDateTimeConverter;
    static constexpr bool isText = false;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
    static QByteArray blank(int length) { return QByteArray(length, '\0'); }
};

struct NullableCurrencyRule : NullableRule {
    using Converter = DbfNullableCurrencyConverter;
    static constexpr bool isText = false;
    static QVariant read(std::string_view bytes, const FieldContext& field);
    static void write(const QVariant& value, const FieldContext& field, char* bytes);
    static bool convert(QVariant& value);
    static QByteArray blank(int length) { return QByteArray(length, '\0'); }
};

} // namespace dbf

#endif
