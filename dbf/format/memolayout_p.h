// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_FORMAT_MEMOLAYOUT_P_H
#define DBF_FORMAT_MEMOLAYOUT_P_H

#include <QtCore/QtGlobal>

/// The byte layout of a memo file, by the version of its table. All offsets and sizes are in bytes.
///
///     0              header (headerSize)
///     block * size   a memo: its head, where the kind has one, then its bytes
namespace dbf::layout::memo
{

/// How memos lie in their file.
enum class Kind : quint8 {
    None,    ///< Tables of that version have no memo file.
    Typed,   ///< FPT: big-endian; a head of type and length.
    Ended,   ///< DBT of 0x83: fixed blocks, no head, text up to an end marker.
    Counted, ///< DBT of 0x8B and 0xCB: little-endian; a head of marker and length.
};

constexpr Kind kindOfVersion(quint8 tableVersion)
{
    switch (tableVersion) {
    case 0x30:
    case 0x31:
    case 0x32:
    case 0xF5:
        return Kind::Typed;
    case 0x83:
        return Kind::Ended;
    case 0x8B:
    case 0xCB:
        return Kind::Counted;
    default:
        return Kind::None;
    }
}

constexpr int headerSize = 512; // No memo begins before.
constexpr int blockSizeSize = 2;
constexpr int headSize = 8;
constexpr int lengthOffset = 4; // in the head

// Typed. The length is that of the bytes behind the head.
constexpr int typedBlockSizeOffset = 6;
constexpr quint32 textType = 1; // 0 is a picture, 2 an object

// Ended.
constexpr int endedBlockSize = 512; // whatever the header says
constexpr char endMarker = 0x1A;

// Counted. The length includes the head.
constexpr int countedBlockSizeOffset = 20;
constexpr char countedMarker[] = {'\xFF', '\xFF', '\x08', '\x00'};

// The fields that point into the file: that long, they are little-endian numbers, else digits.
constexpr int binaryPointerSize = 4;
constexpr int digitPointerSize = 10;

} // namespace dbf::layout::memo

#endif
