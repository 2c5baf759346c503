#include "objects/hSequenceProperties.h"

#include "model/ScriptedUserInterface.h"
#include "objects/isrcSequence.h"

#include <gtest/gtest.h>

namespace {

class SequencePage : public ::testing::Test {
protected:
    void SetUp() override {
        sequence.SetFile(EFileGroupSetup("/shots", EFileGroup("shot_", ".qts", 4, 10, 19)), false);
    }

    isrcSequence sequence{"Footage.1"};
    hSequenceProperties page{sequence};
    ScriptedUserInterface user;
};

} // namespace

TEST_F(SequencePage, RangeNeedsACommaAndOutsideTheAvailableNumbersIsIgnoredSilently) {
    EXPECT_TRUE(page.CommitRange(" 12 , 14"));
    EXPECT_EQ(page.GetFilesText(), "shot_0012.qts - shot_0014.qts");
    EXPECT_FALSE(page.CommitRange("12;14"));
    EXPECT_EQ(user.Messages, (std::vector<std::string>{
                                 "Invalid range; first and last image must be divided by a comma..."}));
    EXPECT_FALSE(page.CommitRange("5,14"));
    EXPECT_EQ(user.Messages.size(), 1u);
    page.UseWholeRange();
    EXPECT_EQ(sequence.GetImageCount(), 10);
}

TEST_F(SequencePage, FramesAreNumbersAndTheEndFrameMovesTheStart) {
    EXPECT_FALSE(page.CommitStartFrame("soon"));
    EXPECT_EQ(user.Messages, (std::vector<std::string>{"Invalid value; you must enter a number."}));
    EXPECT_TRUE(page.CommitStartFrame("-3"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 0);
    ASSERT_TRUE(page.CommitRange("12,14"));
    ASSERT_TRUE(page.CommitFramesPerImage("2"));
    EXPECT_TRUE(page.CommitEndFrame("20"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 16);
    EXPECT_TRUE(page.CommitEndFrame("1"));
    EXPECT_EQ(sequence.GetStdStartFrame(), 0);
}

TEST_F(SequencePage, TextsTellFilesSizeAndKindOfDuration) {
    EXPECT_EQ(page.GetSizeText(), "Size: unknown");
    EXPECT_EQ(page.GetFramesLabel(), "F&rames/Image:");
    EFileGroupSetup still = EFileGroupSetup::SingleFile("/shots", "still.qts");
    still.ImageSize = {720, 576};
    sequence.SetFile(still, false);
    EXPECT_EQ(page.GetSizeText(), "Size: 720x576");
    EXPECT_EQ(page.GetFramesLabel(), "Du&ration:");
    isrcSequence empty("Empty");
    EXPECT_EQ(hSequenceProperties(empty).GetFilesText(), "No source files");
}
