#pragma once
// Comparisons of files on disk, beyond plain file access. Safe from any
// thread; failures are reported by result and on the debug channel.

#include <optional>
#include <string>

class CBetterFile {
public:
    // Below 0 when `file1` was modified before `file2`, 0 at the same time,
    // above 0 after it; nothing when the status of either can't be had.
    static std::optional<int> CompareModifyTimes(const std::string& file1, const std::string& file2);
};
