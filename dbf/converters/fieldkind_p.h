// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_FIELDKIND_P_H
#define DBF_CONVERTERS_FIELDKIND_P_H

#include <dbf/converters/fieldrules_p.h>
#include <dbf/converters/nullablerules_p.h>
#include <dbf/model/dbfcolumn.h>

namespace dbf
{

/// What a column's converter does, where it is one of the library's own shared objects. Loops over
/// many records then do the same without a virtual call and without temporaries.
enum class FieldKind : quint8 {
    Text,
    Logical,
    Number,
    Date,
    SmallInt,
    Int,
    LargeInt,
    BinaryDouble,
    BinaryFloat,
    NullableText,
    NullableNumber,
    NullableLogical,
    NullableDate,
    NullableDateTime,
    NullableCurrency,
    Bytes,   ///< The raw-bytes converter, whose bytes are as many as the value has.
    Foreign, ///< Any other object, be its class derived from one of the library's: ask the object.
};

/// Calls \a visitor with the rule of \a kind; \a other where the converter itself is to be asked.
template <typename Visitor, typename Other>
decltype(auto) visitRule(FieldKind kind, Visitor visitor, Other other)
{
    switch (kind) {
    case FieldKind::Text:
        return visitor(TextRule());
    case FieldKind::Logical:
        return visitor(LogicalRule());
    case FieldKind::Number:
        return visitor(NumberRule());
    case FieldKind::Date:
        return visitor(DateRule());
    case FieldKind::SmallInt:
        return visitor(SmallIntRule());
    case FieldKind::Int:
        return visitor(IntRule());
    case FieldKind::LargeInt:
        return visitor(LargeIntRule());
    case FieldKind::BinaryDouble:
        return visitor(BinaryDoubleRule());
    case FieldKind::BinaryFloat:
        return visitor(BinaryFloatRule());
    case FieldKind::NullableText:
        return visitor(NullableTextRule());
    case FieldKind::NullableNumber:
        return visitor(NullableNumberRule());
    case FieldKind::NullableLogical:
        return visitor(NullableLogicalRule());
    case FieldKind::NullableDate:
        return visitor(NullableDateRule());
    case FieldKind::NullableDateTime:
        return visitor(NullableDateTimeRule());
    case FieldKind::NullableCurrency:
        return visitor(NullableCurrencyRule());
    case FieldKind::Bytes:
    case FieldKind::Foreign:
        break;
    }
    return other();
}

/// Returns whether fields of \a kind go through a codec.
inline bool isTextKind(FieldKind kind)
{
    return visitRule(
        kind, [](auto rule) { return decltype(rule)::isText; }, [] { return false; });
}

/// Returns the converter of \a column: the raw-bytes converter where it has none.
DbfFieldConverter* converterOf(const DbfColumn& column);

/// Returns whether the converter of \a column takes \a value instead of throwing, as far as its
/// class tells.
bool isWritable(const QVariant& value, const DbfColumn& column);

/// Returns what the converter of \a column does.
FieldKind fieldKind(const DbfColumn& column);

} // namespace dbf

#endif
