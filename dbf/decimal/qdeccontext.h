// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_DECIMAL_QDECCONTEXT_H
#define DBF_DECIMAL_QDECCONTEXT_H

#include <dbf/dbfexport.h>

#include <QtCore/qglobal.h>

/// The rules that decimal operations keep to: how many digits a result has and how it is rounded.
///
/// There is one set, the base default: 9 digits, round half up, no traps. An operation that cannot
/// give a result gives NaN or 0 and never raises a signal or throws.
class DBFTABLE_EXPORT QDecContext
{
public:
    /// Makes a context of `kind`. Kind 0 is the base default; any other behaves as kind 0.
    explicit QDecContext(int kind) { Q_UNUSED(kind) }

    /// Returns how many digits the coefficient of a result has at most.
    int digits() const { return 9; }
};

#endif
