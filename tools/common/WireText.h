// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QString>

namespace zeltools {

// Records as people read them, also those that are cut or garbled: nothing here needs them to be well-formed. Long
// texts in them are shortened: their length is told.

/// The name of its message; "invocation", and "not a message" for what names none.
QString typeOf(const zelcore::WireRecord& record);
/// What it carries, in a line of some \a length characters, which ends in … when there is more.
QString summaryOf(const zelcore::WireRecord& record, qsizetype length);
/// What it carries, a member a line, in the order of the record.
QString prettyOf(const zelcore::WireRecord& record);

} // namespace zeltools
