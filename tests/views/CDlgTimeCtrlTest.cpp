#include "views/CDlgTimeCtrl.h"

#include "SplineTestSupport.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

class RecordingTransport : public CDlgTimeCtrl::FrontEnd {
public:
    void Beep() override { ++Beeps; }
    void SetTimer(unsigned id, long milliseconds) override { Timers.emplace_back(id, milliseconds); }
    void KillTimer(unsigned id) override { Killed.push_back(id); }
    void DiscardTimerTicks() override { ++Discards; }
    void FocusOption(CDlgTimeCtrl::OptionField field) override { Focus.push_back(field); }

    int Beeps = 0;
    int Discards = 0;
    std::vector<std::pair<unsigned, long>> Timers;
    std::vector<unsigned> Killed;
    std::vector<CDlgTimeCtrl::OptionField> Focus;
};

class TimeControl : public ::testing::Test {
protected:
    TimeControl() {
        curve.Value(0).SetSingleKey(5, 1.0, false);
        curve.Value(0).SetKey(10, 2.0, true, false, false);
        control.SetFrontEnd(&transport);
        control.SetObject(&curve);
    }

    // The project's last frame is 99.
    static iProject& hundredFrames(iProject& project) {
        project.SetFrameLength(100, false);
        return project;
    }

    RecordingUserInterface ui;
    iProject project;
    SplineTestElement& curve = SplineTestElement::Make(project, "Curve", "Probe", {"Level"});
    RecordingTransport transport;
    CDlgTimeCtrl control{hundredFrames(project)};
};

} // namespace

TEST_F(TimeControl, KeyJumpsAndTheirEdges) {
    control.NextKey();
    EXPECT_EQ(control.currentFrame, 5);
    control.GoToFrame(0);
    control.PreviousKey();
    EXPECT_EQ(ui.LastStatus(), "Can't go to previous key - you are already in the first frame.");

    // A value whose first key lies after the frame offers that key: the jump goes forward.
    curve.AddValue("Late").SetSingleKey(30, 0.0, false);
    control.GoToFrame(12);
    control.PreviousKey();
    EXPECT_EQ(control.currentFrame, 30);
    control.NextKey();
    EXPECT_EQ(ui.LastStatus(),
              "Can't go to next key - there is not further key for \"Curve\" (inside the current range).");
    control.GoToLastFrame();
    control.NextKey();
    EXPECT_EQ(ui.LastStatus(), "Can't go to next key - you are already in the last frame.");

    // A key beyond a limited range is jumped to and the frame is kept inside the range.
    control.limitRange = true;
    control.rangeLast = 20;
    control.GoToFrame(11);
    control.NextKey();
    EXPECT_EQ(control.currentFrame, 20);
}

TEST_F(TimeControl, PlayingStartsStopsAndTicks) {
    control.Play(CDlgTimeCtrl::Forward);
    EXPECT_EQ(control.framesPerSecond, 25);
    EXPECT_EQ(transport.Timers.back(), (std::pair<unsigned, long>{2, 40}));
    EXPECT_EQ(ui.LastStatus(), "Playing current object with 25 frames per second, using every frame.");

    control.playStep = 7;
    control.GoToFrame(96);
    control.OnTimer(CDlgTimeCtrl::Forward);
    EXPECT_EQ(control.currentFrame, 99);
    EXPECT_EQ(control.timerDirection, CDlgTimeCtrl::Forward);
    control.OnTimer(CDlgTimeCtrl::Forward);
    EXPECT_EQ(control.timerDirection, CDlgTimeCtrl::Stopped);
    EXPECT_EQ(transport.Killed, std::vector<unsigned>{2});
    EXPECT_EQ(ui.LastStatus(), "Playing has been stopped.");
    EXPECT_EQ(transport.Discards, 2);

    control.framesPerSecond = 8;
    control.Play(CDlgTimeCtrl::Backward);
    EXPECT_EQ(transport.Timers.back(), (std::pair<unsigned, long>{1, 125}));
    EXPECT_EQ(ui.LastStatus(), "Playing current object with 8 frames per second, using every 7th frame.");
    control.GoToFrame(5);
    control.OnTimer(CDlgTimeCtrl::Backward);
    EXPECT_EQ(control.currentFrame, 0);
    control.Play(CDlgTimeCtrl::Forward);
    EXPECT_EQ(transport.Killed.back(), 1u);
    control.Play(CDlgTimeCtrl::Forward);
    EXPECT_EQ(control.timerDirection, CDlgTimeCtrl::Stopped);

    ui.Status.clear();
    control.Play(CDlgTimeCtrl::Stopped);
    EXPECT_TRUE(ui.Status.empty());
    control.OnTimer(19);
    EXPECT_EQ(transport.Killed.back(), 19u);
    EXPECT_EQ(control.currentFrame, 0);
}

TEST_F(TimeControl, LosingTheObjectStopsAndDisables) {
    control.Play(CDlgTimeCtrl::Forward);
    EXPECT_TRUE(control.AreControlsEnabled());
    project.DeleteElement(&curve);
    EXPECT_FALSE(control.AreControlsEnabled());
    EXPECT_EQ(control.timerDirection, CDlgTimeCtrl::Stopped);
    control.NextKey();
    EXPECT_EQ(control.currentFrame, 0);

    CDlgTimeCtrl opened(project);
    opened.SetObject(nullptr);
    EXPECT_FALSE(opened.AreControlsEnabled());
}

TEST(TimeControlOrdinal, SuffixesAsTheMessageWantsThem) {
    const std::vector<std::pair<long, std::string>> cases = {
        {0, "nth "},   {1, ""},       {2, "2nd "},     {3, "3th "},     {11, "11th "},
        {21, "21st "}, {23, "23rd "}, {103, "103th "}, {112, "112th "}, {122, "122nd "}};
    for (const auto& [n, text] : cases)
        EXPECT_EQ(CDlgTimeCtrl::OrdinalText(n), text) << n;
}

TEST_F(TimeControl, SteppingTypingAndFollowing) {
    control.GoToFrame(2);
    control.Step(-5);
    EXPECT_EQ(control.currentFrame, 0);
    control.BigStep(true);
    EXPECT_EQ(control.currentFrame, 99);
    control.OnFrameTyped("twelve");
    EXPECT_EQ(transport.Beeps, 1);
    EXPECT_EQ(control.currentFrame, 99);
    control.OnFrameTyped(" 42 ");
    EXPECT_EQ(control.currentFrame, 42);

    control.limitRange = true;
    control.rangeFirst = 20;
    control.rangeLast = 30;
    control.OnProjectFrameChanged(12);
    EXPECT_EQ(control.rangeFirst, 12u);
    EXPECT_EQ(control.GetSliderPosition(), 0);
    control.OnProjectFrameChanged(40);
    EXPECT_EQ(control.rangeLast, 40u);
    EXPECT_EQ(control.GetSliderPosition(), 28);
    control.followObject = false;
    control.OnProjectFrameChanged(15);
    EXPECT_EQ(control.currentFrame, 40);
}

TEST_F(TimeControl, OptionsPanelChecksBeforeTakingOver) {
    CDlgTimeCtrl::Options& panel = control.OpenOptions();
    EXPECT_EQ(panel.rangeLast, 99);
    EXPECT_EQ(panel.framesPerSecond, 25);
    EXPECT_FALSE(panel.IsStayOnFrameAvailable());

    panel.playStep = 0;
    EXPECT_FALSE(control.CloseOptions());
    EXPECT_EQ(ui.Messages.back(), "Please enter a whole number from 1 to 1000.");
    EXPECT_EQ(transport.Focus.back(), CDlgTimeCtrl::OptionField::PlayStep);

    panel.playStep = 3;
    panel.limitRange = true;
    panel.rangeFirst = 50;
    panel.rangeLast = 40;
    EXPECT_FALSE(control.CloseOptions());
    EXPECT_EQ(ui.Messages.back(),
              "The first frame comes past the last frame.\nThat's not possible, I'm sorry.");
    EXPECT_EQ(transport.Focus.back(), CDlgTimeCtrl::OptionField::LastFrame);
    EXPECT_FALSE(control.limitRange);
    EXPECT_EQ(control.playStep, 1);

    panel.rangeLast = 60;
    EXPECT_TRUE(control.CloseOptions());
    EXPECT_EQ(control.GetOptionsPanel(), nullptr);
    EXPECT_EQ(control.GetFirstFrame(), 50);
    EXPECT_EQ(control.GetLastFrame(), 60);
    EXPECT_EQ(control.playStep, 3);
    EXPECT_EQ(control.currentFrame, 50);
}
