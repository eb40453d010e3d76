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

} // namespace dbf
