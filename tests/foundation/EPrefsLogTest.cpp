#include "foundation/EPrefsLog.h"
#include "foundation/SectionLockHolder.h"
#include "foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

namespace {

class LogPrefsTest : public ::testing::Test {
protected:
    void SetUp() override { EPrefsLog::Get().Reset(); }
    void TearDown() override { EPrefsLog::Get().Reset(); }
};

} // namespace

TEST_F(LogPrefsTest, AnEmptyFileNameOnLoadLeavesTheStandardLogAndSaysSo) {
    qvrCTreeData block("Log file");
    block.SetText("File", "");
    block.SetBool("Append", false);
    block.SetLong("Level", 9);
    hReportRoot root("Test");
    EPrefsLog::Get().Load(block, root);

    bool append = true;
    EXPECT_EQ(EPrefsLog::GetLogFile(append), "qvrTessarine.log");
    EXPECT_FALSE(append);
    EXPECT_EQ(EPrefsLog::GetLogLevel(), 1) << "a level out of range keeps the default";
    ASSERT_EQ(root.GetCount(), 2);
    const auto& entries = root.GetEntries();
    EXPECT_TRUE(std::any_of(entries.begin(), entries.end(), [](const hReportEntry& entry) {
        return entry.Text == "NO log file provided - using standard log file.";
    }));
}

TEST_F(LogPrefsTest, SettingsSurviveSaveAndLoad) {
    EPrefsLog::StoreSettings("/var/tmp/elsewhere.log", false, 4);
    qvrCTreeData block("Log file");
    hReportRoot root("Test");
    EPrefsLog::Get().Save(block, root);
    EPrefsLog::Get().Reset();
    EPrefsLog::Get().Load(block, root);
    bool append = true;
    EXPECT_EQ(EPrefsLog::GetLogFile(append), "/var/tmp/elsewhere.log");
    EXPECT_FALSE(append);
    EXPECT_EQ(EPrefsLog::GetLogLevel(), 4);
    EXPECT_EQ(root.GetCount(), 0);
}

TEST_F(LogPrefsTest, ALockedSectionGivesDefaultsAndTellsTheDebugChannel) {
    EPrefsLog::StoreSettings("/var/tmp/other.log", false, 3);
    EPrefsLog::SetLastError("disk full");
    TraceCapture trace;
    {
        SectionLockHolder holder(EPrefsLog::Get());
        auto file = std::async(std::launch::async, [] {
            bool append = false;
            std::string name = EPrefsLog::GetLogFile(append);
            return append ? name : std::string();
        });
        auto level = std::async(std::launch::async, [] { return EPrefsLog::GetLogLevel(); });
        auto hasError = std::async(std::launch::async, [] { return EPrefsLog::HasErrorTxt(); });
        auto setError = std::async(std::launch::async, [] { EPrefsLog::SetLastError("ignored"); });
        EXPECT_EQ(file.get(), "qvrTessarine.log");
        EXPECT_EQ(level.get(), 1);
        EXPECT_FALSE(hasError.get());
        setError.get();
    }
    EXPECT_EQ(EPrefsLog::GetLastError(), "disk full");
    std::vector<std::string> lines = trace.Get();
    std::sort(lines.begin(), lines.end());
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "*** WARNING[EPrefsLog::GetLogFile()]: Resource locked - returning defaults.\n",
                         "*** WARNING[EPrefsLog::GetLogLevel()]: Resource locked - returning defaults.\n",
                         "*** WARNING[EPrefsLog::HasErrorTxt()]: Resource locked - returning false.\n",
                         "*** WARNING[EPrefsLog::SetLastError()]: Resource locked - doing nothing.\n"}));
}
