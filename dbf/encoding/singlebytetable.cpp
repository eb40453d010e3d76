// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/bytes_p.h>
#include <dbf/encoding/text_p.h>

#include <QTextCodec>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <typeinfo>

namespace dbf
{

namespace
{

/// Registered numbers of the character sets that have one byte per character: US-ASCII, the
/// ISO 8859 and Windows families, KOI8 and the single-byte DOS and Macintosh code pages.
constexpr std::array singleByteMibs{
    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   77,   109,  110,
    111,  112,  2009, 2010, 2011, 2013, 2027, 2047, 2048, 2049, 2050, 2051, 2052, 2053,
    2054, 2084, 2086, 2088, 2250, 2251, 2252, 2253, 2254, 2255, 2256, 2257, 2258, 2259};

constexpr int byteValues = 256;

struct CachedTable {
    const QTextCodec* codec = nullptr;
    const SingleByteTable* table = nullptr; // null when the codec belies its number
    const CachedTable* next = nullptr;
};

// The classes of Qt's own codecs. Theirs alone live as long as the process, so that an address
// stays one codec's, and may be asked for all their characters beforehand: a codec of a caller's
// own is called for texts only, whatever name and number it has.
bool isOfQt(const QTextCodec& codec)
{
    static constexpr std::array classNames{"9QIcuCodec", "17QSimpleTextCodec", "12QLatin1Codec",
                                           "13QLatin15Codec"};
    const char* const name = typeid(codec).name();
    return std::any_of(classNames.begin(), classNames.end(),
                       [name](const char* own) { return std::strcmp(own, name) == 0; });
}

// Grows only at its head; entries never change and live as long as the process.
std::atomic<const CachedTable*> cachedTables{nullptr};

const CachedTable* findCached(const QTextCodec* codec)
{
    const CachedTable* entry = cachedTables.load(std::memory_order_acquire);
    while (entry && entry->codec != codec)
        entry = entry->next;
    return entry;
}

struct Padding {
    bool hasNul;
    const char* end; // of what is left without the spaces at the end
};

// Goes over all of the field, at least a word, which has the same length in every record. Stopping
// where the text ends would be less to do, and slower: that place cannot be predicted.
Padding paddingOf(const char* begin, const char* end)
{
    quint64 zeros = 0;                 // the highest bit of each byte that is zero, and other bits
    quint64 others = 0;                // where the last word with others than spaces has them
    std::ptrdiff_t wordWithOthers = 0; // where that word ends
    const auto look = [&](std::ptrdiff_t start) {
        const auto word = qFromLittleEndian<quint64>(begin + start);
        zeros |= (word - Q_UINT64_C(0x0101010101010101)) & ~word;
        const bool isPadding = word == eightSpaces;
        wordWithOthers = isPadding ? wordWithOthers : start + wordSize;
        others = isPadding ? others : word ^ eightSpaces;
    };
    const std::ptrdiff_t last = end - begin - wordSize;
    for (std::ptrdiff_t start = 0; start < last; start += wordSize)
        look(start);
    look(last);
    const auto spaces =
        others == 0 ? 0 : static_cast<int>(qCountLeadingZeroBits(others)) / bitsPerByte;
    return {(zeros & Q_UINT64_C(0x8080808080808080)) != 0, begin + wordWithOthers - spaces};
}

} // namespace

std::string_view withoutPadding(std::string_view bytes)
{
    if (static_cast<std::ptrdiff_t>(bytes.size()) >= wordSize) {
        const char* const begin = bytes.data();
        const Padding padding = paddingOf(begin, begin + bytes.size());
        if (!padding.hasNul)
            return {begin, static_cast<size_t>(padding.end - begin)};
    }
    const std::string_view content = untilZero(bytes);
    return content.substr(0, content.find_last_not_of(' ') + 1);
}

// A text of 20 places is read in 320 and written in 390 instructions instead of the 4,080 and 4,180
// that the codec takes.
const SingleByteTable* SingleByteTable::of(QTextCodec* codec)
{
    if (const CachedTable* const entry = findCached(codec))
        return entry->table;
    if (!isOfQt(*codec) ||
        !std::binary_search(singleByteMibs.begin(), singleByteMibs.end(), codec->mibEnum()))
        return nullptr;

    // Two threads may both get here for one codec. Both then make equal tables, and both entries
    // stay, which costs some memory and harms nothing.
    auto entry = std::make_unique<CachedTable>();
    entry->codec = codec;
    entry->table = derivedFrom(*codec);
    entry->next = cachedTables.load(std::memory_order_relaxed);
    while (!cachedTables.compare_exchange_weak(entry->next, entry.get(), std::memory_order_release,
                                               std::memory_order_relaxed)) {
    }
    return entry.release()->table;
}

const SingleByteTable* SingleByteTable::derivedFrom(const QTextCodec& codec)
{
    std::unique_ptr<SingleByteTable> table(new SingleByteTable);
    if (!table->readDecoding(codec) || !table->readPairs(codec))
        return nullptr; // GCOVR_EXCL_LINE: no codec of the Qt that we test with belies its number
    table->readEncoding(codec);
    return table.release();
}

bool SingleByteTable::readDecoding(const QTextCodec& codec)
{
    m_asciiTransparent = true;
    for (int value = 0; value < byteValues; ++value) {
        const char byte = static_cast<char>(value);
        const QString text = codec.toUnicode(&byte, 1, nullptr);
        if (text.size() != 1 || text.at(0).isSurrogate())
            return false; // GCOVR_EXCL_LINE: as above
        const auto index = static_cast<size_t>(value);
        m_units[index] = text.at(0).unicode();
        m_isSpace[index] = text.at(0).isSpace();
        if (value < 0x80 && m_units[index] != value)
            m_asciiTransparent = false;
    }
    return true;
}

// A codec may have the number of a single-byte set and still look at more than one byte at a time.
bool SingleByteTable::readPairs(const QTextCodec& codec)
{
    QByteArray bytes(2 * byteValues * byteValues, Qt::Uninitialized);
    char* byte = bytes.data();
    for (int second = 0; second < byteValues; ++second) {
        for (int first = 0; first < byteValues; ++first) {
            *byte++ = static_cast<char>(first);
            *byte++ = static_cast<char>(second);
        }
    }
    const QString text = codec.toUnicode(bytes.constData(), 2 * byteValues * byteValues, nullptr);
    if (!std::equal(text.cbegin(), text.cend(), bytes.cbegin(), bytes.cend(),
                    [this](QChar character, char value) { return character == unit(value); }))
        return false; // GCOVR_EXCL_LINE: as above
    m_pairs.assign(text.utf16(), text.utf16() + text.size());
    return true;
}

void SingleByteTable::readEncoding(const QTextCodec& codec)
{
    constexpr size_t unitValues = 65536;
    m_bytes.assign(unitValues, noByte);
    for (const ushort unit : m_units) {
        const QChar character(unit);
        const QByteArray bytes = codec.fromUnicode(&character, 1, nullptr);
        if (bytes.size() == 1 && this->unit(bytes.at(0)) == unit)
            m_bytes[unit] = static_cast<quint8>(bytes.at(0));
    }
}

std::string_view SingleByteTable::content(std::string_view bytes) const
{
    const char* begin = bytes.data();
    const char* end = begin + bytes.size();
    if (end - begin < wordSize || !m_isSpace[' ']) {
        end = begin + std::min(bytes.find('\0'), bytes.size());
    } else {
        const Padding padding = paddingOf(begin, end);
        end = padding.hasNul ? begin + bytes.find('\0') : padding.end;
    }
    const auto isSpace = [this](char byte) { return m_isSpace[static_cast<quint8>(byte)]; };
    while (begin < end && isSpace(end[-1]))
        --end;
    while (begin < end && isSpace(*begin))
        ++begin;
    return {begin, static_cast<size_t>(end - begin)};
}

void SingleByteTable::decode(std::string_view bytes, char16_t* units) const
{
    const char16_t* const pairs = m_pairs.data();
    const auto decodePair = [pairs](const char* pair, char16_t* decoded) {
        const size_t index = qFromLittleEndian<quint16>(pair);
        std::memcpy(decoded, pairs + 2 * index, 2 * sizeof(char16_t));
    };
    const auto decodeWord = [&](size_t start) {
        for (size_t i = start; i < start + wordSize; i += 2)
            decodePair(bytes.data() + i, units + i);
    };
    if (bytes.size() < wordSize) {
        for (size_t i = 0; i < bytes.size(); ++i)
            units[i] = unit(bytes[i]);
        return;
    }
    const size_t last = bytes.size() - wordSize;
    for (size_t start = 0; start < last; start += wordSize)
        decodeWord(start);
    decodeWord(last);
}

bool SingleByteTable::encode(QStringView text, char* bytes) const
{
    const quint16* const table = m_bytes.data();
    quint16 all = 0;
    for (const QChar character : text) {
        const quint16 byte = table[character.unicode()];
        all |= byte;
        *bytes++ = static_cast<char>(byte);
    }
    return (all & noByte) == 0;
}

} // namespace dbf
