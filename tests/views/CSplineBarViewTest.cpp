#include "views/CSplineBarView.h"

#include "SplineTestSupport.h"
#include "foundation/TraceCapture.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/TestProject.h"
#include "model/hMenu.h"

#include <gtest/gtest.h>

namespace {

class RecordingViewFrontEnd : public CSplineBarView::FrontEnd {
public:
    void Beep() override { ++Beeps; }
    void Repaint() override { ++Repaints; }
    void OpenKeyEditPanel() override { ++Panels; }

    int Beeps = 0;
    int Repaints = 0;
    int Panels = 0;
};

class SplineBarView : public ::testing::Test {
protected:
    SplineBarView() {
        project.SetFrameLength(1000, false);
        view.UpdateWorld();
        view.SetFrontEnd(&frontEnd);
        view.SetClientSize({400, 200});
    }

    // A value with keys at the frames, valued ten times the frame.
    iActiveValue& keyedValue(const std::vector<long>& frames) {
        iActiveValue& value = SplineTestElement::Make(project, "Curve", "Probe", {"Level"}).Value(0);
        value.SetSingleKey(frames.front(), 10.0 * static_cast<double>(frames.front()), false);
        for (long frame : frames)
            value.SetKey(frame, 10.0 * static_cast<double>(frame), true, false, false);
        view.SetActiveValue(&value);
        return value;
    }

    static CActiveValueEditViewCmd command(long number, bool x = true, bool y = true) {
        CActiveValueEditViewCmd result;
        result.Command = number;
        result.affectX = x;
        result.affectY = y;
        return result;
    }

    RecordingUserInterface ui;
    iProject project;
    CSplineBarView view{project};
    RecordingViewFrontEnd frontEnd;
};

} // namespace

TEST_F(SplineBarView, ZoomRules) {
    EXPECT_TRUE(view.Handle(command(CActiveValueEditView::cmd_zoom_in, true, false)));
    EXPECT_DOUBLE_EQ(view.zoomX, 6.0);
    EXPECT_DOUBLE_EQ(view.zoomY, 4.0);

    view.zoomX = 0.0051;
    view.zoomY = 0.004;
    EXPECT_TRUE(view.Handle(command(CActiveValueEditView::cmd_zoom_out)));
    EXPECT_DOUBLE_EQ(view.zoomX, 0.005);
    EXPECT_DOUBLE_EQ(view.zoomY, 0.004);
    EXPECT_FALSE(view.Handle(command(CActiveValueEditView::cmd_zoom_out, false, true)));

    // Zoom 1:1 works on both axes, whatever the command says.
    EXPECT_TRUE(view.Handle(command(CActiveValueEditView::cmd_zoom_normal, false, false)));
    EXPECT_DOUBLE_EQ(view.zoomY, 1.0);
    EXPECT_FALSE(view.Handle(command(CActiveValueEditView::cmd_zoom_normal)));

    CActiveValueEditViewCmd set = command(CActiveValueEditView::cmd_set_zoom, false, true);
    set.zoomX = 3.0;
    set.zoomY = 2.0;
    view.Post(set);
    view.Post(command(CActiveValueEditView::cmd_reserved_first));
    EXPECT_TRUE(view.HandlePending());
    EXPECT_DOUBLE_EQ(view.zoomX, 1.0);
    EXPECT_DOUBLE_EQ(view.zoomY, 2.0);
    EXPECT_FALSE(view.HandlePending());
}

TEST_F(SplineBarView, FitBringsTheDataIntoTheMiddle) {
    EXPECT_FALSE(view.Handle(command(CActiveValueEditView::cmd_fit_active)));
    iActiveValue& value = keyedValue({100, 300});
    double min = 0.0;
    double max = 0.0;
    value.GetDisplayRange(&min, &max, nullptr, nullptr);

    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_fit_active)));
    EXPECT_DOUBLE_EQ(view.zoomX, 400.0 / (200.0 * 8.0));
    EXPECT_EQ(view.Position.x, 200 - 800);
    EXPECT_DOUBLE_EQ(view.zoomY, 200.0 / ((max - min) * 2.0));
    EXPECT_EQ(view.Position.y, static_cast<long>(-(max + min) / 2.0 - (max - min)));

    // An axis without extent keeps its zoom and scrolls to the data.
    value.SetSingleKey(50, 1.0, false);
    view.zoomX = 2.0;
    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_fit_active, true, false)));
    EXPECT_DOUBLE_EQ(view.zoomX, 2.0);
    EXPECT_EQ(view.Position.x, 50 - 100);

    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_fit_world)));
    EXPECT_DOUBLE_EQ(view.zoomX, 400.0 / (1009.0 * 8.0));
    EXPECT_DOUBLE_EQ(view.zoomY, 200.0 / (20000.0 * 2.0));
    EXPECT_EQ(view.Position.y, -20000);
}

TEST_F(SplineBarView, KeyJumpsCentreTheNextKeyBeyondTheWindow) {
    keyedValue({0, 500, 1000});
    view.zoomX = 1.0;
    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_next_key)));
    EXPECT_EQ(view.Position.x, 300);
    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_next_key)));
    EXPECT_EQ(view.Position.x, 800);
    EXPECT_FALSE(view.Handle(command(CActiveValueEditView::cmd_next_key)));
    EXPECT_EQ(ui.LastStatus(), "Thare are no further keys for the currently selected spline.");

    ui.Status.clear();
    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_previous_key)));
    EXPECT_EQ(view.Position.x, 300);
    ASSERT_TRUE(view.Handle(command(CActiveValueEditView::cmd_previous_key)));
    EXPECT_EQ(view.Position.x, -200);
    EXPECT_FALSE(view.Handle(command(CActiveValueEditView::cmd_previous_key)));
    EXPECT_EQ(view.Position.x, -200);
    EXPECT_EQ(ui.LastStatus(), "Thare are no further keys for the currently selected spline.");
}

TEST_F(SplineBarView, UnknownCommandsAreTraced) {
    TraceCapture trace;
    EXPECT_FALSE(view.Handle(command(-1)));
    EXPECT_FALSE(view.Handle(command(7)));
    EXPECT_FALSE(view.Handle(command(203)));
    EXPECT_EQ(trace.Get(),
              (std::vector<std::string>{
                  "*** WARNING[CActiveValueEditView::Handle()]: Command was not valid.\n",
                  "*** TODO[CActiveValueEditView::Handle()]: Command 7 not implemented yet.\n"}));
    EXPECT_EQ(CActiveValueEditView::GetTipText(12, 3.25), " 12,3.2 ");
    EXPECT_EQ(CActiveValueEditView::GetEmptyText(), "<nothing to display>");
}

TEST(SplineBarTimeLabel, CountsHoursFromSixMinutes) {
    EXPECT_EQ(CSplineBarView::TimeLabel(9000, 25, false), "1:06'00");
    EXPECT_EQ(CSplineBarView::TimeLabel(9012, 25, true), "1:06'00+12");
    EXPECT_EQ(CSplineBarView::TimeLabel(8999, 25, false), "5'59");
    EXPECT_EQ(CSplineBarView::TimeLabel(1510, 25, true), "1'00+10");
    EXPECT_EQ(CSplineBarView::TimeLabel(59, 15, true), "0'03+14");
    EXPECT_EQ(CSplineBarView::TimeLabel(-7, 0, true), "-7");
    EXPECT_EQ(CSplineBarView::LongestTimeLabel(), "000:00'00+00");
}

TEST_F(SplineBarView, MenuOrderAndChoices) {
    hMenu menu;
    view.BuildContextMenu(menu);
    const auto& items = menu.GetItems();
    ASSERT_EQ(items.size(), 8u);
    EXPECT_EQ(items[0].Text, "Edit key values");
    EXPECT_TRUE(items[0].Default);
    EXPECT_EQ(items[1].Text, "Delete keys\tDEL");
    EXPECT_EQ(items[5].Id, CSplineBarView::command_normal_zoom);
    EXPECT_EQ(items[6].Text, "Time axis labels");
    EXPECT_EQ(items[6].SubMenu->GetItems()[1].Text, "25 fps");
    EXPECT_TRUE(items[6].SubMenu->GetItems()[1].Checked);
    EXPECT_EQ(items[7].SubMenu->GetItems()[6].Text, "±100k\t0");
    EXPECT_TRUE(items[7].SubMenu->FindItem(CSplineBarView::command_range_10000)->Checked);

    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_labels_frames));
    EXPECT_EQ(view.GetLabelRate(), 0);
    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_range_20000));
    EXPECT_EQ(view.World, (CRect{-10, -20000, 999, 20000}));
    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_add_mode));
    EXPECT_TRUE(view.IsAddMode());
    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_edit_keys));
    EXPECT_EQ(frontEnd.Panels, 1);
    EXPECT_FALSE(view.RunCommand(11));
}

TEST_F(SplineBarView, DeletingAndSelectingKeys) {
    EXPECT_FALSE(view.RunCommand(CSplineBarView::command_delete_keys));
    EXPECT_EQ(ui.LastStatus(), "Please select a value first !");
    iActiveValue& value = keyedValue({0, 10, 20, 30});
    EXPECT_FALSE(view.RunCommand(CSplineBarView::command_delete_keys));
    EXPECT_EQ(ui.LastStatus(), "No keys selected.");
    EXPECT_EQ(frontEnd.Beeps, 2);

    value.SelectKey(1, true, false);
    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_delete_keys));
    EXPECT_TRUE(ui.Messages.empty());
    EXPECT_EQ(value.GetKeyCount(), 3);

    EventLog events(&value);
    EXPECT_TRUE(view.RunCommand(CSplineBarView::command_select_all));
    EXPECT_EQ(value.CountSelectedKeys(), 3);
    EXPECT_EQ(events.Codes, std::vector<long>{iActiveValue::event_display_changed});

    ui.Answer = IDNO;
    EXPECT_FALSE(view.RunCommand(CSplineBarView::command_delete_keys));
    EXPECT_EQ(ui.Messages, std::vector<std::string>{"Are you sure you want to\ndelete 3 keys ?"});
    EXPECT_EQ(value.GetKeyCount(), 3);
}

TEST_F(SplineBarView, SettingsAreCheckedAfterALoad) {
    view.RunCommand(CSplineBarView::command_labels_frames);
    view.zoomX = 2.5;
    view.Position = {-40, 70};
    view.RunCommand(CSplineBarView::command_add_mode);
    qvrCTreeData block;
    view.SaveSettings(block);

    CSplineBarView reopened(project);
    hReportRoot report("load");
    reopened.LoadSettings(block, report);
    EXPECT_EQ(reopened.GetLabelRate(), 10);
    EXPECT_DOUBLE_EQ(reopened.zoomX, 2.5);
    EXPECT_DOUBLE_EQ(reopened.zoomY, 4.0);
    EXPECT_EQ(reopened.Position, (CPoint{-40, 70}));
    EXPECT_TRUE(reopened.IsAddMode());
    EXPECT_EQ(reopened.World, (CRect{-10, -10000, 999, 10000}));
    EXPECT_EQ(report.GetCount(), 0);

    block.SetLong("FPS", 300);
    block.SetLong("nMax", 999);
    block.SetText("ZoomX", "0.00009");
    block.SetText("ZoomY", "steep");
    block.SetText("PosX", "left");
    reopened.LoadSettings(block, report);
    EXPECT_EQ(reopened.GetLabelRate(), 44);
    EXPECT_EQ(reopened.GetValueRange(), 10000);
    EXPECT_DOUBLE_EQ(reopened.zoomX, 4.0);
    EXPECT_DOUBLE_EQ(reopened.zoomY, 4.0);
    EXPECT_EQ(reopened.Position.x, -40);
    ASSERT_EQ(report.GetCount(), 2);
    EXPECT_EQ(report.GetEntries()[0].Text, "Invalid value \"steep\" for \"ZoomY\" (the present value stays)");

    qvrCTreeData defaults;
    CSplineBarView::SaveDefaultSettings(defaults);
    EXPECT_EQ(*defaults.GetText("nMax"), "10000");
    EXPECT_EQ(*defaults.GetText("ZoomX"), "4");
    EXPECT_EQ(defaults.Find("FPS"), nullptr);
}
