#include "model/hModifyAnimation.h"

#include "ScriptedUserInterface.h"
#include "model/iActiveValue.h"

#include <gtest/gtest.h>

namespace {

class ModifyAnimation : public ::testing::Test {
protected:
    // Keys at 10, 20 and 30.
    static iActiveValue& withThreeKeys(iActiveValue& target) {
        for (long frame : {10, 20, 30})
            target.SetKey(frame, 1.0, true, false, false);
        target.DeleteKey(0, false);
        return target;
    }

    iActiveValue value{"Width", 0.0, false};
    ScriptedUserInterface user;
    hModifyAnimation dialog{withThreeKeys(value)};
};

} // namespace

TEST_F(ModifyAnimation, OkWaitsForAValidChange) {
    EXPECT_EQ(dialog.StartText, "10");
    EXPECT_EQ(dialog.LengthText, "21");
    EXPECT_FALSE(dialog.IsOkEnabled());
    EXPECT_EQ(dialog.GetCancelTitle(), "&Close");
    dialog.LengthText = "0";
    EXPECT_FALSE(dialog.IsOkEnabled());
    EXPECT_EQ(dialog.GetCancelTitle(), "&Cancel");
    dialog.LengthText = "41";
    EXPECT_TRUE(dialog.IsOkEnabled());

    dialog.StartText = "-1";
    EXPECT_EQ(dialog.OnOK(), hModifyAnimation::Outcome::StayAtStart);
    dialog.StartText = "0";
    dialog.LengthText = "many";
    EXPECT_EQ(dialog.OnOK(), hModifyAnimation::Outcome::StayAtLength);
    EXPECT_EQ(user.Messages,
              (std::vector<std::string>{"Please enter a frame where the animation\nshould begin at.",
                                        "Please enter a valid length for the animation."}));
}

TEST_F(ModifyAnimation, ALengthBelowTheKeyCountIsConfirmedFirst) {
    dialog.LengthText = "2";
    user.Answer = IDNO;
    EXPECT_EQ(dialog.OnOK(), hModifyAnimation::Outcome::StayAtLength);
    EXPECT_EQ(dialog.LengthText, "3");
    ASSERT_EQ(user.Messages.size(), 1u);
    EXPECT_NE(user.Messages[0].find("Therefore, 1 keys will be deleted"), std::string::npos);

    dialog.LengthText = "2";
    user.Answer = IDYES;
    EXPECT_EQ(dialog.OnOK(), hModifyAnimation::Outcome::Close);
    EXPECT_EQ(value.GetKeyCount(), 1);
}

TEST_F(ModifyAnimation, NewStartAndLengthStretchTheKeys) {
    dialog.StartText = "100";
    dialog.LengthText = "42";
    EXPECT_EQ(dialog.OnOK(), hModifyAnimation::Outcome::Close);
    EXPECT_EQ(value.GetFirstKeyFrame(), 100);
    EXPECT_EQ(value.GetLastKeyFrame(), 140);

    iActiveValue single("Height", 3.0, false);
    hModifyAnimation singleDialog(single);
    EXPECT_FALSE(singleDialog.IsLengthEnabled());
    singleDialog.StartText = "7";
    EXPECT_EQ(singleDialog.OnOK(), hModifyAnimation::Outcome::Close);
    // An animation that begins at frame 0 and keeps its length is left where it is.
    EXPECT_EQ(single.GetFirstKeyFrame(), 0);
}
