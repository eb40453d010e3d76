// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_VALUECHECKER_P_H
#define DBF_CONVERTERS_VALUECHECKER_P_H

#include <dbf/converters/fieldkind_p.h>
#include <dbf/model/dbfrecord.h>
#include <dbf/model/dbfschema.h>
#include <dbf/model/dbfvalueproblem.h>

#include <optional>

namespace dbf
{

/// Finds the values that the columns of one schema would not keep. Works on a copy of it.
class ValueChecker
{
public:
    explicit ValueChecker(const DbfSchema& schema);

    /// Returns the problems of \a record, which is number \a position of several.
    QVector<DbfValueProblem> problemsOf(const DbfRecord& record, int position) const;

    /// Returns what is wrong with \a value in column \a column, nothing if it would be kept.
    std::optional<DbfValueProblem> problemOf(const QVariant& value, int column, int position) const;

private:
    /// Whether the column keeps \a value, where that shows at a glance.
    bool keepsPlainly(const QVariant& value, int column) const;

    const DbfSchema m_schema;
    TextCodec m_codec;
    QVector<FieldKind> m_kinds;
};

} // namespace dbf

#endif
