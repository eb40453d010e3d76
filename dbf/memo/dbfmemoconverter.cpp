// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/numbertext_p.h>
#include <dbf/encoding/text_p.h>
#include <dbf/format/dbfnullablecolumn.h>
#include <dbf/format/memolayout_p.h>
#include <dbf/memo/dbfmemoconverter.h>
#include <dbf/memo/dbfmemofile.h>
#include <dbf/model/dbfschema.h>
#include <dbf/table/dbftable.h>

#include <limits>
#include <optional>

namespace dbf
{

namespace
{

constexpr auto memoType = static_cast<DbfFieldType>('M');

std::optional<quint32> numberOfDigits(std::string_view digits)
{
    constexpr int base = 10;
    quint64 number = 0;
    for (const char digit : digits) {
        if (!isDigit(digit))
            return std::nullopt;
        number = number * base + static_cast<quint64>(digit - '0');
        if (number > std::numeric_limits<quint32>::max())
            return std::nullopt;
    }
    return static_cast<quint32>(number);
}

/// Returns the block that a field points to, 0 for none; nothing where it is no number.
std::optional<quint32> blockNumber(const QByteArray& bytes, int fieldLength)
{
    if (fieldLength != layout::memo::binaryPointerSize)
        return numberOfDigits(trimmedAscii(untilZero(viewOf(bytes))));
    if (bytes.size() < layout::memo::binaryPointerSize)
        return std::nullopt;
    return qFromLittleEndian<quint32>(bytes.constData());
}

bool isMemoField(const DbfFieldDescriptor& field)
{
    constexpr std::string_view letters = "MGPW";
    return letters.find(static_cast<char>(field.type)) != std::string_view::npos &&
           (field.length == layout::memo::digitPointerSize ||
            field.length == layout::memo::binaryPointerSize);
}

} // namespace

DbfMemoConverter::DbfMemoConverter(DbfMemoFile* memoFile) : m_memoFile(memoFile) {}

QByteArray DbfMemoConverter::toByteArray(const QVariant& value, const DbfSchema& /*schema*/,
                                         const DbfFieldDescriptor& field) const
{
    if (!isWritable(value))
        throw DbfTable::WriteError;
    return defaultBytes(field.length);
}

QVariant DbfMemoConverter::toVariant(const QByteArray& bytes, const DbfSchema& schema,
                                     const DbfFieldDescriptor& field) const
{
    if (!m_memoFile)
        return {};
    const std::optional<quint32> block = blockNumber(bytes, field.length);
    if (!block)
        m_memoFile->refuse(QStringLiteral("Memo pointer \"%1\" is no block number")
                               .arg(QString::fromLatin1(bytes)));
    if (block.value_or(0) == 0)
        return {};
    bool isRead = false;
    const QByteArray memo = m_memoFile->read(*block, &isRead);
    if (!isRead)
        return {};
    if (field.type == memoType && m_memoFile->lastWasText())
        return TextCodec(schema.codec).decodeWhole(viewOf(memo));
    return memo;
}

bool DbfMemoConverter::convertVariant(QVariant& value) const
{
    return isWritable(value) || value.userType() == QMetaType::QString ||
           value.userType() == QMetaType::QByteArray;
}

QByteArray DbfMemoConverter::defaultBytes(int length) const
{
    return QByteArray(length, length == layout::memo::binaryPointerSize ? '\0' : ' ');
}

std::function<DbfFieldConverter*(const DbfFieldDescriptor& field, const DbfTableDescriptor& table)>
nullableConverters(DbfMemoFile* memoFile)
{
    if (!memoFile)
        return nullableConverter;
    return [memoFile](const DbfFieldDescriptor& field,
                      const DbfTableDescriptor& table) -> DbfFieldConverter* {
        return isMemoField(field) ? memoFile->converter() : nullableConverter(field, table);
    };
}

} // namespace dbf
