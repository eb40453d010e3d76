// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/model/dbffielddescriptor.h>

namespace dbf
{

namespace
{
constexpr unsigned char floatFieldLength = 20;
constexpr unsigned char logicalFieldLength = 1;
} // namespace

DbfFieldDescriptor::DbfFieldDescriptor(const QString& fieldName, DbfFieldType fieldType,
                                       unsigned char fieldLength, unsigned char decimalCount)
    : name(fieldName), type(fieldType), length(fieldLength), decimals(decimalCount)
{
}

DbfFieldDescriptor DbfFieldDescriptor::stringField(const QString& name, unsigned char length)
{
    return {name, DbfFieldType::Character, length, 0};
}

DbfFieldDescriptor DbfFieldDescriptor::numberField(const QString& name, unsigned char length,
                                                   unsigned char decimals)
{
    return {name, DbfFieldType::Numeric, length, decimals};
}

DbfFieldDescriptor DbfFieldDescriptor::floatField(const QString& name, unsigned char decimals)
{
    return {name, DbfFieldType::Float, floatFieldLength, decimals};
}

DbfFieldDescriptor DbfFieldDescriptor::logicalField(const QString& name)
{
    return {name, DbfFieldType::Logical, logicalFieldLength, 0};
}

} // namespace dbf
