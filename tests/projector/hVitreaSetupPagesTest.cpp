#include "projector/DefinitionFiles.h"
#include "projector/QuickSetupProfile.h"

#include "foundation/qvrString.h"
#include "model/ScriptedUserInterface.h"
#include "projector/hVitreaSetupPages.h"

#include <gtest/gtest.h>

namespace {

using Kind = hVitreaSetupPages::Field::Kind;

// A complete configuration: 720 by 576, the same quadrilateral for every
// projector, windows in a row, BMP files "pNN.bmp".
LConfiguration sampleConfiguration() {
    LConfiguration configuration;
    configuration.Calibration.ImageWidth = 720;
    configuration.Calibration.ImageHeight = 576;
    configuration.Calibration.Projectors.fill(
        {CPoint{10, 20}, CPoint{700, 25}, CPoint{690, 560}, CPoint{15, 555}});
    configuration.OutputFiles.StreamType = "BMP Image stream";
    for (std::size_t i = 0; i < LVitrea::ProjectorCount; ++i) {
        const long left = static_cast<long>(i) * 10;
        configuration.Metrics.Windows[i] = {left, 0, left + 10, 8};
        configuration.OutputFiles.ProjectorFiles[i] = qvrFormat("p%02ld.bmp", static_cast<long>(i + 1));
    }
    return configuration;
}

bool focusIs(const hVitreaSetupPages& pages, Kind kind, std::size_t projector = 0, std::size_t corner = 0) {
    const hVitreaSetupPages::Field& focus = pages.GetFocus();
    return focus.kind == kind && focus.projector == projector && focus.corner == corner;
}

class SetupPages : public ::testing::Test {
protected:
    QuickSetupProfile profile;
    ScriptedUserInterface ui;
    LConfiguration configuration = sampleConfiguration();
    hVitreaSetupPages pages{configuration};
};

} // namespace

TEST_F(SetupPages, CalibrationTextsAreCheckedInTheirOrder) {
    EXPECT_EQ(pages.ImageSizeText, "720, 576");
    EXPECT_EQ(pages.CornerTexts[4][2], "690,560");
    pages.ImageSizeText = "720x576";
    EXPECT_FALSE(pages.LeaveCalibrationPage());
    EXPECT_TRUE(focusIs(pages, Kind::ImageSize));
    pages.ImageSizeText = " 800 , 600 ";
    pages.CornerTexts[6][3] = "15;555";
    EXPECT_FALSE(pages.LeaveCalibrationPage());
    EXPECT_TRUE(focusIs(pages, Kind::Corner, 6, 3));
    pages.CornerTexts[6][3] = "15,601";
    EXPECT_FALSE(pages.LeaveCalibrationPage());
    EXPECT_TRUE(focusIs(pages, Kind::Corner, 6, 0));
    ASSERT_EQ(ui.Messages.size(), 3u);
    EXPECT_EQ(ui.Messages[0].rfind("The test image size is malformatted.", 0), 0u);
    EXPECT_EQ(ui.Messages[1].rfind("Error verifying projector #7:\n\nA border point is malformatted.", 0),
              0u);
    EXPECT_EQ(ui.Messages[2], LCalibration::InvalidProjectorText(6));
    EXPECT_EQ(configuration.Calibration.ImageWidth, 720u) << "nothing is taken from a page that is refused";

    pages.CornerTexts[6][3] = "15,600";
    ASSERT_TRUE(pages.LeaveCalibrationPage());
    EXPECT_EQ(configuration.Calibration.ImageHeight, 600u);
    EXPECT_EQ(configuration.Calibration.Projectors[6][3], (CPoint{15, 600}));
}

TEST_F(SetupPages, WindowsNeedAPositionNotBelowZeroAndASize) {
    EXPECT_EQ(pages.PositionTexts[3], "30,0");
    EXPECT_EQ(pages.SizeTexts[3], "10,8");
    EXPECT_EQ(pages.ResolutionText, "1, 1");
    pages.PositionTexts[3] = "-1,0";
    EXPECT_FALSE(pages.LeaveMetricsPage());
    EXPECT_TRUE(focusIs(pages, Kind::Position, 3));
    pages.PositionTexts[3] = "30";
    EXPECT_FALSE(pages.LeaveMetricsPage());
    EXPECT_TRUE(focusIs(pages, Kind::Position, 3));
    pages.PositionTexts[3] = "30,0";
    pages.SizeTexts[5] = "0,8";
    EXPECT_FALSE(pages.LeaveMetricsPage());
    EXPECT_TRUE(focusIs(pages, Kind::Size, 5));
    EXPECT_EQ(ui.Messages,
              (std::vector<std::string>{LMetrics::NegativeWindowText(3), LMetrics::EmptyWindowText(3),
                                        LMetrics::EmptyWindowText(5)}));
}

TEST_F(SetupPages, TheResolutionIsReadAsTwoNumbersOfAtLeastOne) {
    pages.ResolutionText = "2.5";
    EXPECT_FALSE(pages.LeaveMetricsPage());
    EXPECT_TRUE(focusIs(pages, Kind::Resolution));
    pages.ResolutionText = "2.5, 0.5";
    EXPECT_FALSE(pages.LeaveMetricsPage());
    ASSERT_EQ(ui.Messages.size(), 2u);
    EXPECT_EQ(ui.Messages[0].rfind("The pixel per centimeter values are malformatted.", 0), 0u);
    EXPECT_EQ(ui.Messages[1], "The resolution must be at least 1 pixel per centimeter\nin both directions.");
    pages.ResolutionText = "2.5, 2";
    pages.SizeTexts[0] = "20,8";
    ASSERT_TRUE(pages.LeaveMetricsPage());
    EXPECT_EQ(configuration.Metrics.Windows[0], (CRect{0, 0, 20, 8}));
    EXPECT_EQ(configuration.Metrics.PixelWindows[1], (CRect{25, 0, 50, 16})) << "derived on leaving";
}

TEST_F(SetupPages, OutputsNeedAKnownFormatAndEveryFile) {
    pages.Outputs.StreamType = "Laser stream";
    EXPECT_FALSE(pages.LeaveOutputPage());
    EXPECT_TRUE(focusIs(pages, Kind::Format));
    pages.Outputs.StreamType = "BMP Image stream";
    pages.Outputs.ProjectorFiles[11].clear();
    EXPECT_FALSE(pages.LeaveOutputPage());
    EXPECT_TRUE(focusIs(pages, Kind::File, 11));
    EXPECT_EQ(ui.Messages, (std::vector<std::string>{LOutputFiles::UnknownStreamText("Laser stream"),
                                                     LOutputFiles::EmptyFileText(11)}));
    pages.Outputs.ProjectorFiles[11] = "twelve.tga";
    ASSERT_TRUE(pages.LeaveOutputPage());
    EXPECT_EQ(configuration.OutputFiles.ProjectorFiles[11], "twelve.bmp");
}

TEST_F(SetupPages, AlikeOutputNamesAreAcceptedOnceAskedAndRemembered) {
    pages.Outputs.ProjectorFiles[4] = "P02.bmp";
    pages.Outputs.ProjectorFiles[9] = "p03.bmp";
    ui.Answer = IDNO;
    EXPECT_FALSE(pages.LeaveOutputPage());
    EXPECT_TRUE(focusIs(pages, Kind::File, 4));
    ui.Answer = IDYES;
    EXPECT_TRUE(pages.LeaveOutputPage());
    EXPECT_TRUE(pages.LeaveOutputPage());
    EXPECT_EQ(ui.Messages,
              std::vector<std::string>(2, "It seems that the projectors 2 and 5 should generate\nthe "
                                          "same image stream.\n\nAre you sure that you want to accept "
                                          "this ?"));
    EXPECT_TRUE(hVitreaSetupPages::GetAcceptSimilarNames());
}

TEST_F(SetupPages, TestedOutputNamesMustBeWritable) {
    ScratchDirectory scratch{"pages"};
    const std::string blocker = qvrTest::WriteTextFile(scratch, "blocker", "a file, not a directory");
    for (std::size_t i = 0; i < LVitrea::ProjectorCount; ++i)
        pages.Outputs.ProjectorPaths[i] = (scratch.Path / "out").string();
    pages.Outputs.ProjectorPaths[13] = blocker + "/sub";
    pages.TestFiles = true;
    EXPECT_FALSE(pages.LeaveOutputPage());
    EXPECT_TRUE(focusIs(pages, Kind::File, 13));
    ASSERT_EQ(ui.Messages.size(), 1u);
    EXPECT_EQ(ui.Messages[0],
              "Error verifying output FileName #14:\n\nThe filename \"" + blocker +
                  "/sub/p14.bmp\" is not valid for\nthe output format \"BMP Image stream\".\n\nCheck "
                  "the documentation for filename conventions.");
    pages.Outputs.ProjectorPaths[13] = (scratch.Path / "out").string();
    EXPECT_TRUE(pages.LeaveOutputPage());
    EXPECT_TRUE(std::filesystem::is_directory(scratch.Path / "out")) << "the directories are made";
    EXPECT_FALSE(std::filesystem::exists(scratch.Path / "out" / "p01.bmp")) << "and the test files removed";
}
