#include "foundation/EPrefsDiskIO.h"
#include "foundation/EUserInterface.h"
#include "foundation/hMessageBox.h"
#include "foundation/iDataBase.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;

namespace {

class ScriptedInterface : public EUserInterface {
public:
    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Requests.push_back(request);
        return Answer;
    }
    EMessageAnswer Answer;
    std::vector<EMessageRequest> Requests;
};

hMessageBox rememberedBox(64001, 0);

class PrefsTest : public ::testing::Test {
protected:
    void SetUp() override {
        EUserInterface::Set(&ui);
        iDataBaseSection::ResetAll();
        path = (fs::temp_directory_path() / ("qvr_prefs_" + std::to_string(::getpid()) + ".tsp")).string();
    }
    void TearDown() override {
        EUserInterface::Set(nullptr);
        iDataBaseSection::ResetAll();
        for (const char* suffix : {"", ".bak", ".001.bak", ".002.bak"})
            fs::remove(path + suffix);
    }
    ScriptedInterface ui;
    std::string path;
};

} // namespace

TEST_F(PrefsTest, SettingsAndMessageMemorySurviveASaveAndLoad) {
    EPrefsDiskIO::SetAutoSave("mine.tsp", 3);
    EPrefsDiskIO::SetBackupCnt(5);
    rememberedBox.Always = true;
    iDataBase db;
    ASSERT_TRUE(db.Save(path, DBMaskGlobalPrefs, 0, nullptr));
    iDataBaseSection::ResetAll();
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), EPrefsDiskIO::DefaultBackupCnt);
    EXPECT_FALSE(rememberedBox.Always);
    ASSERT_TRUE(db.Load(path, DBMaskGlobalPrefs, 0, nullptr));
    std::string file;
    long interval = 0;
    EXPECT_TRUE(EPrefsDiskIO::GetAutoSave(file, interval));
    EXPECT_EQ(file, "mine.tsp");
    EXPECT_EQ(interval, 3);
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), 5);
    EXPECT_TRUE(rememberedBox.Always);
    EXPECT_NE(db.Find("Preferences")->Find("Messages")->Find("ID#64001"), nullptr);
}

TEST_F(PrefsTest, BadValuesKeepTheDefaultAndAreReported) {
    std::ofstream(path) << "   qvrTessarine$_database = V1.10\n {\n   Preferences =\n    {\n"
                           "      Disk$_I/O =\n       {\n         BackupCnt := many\n"
                           "         AutoSaveIntv := -4\n       } <x>\n    } <x>\n } <x>\n";
    hReportRoot root("Loading");
    iDataBase db;
    ASSERT_TRUE(db.Load(path, DBMaskGlobalPrefs, 0, &root));
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), EPrefsDiskIO::DefaultBackupCnt);
    ASSERT_EQ(root.GetCount(), 2);
    EXPECT_EQ(root.GetEntries()[0].Path, "Loading/Database/Preferences/Disk I/O");
}

TEST_F(PrefsTest, AReaderThatCannotGetTheLockFallsBackToTheDefault) {
    EPrefsDiskIO::SetBackupCnt(7);
    std::atomic<bool> held{false}, release{false};
    std::thread holder([&] {
        EPrefsSection::Lock lock = EPrefsDiskIO::Get().TryLock();
        held = true;
        while (!release)
            std::this_thread::yield();
    });
    while (!held)
        std::this_thread::yield();
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), EPrefsDiskIO::DefaultBackupCnt);
    release = true;
    holder.join();
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), 7);
}

TEST_F(PrefsTest, BoxWithMemoryOffersTheCheckBoxAndLaterAnswersByItself) {
    ui.Answer = {IDNO, true};
    EXPECT_EQ(rememberedBox.Message("Go on?", hMessageBox::YesNo | hMessageBox::DefaultSecond, "Title"),
              IDNO);
    ASSERT_EQ(ui.Requests.size(), 1u);
    EXPECT_EQ(ui.Requests[0].AlwaysText, "Always answer \"No\".");
    EXPECT_TRUE(rememberedBox.Always);
    EXPECT_EQ(rememberedBox.Message("Go on?", hMessageBox::YesNo | hMessageBox::DefaultSecond, "Title"),
              IDNO);
    EXPECT_EQ(rememberedBox.Message("Go on?", hMessageBox::YesNo, "Title"), IDYES)
        << "the call's own default";
    EXPECT_EQ(ui.Requests.size(), 1u);
    hMessageBox::ClearAllAlways();
    EXPECT_FALSE(rememberedBox.Always);
}

TEST_F(PrefsTest, OneOffBoxesHaveNoCheckBoxAndBadKindsBecomeOK) {
    ui.Answer = {IDOK, true};
    hMessageBox::Show("Hello", 9, "Title");
    ASSERT_EQ(ui.Requests.size(), 1u);
    EXPECT_TRUE(ui.Requests[0].AlwaysText.empty());
    EXPECT_EQ(ui.Requests[0].Buttons, std::vector<int>{IDOK});
    EXPECT_EQ(ui.Requests[0].Labels, std::vector<std::string>{"OK"});
}
