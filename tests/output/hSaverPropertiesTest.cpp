#include "OutputProbes.h"

#include "foundation/ScratchDirectory.h"
#include "model/ScriptedUserInterface.h"
#include "model/TestProject.h"
#include "output/hSaverProperties.h"
#include "output/hSaverRenderingPage.h"
#include "output/isvrSaver.h"

#include <gtest/gtest.h>

namespace {

class SaverPages : public ::testing::Test {
protected:
    SaverPages() {
        source.ProjectLink(&project, false);
        saver.ProjectLink(&project, false);
        saver.LinkParent(&source);
        saver.SetStream(EImageOutputStream::Find("BMP Image stream"));
    }

    TestProject project;
    FrameSource source{"Source"};
    isvrSaver saver{"Saver"};
    ScriptedUserInterface ui;
    ScratchDirectory scratch{"pages"};
};

} // namespace

TEST_F(SaverPages, TheSizeFieldWantsTwoSidesOfAtLeastTen) {
    hSaverProperties page(saver, 0);
    const int marks = project.ChangeMarks;
    EXPECT_FALSE(page.CommitSize("320x240"));
    EXPECT_FALSE(page.CommitSize("9,240"));
    EXPECT_EQ(ui.Messages, (std::vector<std::string>{"This is not a valid size - format is WIDTH,HEIGHT.",
                                                     "Neither dimension should be smaller than 10."}));
    EXPECT_EQ(page.GetSizeText(), "720,576");
    EXPECT_TRUE(page.CommitSize("320,240"));
    EXPECT_EQ(saver.GetSize(), (EImageSize{320, 240}));
    EXPECT_EQ(project.ChangeMarks, marks + 1);
}

TEST_F(SaverPages, TheSourcesSizeIsShownAndCanBeTakenOver) {
    source.Size = {64, 48};
    hSaverProperties page(saver, 0);
    EXPECT_EQ(page.GetSourceSizeText(), " 64,48");
    EXPECT_TRUE(page.CopySourceSize());
    EXPECT_EQ(saver.GetSize(), (EImageSize{64, 48}));
    saver.UnlinkParent(&source);
    EXPECT_EQ(page.GetSourceSizeText(), " --");
    EXPECT_FALSE(page.CopySourceSize());
    EXPECT_EQ(ui.Messages, std::vector<std::string>{"Cannot detect parent's size !"});
}

TEST_F(SaverPages, NamesMustBeGivenAndFree) {
    hSaverProperties page(saver, 0);
    EXPECT_FALSE(page.CommitName(""));
    EXPECT_FALSE(page.CommitName("source"));
    EXPECT_EQ(ui.Messages, (std::vector<std::string>{"The name cannot be empty !",
                                                     "There is already an object with that name !"}));
    EXPECT_TRUE(page.CommitName("Final"));
    EXPECT_EQ(saver.GetName(), "Final");
}

TEST_F(SaverPages, TheOutputPageNeedsAStreamAndAWritableFile) {
    hSaverProperties page(saver, 0);
    page.Stream = nullptr;
    EXPECT_FALSE(page.LeaveOutputPage(true));
    EXPECT_TRUE(ui.Messages.empty());
    EXPECT_FALSE(page.LeaveOutputPage(false));
    EXPECT_EQ(page.GetBrowseFilter(), "");
    page.Stream = EImageOutputStream::Find("BMP Image stream");
    EXPECT_FALSE(page.LeaveOutputPage(false));
    EXPECT_EQ(ui.Messages,
              (std::vector<std::string>{"Please specify an output format !",
                                        "Please select an output format first !", "Please specify a file."}));
    page.FileName = scratch.File("missing/frame.tga");
    EXPECT_FALSE(page.LeaveOutputPage(true));
    EXPECT_EQ(saver.GetFileName(), "");
    page.FileName = scratch.File("frame.tga");
    EXPECT_TRUE(page.LeaveOutputPage(false));
    EXPECT_EQ(saver.GetFileName(), scratch.File("frame.bmp"));
    EXPECT_EQ(page.GetBrowseFilter(), "BMP Image stream files (*.bmp)|*.bmp|All files (*.*)|*.*|||");
}

TEST_F(SaverPages, TheStreamsSetupIsEditedFromTheTextAndGivesTextBack) {
    hSaverProperties page(saver, 0);
    page.SetupText = "SQ6|y|10|2";
    EXPECT_TRUE(page.EditSetup(nullptr));
    EXPECT_EQ(page.SetupText, "SQ6|y|10|2");
    page.Stream = &MemoryStream::TheMovie();
    EXPECT_FALSE(page.EditSetup(nullptr));
}

TEST(hSaverRenderingPage, RangeHintsTellTheFramesOrWhatIsWrong) {
    EXPECT_EQ(hSaverRenderingPage::GetRangeHint("0", "10", "3"), " 4 frame(s)");
    EXPECT_EQ(hSaverRenderingPage::GetRangeHint("0", "x", "1"), " - ??? -");
    EXPECT_EQ(hSaverRenderingPage::GetRangeHint("10", "5", "1"), " You want to end before you started ...");
    EXPECT_EQ(hSaverRenderingPage::GetRangeHint("0", "5", "0"), " ----");
}

TEST_F(SaverPages, TheRangeLineTellsFramesAndRunningTime) {
    hSaverRenderingPage page(saver);
    page.Setup.VideoStart = 0;
    page.Setup.VideoEnd = 8999;
    page.Setup.VideoFPS = 30000;
    page.Setup.VideoRes = 1001;
    EXPECT_EQ(page.GetRangeLine(), " Frames: 9000, Time: 00:05:00");
}

TEST_F(SaverPages, LeavingWithANamelessLogAsksToDropTheLog) {
    hSaverRenderingPage page(saver);
    page.Setup.LogFile.clear();
    page.Setup.VideoEnd = 20;
    ui.Answer = IDNO;
    EXPECT_FALSE(page.Leave());
    EXPECT_EQ(saver.GetSetup().VideoEnd, 250u);
    ui.Answer = IDYES;
    EXPECT_TRUE(page.Leave());
    EXPECT_FALSE(saver.GetSetup().LogKeep);
    EXPECT_EQ(saver.GetSetup().VideoEnd, 20u);
    page.Setup.VideoSteps = 0;
    EXPECT_FALSE(page.Leave());
    EXPECT_EQ(ui.Messages.back(), "The saver has not properly been configured.");
}
