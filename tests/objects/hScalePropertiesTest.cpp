#include "../model/ScriptedUserInterface.h"
#include "ProbeSource.h"

#include "model/TestProject.h"
#include "objects/hScaleProperties.h"
#include "objects/imodScale.h"

#include <gtest/gtest.h>

namespace {

// A scaler that took over its 720 by 576 parent's size, edited at frame 12.
class ScalePage : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(scale.ProjectLink(&project, false));
        ASSERT_TRUE(other.ProjectLink(&project, false));
        ASSERT_TRUE(probe.ProjectLink(&project, false));
        probe.Size = {720, 576};
        scale.LinkParent(&probe);
    }
    double width() { return scale.GetWidthValue().GetValue(12); }
    double height() { return scale.GetHeightValue().GetValue(12); }

    ScriptedUserInterface user;
    TestProject project;
    ProbeSource probe{"Probe"};
    imodScale scale{"Scaler.1"};
    imodScale other{"Scaler.2"};
    hScaleProperties page{scale, 12};
};

} // namespace

TEST_F(ScalePage, BadEntriesAreRefusedWithTheirComplaintAndChangeNothing) {
    EXPECT_FALSE(page.CommitName(""));
    EXPECT_FALSE(page.CommitName("scaler.2"));
    EXPECT_FALSE(page.CommitWidth("  "));
    EXPECT_FALSE(page.CommitWidth("9"));
    EXPECT_FALSE(page.CommitHeight("12.5"));
    EXPECT_FALSE(page.CommitFactorX(""));
    EXPECT_FALSE(page.CommitFactorY("half"));
    probe.FailSize = true;
    EXPECT_FALSE(page.CommitFactorX("2"));
    scale.UnlinkParent(&probe);
    EXPECT_FALSE(page.CommitFactorY("2"));
    EXPECT_EQ(user.Messages,
              (std::vector<std::string>{
                  "The name cannot be empty !", "There is already an object with that name !",
                  "Entering nothing won't help you.", "Please enter a number greater or equal to 10.",
                  "Please enter a number greater or equal to 10.", "Entering nothing won't help you.",
                  "Please enter a number !", "Source does not have a valid size.",
                  "Please assign a parent object before using the factor property !"}));
    EXPECT_EQ(scale.GetName(), "Scaler.1");
    EXPECT_EQ(scale.GetTargetSize(12), (EImageSize{720, 576}));
    EXPECT_EQ(scale.GetWidthValue().GetKeyCount(), 1);
    EXPECT_EQ(page.GetParentText(), " <no valid source>");
    EXPECT_EQ(page.GetFactorXText(), "");
}

TEST_F(ScalePage, GoodEntriesSetKeysAtThePagesFrameAndShowTheFactors) {
    EXPECT_EQ(page.GetParentText(), " Probe: 720x576");
    EXPECT_EQ(page.GetFactorXText(), "1.00");
    EXPECT_TRUE(page.CommitName("Half"));
    EXPECT_TRUE(page.CommitWidth(" 360"));
    EXPECT_EQ(scale.GetWidthValue().GetKey(1)->frame, 12);
    EXPECT_EQ(height(), 576.0) << "without the lock the other side stays";
    EXPECT_EQ(page.GetWidthText(), "360");
    EXPECT_EQ(page.GetFactorXText(), "0.50");
    EXPECT_TRUE(page.CommitFactorY("0.25"));
    EXPECT_EQ(page.GetHeightText(), "144");
    EXPECT_EQ(page.GetFactorYText(), "0.25");
    EXPECT_TRUE(user.Messages.empty());
    EXPECT_EQ(project.FindElement("half"), &scale);
}

TEST_F(ScalePage, LockedAspectCouplesTheSidesTruncatingAndRaisingToTen) {
    scale.SetLockAspect(true);
    ASSERT_TRUE(page.CommitWidth("360"));
    EXPECT_EQ(height(), 288.0);
    ASSERT_TRUE(page.CommitHeight("100"));
    EXPECT_EQ(width(), 125.0) << "360 * 100 / 288";
    ASSERT_TRUE(page.CommitWidth("10"));
    EXPECT_EQ(height(), 10.0) << "100 * 10 / 125 = 8 is raised to 10";

    scale.SetLockAspect(false);
    ASSERT_TRUE(page.CommitWidth("720"));
    ASSERT_TRUE(page.CommitHeight("576"));
    scale.SetLockAspect(true);
    ASSERT_TRUE(page.CommitFactorX("0.333"));
    EXPECT_EQ(width(), 239.0) << "720 * 0.333 = 239.76, truncated";
    EXPECT_EQ(height(), 191.0) << "the other factor follows: 576 * 0.333 = 191.808";
    ASSERT_TRUE(page.CommitFactorY("-3"));
    EXPECT_EQ(height(), 10.0) << "a factor is at least 0.00001, a side at least 10";
    EXPECT_EQ(width(), 10.0);
    EXPECT_TRUE(user.Messages.empty());
}
