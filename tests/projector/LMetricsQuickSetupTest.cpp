#include "projector/QuickSetupProfile.h"

#include "model/ScriptedUserInterface.h"
#include "projector/LMetricsQuickSetup.h"
#include "projector/hMetricsQuickSetupDialog.h"

#include <gtest/gtest.h>

TEST(MetricsQuickSetup, TheDefaultsMakeAnLOfFiveAndThirteenWindows) {
    const std::array<CRect, 18> windows = LMetricsQuickSetup().Layout();
    for (long i = 0; i < 5; ++i)
        EXPECT_EQ(windows[static_cast<size_t>(i)], (CRect{0, 200 * i, 100, 200 * i + 100})) << i;
    EXPECT_EQ(windows[5], (CRect{200, 1100, 300, 1200}));
    EXPECT_EQ(windows[6], (CRect{400, 1100, 500, 1200}));
    EXPECT_EQ(windows[17], (CRect{2600, 1100, 2700, 1200}));
}

TEST(MetricsQuickSetup, EveryNumberMovesItsPartOfTheLayout) {
    LMetricsQuickSetup setup;
    setup.dx = 10;
    setup.dy = 20;
    setup.hx = 5;
    setup.hy = 300;
    setup.vx = 150;
    setup.vy = 40;
    setup.w = 60;
    setup.h = 50;
    const std::array<CRect, 18> windows = setup.Layout();
    EXPECT_EQ(windows[0], (CRect{5, 0, 65, 50}));
    EXPECT_EQ(windows[4], (CRect{5, 280, 65, 330}));
    EXPECT_EQ(windows[5], (CRect{150, 590, 210, 640})) << "50*5 + 20*4 + 300 - 40";
    EXPECT_EQ(windows[7], (CRect{290, 590, 350, 640}));
}

TEST(MetricsQuickSetup, ChecksCompareAsUnsignedNumbers) {
    LMetricsQuickSetup setup;
    setup.vx = 99;
    EXPECT_EQ(setup.Check(), LMetricsQuickSetup::Fault::RowLeftOfColumn);
    setup.Fix(setup.Check());
    EXPECT_EQ(setup.vx, 100);
    setup.hy = 99;
    EXPECT_EQ(setup.Check(), LMetricsQuickSetup::Fault::RowAboveColumn);
    setup.Fix(setup.Check());
    EXPECT_EQ(setup.hy, 100);
    EXPECT_EQ(setup.Check(), LMetricsQuickSetup::Fault::None);
    setup.vx = -1;
    EXPECT_EQ(setup.Check(), LMetricsQuickSetup::Fault::None) << "-1 is the largest unsigned number";
}

TEST(MetricsQuickSetupDialog, OffersToMendAFaultAndStaysOnTheField) {
    QuickSetupProfile profile;
    ScriptedUserInterface ui;
    hMetricsQuickSetupDialog dialog;
    dialog.Values.hx = 150;
    ui.Answer = IDNO;
    EXPECT_FALSE(dialog.Accept());
    EXPECT_EQ(dialog.Values.vx, 200);
    EXPECT_EQ(dialog.GetFocus(), hMetricsQuickSetupDialog::Field::vx);
    ui.Answer = IDYES;
    EXPECT_FALSE(dialog.Accept());
    EXPECT_EQ(dialog.Values.vx, 250);
    dialog.Values.vy = 150;
    EXPECT_FALSE(dialog.Accept());
    EXPECT_EQ(dialog.Values.hy, 250);
    EXPECT_EQ(dialog.GetFocus(), hMetricsQuickSetupDialog::Field::hy);
    EXPECT_EQ(ui.Messages,
              (std::vector<std::string>{"VX must be greater or equal to HX plus W.\nFix automatically ?",
                                        "VX must be greater or equal to HX plus W.\nFix automatically ?",
                                        "HY must be greater or equal to VY plus H.\nFix automatically ?"}));
    EXPECT_EQ(LMetricsQuickSetup::Load().vx, 200) << "nothing is stored while the dialog stays";
    EXPECT_TRUE(dialog.Accept());
    EXPECT_EQ(dialog.GetWindows()[5].left, 250);
}

TEST(MetricsQuickSetupDialog, KeepsTheNumbersInTheProfileHoweverItIsLeft) {
    QuickSetupProfile profile;
    {
        hMetricsQuickSetupDialog dialog;
        EXPECT_EQ(dialog.Values.hy, 200);
        dialog.Values.w = 80;
        dialog.Cancel();
    }
    {
        hMetricsQuickSetupDialog dialog;
        EXPECT_EQ(dialog.Values.w, 80);
        dialog.Values.dx = 7;
        EXPECT_TRUE(dialog.Accept());
    }
    const qvrCRegKey root = qvrCRegKey::Root();
    qvrCRegKey key;
    ASSERT_TRUE(key.Open(root, "Vitrea:18 saver\\Setup dialog\\Metrics\\Quick setup",
                         qvrCRegKey::Access::OpenExisting));
    EXPECT_EQ(key.GetLong("dx", 0), 7);
    EXPECT_EQ(key.GetLong("w", 0), 80);
    EXPECT_EQ(key.GetLong("hy", 0), 200);
}
