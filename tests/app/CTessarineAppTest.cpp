#include "foundation/ScratchDirectory.h"

#include "app/CCrashCatcher.h"
#include "app/CTessarineApp.h"
#include "app/EInitializer.h"
#include "foundation/EEnvironment.h"
#include "foundation/EPrefsDiskIO.h"
#include "foundation/EUserInterface.h"
#include "model/iProject.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

class RecordingInterface : public EUserInterface {
public:
    EMessageAnswer AskMessage(const EMessageRequest& request) override {
        Titles.push_back(request.Title);
        return {request.Buttons[request.DefaultIndex], false};
    }
    void SetStatusText(const std::string& text) override { Status.push_back(text); }
    void ShowReport(const std::string& title, int, const std::vector<hReportEntry>&) override {
        Reports.push_back(title);
    }
    std::vector<std::string> Titles, Status, Reports;
};

// Each test runs a whole start and end of the system in a program directory of its own.
class ApplicationTest : public ::testing::Test {
protected:
    void SetUp() override {
        previousHome = std::getenv("QVR_HOME") ? std::getenv("QVR_HOME") : "";
        setenv("QVR_HOME", home.Path.c_str(), 1);
        EUserInterface::Set(&ui);
    }
    void TearDown() override {
        EUserInterface::Set(nullptr);
        setenv("QVR_HOME", previousHome.c_str(), 1);
    }
    bool start(CTessarineApp& app, const std::vector<std::string>& arguments = {}) {
        EInitializerStatus status;
        return app.InitInstance(CCommandLineInfo::Parse(arguments), status);
    }

    ScratchDirectory home{"app"};
    std::string previousHome;
    RecordingInterface ui;
};

} // namespace

TEST_F(ApplicationTest, PreferencesAreWrittenAtExitOnlyWhenAskedTo) {
    {
        CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
        ASSERT_TRUE(start(app));
        EXPECT_EQ(EEnvironment::Get().CurrentDir, home.Path.string());
        EPrefsDiskIO::SetBackupCnt(9);
        app.ExitInstance();
    }
    EXPECT_FALSE(fs::exists(CTessarineApp::GlobalPreferencesPath()));
    {
        CTessarineApp app(CTessarineApp::Preferences::ReadAndWrite);
        ASSERT_TRUE(start(app));
        EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), EPrefsDiskIO::DefaultBackupCnt) << "nothing was stored";
        EPrefsDiskIO::SetBackupCnt(9);
        app.ExitInstance();
    }
    EXPECT_TRUE(fs::exists(CTessarineApp::GlobalPreferencesPath()));
    EXPECT_TRUE(fs::exists(CTessarineApp::UserPreferencesPath()));
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    ASSERT_TRUE(start(app));
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), 9);
    app.ExitInstance();
    EXPECT_TRUE(ui.Reports.empty());
}

TEST_F(ApplicationTest, AnEmbeddedStartReadsNoPreferences) {
    {
        CTessarineApp app(CTessarineApp::Preferences::ReadAndWrite);
        ASSERT_TRUE(start(app));
        EPrefsDiskIO::SetBackupCnt(4);
        app.ExitInstance();
    }
    EPrefsDiskIO::SetBackupCnt(EPrefsDiskIO::DefaultBackupCnt);
    CTessarineApp app(CTessarineApp::Preferences::ReadAndWrite);
    ASSERT_TRUE(start(app, {"-Embedding"}));
    EXPECT_EQ(EPrefsDiskIO::GetBackupCnt(), EPrefsDiskIO::DefaultBackupCnt);
    app.ExitInstance();
}

TEST_F(ApplicationTest, AutosaveWritesOnlyChangesAndLeavesTheDocumentAsItWas) {
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    ASSERT_TRUE(start(app));
    CTessarineDoc& document = app.GetDocument();
    const std::string target = home.File("auto.tsp");
    document.AutoSave(target);
    EXPECT_FALSE(fs::exists(target));
    EXPECT_EQ(ui.Status.back(), "Autosaving not performed because there are no changes to the document.");

    iProject::GetStandard().SetFrameLength(321, true);
    ASSERT_TRUE(document.IsModified());
    document.AutoSave(target);
    EXPECT_TRUE(fs::exists(target));
    EXPECT_TRUE(document.IsModified());
    EXPECT_TRUE(document.GetPathName().empty());
    EXPECT_EQ(ui.Status.back(), "Autosave finished.");

    ASSERT_TRUE(document.OnOpenDocument(target));
    EXPECT_EQ(iProject::GetStandard().GetFrameLength(), 321);
    EXPECT_FALSE(document.IsModified());
    app.ExitInstance();
}

TEST_F(ApplicationTest, TheCrashSaveWritesTheProjectBesideTheProgram) {
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    ASSERT_TRUE(start(app));
    iProject::GetStandard().SetFrameLength(77, false);
    bool windowHidden = false;
    CCrashCatcher::SetBeforeQuestion([&] { windowHidden = ui.Titles.empty(); });
    int result = app.Run([]() -> int { throw std::runtime_error("boom"); });
    CCrashCatcher::SetBeforeQuestion(nullptr);
    EXPECT_EQ(result, 1);
    EXPECT_TRUE(windowHidden) << "the front end hides its window before the question";
    EXPECT_EQ(CCrashCatcher::ProposedPath(), home.File("---crashed-project---.tsp"));
    EXPECT_NE(ScratchDirectory::ReadAll(CCrashCatcher::ProposedPath()).find("FrameLength := 77"),
              std::string::npos);
    ASSERT_EQ(ui.Titles.size(), 2u) << "the question and the confirmation";
    EXPECT_EQ(ui.Titles[0], "qvrCCrashCatcher V2.01 nevora works");
    app.ExitInstance();
}

TEST_F(ApplicationTest, AFileOnTheCommandLineIsOpened) {
    const std::string project = home.File("given.tsp");
    {
        CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
        ASSERT_TRUE(start(app));
        iProject::GetStandard().SetFrameLength(123, false);
        ASSERT_TRUE(app.GetDocument().OnSaveDocument(project));
        app.ExitInstance();
    }
    CTessarineApp app(CTessarineApp::Preferences::ReadOnly);
    ASSERT_TRUE(start(app, {project}));
    EXPECT_EQ(iProject::GetStandard().GetFrameLength(), 123);
    EXPECT_EQ(app.GetDocument().GetPathName(), project);
    app.ExitInstance();
}
