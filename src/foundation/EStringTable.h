#pragma once
// The string table: every text that the user sees, by number. One table for
// the whole core, filled from each subsystem's Strings.inc. Read-only after
// static construction, so safe from any thread.

#include <string>
#include <string_view>

using EStringId = unsigned;

namespace EStringTable {
// The text of an id, or an empty text for an id that the table doesn't hold.
std::string_view Get(EStringId id);
std::string Load(EStringId id);
// The number of texts in the table.
size_t Count();
} // namespace EStringTable
