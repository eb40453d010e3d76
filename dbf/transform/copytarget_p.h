// SPDX-FileCopyrightText: the dbftable authors
// SPDX-License-Identifier: MIT

#ifndef DBF_TRANSFORM_COPYTARGET_P_H
#define DBF_TRANSFORM_COPYTARGET_P_H

class QIODevice;

namespace dbf
{

/// Returns whether opening \a target for writing would destroy what \a source reads: the same
/// device, the same file under whatever name or link, the same byte array. A QSaveFile writes
/// another file beside its own, so it may name the source's, unless it would have to fall back to
/// writing in place.
bool wouldOverwrite(const QIODevice* target, const QIODevice* source);

} // namespace dbf

#endif
