#include "foundation/CBetterFile.h"

#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(BetterFile, ComparesModifyTimesAndNamesTheFileWithoutStatus) {
    const fs::path dir = fs::temp_directory_path() / ("qvr-betterfile-" + std::to_string(getpid()));
    fs::create_directories(dir);
    const std::string older = (dir / "older").string();
    const std::string newer = (dir / "newer").string();
    std::ofstream(older) << "a";
    std::ofstream(newer) << "b";
    const auto now = fs::file_time_type::clock::now();
    fs::last_write_time(older, now - std::chrono::hours(1));
    fs::last_write_time(newer, now);

    EXPECT_EQ(CBetterFile::CompareModifyTimes(older, newer), -1);
    EXPECT_EQ(CBetterFile::CompareModifyTimes(newer, older), 1);
    EXPECT_EQ(CBetterFile::CompareModifyTimes(newer, newer), 0);

    TraceCapture trace;
    const std::string missing = (dir / "missing").string();
    EXPECT_EQ(CBetterFile::CompareModifyTimes(missing, newer), std::nullopt);
    EXPECT_TRUE(trace.Contains("*** ERROR[CBetterFile::CompareModifyTimes()]: Failed to get status of \"" +
                               missing + "\" (file1) !\n"));
    EXPECT_EQ(CBetterFile::CompareModifyTimes(older, missing), std::nullopt);
    EXPECT_TRUE(trace.Contains("*** ERROR[CBetterFile::CompareModifyTimes()]: Failed to get status of \"" +
                               missing + "\" (file2) !\n"));
    fs::remove_all(dir);
}
