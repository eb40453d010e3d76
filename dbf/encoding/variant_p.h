// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_ENCODING_VARIANT_P_H
#define DBF_ENCODING_VARIANT_P_H

#include <QtCore/QVariant>

namespace dbf
{

/// QVariant::convert(), but several threads may make the first conversion of the process at once.
inline bool convertByQt(QVariant& value, int type)
{
    // What Qt 5 registers by its first one, it registers once for each of these threads, and
    // prints a warning about all but one of them.
    [[maybe_unused]] static const bool registered = QVariant(0).canConvert(QMetaType::QString);
    return value.convert(type);
}

} // namespace dbf

#endif // DBF_ENCODING_VARIANT_P_H
