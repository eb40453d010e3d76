// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "copies.h"

#include "program.h"

#include <QTextCodec>

#include <stdexcept>

namespace bench
{

namespace
{

QTextCodec* dosCyrillic()
{
    return QTextCodec::codecForName("IBM 866");
}

dbf::DbfSchemaTransform transformFor(Copy copy, const dbf::DbfSchema& source)
{
    using dbf::DbfFieldDescriptor;
    auto transform = dbf::DbfSchemaTransform::identity(source);
    if (copy == Copy::Recode)
        transform.schema.setCodec(dosCyrillic());
    if (copy == Copy::Restructure) {
        transform.updateColumn(City, DbfFieldDescriptor::stringField("CITY", 40));
        transform.updateColumn(Price, DbfFieldDescriptor::floatField("PRICE", 2));
        transform.deleteColumn(Code);
        transform.moveColumn(Quantity - 1, Name);
        transform.insertNewColumn(Name + 1, DbfFieldDescriptor::stringField("NOTE", 12));
    }
    return transform;
}

} // namespace

void copyTable(Copy copy, const std::string& source, const std::string& target)
{
    OpenTable original(source);
    QFile file(QString::fromStdString(target));
    if (!original.table.copyAndTransform(&file, transformFor(copy, original.table.schema())))
        throw std::runtime_error(source + " is not copied");
}

void checkCopy(const std::string& subject, Copy copy, const std::string& target, Sums original)
{
    if (copy == Copy::Restructure)
        original[Code] = 0;
    requireSame(subject, sumsInTable(target, copy == Copy::Recode ? dosCyrillic() : nullptr),
                original);
}

} // namespace bench
