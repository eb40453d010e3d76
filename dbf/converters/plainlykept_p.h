// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_PLAINLYKEPT_P_H
#define DBF_CONVERTERS_PLAINLYKEPT_P_H

#include <dbf/converters/fieldrules_p.h>
#include <dbf/converters/givenvalue_p.h>
#include <dbf/converters/nullablerules_p.h>
#include <dbf/model/dbffielddescriptor.h>

#include <algorithm>
#include <cmath>

namespace dbf
{

/// A value on its way into a field.
struct ValueInField {
    const QVariant& value;
    FieldContext field;
    const DbfFieldDescriptor& descriptor;
};

/// Whether \a text is digits, perhaps with a sign and a point, and nothing else.
inline bool isPlainNumber(QStringView text)
{
    const bool hasSign = !text.isEmpty() && (text[0] == u'-' || text[0] == u'+');
    int points = 0;
    int digits = 0;
    for (const QChar character : text.mid(hasSign ? 1 : 0)) {
        if (character >= u'0' && character <= u'9')
            ++digits;
        else if (character == u'.')
            ++points;
        else
            return false;
    }
    return digits > 0 && points <= 1;
}

// Whether a field of the rule keeps a value, where that shows at a glance, as it does for most;
// "no" means that it is to be looked at closely. It takes a sixth of the time that looking does.

template <typename Rule>
bool isPlainlyKept(Rule, const ValueInField&)
{
    return false;
}

inline bool isPlainlyKept(TextRule, const ValueInField& c)
{
    if (c.value.userType() != QMetaType::QString)
        return false;
    const QStringView text = held<QString>(c.value);
    if (text.isEmpty())
        return true;
    if (c.descriptor.type == DbfFieldType::Numeric)
        return text.size() <= c.field.length && isPlainNumber(text);
    return !text.front().isSpace() && c.field.codec->writesExactly(text, c.field.length);
}

inline bool isPlainlyKept(NullableTextRule, const ValueInField& c)
{
    return c.value.userType() == QMetaType::QString &&
           c.field.codec->writesExactly(held<QString>(c.value), c.field.length);
}

/// Whether a number has so few digits before the point that the field has room for them.
inline bool hasFewDigits(const ValueInField& c)
{
    constexpr int exactDigits = 15; // that a double always keeps
    const int decimals = c.field.decimals == 0 ? 0 : c.field.decimals + 1; // with the point
    const int wholePlaces = std::min(c.field.length - decimals - 1, exactDigits);
    if (wholePlaces < 1 || c.value.isNull())
        return false;
    const auto limit = static_cast<double>(powersOfTen[static_cast<size_t>(wholePlaces)]) - 1;
    switch (c.value.userType()) {
    case QMetaType::Double:
        return std::abs(held<double>(c.value)) < limit;
    case QMetaType::Int:
        return std::abs(double(held<int>(c.value))) < limit;
    case QMetaType::LongLong:
        return std::abs(double(held<qlonglong>(c.value))) < limit;
    default:
        return false;
    }
}

inline bool isPlainlyKept(NumberRule, const ValueInField& c)
{
    return hasFewDigits(c);
}

inline bool isPlainlyKept(NullableNumberRule, const ValueInField& c)
{
    return hasFewDigits(c);
}

inline bool isStorableDate(const ValueInField& c)
{
    return c.value.userType() == QMetaType::QDate && c.field.length == dateSize &&
           isStorable(held<QDate>(c.value));
}

inline bool isPlainlyKept(DateRule, const ValueInField& c)
{
    return isStorableDate(c);
}

inline bool isPlainlyKept(NullableDateRule, const ValueInField& c)
{
    return isStorableDate(c);
}

inline bool isTruth(const QVariant& value)
{
    return value.userType() == QMetaType::Bool && !value.isNull();
}

inline bool isPlainlyKept(LogicalRule, const ValueInField& c)
{
    return isTruth(c.value);
}

inline bool isPlainlyKept(NullableLogicalRule, const ValueInField& c)
{
    return isTruth(c.value) && c.field.length > 0;
}

inline bool isPlainlyKept(IntRule, const ValueInField& c)
{
    return c.value.userType() == QMetaType::Int && !c.value.isNull();
}

} // namespace dbf

#endif
