// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/codecchoice_p.h>

#include <QTextCodec>

namespace dbf
{

namespace
{

constexpr char windowsCyrillicName[] = "Windows-1251";
constexpr char dosCyrillicName[] = "IBM 866";
constexpr char koi8Name[] = "KOI8-R";

// Qt may know the two character sets under names that differ in case or punctuation; their
// registered numbers do not vary.
constexpr int windowsCyrillicMib = 2251;
constexpr int dosCyrillicMib = 2086;
constexpr int latin1Mib = 4;

// The code page bytes that the library writes.
constexpr quint8 noCodePage = 0x00;
constexpr quint8 dosCyrillic = 0x66;
constexpr quint8 windowsCyrillic = 0xC9;

constexpr int mibByLDID[] = {
    // 0x00
    0, 2011, 2009, 2252, 2027, 0, 0, 0, 2052, 2011, 2009, 2011, 0, 2011, 2009, 2011,
    // 0x10
    2009, 2011, 2009, 17, 2009, 2011, 2009, 2052, 2011, 2011, 2009, 2011, 2050, 2050, 0, 2010,
    // 0x20
    0, 0, 2010, 2010, 2048, 2009, 2086, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0x30
    0, 0, 0, 0, 0, 0, 0, 2009, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0x40
    2010, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 113, 36, 2026,
    // 0x50
    2259, 0, 0, 0, 0, 0, 0, 2252, 2252, 2252, 0, 0, 0, 0, 0, 0,
    // 0x60
    0, 0, 0, 0, 2010, 2052, 2086, 2049, 0, 0, 2054, 2047, 2050, 0, 0, 0,
    // 0x70
    0, 0, 0, 0, 0, 0, 0, 0, 2026, 38, 113, 17, 2259, 0, 0, 0,
    // 0x80
    0, 0, 0, 0, 0, 0, 2054, 2010, 2047, 0, 0, 0, 0, 0, 0, 0,
    // 0x90
    0, 0, 0, 0, 0, 0, 77, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0xA0
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0xB0
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0xC0
    0, 0, 0, 0, 0, 0, 0, 0, 2250, 2251, 2254, 2253};
constexpr int languageIdCount = sizeof(mibByLDID) / sizeof(mibByLDID[0]);
static_assert(languageIdCount == 0xCC, "one entry per language driver id from 0x00 to 0xCB");

} // namespace

QTextCodec* codecForCodePage(quint8 codePage)
{
    switch (codePage) {
    case dosCyrillic:
        return QTextCodec::codecForName(dosCyrillicName);
    case windowsCyrillic:
    case noCodePage:
        return QTextCodec::codecForName(windowsCyrillicName);
    default:
        return QTextCodec::codecForName(koi8Name);
    }
}

quint8 codePageForCodec(const QTextCodec* codec)
{
    if (!codec)
        return noCodePage;
    const QByteArray name = codec->name();
    if (name == windowsCyrillicName)
        return windowsCyrillic;
    if (name == dosCyrillicName)
        return dosCyrillic;
    switch (codec->mibEnum()) {
    case windowsCyrillicMib:
        return windowsCyrillic;
    case dosCyrillicMib:
        return dosCyrillic;
    default:
        return noCodePage;
    }
}

QTextCodec* usableCodec(QTextCodec* codec)
{
    if (codec)
        return codec;
    if (QTextCodec* const fallback = codecForCodePage(noCodePage))
        return fallback;
    return QTextCodec::codecForMib(latin1Mib); // GCOVR_EXCL_LINE: only a Qt without that codec
}

int mibForLanguageDriver(int id)
{
    return id >= 0 && id < languageIdCount ? mibByLDID[id] : 0;
}

namespace
{

constexpr int greekDos = -737; // which has no registered number

/// What the byte means to other programs where the list above says something else.
struct OtherMeaning {
    int id;
    int mib;
    const char* name; // of a set without a number
};

constexpr OtherMeaning otherMeanings[] = {
    {0x1D, 2009, nullptr},       {0x65, dosCyrillicMib, nullptr},
    {0x68, 0, nullptr},          {0x69, 0, nullptr},
    {0x6A, greekDos, nullptr},   {0x7D, 2255, nullptr},
    {0x7E, 2256, nullptr},       {0x86, greekDos, nullptr},
    {0x96, 0, "x-mac-cyrillic"}, {0x97, 0, "x-mac-centraleurroman"},
    {0x98, 0, "x-mac-greek"},    {0xCC, 2257, nullptr},
};

QTextCodec* codecForMib(int mib)
{
    if (mib == greekDos)
        return greekDosCodec();
    return mib == 0 ? nullptr : QTextCodec::codecForMib(mib);
}

/// The bytes by which sets are known best; others have several, from countries that share one.
constexpr quint8 usualDrivers[] = {0x01, 0x02, 0x03, 0x04, 0x64, 0x65, 0x67, 0x6A,
                                   0x6B, 0x78, 0x79, 0x7A, 0x7B, 0x7C, 0x7D, 0x7E,
                                   0x96, 0x97, 0x98, 0xC8, 0xC9, 0xCA, 0xCB, 0xCC};

/// The sets that people name by the number of a code page.
struct NumberedPage {
    int number;
    const char* name;
};

constexpr NumberedPage numberedPages[] = {
    {437, "IBM437"},        {775, "IBM775"},        {850, "IBM850"},        {852, "IBM852"},
    {855, "IBM855"},        {857, "IBM857"},        {860, "IBM860"},        {861, "IBM861"},
    {862, "IBM862"},        {863, "IBM863"},        {864, "IBM864"},        {865, "IBM865"},
    {866, "IBM866"},        {869, "IBM869"},        {874, "windows-874"},   {932, "Shift_JIS"},
    {936, "GBK"},           {949, "windows-949"},   {950, "Big5"},          {1250, "windows-1250"},
    {1251, "windows-1251"}, {1252, "windows-1252"}, {1253, "windows-1253"}, {1254, "windows-1254"},
    {1255, "windows-1255"}, {1256, "windows-1256"}, {1257, "windows-1257"}, {1258, "windows-1258"},
    {20866, "KOI8-R"},      {21866, "KOI8-U"},      {54936, "GB18030"},     {65001, "UTF-8"},
};

/// The sets that people name by letters, without case and what stands between them.
struct NamedSet {
    const char* label;
    const char* name;
};

constexpr NamedSet namedSets[] = {
    {"UTF8", "UTF-8"},          {"BIG5", "Big5"},         {"GBK", "GBK"},
    {"GB2312", "GBK"},          {"GB18030", "GB18030"},   {"SHIFTJIS", "Shift_JIS"},
    {"SJIS", "Shift_JIS"},      {"EUCKR", "windows-949"}, {"KOI8R", "KOI8-R"},
    {"KOI8U", "KOI8-U"},        {"LATIN1", "ISO-8859-1"}, {"TIS620", "TIS-620"},
    {"MACINTOSH", "macintosh"},
};

QTextCodec* codecForPage(int number)
{
    constexpr int greekPage = 737;
    constexpr int firstIsoPage = 28591;
    constexpr int lastIsoPage = 28605;
    if (number == greekPage)
        return greekDosCodec();
    if (number >= firstIsoPage && number <= lastIsoPage)
        return QTextCodec::codecForName("ISO-8859-" +
                                        QByteArray::number(number - firstIsoPage + 1));
    for (const NumberedPage& page : numberedPages) {
        if (page.number == number)
            return QTextCodec::codecForName(page.name);
    }
    return nullptr;
}

/// Returns the letters and digits of \a label in upper case; nothing if there is anything else in
/// it than those and what people write between them.
QByteArray plainLabel(QByteArray label)
{
    constexpr char byteOrderMark[] = "\xEF\xBB\xBF";
    if (label.startsWith(byteOrderMark))
        label.remove(0, 3);
    QByteArray plain;
    for (const char byte : label.trimmed().toUpper()) {
        if ((byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9'))
            plain.append(byte);
        else if (byte != ' ' && byte != '-' && byte != '_')
            return {};
    }
    return plain;
}

} // namespace

QTextCodec* codecForLanguageDriver(int id)
{
    for (const OtherMeaning& meaning : otherMeanings) {
        if (meaning.id == id)
            return meaning.name ? QTextCodec::codecForName(meaning.name) : codecForMib(meaning.mib);
    }
    return codecForMib(mibForLanguageDriver(id));
}

std::optional<quint8> languageDriverForCodec(QTextCodec* codec)
{
    constexpr int lastId = 255;
    if (!codec)
        return std::nullopt;
    for (const quint8 id : usualDrivers) {
        if (codecForLanguageDriver(id) == codec)
            return id;
    }
    for (int id = 1; id <= lastId; ++id) {
        if (codecForLanguageDriver(id) == codec)
            return static_cast<quint8>(id);
    }
    return std::nullopt;
}

QTextCodec* codecForLabel(const QByteArray& label)
{
    const QByteArray plain = plainLabel(label);
    for (const NamedSet& set : namedSets) {
        if (plain == set.label)
            return QTextCodec::codecForName(set.name);
    }
    constexpr char isoFamily[] = "8859";
    QByteArray digits = plain;
    if (digits.startsWith("ISO") && digits.mid(3).startsWith(isoFamily))
        digits.remove(0, 3);
    if (digits.startsWith(isoFamily) && digits.size() > 4) {
        bool isNumber = false;
        const int part = digits.mid(4).toInt(&isNumber);
        return isNumber && part > 0 ? QTextCodec::codecForName("ISO-8859-" + digits.mid(4))
                                    : nullptr;
    }
    for (const char* const prefix : {"WINDOWS", "ANSI", "OEM", "IBM", "DOS", "CP", "MS"}) {
        if (plain.startsWith(prefix)) {
            digits = plain.mid(static_cast<int>(qstrlen(prefix)));
            break;
        }
    }
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber ? codecForPage(number) : nullptr;
}

} // namespace dbf
