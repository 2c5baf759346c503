#include "foundation/EStringTable.h"

#include <algorithm>
#include <array>

namespace {

struct Entry {
    EStringId id;
    std::string_view text;
};

constexpr Entry unsortedEntries[] = {
#include "app/Strings.inc"
#include "foundation/Strings.inc"
#include "model/Strings.inc"
#include "objects/Strings.inc"
#include "output/Strings.inc"
#include "projector/Strings.inc"
#include "views/Strings.inc"
};

constexpr auto sortedEntries() {
    std::array<Entry, std::size(unsortedEntries)> entries{};
    std::copy(std::begin(unsortedEntries), std::end(unsortedEntries), entries.begin());
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.id < b.id; });
    return entries;
}

constexpr auto table = sortedEntries();

constexpr bool idsAreUnique() {
    for (size_t i = 1; i < table.size(); ++i)
        if (table[i].id == table[i - 1].id) return false;
    return true;
}
static_assert(idsAreUnique(), "two texts of the string table share an id");

} // namespace

std::string_view EStringTable::Get(EStringId id) {
    auto it = std::lower_bound(table.begin(), table.end(), id,
                               [](const Entry& e, EStringId wanted) { return e.id < wanted; });
    return (it != table.end() && it->id == id) ? it->text : std::string_view();
}

std::string EStringTable::Load(EStringId id) {
    return std::string(Get(id));
}

size_t EStringTable::Count() { return table.size(); }
