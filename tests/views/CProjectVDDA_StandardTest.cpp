#include "views/CProjectVDDA_Standard.h"

#include "ProjectViewFixture.h"
#include "foundation/TraceCapture.h"
#include "model/iElementGroup.h"

namespace {

class ProjectDrag : public ProjectViewFixture {};

CPoint near(const iElement& element) {
    return {element.GetPanePosition().x + 3, element.GetPanePosition().y - 2};
}

} // namespace

TEST_F(ProjectDrag, EveryAnswerOfTheLinkCheckHasItsActionAndWords) {
    ProbeSource* source = add<ProbeSource>("Clip", {100, 100});
    ProbeSource* other = add<ProbeSource>("Still", {300, 100});
    TestNode* parent = add("Parent", {100, 300});
    TestNode* child = add("Child", {300, 300});
    TestNode* grandChild = add("Grandchild", {500, 300});
    TestNode* loose = add("Loose", {500, 100});
    child->LinkParent(parent);
    grandChild->LinkParent(child);
    const unsigned link = key_control | key_shift;

    EXPECT_EQ(drag(*source, near(*other), link), CDropEffect::None);
    EXPECT_EQ(status(), "You cannot link Clip to Still: Still does not need a source)...");
    view->DragLeave();
    EXPECT_EQ(drag(*loose, near(*child), link), CDropEffect::Link);
    EXPECT_EQ(status(), "Replace former source of Child by Loose..");
    view->DragLeave();
    EXPECT_EQ(drag(*loose, near(*parent), link), CDropEffect::Link);
    EXPECT_EQ(status(), "Make Loose a source of Parent..");
    view->DragLeave();
    EXPECT_EQ(drag(*parent, near(*child), link), CDropEffect::None);
    EXPECT_EQ(status(), "Parent is already linked to Child..");
    view->DragLeave();
    EXPECT_EQ(drag(*grandChild, near(*parent), link), CDropEffect::None);
    EXPECT_EQ(status(), "You cannot link Grandchild to Parent: You would produce a loop...");
}

TEST_F(ProjectDrag, OnlyALinkGestureLooksForElementsAndGroupsTakeElementsInAnyButCopy) {
    TestNode* dragged = add("Dragged", {100, 100});
    TestNode* target = add("Target", {300, 100});
    iElementGroup* group = project.AddGrp("Set", true);
    group->SetPanePos({500, 300});

    EXPECT_EQ(drag(*dragged, near(*target)), CDropEffect::Move) << "move mode, plain drag";
    EXPECT_EQ(status(), "Reposition objects ...");
    EXPECT_EQ(view->DragOver(near(*target), key_control | key_shift), CDropEffect::Link)
        << "the same point is decided anew when the keys change";
    EXPECT_EQ(view->DragOver({505, 300}, key_none), CDropEffect::Move);
    EXPECT_EQ(status(), "Add objects to group \"Set\" ...");
    EXPECT_EQ(view->DragOver({505, 300}, key_control), CDropEffect::Copy);
    EXPECT_EQ(status(), "Reposition objects ...");
    view->DragLeave();

    view->SetDragMode(CDragMode::Link);
    EXPECT_EQ(drag(*dragged, near(*target)), CDropEffect::Link);
    EXPECT_EQ(drag(*dragged, near(*target), key_alt), CDropEffect::Move);
}

TEST_F(ProjectDrag, IconsFollowThePointerButWaitAtTheirPlaceOverALinkTarget) {
    TestNode* dragged = add("Dragged", {100, 100});
    TestNode* target = add("Target", {300, 100});
    const unsigned link = key_control | key_shift;

    drag(*dragged, {150, 200}, link);
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{150, 200})) << "a single icon is centred on the pointer";
    view->DragOver(near(*target), link);
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{100, 100}));
    view->DragOver({160, 220}, link);
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{160, 220}));
    view->DragLeave();
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{100, 100})) << "leaving the window puts the icons back";
}

TEST_F(ProjectDrag, SeveralObjectsMoveByThePointersWayAndTheMoveCanBeTakenBack) {
    TestNode* first = add("First", {100, 100});
    TestNode* second = add("Second", {200, 150});
    iElementGroup* group = project.AddGrp("Set", true);
    group->SetPanePos({400, 400});
    first->SetSelected(true);
    second->SetSelected(true);
    group->SetSelected(true);

    dragSelection({110, 100}, {140, 130});
    EXPECT_EQ(first->GetPanePosition(), (CPoint{130, 130}));
    EXPECT_TRUE(view->Drop({150, 150}, key_none));
    EXPECT_EQ(status(), "Objects have been moved ...");
    EXPECT_EQ(first->GetPanePosition(), (CPoint{140, 150}));
    EXPECT_EQ(second->GetPanePosition(), (CPoint{240, 200}));
    EXPECT_EQ(group->GetPanePos(), (CPoint{440, 450}));

    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_EQ(first->GetPanePosition(), (CPoint{100, 100}));
    EXPECT_EQ(group->GetPanePos(), (CPoint{400, 400}));
    ASSERT_TRUE(project.GetActionManager().Redo());
    EXPECT_EQ(second->GetPanePosition(), (CPoint{240, 200}));
}

TEST_F(ProjectDrag, ADropWhereTheDragBeganIsACancel) {
    TestNode* first = add("First", {100, 100});
    TestNode* second = add("Second", {200, 100});
    first->SetSelected(true);
    second->SetSelected(true);
    dragSelection({100, 100}, {180, 180});
    view->DragOver({100, 100}, key_none);
    EXPECT_FALSE(view->Drop({100, 100}, key_none));
    EXPECT_EQ(status(), "Cancelled.");
    EXPECT_EQ(first->GetPanePosition(), (CPoint{100, 100}));
    EXPECT_EQ(second->GetPanePosition(), (CPoint{200, 100}));
    EXPECT_FALSE(project.GetActionManager().CanUndo());
}

TEST_F(ProjectDrag, ALinkReplacingASourceIsTakenBackToTheFormerSource) {
    TestNode* former = add("Former", {100, 100});
    TestNode* dragged = add("Dragged", {100, 300});
    TestNode* target = add("Target", {300, 200});
    target->LinkParent(former);

    drag(*dragged, near(*target), key_control | key_shift);
    EXPECT_TRUE(view->Drop(near(*target), key_control | key_shift));
    EXPECT_EQ(status(), "Object Dragged is been set as a source for Target...");
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{100, 300}));
    EXPECT_EQ(target->GetFirstParent(), dragged);
    EXPECT_EQ(target->GetParentCount(), 1);

    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_EQ(target->GetFirstParent(), former);
    EXPECT_EQ(target->GetParentCount(), 1);
}

TEST_F(ProjectDrag, ElementsDroppedOnAGroupJoinIt) {
    TestNode* first = add("First", {100, 100});
    TestNode* second = add("Second", {150, 100});
    iElementGroup* other = project.AddGrp("Other", true);
    other->AddMember(second, true);
    iElementGroup* group = project.AddGrp("Set", true);
    group->SetPanePos({400, 400});
    first->SetSelected(true);
    second->SetSelected(true);

    dragSelection({100, 100}, {410, 400});
    EXPECT_TRUE(view->Drop({410, 400}, key_none));
    EXPECT_EQ(status(), "Objects added to group \"Set\" ...");
    EXPECT_EQ(first->GetGroup(), group);
    EXPECT_EQ(second->GetGroup(), group) << "a member of another group moves over";
    EXPECT_EQ(other->GetMemberCount(), 0);
    EXPECT_EQ(first->GetPanePosition(), (CPoint{100, 100}));
}

TEST_F(ProjectDrag, ATargetThatGoesAwayBeforeTheDropEndsInACancel) {
    TestNode* dragged = add("Dragged", {100, 100});
    TestNode* target = add("Target", {300, 100});
    const CPoint over = near(*target);
    drag(*dragged, over, key_control | key_shift);
    project.DeleteElement(target);
    EXPECT_FALSE(view->Drop(over, key_control | key_shift));
    EXPECT_EQ(status(), "Cancelled.");
    EXPECT_EQ(dragged->GetParentCount(), 0);
    EXPECT_EQ(dragged->GetPanePosition(), (CPoint{100, 100}));
    EXPECT_FALSE(project.GetActionManager().CanUndo());

    drag(*dragged, {200, 200});
    project.DeleteElement(dragged);
    EXPECT_FALSE(view->Drop({220, 220}, key_none)) << "nothing is left to move";
    EXPECT_EQ(status(), "Cancelled.");
}

TEST_F(ProjectDrag, TheAddBarMakesNumberedNewObjectsAtTheDropPoint) {
    const std::string bar = newObject("Test", "Node");
    EXPECT_EQ(view->DragEnter(ioleConnector::Format, bar, {50, 60}, key_none), CDropEffect::Copy);
    EXPECT_EQ(status(), "Add object to project ...");
    EXPECT_TRUE(view->Drop({70, 80}, key_none));
    EXPECT_EQ(status(), "Object added ...");
    iElement* made = project.FindElement("New Object");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetPanePosition(), (CPoint{70, 80}));
    EXPECT_TRUE(made->IsSelected());

    view->DragEnter(ioleConnector::Format, bar, {50, 60}, key_none);
    EXPECT_TRUE(view->Drop({90, 80}, key_none));
    EXPECT_NE(project.FindElement("New Object.1"), nullptr);
    ASSERT_TRUE(project.GetActionManager().Undo());
    EXPECT_EQ(project.FindElement("New Object.1"), nullptr);

    view->DragEnter(ioleConnector::Format, newObject("Test", "No Such Type"), {50, 60}, key_none);
    EXPECT_FALSE(view->Drop({90, 80}, key_none));
    EXPECT_EQ(status(), "Cancelled.");
    EXPECT_EQ(project.GetElementCount(), 1u);
}

TEST_F(ProjectDrag, ForeignDataAndOtherWindowsObjectsAreRefused) {
    add("Node", {100, 100});
    TraceCapture trace;
    EXPECT_EQ(view->DragEnter("text/plain", "Node", {10, 10}, key_none), CDropEffect::None);
    EXPECT_TRUE(
        trace.Contains("*** WARNING[CProjectView::OnDragEnter()]: Unknown OLE type (no connector).\n"));
    EXPECT_EQ(view->DragEnter(ioleConnector::Format, "garbage", {10, 10}, key_none), CDropEffect::None);
    EXPECT_EQ(view->DragEnter(ioleConnector::Format, foreignObjects({"Node"}), {10, 10}, key_none),
              CDropEffect::None);
    EXPECT_FALSE(view->Drop({20, 20}, key_none));
}

TEST_F(ProjectDrag, ACopyGestureLeavesTheOriginalsAndPastesCopiesWhereTheIconsWere) {
    TestNode* parent = add("Parent", {100, 100});
    TestNode* child = add("Child", {100, 200});
    child->LinkParent(parent);
    parent->SetSelected(true);
    child->SetSelected(true);

    dragSelection({100, 100}, {150, 120}, key_control);
    EXPECT_TRUE(view->Drop({160, 130}, key_control));
    EXPECT_EQ(status(), "Objects have been copied !");
    EXPECT_EQ(parent->GetPanePosition(), (CPoint{100, 100}));
    iElement* copiedChild = project.FindElement("Child.1");
    ASSERT_NE(copiedChild, nullptr);
    EXPECT_EQ(copiedChild->GetPanePosition(), (CPoint{160, 230}));
    ASSERT_NE(copiedChild->GetFirstParent(), nullptr);
    EXPECT_EQ(copiedChild->GetFirstParent()->GetName(), "Parent.1");
    EXPECT_TRUE(copiedChild->IsSelected());
    EXPECT_FALSE(child->IsSelected());
}
