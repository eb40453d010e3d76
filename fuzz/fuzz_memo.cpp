// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include "fuzzing.h"

#include <QtCore/QtEndian>

using namespace dbf;
using namespace fuzzing;

/// Takes the bytes as a memo file, of a table of any version, and reads the blocks that the choices
/// point to, which are drawn from the end of the same bytes.
namespace
{

void readsTellWhatTheyGive(DbfMemoFile& memo, const MemoryFile& file, quint8 version, quint32 block)
{
    memo.clearError();
    bool ok = false;
    const QByteArray bytes = memo.read(block, &ok);
    const bool isText = memo.lastWasText();
    demand(ok == memo.errorString().isEmpty(), "a failure is told, and nothing else");
    demand(memo.read(block) == bytes && memo.lastWasText() == isText, "a memo stays what it is");
    if (!ok) {
        demand(bytes.isEmpty() && !isText, "damage gives nothing");
        return;
    }
    const bool isEnded = version == 0x83;
    demand(file.content.indexOf(isEnded ? bytes + '\x1A' : bytes, 512) >= 512,
           "a memo stands behind the header");
    demand(!isEnded || !bytes.contains('\x1A'), "a memo ends at its first end marker");
    demand(isText || (version != 0x83 && version != 0x8B && version != 0xCB), "DBT files are text");
}

bool refuses(const DbfFieldConverter& converter, const QVariant& value, const DbfSchema& schema)
{
    try {
        const DbfFieldDescriptor& field = schema.columns.first().descriptor;
        demand(converter.toByteArray(value, schema, field).size() == field.length,
               "what is written fills the field");
        return false;
    } catch (DbfTable::DbfTableError) {
        return true;
    }
}

void columnsGiveWhatIsRead(FuzzedDataProvider& choices, DbfMemoFile& memo, quint32 block)
{
    const bool isBinary = choices.ConsumeBool();
    const DbfFieldDescriptor field(
        QStringLiteral("FIELD"),
        static_cast<DbfFieldType>(choices.PickValueInArray({'M', 'G', 'P', 'W'})),
        isBinary ? 4 : 10, 0);
    DbfSchema schema({field}, drawCodec(choices));
    schema.columns[0].setConverter(nullableConverters(&memo)(field, {}));
    const DbfFieldConverter& converter = *schema.columns.at(0).converter;
    demand(&converter == memo.converter(), "such columns get the converter of the file");

    QByteArray pointer = QByteArray::number(block).rightJustified(10);
    if (isBinary)
        qToLittleEndian(block, pointer.data());
    const QVariant value = converter.toVariant(pointer.left(field.length), schema, field);
    bool ok = false;
    const QByteArray bytes = memo.read(block, &ok);
    demand(value.isValid() == ok, "a column has a value where there is a memo");
    demand(!ok || value.userType() == QMetaType::QString || value == QVariant(bytes),
           "what is no text is bytes");
    demand(value.userType() != QMetaType::QString ||
               (memo.lastWasText() && field.type == static_cast<DbfFieldType>('M')),
           "only text becomes text");
    for (const QVariant& given : {value, drawValue(choices)}) {
        const bool isProblem = !checkValues(DbfRecord(0, {given}), schema).isEmpty();
        demand(refuses(converter, given, schema) == isProblem, "the check says what is refused");
    }
    converter.toVariant(drawBytes(choices, 12), schema, field);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/)
{
    forbidMessages();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider choices(data, size);
    constexpr quint8 versions[] = {0x30, 0x83, 0x8B, 0xCB, 0xF5, 0x03};
    const quint8 version = choices.PickValueInArray(versions);
    MemoryFile file(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    DbfMemoFile memo(&file, version);
    for (int reads = choices.ConsumeIntegralInRange(1, 6); reads > 0; --reads) {
        const quint32 block = choices.ConsumeBool() ? choices.ConsumeIntegralInRange(0U, 20U)
                                                    : choices.ConsumeIntegral<quint32>();
        readsTellWhatTheyGive(memo, file, version, block);
        columnsGiveWhatIsRead(choices, memo, block);
    }
    return 0;
}
