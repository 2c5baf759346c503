#include "foundation/iDataBase.h"
#include "foundation/EPrefsDiskIO.h"
#include "foundation/EUserInterface.h"
#include "foundation/iDataBaseSection.h"
#include "foundation/qvrCTextFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

// A section of the project store that keeps one text, as a project block would.
class NoteSection : public iDataBaseSection {
public:
    NoteSection() : iDataBaseSection("TestNotes", DBMaskProject) {}
    void Load(qvrCTreeData& block, hReport&) override {
        const std::string* text = block.GetText("Text");
        Text = text ? *text : "";
    }
    void Save(qvrCTreeData& block, hReport&) override { block.SetText("Text", Text); }
    void Reset() override { Text.clear(); }
    std::string Text;
};

class CoreParent : public iDataBaseParentSection {
public:
    CoreParent() : iDataBaseParentSection("TestParent", DBMaskProject) {}
    bool HasCore() const override { return true; }
    void Load(qvrCTreeData& block, hReport&) override { CoreLoaded = block.Find("Flag") != nullptr; }
    void Save(qvrCTreeData& block, hReport&) override { block.SetBool("Flag", true); }
    bool CoreLoaded = false;
};

NoteSection notes;
CoreParent coreParent;

class SilentInterface : public EUserInterface {
public:
    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Asked.push_back(request.Text);
        return {Answer, false};
    }
    void ShowReport(const std::string& title, int, const std::vector<hReportEntry>& entries) override {
        Shown.push_back(title);
        ShownEntries = entries;
    }
    int Answer = IDYES;
    std::vector<std::string> Asked;
    std::vector<std::string> Shown;
    std::vector<hReportEntry> ShownEntries;
};

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

void writeFile(const fs::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

class DataBaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("qvr_db_" + std::to_string(::getpid()) + "_" +
                                           ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        EUserInterface::Set(&ui);
        EPrefsDiskIO::SetBackupCnt(2);
    }
    void TearDown() override {
        EUserInterface::Set(nullptr);
        fs::remove_all(dir);
    }
    bool save(const std::string& text, hReport* report = nullptr) {
        notes.Text = text;
        iDataBase db;
        return db.Save(file(), DBMaskProject, 0, report);
    }
    std::string file() const { return (dir / "project.tsp").string(); }

    fs::path dir;
    SilentInterface ui;
};

} // namespace

TEST_F(DataBaseTest, SavedFileHasHeaderRootAndTrailerAndLoadsBack) {
    ASSERT_TRUE(save("first words"));
    std::string text = readFile(file());
    EXPECT_EQ(text.rfind(iDataBase::Header, 0), 0u);
    EXPECT_NE(text.find("   qvrTessarine$_database = V1.10\n"), std::string::npos);
    EXPECT_EQ(text.substr(text.size() - 9), iDataBase::Trailer);
    notes.Text.clear();
    iDataBase db;
    EXPECT_TRUE(db.Load(file(), DBMaskProject, 0, nullptr));
    EXPECT_EQ(notes.Text, "first words");
    EXPECT_TRUE(coreParent.CoreLoaded);
    EXPECT_TRUE(ui.Shown.empty());
}

TEST_F(DataBaseTest, BackupsRotateFromNewestToOldest) {
    for (const char* version : {"one", "two", "three", "four"})
        ASSERT_TRUE(save(version));
    auto contains = [](const fs::path& p, const char* word) {
        return readFile(p).find(word) != std::string::npos;
    };
    EXPECT_TRUE(contains(file(), "four"));
    EXPECT_TRUE(contains(file() + ".bak", "three"));
    EXPECT_TRUE(contains(file() + ".001.bak", "two"));
    EXPECT_TRUE(contains(file() + ".002.bak", "one"));
    EXPECT_FALSE(fs::exists(file() + ".003.bak"));
    EXPECT_FALSE(fs::exists(file() + ".tmp"));
}

TEST_F(DataBaseTest, NoBackupCountKeepsOnlyTheBakFile) {
    EPrefsDiskIO::SetBackupCnt(0);
    for (const char* version : {"one", "two", "three"})
        ASSERT_TRUE(save(version));
    EXPECT_NE(readFile(file() + ".bak").find("two"), std::string::npos);
    EXPECT_FALSE(fs::exists(file() + ".001.bak"));
}

TEST_F(DataBaseTest, FailedSaveLeavesThePreviousFileAndReportsThePlatformText) {
    ASSERT_TRUE(save("kept"));
    std::string before = readFile(file());
    fs::create_directory(file() + ".tmp"); // the temporary file can't be created
    hReportRoot root("Saving");
    EXPECT_FALSE(save("lost", &root));
    EXPECT_EQ(readFile(file()), before);
    ASSERT_EQ(root.GetWorstLevel(), hReportFailure);
    EXPECT_NE(root.GetEntries().back().Text.find("Is a directory"), std::string::npos);
    EXPECT_EQ(root.GetEntries().back().Path, "Saving/Database");
}

TEST_F(DataBaseTest, VersionsAreCheckedAndUnknownOnesAskOnlyWithoutAnOuterReport) {
    writeFile(
        file(),
        "   qvrTessarine$_database = V1.00\n {\n   TestNotes =\n    {\n    Text := old\n    } <x>\n } <x>\n");
    iDataBase db;
    EXPECT_TRUE(db.Load(file(), DBMaskProject, 0, nullptr));
    EXPECT_TRUE(db.IsOldFile());
    EXPECT_EQ(notes.Text, "old");
    EXPECT_TRUE(ui.Asked.empty());

    writeFile(
        file(),
        "   qvrTessarine$_database = V9.99\n {\n   TestNotes =\n    {\n    Text := new\n    } <x>\n } <x>\n");
    hReportRoot root("Loading");
    EXPECT_FALSE(db.Load(file(), DBMaskProject, 0, &root));
    EXPECT_TRUE(ui.Asked.empty());
    ui.Answer = IDNO;
    EXPECT_FALSE(db.Load(file(), DBMaskProject, 0, nullptr));
    ui.Answer = IDYES;
    EXPECT_TRUE(db.Load(file(), DBMaskProject, 0, nullptr));
    EXPECT_EQ(ui.Asked.size(), 2u);
    EXPECT_EQ(notes.Text, "new");
}

TEST_F(DataBaseTest, DamagedFileLoadsWhatItCanAndReportsEveryProblemWithItsLine) {
    writeFile(file(), "   qvrTessarine$_database = V1.10\n {\n"              // lines 1-2
                      "   Stranger =\n    {\n    } <x>\n"                    // lines 3-5
                      "   TestParent =\n    {\n    Oddity := 1\n    } <x>\n" // lines 6-9
                      "   TestNotes =\n    {\n    Text := survived\n"        // lines 10-12
                      "     = nameless\n    } <x>\n");                       // lines 13-14, root never closed
    hReportRoot root("Loading");
    iDataBase db;
    EXPECT_TRUE(db.Load(file(), DBMaskProject, 0, &root));
    EXPECT_EQ(notes.Text, "survived");
    std::vector<std::string> texts;
    for (const hReportEntry& e : root.GetEntries())
        texts.push_back(e.Text);
    auto has = [&](const std::string& text) {
        return std::find(texts.begin(), texts.end(), text) != texts.end();
    };
    EXPECT_TRUE(has("Line  13: Invalid name for new object."));
    EXPECT_TRUE(has("Line  14: Unexpected end of file (block not closed)."));
    EXPECT_TRUE(has("Unknown top-level block \"Stranger\" found (will be ignored)."));
    EXPECT_TRUE(has("Cannot find required block \"Core\" !"));
}

TEST_F(DataBaseTest, EmptyOrMissingFilesFailWithAText) {
    writeFile(file(), ";\n; nothing here\n");
    hReportRoot root("Loading");
    iDataBase db;
    EXPECT_FALSE(db.Load(file(), DBMaskProject, 0, &root));
    EXPECT_EQ(root.GetEntries().back().Text, "File contains no data.");
    EXPECT_FALSE(db.Load((dir / "missing.tsp").string(), DBMaskProject, 0, &root));
    EXPECT_NE(root.GetEntries().back().Text.find("No such file or directory"), std::string::npos);
}
