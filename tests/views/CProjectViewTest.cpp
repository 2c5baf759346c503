#include "views/CProjectView.h"

#include "ProjectViewFixture.h"
#include "app/CTessarineDoc.h"
#include "foundation/EPrefsDiskIO.h"
#include "foundation/hReport.h"
#include "foundation/qvrCTreeData.h"
#include "model/hMenu.h"
#include "model/iElementGroup.h"

#include <algorithm>

namespace {

class ProjectView : public ProjectViewFixture {};

std::vector<std::string> parentNames(const iElement& element) {
    std::vector<std::string> names;
    for (iElementLink* link = element.GetFirstParentLink(); link; link = link->GetNextOfChild())
        names.push_back(link->GetParent()->GetName());
    return names;
}

bool shows(const CProjectViewScene& scene, const std::string& name) {
    return std::any_of(scene.Icons.begin(), scene.Icons.end(),
                       [&](const CProjectViewIcon& icon) { return icon.Name == name; });
}

} // namespace

TEST_F(ProjectView, ZoomStepsByAQuarterAndSaysTheFactorsWithTwoDecimals) {
    for (int i = 0; i < 5; ++i)
        view->ZoomIn();
    EXPECT_EQ(status(), "Zoomed in to 3.05x3.05...");
    view->ZoomOut();
    EXPECT_EQ(status(), "Zoomed out to 2.44x2.44...");
    EXPECT_EQ(ui.Status.back(), status()) << "the status line goes to the user interface too";
    view->ResetZoom();
    EXPECT_EQ(status(), "Resetted zoom to 1.00x1.00...");

    view->ZoomIn();
    view->ZoomIn();
    view->ZoomOut();
    EXPECT_EQ(view->PaneToClient({410, 290}), (CPoint{412, 287}));
    EXPECT_EQ(view->ClientToPane({412, 287}), (CPoint{409, 289}));
    EXPECT_EQ(view->ClientToPane({399, 300}), (CPoint{399, 300}))
        << "rounded down on both sides of the centre";
    view.reset();
    EXPECT_DOUBLE_EQ(CProjectViewSettings::Get().DispZoomX, 1.25) << "the view's zoom is kept when it closes";
}

TEST_F(ProjectView, EachModeGivesThePlainDragItsMeaningAndTheKeysTheOtherTwo) {
    struct Case {
        CDragMode Mode;
        unsigned Keys;
        CDragGesture Gesture;
    };
    const Case cases[] = {
        {CDragMode::Move, key_none, CDragGesture::Move},
        {CDragMode::Move, key_control | key_shift, CDragGesture::Link},
        {CDragMode::Move, key_control, CDragGesture::Copy},
        {CDragMode::Move, key_alt, CDragGesture::Move},
        {CDragMode::Link, key_none, CDragGesture::Link},
        {CDragMode::Link, key_alt, CDragGesture::Move},
        {CDragMode::Link, key_control, CDragGesture::Copy},
        {CDragMode::Copy, key_none, CDragGesture::Copy},
        {CDragMode::Copy, key_alt, CDragGesture::Move},
        {CDragMode::Copy, key_control | key_shift, CDragGesture::Link},
        {CDragMode::Copy, key_shift, CDragGesture::Copy},
    };
    for (const Case& c : cases)
        EXPECT_EQ(CDragModes::GestureFor(c.Mode, c.Keys), c.Gesture)
            << "mode " << static_cast<int>(c.Mode) << ", keys " << c.Keys;

    EXPECT_EQ(CDragModes::HelpLine(CDragMode::Copy),
              "Drag & drop copies objects; use ALT to move, CTRL+SHIFT to link objects.\nCopy mode (C)");
    CDragMode mode = CDragMode::Move;
    EXPECT_TRUE(CDragModes::ModeForKey('l', mode));
    EXPECT_EQ(mode, CDragMode::Link);
    EXPECT_FALSE(CDragModes::ModeForKey('X', mode));
    EXPECT_EQ(mode, CDragMode::Link);
}

TEST_F(ProjectView, GroupsAreMadeOfTheSelectionAndHideTheirMembersWhenCollapsed) {
    EXPECT_EQ(view->CreateGroup(), nullptr);
    EXPECT_EQ(status(), "Please select some objects...");

    TestNode* outside = add("Outside", {100, 100});
    TestNode* first = add("First", {300, 100});
    TestNode* second = add("Second", {300, 200});
    first->LinkParent(outside);
    second->LinkParent(first);
    first->SetSelected(true);
    second->SetSelected(true);
    iElementGroup* group = view->CreateGroup();
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->GetName(), "Group #1");
    EXPECT_EQ(group->GetMemberCount(), 2);
    EXPECT_EQ(group->GetPanePos(), (CPoint{300, 150}));
    EXPECT_TRUE(group->IsSelected());
    EXPECT_EQ(view->CreateGroup()->GetName(), "Group #2") << "members move to the newest group";
    EXPECT_EQ(group->GetMemberCount(), 0);

    iElementGroup* shown = project.FindGroup("Group #2");
    view->CollapseGroups();
    CProjectViewScene scene = view->GetScene();
    EXPECT_TRUE(shows(scene, "Outside"));
    EXPECT_FALSE(shows(scene, "First"));
    ASSERT_EQ(scene.Lines.size(), 1u) << "the line inside the collapsed group is left out";
    EXPECT_EQ(scene.Lines[0].From, (CPoint{100, 100}));
    EXPECT_EQ(scene.Lines[0].To, (CPoint{300, 150})) << "ends at the group's icon";
    EXPECT_EQ(scene.Lines[0].ArrowSize, 15);
    ASSERT_EQ(scene.Groups.size(), 2u);
    EXPECT_EQ(scene.Groups[1].Label, "Group #2 (2)");
    EXPECT_TRUE(scene.Groups[1].Collapsed);
    view->ExpandGroups();
    EXPECT_FALSE(shown->IsCollapsed());
    EXPECT_TRUE(shows(view->GetScene(), "First"));
}

TEST_F(ProjectView, AGroupIsRenamedOnlyToANameThatIsFreeOrItsOwn) {
    iElementGroup* group = project.AddGrp("Layers", true);
    project.AddGrp("Sources", true);
    std::string complaint;
    EXPECT_FALSE(view->RenameGroup("Layers", "SOURCES", complaint));
    EXPECT_EQ(complaint, "There is already a group with this name !");
    EXPECT_FALSE(view->RenameGroup("Layers", "", complaint));
    EXPECT_TRUE(complaint.empty());
    EXPECT_FALSE(view->RenameGroup("Gone", "Other", complaint));
    EXPECT_TRUE(view->RenameGroup("Layers", "LAYERS", complaint));
    EXPECT_TRUE(view->RenameGroup("Layers", "Top", complaint));
    EXPECT_EQ(group->GetName(), "Top");
    EXPECT_EQ(CProjectView::GetRenameGroupTitle(), "Rename group");
    EXPECT_EQ(CProjectView::GetRenameGroupPrompt(*group, false), "Rename 'Top' into:");
    EXPECT_EQ(CProjectView::GetRenameGroupPrompt(*group, true), "Enter a name for this group:");
}

TEST_F(ProjectView, RedrawsWaitForTheOutermostEndOfComplexOperations) {
    project.BeginComplex();
    project.BeginComplex();
    const int before = host.Invalidations;
    project.SetPaneSize({2000, 2000}, true);
    project.EndComplex();
    EXPECT_EQ(view->GetComplexCounter(), 1);
    EXPECT_EQ(host.Invalidations, before);
    project.EndComplex();
    EXPECT_EQ(view->GetComplexCounter(), 0);
    EXPECT_EQ(host.Invalidations, before + 1);
    project.EndComplex();
    EXPECT_EQ(view->GetComplexCounter(), 0) << "the counter never goes below 0";
}

TEST_F(ProjectView, TheAutosaveTimerRunsOnTheIntervalOfThePreferences) {
    std::string savedFile;
    long savedInterval = 0;
    EPrefsDiskIO::GetAutoSave(savedFile, savedInterval);
    CTessarineDoc document;
    project.SetDocument(&document);

    EPrefsDiskIO::SetAutoSave("auto.tsp", 0);
    view->RestartAutoSave(false);
    EXPECT_EQ(host.Killed, std::vector<unsigned>{19});
    EXPECT_TRUE(host.Timers.empty()) << "an interval of 0 never sets the timer";

    EPrefsDiskIO::SetAutoSave("auto.tsp", 5);
    view->OnTimer(19);
    ASSERT_EQ(host.Timers.size(), 1u);
    EXPECT_EQ(host.Timers[0], (std::pair<unsigned, long>{19, 300000}));
    EXPECT_EQ(ui.Status.back(), "Autosaving not performed because there are no changes to the document.");
    view->OnTimer(7);
    EXPECT_EQ(host.Timers.size(), 1u) << "other timers are not the autosave's";

    project.SetDocument(nullptr);
    EPrefsDiskIO::SetAutoSave(savedFile, savedInterval);
}

TEST_F(ProjectView, ALinkIsFoundOnItsLineAndDeletingItCanBeTakenBackInOrder) {
    TestNode* first = add("First", {100, 100});
    TestNode* second = add("Second", {500, 100});
    FanInNode* mix = add<FanInNode>("Mix", {300, 300});
    mix->LinkParent(first);
    mix->LinkParent(second);

    std::string child, parent;
    ASSERT_TRUE(view->FindLinkAt({200, 200}, child, parent));
    EXPECT_EQ(child, "Mix");
    EXPECT_EQ(parent, "First");
    EXPECT_FALSE(view->FindLinkAt({300, 100}, child, parent));
    hMenu menu;
    CProjectView::BuildLinkMenu(menu);
    ASSERT_NE(menu.FindItem(CProjectView::command_delete_link), nullptr);
    EXPECT_EQ(menu.FindItem(CProjectView::command_delete_link)->Text, "&Delete link");

    EXPECT_TRUE(view->DeleteLink("Mix", "First"));
    EXPECT_EQ(parentNames(*mix), std::vector<std::string>{"Second"});
    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_EQ(parentNames(*mix), (std::vector<std::string>{"First", "Second"}));

    EXPECT_FALSE(view->DeleteLink("Mix", "Gone"));
    EXPECT_FALSE(view->DeleteLink("Second", "First")) << "no such link";
    EXPECT_EQ(project.GetActionManager().GetUndoCount(), 0);
}

TEST_F(ProjectView, TheTrashDeletesElementsAndDissolvesGroupsWithoutTheirMembers) {
    add("Dropped", {100, 100});
    TestNode* member = add("Member", {200, 100});
    iElementGroup* group = project.AddGrp("Set", true);
    group->AddMember(member, true);
    ioleConnector dropped;
    dropped.Elements = {"Dropped", "Gone"};
    dropped.Groups = {"Set"};

    EXPECT_TRUE(view->DropOnTrash(ioleConnector::Format, dropped.Serialize()));
    EXPECT_EQ(project.FindElement("Dropped"), nullptr);
    EXPECT_EQ(project.FindGroup("Set"), nullptr);
    EXPECT_EQ(project.FindElement("Member"), member);
    EXPECT_EQ(member->GetGroup(), nullptr);
    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_NE(project.FindElement("Dropped"), nullptr);
    EXPECT_FALSE(view->DropOnTrash("text/plain", "Member"));

    project.ClearSelection();
    EXPECT_FALSE(view->DeleteSelection());
    member->SetSelected(true);
    EXPECT_TRUE(view->DeleteSelection()) << "Delete is the selection dropped on the trash";
    EXPECT_EQ(project.FindElement("Member"), nullptr);
    EXPECT_EQ(CProjectView::GetTrashTip(),
              "Drop object(s) here to delete (when a group is deleted, the objects "
              "it contains will not be deleted either).");
}

TEST_F(ProjectView, ClicksAndFramesSelectWhatIsShown) {
    TestNode* first = add("First", {100, 100});
    TestNode* second = add("Second", {300, 100});
    TestNode* hidden = add("Hidden", {200, 120});
    iElementGroup* group = project.AddGrp("Closed", true);
    group->AddMember(hidden, true);
    group->SetPanePos({600, 500});
    group->SetCollapsed(true);

    EXPECT_TRUE(view->SelectAt({105, 100}, key_none));
    EXPECT_TRUE(view->SelectAt({300, 110}, key_control));
    EXPECT_TRUE(first->IsSelected() && second->IsSelected());
    EXPECT_TRUE(view->SelectAt({300, 110}, key_control));
    EXPECT_FALSE(second->IsSelected()) << "CTRL takes a selected object away";
    EXPECT_FALSE(view->SelectAt({700, 300}, key_none));
    EXPECT_EQ(project.GetSelectedCount(), 0);

    view->SelectInRect({350, 150, 50, 50}, key_none);
    EXPECT_TRUE(first->IsSelected() && second->IsSelected());
    EXPECT_FALSE(hidden->IsSelected()) << "a member of a collapsed group isn't shown";
    EXPECT_TRUE(view->CenterObjects());
    EXPECT_EQ(view->GetMapping().Center, (CPoint{200, 100}));
    view->CenterAllObjects();
    EXPECT_EQ(view->GetMapping().Center, (CPoint{350, 300})) << "shown elements and the collapsed group";
}

TEST_F(ProjectView, CutAndCopyNeedASelection) {
    std::string buffer = "untouched";
    EXPECT_FALSE(view->Copy(buffer));
    EXPECT_EQ(status(), "Please select some objects ...");
    EXPECT_FALSE(view->Cut(buffer));
    EXPECT_EQ(buffer, "untouched");
    EXPECT_FALSE(view->CenterObjects());
    EXPECT_EQ(status(), "Please select some objects...");

    add("Node", {100, 100})->SetSelected(true);
    EXPECT_TRUE(view->Copy(buffer));
    EXPECT_EQ(status(), "Objects have been copied !");
    ui.Answer = IDNO;
    EXPECT_FALSE(view->Cut(buffer)) << "the user keeps the object";
    EXPECT_NE(project.FindElement("Node"), nullptr);
    ui.Answer = IDYES;
    std::string cut;
    EXPECT_TRUE(view->Cut(cut));
    EXPECT_EQ(project.FindElement("Node"), nullptr);
    EXPECT_EQ(cut, buffer);
}

TEST_F(ProjectView, ThePaneGridIsDrawnWhereItsLinesAreFarEnoughApart) {
    CProjectViewScene scene = view->GetScene();
    ASSERT_EQ(scene.GridColumns.size(), 51u);
    EXPECT_EQ(scene.GridColumns.front(), 0);
    EXPECT_EQ(scene.GridColumns.back(), 800);
    EXPECT_EQ(scene.Pane, (CRect{0, 0, 1000, 1000}));
    for (int i = 0; i < 8; ++i)
        view->ZoomOut();
    EXPECT_TRUE(view->GetScene().GridColumns.empty());
    project.SetPaneGrid({16, 16}, false, true);
    view->ResetZoom();
    EXPECT_TRUE(view->GetScene().GridRows.empty());
}

TEST(ProjectViewSettings, KeepTheirValuesInTheBlockAndReportBadOnes) {
    CProjectViewSettings& settings = CProjectViewSettings::Get();
    settings.Reset();
    settings.DispZoomX = 2.5;
    settings.DispZoomY = 0.125;
    settings.CenterPoint = {-40, 70};
    settings.Window = {1, 2, 300, 400};
    settings.GridSize = {8, 12};
    qvrCTreeData block("ProjectView");
    hReportRoot report("Settings");
    settings.Save(block, report);
    settings.Reset();
    block.SetText("DispZoomY", "-3");
    settings.Load(block, report);
    EXPECT_DOUBLE_EQ(settings.DispZoomX, 2.5);
    EXPECT_DOUBLE_EQ(settings.DispZoomY, 1.0) << "a zoom that isn't above 0 keeps the default";
    EXPECT_EQ(settings.CenterPoint, (CPoint{-40, 70}));
    EXPECT_EQ(settings.Window, (CRect{1, 2, 300, 400}));
    EXPECT_EQ(settings.GridSize, (CSize{8, 12}));
    ASSERT_EQ(report.GetCount(), 1);
    EXPECT_EQ(report.GetEntries()[0].Text, "Invalid value \"-3\" for \"DispZoomY\" (the default stays)");
    settings.Reset();
}
