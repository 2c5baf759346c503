#include "foundation/CBetterFile.h"

#include "foundation/qvrTrace.h"

#include <filesystem>

namespace {

// `which` names the argument in the debug line: "file1" or "file2".
std::optional<std::filesystem::file_time_type> modifyTime(const std::string& file, const char* which) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(file, error);
    if (error) {
        qvrTrace("*** ERROR[CBetterFile::CompareModifyTimes()]: Failed to get status of \"%s\" (%s) !\n",
                 file.c_str(), which);
        return std::nullopt;
    }
    return time;
}

} // namespace

std::optional<int> CBetterFile::CompareModifyTimes(const std::string& file1, const std::string& file2) {
    const auto time1 = modifyTime(file1, "file1");
    if (!time1) return std::nullopt;
    const auto time2 = modifyTime(file2, "file2");
    if (!time2) return std::nullopt;
    if (*time1 < *time2) return -1;
    return *time1 > *time2 ? 1 : 0;
}
