// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_CONVERTERS_SHAREDINSTANCE_P_H
#define DBF_CONVERTERS_SHAREDINSTANCE_P_H

#include <new>

namespace dbf
{

/// Returns the one object of class \a Converter, made on first use. It is never destroyed, since
/// destructors of static objects may still write their tables, and lies in no memory of the heap,
/// which leak checkers would report.
template <typename Converter>
Converter* sharedInstance()
{
    alignas(Converter) static unsigned char storage[sizeof(Converter)];
    static auto* const converter = new (storage) Converter;
    return converter;
}

} // namespace dbf

#endif
