#include "objects/hRotateProperties.h"
#include "../model/ScriptedUserInterface.h"
#include "model/TestProject.h"
#include "objects/imodRotate.h"

#include <gtest/gtest.h>

namespace {

struct RotatePage : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(rotate.ProjectLink(&project, false));
        ASSERT_TRUE(other.ProjectLink(&project, false));
        rotate.GetAngleValue().ClearConstantWanted(false);
    }
    ScriptedUserInterface dialogs;
    TestProject project;
    imodRotate rotate{"Rotate.1"};
    imodRotate other{"Rotate.2"};
    hRotateProperties page{rotate, 12};
};

} // namespace

TEST_F(RotatePage, BadEntriesAreRefusedWithTheirComplaintAndChangeNothing) {
    EXPECT_FALSE(page.CommitName(""));
    EXPECT_FALSE(page.CommitName("ROTATE.2"));
    EXPECT_FALSE(page.CommitAngle("  "));
    EXPECT_FALSE(page.CommitAngle("12.5"));
    EXPECT_FALSE(page.CommitAngle("ten"));
    EXPECT_EQ(dialogs.Messages,
              (std::vector<std::string>{
                  "The name cannot be empty !", "There is already an object with that name !",
                  "Entering nothing won't help you.", "Please enter a number !", "Please enter a number !"}));
    EXPECT_EQ(rotate.GetName(), "Rotate.1");
    EXPECT_EQ(rotate.GetAngleValue().GetKeyCount(), 1);
}

TEST_F(RotatePage, AngleIsKeyedAtThePagesFrameAndShownFolded) {
    EXPECT_TRUE(page.CommitName("Tilt"));
    EXPECT_TRUE(page.CommitAngle(" -30"));
    EXPECT_TRUE(dialogs.Messages.empty());
    EXPECT_EQ(rotate.GetName(), "Tilt");
    ASSERT_EQ(rotate.GetAngleValue().GetKeyCount(), 2);
    EXPECT_EQ(rotate.GetAngleValue().GetKey(1)->frame, 12);
    EXPECT_EQ(page.GetAngleText(), "330");
    EXPECT_EQ(hRotateProperties(rotate, 6).GetAngleText(), "345");
}
