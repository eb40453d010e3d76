// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_CODECCHOICE_P_H
#define DBF_ENCODING_CODECCHOICE_P_H

#include <QtCore/QByteArray>

#include <optional>

class QTextCodec;

namespace dbf
{

/// Returns Qt's codec for a header's code page byte: the two Cyrillic ones for the bytes that the
/// library writes, KOI8-R for every other byte. Null when Qt lacks it.
QTextCodec* codecForCodePage(quint8 codePage);

/// Returns the code page byte that a new table of \a codec, which may be null, gets. Each set's
/// name says more than a number: Qt may know the two under names that differ in case or
/// punctuation, and a codec of a caller's own may have any number.
quint8 codePageForCodec(const QTextCodec* codec);

/// Returns \a codec, or the codec that text and names go through while a schema has none. Null only
/// when Qt has none any more, as in the destructors of static objects.
QTextCodec* usableCodec(QTextCodec* codec);

/// Returns the MIBenum of the character set that the language driver \a id stands for, 0 for none.
int mibForLanguageDriver(int id);

/// Returns the codec that other programs mean by the language driver \a id, null for none.
QTextCodec* codecForLanguageDriver(int id);

/// Returns the language driver by which other programs know \a codec; nothing for none.
std::optional<quint8> languageDriverForCodec(QTextCodec* codec);

/// Returns the codec that \a label, as people and `.cpg` files write it, names; null for others.
QTextCodec* codecForLabel(const QByteArray& label);

/// Returns the codec of DOS code page 737. Thread-safe; Qt's own.
QTextCodec* greekDosCodec();

} // namespace dbf

#endif
