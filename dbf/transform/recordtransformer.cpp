// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/converters/dbffieldconverter.h>
#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/numbertext_p.h>
#include <dbf/format/layout_p.h>
#include <dbf/table/dbftable.h>
#include <dbf/transform/recordtransformer_p.h>

#include <stdexcept>
#include <utility>

namespace dbf
{

namespace
{
constexpr int noSource = -1;
} // namespace

RecordTransformer::RecordTransformer(const DbfSchema& source, const DbfSchemaTransform& transform)
    : m_source(source), m_target(transform.schema)
{
    m_steps.reserve(static_cast<size_t>(m_target.columnCount()));
    for (int column = 0; column < m_target.columnCount(); ++column)
        addStep(stepFor(column, source, transform));
}

RecordTransformer::Step RecordTransformer::stepFor(int targetColumn, const DbfSchema& source,
                                                   const DbfSchemaTransform& transform) const
{
    Step step;
    step.targetColumn = targetColumn;
    if (targetColumn >= transform.sourceIndexes.size())
        return step;
    step.sourceColumn = transform.sourceIndexes.at(targetColumn);

    const DbfColumn& target = m_target.column(targetColumn);
    if (step.sourceColumn == noSource) {
        if (m_target.kind(targetColumn) == FieldKind::Foreign) {
            step.action = Action::AskForBlank;
        } else {
            step.action = Action::WriteBlank;
            step.blank = target.blankValueOfThisType();
        }
        return step;
    }
    if (step.sourceColumn < 0 || step.sourceColumn >= m_source.columnCount())
        return step;

    const DbfColumn& origin = m_source.column(step.sourceColumn);
    step.offset = m_source.offset(step.sourceColumn);
    step.length = origin.descriptor.length;
    step.action = !target.needConvert(origin) && source.codec == transform.schema.codec
                      ? Action::CopyBytes
                      : conversion(step.sourceColumn, targetColumn);
    return step;
}

RecordTransformer::Action RecordTransformer::conversion(int sourceColumn, int targetColumn) const
{
    const FieldKind target = m_target.kind(targetColumn);
    if (m_source.kind(sourceColumn) == FieldKind::Text) {
        if (target == FieldKind::Text)
            return Action::RecodeText;
        if (target == FieldKind::Number && m_source.textCodec().isAsciiTransparent())
            return Action::NumberText;
    }
    return Action::Convert;
}

// Neighbours that stay neighbours are copied together.
void RecordTransformer::addStep(Step step)
{
    if (step.action == Action::CopyBytes && !m_steps.empty()) {
        Step& last = m_steps.back();
        if (last.action == Action::CopyBytes && last.offset + last.length == step.offset) {
            last.length += step.length;
            return;
        }
    }
    m_steps.push_back(std::move(step));
}

bool RecordTransformer::isIdentity() const
{
    return m_steps.size() == 1 && m_steps.front().action == Action::CopyBytes &&
           m_steps.front().offset == layout::deletionFlagSize;
}

void RecordTransformer::append(std::string_view image, QByteArray& target)
{
    target.append(image.empty() ? layout::liveFlag : image.front());
    for (const Step& step : m_steps)
        perform(step, image, target);
}

void RecordTransformer::perform(const Step& step, std::string_view image, QByteArray& target)
{
    const std::string_view bytes = slice(step, image);
    switch (step.action) {
    case Action::CopyBytes:
        target.append(bytes.data(), static_cast<int>(bytes.size()));
        break;
    case Action::WriteBlank:
        target.append(step.blank);
        break;
    case Action::AskForBlank:
        target.append(m_target.column(step.targetColumn).blankValueOfThisType());
        break;
    case Action::RecodeText: {
        const QStringView text = m_source.textCodec().decode(bytes, m_text);
        const int width = m_target.column(step.targetColumn).descriptor.length;
        m_target.textCodec().writeField(text, extend(target, width), width);
        break;
    }
    case Action::NumberText: {
        const DbfFieldDescriptor& field = m_target.column(step.targetColumn).descriptor;
        const std::string_view text = trimmedAscii(untilZero(bytes));
        const std::optional<double> number = text.empty() ? 0.0 : readPlainNumber(text);
        if (number)
            writeNumberField(*number, field.decimals, extend(target, field.length), field.length);
        else
            convert(step, bytes, target);
        break;
    }
    case Action::Convert:
        convert(step, bytes, target);
        break;
    case Action::RefuseMapping:
        throw std::out_of_range("dbf: a target column is mapped to no column of the source");
    }
}

void RecordTransformer::convert(const Step& step, std::string_view bytes, QByteArray& target)
{
    QVariant value = m_source.value(bytes, step.sourceColumn);
    converterOf(m_target.column(step.targetColumn))->convertVariant(value);
    m_target.appendValue(value, step.targetColumn, target);
}

std::string_view RecordTransformer::slice(const Step& step, std::string_view image)
{
    const auto start = std::min(static_cast<size_t>(step.offset), image.size());
    return image.substr(start, static_cast<size_t>(step.length));
}

QVector<DbfValueProblem> RecordTransformer::problemsOf(std::string_view image, int index,
                                                       const ValueChecker& checker)
{
    QVector<DbfValueProblem> problems;
    for (const Step& step : m_steps) {
        switch (step.action) {
        case Action::RecodeText:
        case Action::NumberText:
        case Action::Convert: {
            const QVariant value = m_source.value(slice(step, image), step.sourceColumn);
            if (const auto problem = checker.problemOf(value, step.targetColumn, index))
                problems.append(*problem);
            break;
        }
        case Action::CopyBytes:
        case Action::WriteBlank:
        case Action::AskForBlank:
        case Action::RefuseMapping:
            break;
        }
    }
    return problems;
}

QByteArray DbfTable::transformRecord(const QByteArray& record, const DbfSchema& sourceSchema,
                                     const DbfSchemaTransform& transform)
{
    QByteArray target = emptyWithRoom(calcRecordLength(transform.schema));
    RecordTransformer(sourceSchema, transform).append(viewOf(record), target);
    return target;
}

} // namespace dbf
