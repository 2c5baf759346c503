#include "foundation/TraceCapture.h"
#include "model/TestElements.h"
#include "model/TestProject.h"

#include <gtest/gtest.h>

namespace {

// Three nodes a -> b -> c in one project.
struct Chain : ::testing::Test {
    void SetUp() override {
        for (TestNode* node : {&a, &b, &c})
            ASSERT_TRUE(node->ProjectLink(&project, false));
        ASSERT_EQ(b.LinkParent(&a), link_done);
        ASSERT_EQ(c.LinkParent(&b), link_done);
    }
    TestProject project;
    TestNode a{"A"}, b{"B"}, c{"C"};
};

} // namespace

TEST_F(Chain, LinkingFiresChildLinkedOnParentThenParentLinkedOnChild) {
    TestNode d("D");
    ASSERT_TRUE(d.ProjectLink(&project, false));
    d.MaxParents = 2;
    c.Calls.clear();
    d.Calls.clear();
    EXPECT_EQ(d.LinkParent(&c), link_done);
    EXPECT_EQ(c.Calls, std::vector<std::string>{"child linked D"});
    EXPECT_EQ(d.Calls, std::vector<std::string>{"parent linked C"});
    EXPECT_EQ(c.GetFirstChild(), &d);
    EXPECT_EQ(d.GetFirstParent(), &c);
}

TEST_F(Chain, LinkParentRefusesSelfLoopsAndDoubles) {
    TraceCapture trace;
    EXPECT_EQ(a.LinkParent(&a), link_refused);
    EXPECT_EQ(a.LinkParent(&c), link_would_loop);
    EXPECT_EQ(a.LinkParent(&b), link_would_loop);
    EXPECT_EQ(b.LinkParent(&a), link_already_parent);
    EXPECT_EQ(a.GetParentCount(), 0);
    EXPECT_EQ(b.GetParentCount(), 1);
    EXPECT_TRUE(trace.Contains("*** WARNING[iElement::LinkParent()]: Tried to link myself !\n"));
    EXPECT_TRUE(
        trace.Contains("*** ERROR[iElement::LinkParent()]: Tried to link a parent that is any child !\n"));
    EXPECT_TRUE(trace.Contains("*** WARNING[iElement::LinkParent()]: Tried to link a parent twice !\n"));
}

TEST_F(Chain, SecondParentOfSingleParentElementReplacesTheFirst) {
    TestNode other("Other");
    ASSERT_TRUE(other.ProjectLink(&project, false));
    EXPECT_EQ(c.CheckLinkParent(&other), link_replaced);
    EXPECT_EQ(c.LinkParent(&other), link_replaced);
    EXPECT_EQ(c.GetParentCount(), 1);
    EXPECT_EQ(c.GetFirstParent(), &other);
    EXPECT_EQ(b.GetChildCount(), 0);
}

TEST_F(Chain, ElementWithManyParentsKeepsThemInLinkOrder) {
    TestNode d("D");
    ASSERT_TRUE(d.ProjectLink(&project, false));
    d.MaxParents = 2;
    EXPECT_EQ(d.CheckLinkParent(&a), link_done);
    EXPECT_EQ(d.LinkParent(&c), link_done);
    EXPECT_EQ(d.LinkParent(&a), link_done);
    EXPECT_EQ(d.GetFirstParent(), &c);
    EXPECT_EQ(d.GetParentLink(&a)->GetPrevOfChild(), d.GetParentLink(&c));
    EXPECT_EQ(d.CheckLinkParent(&b), link_done);
    d.MaxParents = 0;
    EXPECT_EQ(d.CheckLinkParent(&b), link_refused);
    EXPECT_EQ(d.LinkParent(&b), link_refused);
}

TEST_F(Chain, CheckLinkParentAnswersWithoutChanging) {
    TraceCapture trace;
    EXPECT_EQ(a.CheckLinkParent(&a), link_refused);
    EXPECT_EQ(a.CheckLinkParent(&c), link_would_loop);
    EXPECT_EQ(c.CheckLinkParent(&b), link_already_parent);
    EXPECT_EQ(a.GetParentCount(), 0);
    EXPECT_TRUE(trace.Contains(
        "*** WARNING[iElement::CheckLinkParent()]: Check whether object might be parent of itself !\n"));
}

TEST_F(Chain, LinkingAcrossProjectsIsRefused) {
    TestProject other;
    TestNode stranger("Stranger");
    ASSERT_TRUE(stranger.ProjectLink(&other, false));
    EXPECT_EQ(c.LinkParent(&stranger), link_refused);
    TestNode outside("Outside");
    EXPECT_EQ(outside.LinkParent(&a), link_refused);
}

TEST_F(Chain, UnlinkingBreaksTheEdgeOnBothEndsWithEvents) {
    EventLog parentEvents(&b), childEvents(&c);
    EXPECT_FALSE(c.UnlinkParent(&a));
    EXPECT_TRUE(c.UnlinkParent(&b));
    EXPECT_EQ(b.GetChildCount(), 0);
    EXPECT_EQ(c.GetParentCount(), 0);
    EXPECT_TRUE(parentEvents.Saw(iElement::event_child_unlinked));
    EXPECT_TRUE(childEvents.Saw(iElement::event_parent_unlinked));
    EXPECT_FALSE(a.IsParentOf(&c));
}

TEST_F(Chain, ReorderingWithoutNoticeStillReportsTheFinalUnlink) {
    TestNode d("D");
    ASSERT_TRUE(d.ProjectLink(&project, false));
    d.MaxParents = 2;
    d.LinkParent(&a);
    d.LinkParent(&b);
    iElementLink* second = d.GetParentLink(&b);
    second->Unlink(false);
    second->Link(false, d.GetFirstParentLink());
    EXPECT_EQ(d.GetFirstParent(), &b);
    EventLog events(&d);
    delete second;
    EXPECT_TRUE(events.Saw(iElement::event_parent_unlinked));
}

TEST_F(Chain, ChangesTravelDownToEveryChildWithTheirStamp) {
    EventLog events(&c);
    const EFrameRange stamp{10, 5};
    a.NotifyChanged(&stamp, true);
    ASSERT_EQ(events.Codes, std::vector<long>{iElement::event_changed});
    EXPECT_EQ(events.Ranges[0].First, 10);
    a.NotifyModified(nullptr, false);
    EXPECT_EQ(events.Codes.size(), 1u);
    a.NotifyModified(nullptr, true);
    EXPECT_EQ(events.Codes.back(), iElement::event_modified);
}

TEST_F(Chain, RenamingRekeysTheIndexAndRefusesTakenNames) {
    TraceCapture trace;
    EventLog events(&a);
    EXPECT_FALSE(a.SetName("b", true));
    EXPECT_TRUE(trace.Contains("*** NOTE[iElement::SetName()]: Can't rename \"A\" (Node) into \"b\": Object "
                               "with that name already exists.\n"));
    EXPECT_TRUE(a.SetName("First", true));
    EXPECT_FALSE(project.Holds("A"));
    EXPECT_EQ(project.FindElement("FIRST"), &a);
    EXPECT_EQ(project.NameNotices, std::vector<std::string>{"First"});
    EXPECT_EQ(events.Codes, (std::vector<long>{iElement::event_modified, iElement::event_modified}));
}

TEST_F(Chain, LeavingTheProjectDropsLinksSelectionAndEntry) {
    b.SetSelected(true);
    EventLog projectEvents(&project);
    EventLog elementEvents(&b);
    b.ProjectUnlink();
    EXPECT_EQ(b.GetProject(), nullptr);
    EXPECT_FALSE(project.Holds("B"));
    EXPECT_EQ(project.GetSelectedCount(), 0);
    EXPECT_EQ(a.GetChildCount(), 0);
    EXPECT_EQ(c.GetParentCount(), 0);
    EXPECT_EQ(elementEvents.Codes.front(), iElement::event_close_windows);
    EXPECT_EQ(projectEvents.Codes.back(), iElement::event_child_unlinked);
}

TEST_F(Chain, DestroyedElementLeavesItsProjectAndNeighbours) {
    auto d = std::make_unique<TestNode>("D");
    ASSERT_TRUE(d->ProjectLink(&project, false));
    d->LinkParent(&c);
    d.reset();
    EXPECT_EQ(c.GetChildCount(), 0);
    EXPECT_FALSE(project.Holds("D"));
}

TEST(iElementProject, TakenNameIsRefusedUnlessKeptThenNumbered) {
    TestProject project;
    TestNode first("Layer.3"), second("layer.3"), third("Layer."), fourth("Layer.x");
    ASSERT_TRUE(first.ProjectLink(&project, false));
    TraceCapture trace;
    EXPECT_FALSE(second.ProjectLink(&project, false));
    EXPECT_TRUE(
        trace.Contains("*** NOTE[iElement::ProjectLink()]: Can't add element \"layer.3\" to new project: "
                       "Object with this name already exists.\n"));
    EventLog events(&second);
    EXPECT_TRUE(second.ProjectLink(&project, true));
    EXPECT_EQ(second.GetName(), "layer.4");
    EXPECT_EQ(events.Codes, (std::vector<long>{iElement::event_close_windows, iElement::event_project_changed,
                                               iElement::event_modified}));

    TestNode plain("Layer.");
    ASSERT_TRUE(third.ProjectLink(&project, false));
    EXPECT_TRUE(plain.ProjectLink(&project, true));
    EXPECT_EQ(plain.GetName(), "Layer.1");
    TestNode lettered("Layer.x");
    ASSERT_TRUE(fourth.ProjectLink(&project, false));
    EXPECT_TRUE(lettered.ProjectLink(&project, true));
    EXPECT_EQ(lettered.GetName(), "Layer.x.1");
}

TEST(iElementProject, MovingToAnotherProjectTellsBothProjects) {
    TestProject from, to;
    TestNode node("Node");
    ASSERT_TRUE(node.ProjectLink(&from, false));
    EventLog fromEvents(&from), toEvents(&to);
    EXPECT_TRUE(node.ProjectLink(&to, false));
    EXPECT_EQ(fromEvents.Codes, std::vector<long>{iElement::event_child_unlinked});
    EXPECT_EQ(toEvents.Codes, std::vector<long>{iElement::event_child_linked});
    EXPECT_EQ(toEvents.Objects[0], &node);
    EXPECT_GT(to.ChangeMarks, 0);
    EXPECT_TRUE(to.Holds("Node"));
    EXPECT_FALSE(from.Holds("Node"));
}

TEST(iElementProject, FixNameGivesAnEntryEvenWhenTheNameIsTaken) {
    TestProject project;
    TestNode node("Node");
    ASSERT_TRUE(node.ProjectLink(&project, false));
    TestNode impostor("Impostor");
    project.Index.erase("Node");
    project.Index.emplace("Node", &impostor);
    node.FixName();
    EXPECT_EQ(node.GetName().rfind("Node naming error #", 0), 0u);
    EXPECT_EQ(project.FindElement(node.GetName()), &node);
    project.Index.erase("Node");
}

TEST(iElementProject, SelectionListKeepsOrderOfSelecting) {
    TestProject project;
    TestNode a("A"), b("B"), c("C");
    for (TestNode* node : {&a, &b, &c})
        node->ProjectLink(&project, false);
    c.SetSelected(true);
    a.SetSelected(true);
    b.SetSelected(true);
    a.SetSelected(false);
    EXPECT_EQ(project.GetSelectedCount(), 2);
    EXPECT_EQ(project.GetFirstSelected(), &c);
    EXPECT_EQ(c.GetNextSelected(), &b);
    EXPECT_EQ(project.GetLastSelected(), &b);
    EXPECT_FALSE(a.IsSelected());
}

TEST(iElementPane, MovingShiftsTheDrawnRectangleAndTellsTheProject) {
    TestProject project;
    TestNode node("Node");
    node.ProjectLink(&project, false);
    node.SetPaneRect({-32, -32, 0, 0});
    EventLog events(&node);
    node.SetPanePosition({-16, -16}, true);
    EXPECT_TRUE(events.Codes.empty());
    node.SetPanePosition({100, 50}, true);
    EXPECT_EQ(node.GetPaneRect(), (CRect{84, 34, 116, 66}));
    EXPECT_EQ(events.Codes, std::vector<long>{iElement::event_position_changed});
    EXPECT_EQ(project.PositionNotices, 1);
}

TEST(iElementPane, HitTestFindsIconLineAndArrowHead) {
    TestProject project;
    TestNode parent("Parent"), child("Child");
    parent.ProjectLink(&project, false);
    child.ProjectLink(&project, false);
    child.LinkParent(&parent);
    parent.SetPanePosition({0, 0}, false);
    child.SetPanePosition({100, 0}, false);
    iElement* hit = nullptr;
    const unsigned all = hit_icon | hit_parent_link | hit_grid_link;
    EXPECT_EQ(child.HitTest({110, 10}, all, &hit), hit_icon);
    EXPECT_EQ(child.HitTest({40, 1}, all, &hit), hit_parent_link);
    EXPECT_EQ(hit, &parent);
    EXPECT_EQ(child.HitTest({75, 3}, all, &hit), hit_parent_link | hit_arrow_head);
    EXPECT_EQ(child.HitTest({40, 4}, all, &hit), hit_none);
    EXPECT_EQ(child.HitTest({10, 0}, all, &hit), hit_none);
    EXPECT_EQ(child.HitTest({40, 1}, hit_icon, &hit), hit_none);
}
