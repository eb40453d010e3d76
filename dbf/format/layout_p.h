// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_LAYOUT_P_H
#define DBF_FORMAT_LAYOUT_P_H

#include <QtCore/QtGlobal>

/// The byte layout of a table file, which docs/format.md describes for readers. All offsets and
/// sizes are in bytes, all multi-byte numbers little-endian.
///
///     0                  header (headerSize)
///     32                 field descriptors (fieldDescriptorSize each)
///     32 + 32 n          schemaTerminator
///     33 + 32 n          back-link area (backLinkSize), versions 0x30 to 0x32 only
///     header length      records (record length each)
///     after the last     endMarker
namespace dbf::layout
{

// Header.
constexpr int headerSize = 32;
constexpr int versionOffset = 0;
constexpr int updateDateOffset = 1;
constexpr int updateDateSize = 3;
constexpr int recordCountOffset = 4;
constexpr int recordCountSize = 4;
constexpr int headerLengthOffset = 8;
constexpr int recordLengthOffset = 10;
constexpr int tableFlagsOffset = 28;
constexpr int codePageOffset = 29;

constexpr quint8 firstPlainVersion = 0x02;
constexpr quint8 lastPlainVersion = 0x07;
constexpr quint8 newTableVersion = 0x03;
constexpr quint8 firstBackLinkVersion = 0x30;
constexpr quint8 lastBackLinkVersion = 0x31;
constexpr quint8 nullFlagsVersion = 0x32; // with back-link area

// Field descriptor.
constexpr int fieldDescriptorSize = 32;
constexpr int fieldNameSize = 11;
constexpr int writtenFieldNameSize = 10;
constexpr int fieldTypeOffset = 11;
constexpr int fieldPlaceOffset = 12; // of the field in the record, where a program stores that
constexpr int fieldLengthOffset = 16;
constexpr int fieldDecimalsOffset = 17;
constexpr int fieldMetadataOffset = 18; // flags, autoincrement
constexpr int fieldMetadataSize = fieldDescriptorSize - fieldMetadataOffset;

constexpr int maxFieldLength = 255;

// What follows the field descriptors.
constexpr char schemaTerminator = 0x0D;
constexpr int schemaTerminatorSize = 1;
constexpr int backLinkSize = 263;
constexpr char endMarker = 0x1A;
constexpr int endMarkerSize = 1;

// Record image.
constexpr int deletionFlagSize = 1;
constexpr char deletedFlag = '*';
constexpr char liveFlag = ' ';

// Records are numbered by int, from 0 on.
constexpr int maxRecordIndex = 0x7FFFFFFF;

// Header and record length are stored in 16 bits.
constexpr int maxHeaderLength = 65535;
constexpr int maxRecordLength = 65535;
constexpr int maxColumnCount =
    (maxHeaderLength - headerSize - schemaTerminatorSize) / fieldDescriptorSize;
static_assert(maxColumnCount == 2046);

} // namespace dbf::layout

#endif
