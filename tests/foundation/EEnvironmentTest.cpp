#include "foundation/EEnvironment.h"

#include "TraceCapture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Sets or clears an environment variable for one scope.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::optional<std::string>& value) : Name(name) {
        if (const char* old = std::getenv(name)) Old = old;
        apply(value);
    }
    ~ScopedVariable() { apply(Old); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    void apply(const std::optional<std::string>& value) {
        if (value) {
            setenv(Name, value->c_str(), 1);
        } else {
            unsetenv(Name);
        }
    }
    const char* Name;
    std::optional<std::string> Old;
};

class Environment : public testing::Test {
protected:
    void SetUp() override {
        Scratch = fs::temp_directory_path() / ("qvr-environment-" + std::to_string(getpid()));
        fs::remove_all(Scratch);
        fs::create_directories(Scratch);
    }
    void TearDown() override { fs::remove_all(Scratch); }

    std::string scratch(const std::string& name) const { return (Scratch / name).string(); }

    fs::path Scratch;
};

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

} // namespace

TEST_F(Environment, ProgramDirectoryComesFromQvrHomeWithoutTrailingSeparator) {
    ScopedVariable home("QVR_HOME", scratch("made/here") + "//");
    EEnvironment environment;
    ASSERT_TRUE(environment.Gather());
    EXPECT_EQ(environment.CurrentDir, scratch("made/here"));
    EXPECT_TRUE(fs::is_directory(scratch("made/here")));
}

TEST_F(Environment, ProgramDirectoryFallsBackToTheDataHomes) {
    ScopedVariable home("QVR_HOME", std::nullopt);
    {
        ScopedVariable dataHome("XDG_DATA_HOME", scratch("data"));
        EEnvironment environment;
        ASSERT_TRUE(environment.Gather());
        EXPECT_EQ(environment.CurrentDir, scratch("data/qvrTessarine"));
    }
    ScopedVariable dataHome("XDG_DATA_HOME", std::nullopt);
    ScopedVariable userHome("HOME", scratch("user"));
    EEnvironment environment;
    ASSERT_TRUE(environment.Gather());
    EXPECT_EQ(environment.CurrentDir, scratch("user/.local/share/qvrTessarine"));
    EXPECT_TRUE(fs::is_directory(environment.CurrentDir));
}

TEST_F(Environment, TempDirectoryAndTheMachinesUser) {
    ScopedVariable home("QVR_HOME", scratch("home"));
    EEnvironment environment;
    {
        ScopedVariable temp("TMPDIR", scratch("tmp") + "/");
        ASSERT_TRUE(environment.Gather());
        EXPECT_EQ(environment.TempDir, scratch("tmp"));
    }
    ScopedVariable temp("TMPDIR", std::nullopt);
    ASSERT_TRUE(environment.Gather());
    EXPECT_EQ(environment.TempDir, "/tmp");
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    EXPECT_EQ(environment.ComputerName, host);
    EXPECT_FALSE(environment.UserName.empty());
}

TEST_F(Environment, PathPlusFileJoinsOnceAndKeepsAbsoluteFileNames) {
    TraceCapture trace;
    EXPECT_EQ(EEnvironment::PathPlusFile("/a/b", "c.tsp"), "/a/b/c.tsp");
    EXPECT_EQ(EEnvironment::PathPlusFile("/a/b/", "c.tsp"), "/a/b/c.tsp");
    EXPECT_EQ(EEnvironment::PathPlusFile("", "c.tsp"), "c.tsp");
    EXPECT_TRUE(trace.Get().empty());
    EXPECT_EQ(EEnvironment::PathPlusFile("/a/b", "/x/c.tsp"), "/x/c.tsp");
    EXPECT_TRUE(
        trace.Contains("*** WARNING[EEnvironment::PathPlusFile()]: Strange file name \"/x/c.tsp\"...\n"));
}

TEST_F(Environment, EnsureDirectoryPathCreatesMissingLevelsOnly) {
    TraceCapture trace;
    EXPECT_TRUE(EEnvironment::EnsureDirectoryPath(scratch("x/y/z")));
    EXPECT_TRUE(fs::is_directory(scratch("x/y/z")));
    EXPECT_TRUE(EEnvironment::EnsureDirectoryPath(scratch("x/y/z") + "/"));
    writeFile(scratch("plain"), "data");
    EXPECT_FALSE(EEnvironment::EnsureDirectoryPath(scratch("plain")));
    EXPECT_FALSE(EEnvironment::EnsureDirectoryPath(scratch("plain/below")));
    EXPECT_TRUE(trace.Get().empty());
    EXPECT_TRUE(EEnvironment::EnsureDirectoryPath(""));
    EXPECT_TRUE(trace.Contains("*** ERROR[EEnvironment::EnsureDirectoryPath()]: Tried to create an empty "
                               "directory - will return true !\n"));
}

TEST_F(Environment, EnsureFileCreationLeavesNoTraceAndKeepsExistingFiles) {
    EXPECT_TRUE(EEnvironment::EnsureFileCreation(scratch("new.tsp")));
    EXPECT_FALSE(fs::exists(scratch("new.tsp")));
    EXPECT_FALSE(EEnvironment::EnsureFileCreation(scratch("missing/new.tsp")));
    writeFile(scratch("old.tsp"), "keep me");
    EXPECT_TRUE(EEnvironment::EnsureFileCreation(scratch("old.tsp")));
    std::ifstream kept(scratch("old.tsp"));
    std::string text;
    std::getline(kept, text);
    EXPECT_EQ(text, "keep me");
}

TEST_F(Environment, RemoveDirTakesTheWholeTreeAndNotesAMissingOne) {
    TraceCapture trace;
    ASSERT_TRUE(EEnvironment::EnsureDirectoryPath(scratch("tree/sub")));
    writeFile(scratch("tree/sub/file.qts"), "x");
    writeFile(scratch("tree/top.qts"), "y");
    EXPECT_TRUE(EEnvironment::RemoveDir(scratch("tree")));
    EXPECT_FALSE(fs::exists(scratch("tree")));
    EXPECT_TRUE(trace.Get().empty());
    EXPECT_TRUE(EEnvironment::RemoveDir(scratch("tree")));
    EXPECT_TRUE(trace.Contains("*** NOTE[EEnvironment::RemoveDir()]: Directory did not exist.\n"));
    writeFile(scratch("plain"), "data");
    EXPECT_FALSE(EEnvironment::RemoveDir(scratch("plain")));
    EXPECT_TRUE(fs::exists(scratch("plain")));
}
