// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_RECORDTRANSFORMER_P_H
#define DBF_TRANSFORM_RECORDTRANSFORMER_P_H

#include <dbf/converters/valuechecker_p.h>
#include <dbf/format/recordlayout_p.h>
#include <dbf/transform/dbfschematransform.h>

#include <QtCore/QByteArray>

#include <string_view>
#include <vector>

namespace dbf
{

/// A transform made ready for many records: what happens to each column is decided once.
///
/// Works on copies of schema and transform.
class RecordTransformer
{
public:
    RecordTransformer(const DbfSchema& source, const DbfSchemaTransform& transform);

    /// Appends \a image rewritten for the target. Throws std::out_of_range at the first column
    /// without a valid source.
    void append(std::string_view image, QByteArray& target);

    /// Whether images are taken over as they are, if those of the target are as long.
    bool isIdentity() const;

    /// Returns the values of \a image, record \a index of the source, that would not mean the same
    /// in their new columns, which \a checker knows.
    QVector<DbfValueProblem> problemsOf(std::string_view image, int index,
                                        const ValueChecker& checker);

private:
    enum class Action : quint8 {
        CopyBytes,     ///< A run of source bytes that the target takes over unchanged.
        WriteBlank,    ///< Bytes known beforehand.
        AskForBlank,   ///< The blank of a caller's converter, which need not be the same each time.
        RecodeText,    ///< Text to text.
        NumberText,    ///< Text to number.
        Convert,       ///< Everything else goes through a value.
        RefuseMapping, ///< There is no such source column.
    };
    struct Step {
        Action action = Action::RefuseMapping;
        int targetColumn = 0;
        int sourceColumn = 0;
        int offset = 0;
        int length = 0;
        QByteArray blank;
    };

    Step stepFor(int targetColumn, const DbfSchema& source,
                 const DbfSchemaTransform& transform) const;
    Action conversion(int sourceColumn, int targetColumn) const;
    void addStep(Step step);
    void perform(const Step& step, std::string_view image, QByteArray& target);
    void convert(const Step& step, std::string_view bytes, QByteArray& target);
    static std::string_view slice(const Step& step, std::string_view image);

    RecordLayout m_source;
    RecordLayout m_target;
    std::vector<Step> m_steps;
    TextScratch m_text = {};
};

} // namespace dbf

#endif
