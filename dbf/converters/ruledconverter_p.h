// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_RULEDCONVERTER_P_H
#define DBF_CONVERTERS_RULEDCONVERTER_P_H

#include <dbf/converters/fieldrules_p.h>
#include <dbf/converters/nullablerules_p.h>
#include <dbf/model/dbffielddescriptor.h>
#include <dbf/model/dbfschema.h>

#include <new>
#include <optional>

namespace dbf
{

/// Returns the one object of class \a Converter, made on first use. It is never destroyed, since
/// destructors of static objects may still write their tables, and lies in no memory of the heap,
/// which leak checkers would report.
template <typename Converter>
Converter* sharedInstance()
{
    alignas(Converter) static unsigned char storage[sizeof(Converter)];
    static auto* const converter = new (storage) Converter;
    return converter;
}

/// What toByteArray() of a converter with \a Rule gives.
template <typename Rule>
QByteArray bytesByRule(const QVariant& value, const DbfSchema& schema,
                       const DbfFieldDescriptor& field)
{
    std::optional<TextCodec> codec;
    if constexpr (Rule::isText)
        codec.emplace(schema.codec);
    QByteArray bytes(Rule::size(field.length), Qt::Uninitialized);
    Rule::write(value, {codec ? &*codec : nullptr, field.length, field.decimals}, bytes.data());
    return bytes;
}

/// What toVariant() of a converter with \a Rule gives.
template <typename Rule>
QVariant valueByRule(const QByteArray& bytes, const DbfSchema& schema,
                     const DbfFieldDescriptor& field)
{
    std::optional<TextCodec> codec;
    if constexpr (Rule::isText)
        codec.emplace(schema.codec);
    return Rule::read(viewOf(bytes), {codec ? &*codec : nullptr, field.length, field.decimals});
}

} // namespace dbf

#endif
