#include "foundation/EStringTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

// Sorted by id; built during static construction only.
std::vector<EStringEntry>& table() {
    static std::vector<EStringEntry> entries;
    return entries;
}

auto findEntry(EStringId id) {
    return std::lower_bound(table().begin(), table().end(), id,
                            [](const EStringEntry& e, EStringId wanted) { return e.id < wanted; });
}

} // namespace

EStringTable::Section::Section(std::span<const EStringEntry> entries) {
    for (const EStringEntry& entry : entries) {
        auto place = findEntry(entry.id);
        if (place != table().end() && place->id == entry.id) {
            std::fprintf(stderr, "Two texts of the string table share the id %u.\n", entry.id);
            std::abort();
        }
        table().insert(place, entry);
    }
}

std::string_view EStringTable::Get(EStringId id) {
    auto it = findEntry(id);
    return (it != table().end() && it->id == id) ? it->text : std::string_view();
}

std::string EStringTable::Load(EStringId id) {
    return std::string(Get(id));
}

size_t EStringTable::Count() {
    return table().size();
}
