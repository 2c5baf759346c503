#include "foundation/ELog.h"
#include "foundation/EEnvironment.h"
#include "foundation/EPrefsLog.h"
#include "foundation/ScratchDirectory.h"
#include "foundation/TraceCapture.h"
#include "foundation/qvrString.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

const std::string Rule = "------------------------------------------------------------------";

class LogTest : public ::testing::Test {
protected:
    void SetUp() override { EPrefsLog::StoreSettings(logFile(), false, ELog::LevelMessage); }
    void TearDown() override { EPrefsLog::Get().Reset(); }
    std::string logFile() const { return dir.File("test.log"); }
    std::string logText() const { return ScratchDirectory::ReadAll(logFile()); }
    // What follows the banner.
    std::string entries() const {
        std::string text = logText();
        return text.substr(text.find(".\n\n", text.find("Logfile engine started at ")) + 3);
    }

    ScratchDirectory dir{"log"};
    TraceCapture trace;
};

} // namespace

TEST_F(LogTest, OpenWithoutAppendStartsAFreshFileAndCloseEndsIt) {
    ELog::Message("old run", "Start");
    ELog::GlobalOpen();
    ELog::GlobalClose();
    std::string text = logText();
    std::string head = "\n\nqvrTessarine log file\n[qvrTessarine V" QVR_VERSION_TEXT "]\n" + Rule +
                       "\nLogfile engine started at ";
    ASSERT_EQ(text.rfind(head, 0), 0u) << text;
    size_t stopped = text.find(".\n\n\n" + Rule + "\nLogfile engine stopped at ");
    ASSERT_NE(stopped, std::string::npos);
    EXPECT_GT(stopped, head.size()) << "the start time is missing";
    EXPECT_EQ(text.substr(text.size() - 3), ".\n\n");

    EPrefsLog::StoreSettings(logFile(), true, ELog::LevelMessage);
    ELog::GlobalOpen();
    EXPECT_EQ(logText().rfind(text, 0), 0u) << "with Append the old log stays";
}

TEST_F(LogTest, OneContextMakesOneSectionAndEveryTextLineIsIndented) {
    ELog::GlobalOpen();
    ELog::Notice("first", "Context A");
    ELog::Warning("two\nlines", "CONTEXT a");
    ELog::Error("third", "Context B");
    EXPECT_EQ(entries(), "\n\n[Context A]\n\n    Notice:\n       first\n"
                         "\n    Warning:\n       two\n       lines\n"
                         "\n\n[Context B]\n\n    Error:\n       third\n");
}

TEST_F(LogTest, OnlyLevelsFromTheThresholdToFiveWithTextAreWritten) {
    EPrefsLog::StoreSettings(logFile(), false, ELog::LevelWarning);
    ELog::GlobalOpen();
    ELog::Notice("below the threshold", "Levels");
    ELog::Log(6, "Levels", "out of range");
    ELog::Warning("", "Levels");
    ELog::Failure("kept", "Levels");
    ELog::Log(ELog::LevelDisaster, "Levels", "worst");
    EXPECT_EQ(entries(), "\n\n[Levels]\n\n    Failure:\n       kept\n"
                         "\n    Disaster<unknown_level>:\n       worst\n");
}

TEST_F(LogTest, AFailedWriteSilencesTheLogUntilTheSettingsAreStoredAgain) {
    const std::string missing = dir.File("missing/test.log");
    EPrefsLog::StoreSettings(missing, true, ELog::LevelMessage);
    ELog::Warning("lost", "Failing");
    std::vector<std::string> lines = trace.Get();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].rfind(qvrFormat("*** WARNING[ELog::writeRaw()]: Failed to save log text to \"%s\": ",
                                       missing.c_str()),
                             0),
              0u);
    EXPECT_TRUE(EPrefsLog::HasErrorTxt());

    std::filesystem::create_directories(dir.Path / "missing");
    ELog::Warning("also lost", "Failing");
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_EQ(trace.Get().size(), 1u);

    EPrefsLog::StoreSettings(missing, true, ELog::LevelMessage);
    ELog::Warning("written", "Failing");
    EXPECT_NE(ScratchDirectory::ReadAll(missing).find("       written\n"), std::string::npos);
}

TEST_F(LogTest, ARelativeFileNameLivesInTheProgramDirectory) {
    std::string saved = EEnvironment::Get().CurrentDir;
    EEnvironment::Get().CurrentDir = dir.Path.string();
    EPrefsLog::StoreSettings("relative.log", true, ELog::LevelMessage);
    ELog::Message("beside the program", "Places");
    EEnvironment::Get().CurrentDir = saved;
    EXPECT_NE(ScratchDirectory::ReadAll(dir.File("relative.log")).find("beside the program"),
              std::string::npos);
}

TEST_F(LogTest, EntriesFromSeveralThreadsStayWhole) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            for (int i = 0; i < 50; ++i)
                ELog::Notice(qvrFormat("thread %d\nentry %d", t, i), qvrFormat("Worker %d", t));
        });
    for (std::thread& thread : threads)
        thread.join();
    std::string text = logText();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 50; ++i)
            EXPECT_NE(text.find(qvrFormat("    Notice:\n       thread %d\n       entry %d\n", t, i)),
                      std::string::npos);
}
