// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#include <dbf/encoding/codecchoice_p.h>

#include <QTextCodec>

#include <algorithm>
#include <array>

namespace dbf
{

namespace
{

constexpr uint firstUpper = 0x80;

constexpr std::array<char16_t, 128> upperHalf{
    // clang-format off
    0x0391, 0x0392, 0x0393, 0x0394, 0x0395, 0x0396, 0x0397, 0x0398,
    0x0399, 0x039A, 0x039B, 0x039C, 0x039D, 0x039E, 0x039F, 0x03A0,
    0x03A1, 0x03A3, 0x03A4, 0x03A5, 0x03A6, 0x03A7, 0x03A8, 0x03A9,
    0x03B1, 0x03B2, 0x03B3, 0x03B4, 0x03B5, 0x03B6, 0x03B7, 0x03B8,
    0x03B9, 0x03BA, 0x03BB, 0x03BC, 0x03BD, 0x03BE, 0x03BF, 0x03C0,
    0x03C1, 0x03C3, 0x03C2, 0x03C4, 0x03C5, 0x03C6, 0x03C7, 0x03C8,
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,
    0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510,
    0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567,
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B,
    0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,
    0x03C9, 0x03AC, 0x03AD, 0x03AE, 0x03CA, 0x03AF, 0x03CC, 0x03CD,
    0x03CB, 0x03CE, 0x0386, 0x0388, 0x0389, 0x038A, 0x038C, 0x038E,
    0x038F, 0x00B1, 0x2265, 0x2264, 0x03AA, 0x03AB, 0x00F7, 0x2248,
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,
    // clang-format on
};

/// DOS code page 737, which Qt has nowhere.
class GreekCodec : public QTextCodec
{
public:
    QByteArray name() const override { return QByteArrayLiteral("IBM737"); }
    QList<QByteArray> aliases() const override { return {"CP737", "IBM-737"}; }
    int mibEnum() const override { return -737; } // none is registered for it

protected:
    QString convertToUnicode(const char* bytes, int length,
                             ConverterState* /*state*/) const override
    {
        QString text(length, Qt::Uninitialized);
        std::transform(bytes, bytes + length, text.begin(), [](char byte) {
            const uint code = static_cast<quint8>(byte);
            return QChar(code < firstUpper ? code : upperHalf[code - firstUpper]);
        });
        return text;
    }

    QByteArray convertFromUnicode(const QChar* text, int length,
                                  ConverterState* state) const override
    {
        const bool hasZeros = state && (state->flags & ConvertInvalidToNull);
        QByteArray bytes(length, Qt::Uninitialized);
        std::transform(text, text + length, bytes.begin(), [&](QChar character) {
            if (character.unicode() < firstUpper)
                return static_cast<char>(character.unicode());
            const auto* const found =
                std::find(upperHalf.begin(), upperHalf.end(), character.unicode());
            if (found != upperHalf.end())
                return static_cast<char>(firstUpper + uint(found - upperHalf.begin()));
            if (state)
                ++state->invalidChars;
            return hasZeros ? '\0' : '?';
        });
        return bytes;
    }
};

} // namespace

QTextCodec* greekDosCodec()
{
    // Qt owns every codec, and deletes it when the process ends.
    static QTextCodec* const codec = new GreekCodec;
    return codec;
}

} // namespace dbf
