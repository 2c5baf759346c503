#include "foundation/EPrefsLog.h"
#include "foundation/SectionLockHolder.h"
#include "foundation/TraceCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>

TEST(LogPrefs, AnEmptyFileNameOnLoadLeavesTheStandardLogAndSaysSo) {
    EPrefsLog::StoreSettings("/var/tmp/other.log", true, 3);
    qvrCTreeData block("Log file");
    block.SetText("File", "");
    block.SetBool("Append", false);
    hReportRoot root("Test");
    EPrefsLog::Get().Load(block, root);
    bool append = true;
    EXPECT_EQ(EPrefsLog::GetLogFile(append), "qvrTessarine.log");
    EXPECT_FALSE(append);
    ASSERT_EQ(root.GetCount(), 1);
    EXPECT_EQ(root.GetEntries()[0].Text, "NO log file provided - using standard log file.");
    EPrefsLog::Get().Reset();
}

TEST(LogPrefs, ALockedSectionGivesDefaultsAndTellsTheDebugChannel) {
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
    EPrefsLog::Get().Reset();
}
