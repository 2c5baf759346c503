#pragma once
// The string table: every text that the user sees, by number. One table for
// the whole core; each subsystem enters its Strings.inc as a section during
// static construction. Read-only afterwards, so safe from any thread.

#include <span>
#include <string>
#include <string_view>

using EStringId = unsigned;

struct EStringEntry {
    EStringId id;
    std::string_view text;
};

namespace EStringTable {
// One subsystem's texts, entered into the table when it is constructed. Two
// texts with one id are a build fault: the program stops at once and names the id.
class Section {
public:
    explicit Section(std::span<const EStringEntry> entries);
};

// The text of an id, or an empty text for an id that the table doesn't hold.
std::string_view Get(EStringId id);
std::string Load(EStringId id);
// The number of texts in the table.
size_t Count();
} // namespace EStringTable
